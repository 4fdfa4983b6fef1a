// XML: writing the three request documents the library sends, and reading
// two host replies (an authorisation response and a configuration update
// with 100 AIDs and 100 CAPKs) with TBXML, with pugixml alone (texts kept
// raw, as TBXML keeps them) and with libxml2's DOM reader, on the same bytes;
// plus the whole read into the message classes.

#include <benchmark/benchmark.h>

#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRTransactionModel.h>

#include "Host/Messages/KVRAcceptorAuthorisationResponse.h"
#include "Host/Messages/KVRAuthorisationRequestFactory.h"
#include "Host/TBXML.h"
#include "Pinpad/Commands/KVRGcrCommandResponse.h"
#include "Pinpad/Commands/KVRGocCommandResponse.h"
#include "Tms/KVRAcceptorConfigurationUpdate.h"
#include "Tms/KVRStatusReportFactory.h"
#include "support/KVRBenchSamples.h"

#include <libxml/parser.h>
#include <pugixml.hpp>

#include <string>

namespace {

// ---- Writing ----

template <typename Write>
void writeEach(benchmark::State& state, const Write& write) {
    size_t bytes = 0;
    for (auto _ : state) {
        std::string document = write();
        bytes = document.size();
        benchmark::DoNotOptimize(document);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
    state.counters["document_bytes"] = static_cast<double>(bytes);
}

// A chip sale with on-line PIN: what the sale posts to "/Authorize".
void BM_Write_AuthorisationRequest(benchmark::State& state) {
    auto merchant = KVRMerchantModel::create();
    merchant->setSaleAffiliationKey("1234-5678");
    merchant->setMerchantName("Padaria Kovra Ltda");
    auto transaction = KVRTransactionModel::create();
    transaction->setMerchant(merchant);
    transaction->setAmount(KVRNumber(1500));
    transaction->setShortName("Padaria Kovra");
    transaction->setInitiatorTransactionKey("5123456789-24100007A1B2108");
    const std::string gcrText = KVRBenchSamples::gcrChipReply();
    const std::string gocText = KVRBenchSamples::gocOnlineReply();
    KVRGcrCommandResponse gcr(gcrText.c_str());
    KVRGocCommandResponse goc(gocText.c_str());
    writeEach(state, [&] {
        return KVRAuthorisationRequestFactory::createAcceptorAutorisationrequestWithTrasansaction(*transaction, gcr, &goc,
                                                                                                 nullptr)
            ->write();
    });
}
BENCHMARK(BM_Write_AuthorisationRequest);

void BM_Write_StatusReportKovraCode(benchmark::State& state) {
    writeEach(state, [] { return KVRStatusReportFactory::statusReportWithKovraCode("KVR-0001-2345")->write(); });
}
BENCHMARK(BM_Write_StatusReportKovraCode);

void BM_Write_StatusReportSaleAffiliationKey(benchmark::State& state) {
    writeEach(state, [] { return KVRStatusReportFactory::statusReportWithSaleAffiliationKey("1234-5678")->write(); });
}
BENCHMARK(BM_Write_StatusReportSaleAffiliationKey);

// ---- Reading ----

enum class Reply { AuthorisationResponse, ConfigurationUpdate };

const std::string& replyText(Reply reply) {
    static const std::string authorisation = KVRBenchSamples::authorisationResponse();
    static const std::string configuration = KVRBenchSamples::configurationUpdate(100, 100);
    return reply == Reply::AuthorisationResponse ? authorisation : configuration;
}

template <typename Read>
void readEach(benchmark::State& state, Reply reply, const Read& read) {
    const std::string& text = replyText(reply);
    if (!read(text)) {
        state.SkipWithError("the reply did not read");
        return;
    }
    for (auto _ : state) benchmark::DoNotOptimize(read(text));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
    state.counters["document_bytes"] = static_cast<double>(text.size());
}

void BM_Read_TBXML(benchmark::State& state, Reply reply) {
    readEach(state, reply, [](const std::string& text) {
        TBXML document(text);
        return document.rootXMLElement() != nullptr;
    });
}

// pugixml with the options that keep what TBXML keeps (raw texts, white
// space, CDATA), building its own tree from its own copy of the bytes.
void BM_Read_pugixml(benchmark::State& state, Reply reply) {
    readEach(state, reply, [](const std::string& text) {
        pugi::xml_document document;
        auto result = document.load_buffer(text.data(), text.size(), pugi::parse_cdata | pugi::parse_ws_pcdata,
                                           pugi::encoding_utf8);
        return result && document.first_child();
    });
}

void BM_Read_libxml2(benchmark::State& state, Reply reply) {
    xmlInitParser();
    readEach(state, reply, [](const std::string& text) {
        xmlDocPtr document = xmlReadMemory(text.data(), static_cast<int>(text.size()), "reply.xml", nullptr, XML_PARSE_NONET);
        bool read = document && xmlDocGetRootElement(document);
        xmlFreeDoc(document);
        return read;
    });
}

// The whole read: tree, then the message classes filled from it.
void BM_Read_Message(benchmark::State& state, Reply reply) {
    readEach(state, reply, [reply](const std::string& text) {
        if (reply == Reply::AuthorisationResponse) {
            KVRAcceptorAuthorisationResponse response;
            response.read(text);
            return response.data.has_value();
        }
        KVRAcceptorConfigurationUpdate update;
        update.read(text);
        return update.data != nullptr;
    });
}

BENCHMARK_CAPTURE(BM_Read_TBXML, AuthorisationResponse, Reply::AuthorisationResponse);
BENCHMARK_CAPTURE(BM_Read_pugixml, AuthorisationResponse, Reply::AuthorisationResponse);
BENCHMARK_CAPTURE(BM_Read_libxml2, AuthorisationResponse, Reply::AuthorisationResponse);
BENCHMARK_CAPTURE(BM_Read_Message, AuthorisationResponse, Reply::AuthorisationResponse);
BENCHMARK_CAPTURE(BM_Read_TBXML, ConfigurationUpdate200, Reply::ConfigurationUpdate);
BENCHMARK_CAPTURE(BM_Read_pugixml, ConfigurationUpdate200, Reply::ConfigurationUpdate);
BENCHMARK_CAPTURE(BM_Read_libxml2, ConfigurationUpdate200, Reply::ConfigurationUpdate);
BENCHMARK_CAPTURE(BM_Read_Message, ConfigurationUpdate200, Reply::ConfigurationUpdate);

}  // namespace

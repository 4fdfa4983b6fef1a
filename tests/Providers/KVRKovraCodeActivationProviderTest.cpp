#include <gtest/gtest.h>

#include <kovra/KVRAddressModel.h>
#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRErrors.h>
#include <kovra/KVRKovraCodeActivationProvider.h>
#include <kovra/KVRMerchantModel.h>

#include "Host/KVRCommunicationController.h"
#include "Providers/KVRActivationController.h"
#include "Utils/KVRReachability.h"
#include "testing/KVRCompletionRecorder.h"
#include "testing/KVRFakeExchange.h"
#include "testing/KVRTemporaryStore.h"
#include "testing/KVRTestFixture.h"

#include <string>
#include <vector>

namespace {

const char* kMerchantParameters =
    "<MrchntParams><Sak>1234-5678-90</Sak>"
    "<Adr><City>São Paulo</City><Strt>Avenida Paulista</Strt><Dstrct>Bela Vista</Dstrct><DrNb>1578</DrNb>"
    "<Nghbhd>Cerqueira César</Nghbhd><ZipCd>01310-200</ZipCd><Cmplmt>Sala 4</Cmplmt></Adr>"
    "<CpnyNm>Padaria Pão Quente</CpnyNm><IdCd>12.345.678/0001-90</IdCd></MrchntParams>";

std::string configurationUpdate(const std::string& content) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<Document xmlns=\"urn:AcceptorConfigurationUpdateV02.1\"><AccptrCfgtnUpd>"
           "<Hdr><FrmtVrsn>2.0</FrmtVrsn><CreDtTm>2024-03-05T14:07:00</CreDtTm></Hdr>"
           "<AccptrCfgtn><POIId><Id>Mobile</Id></POIId><DataSet><Id><Tp>MRPR</Tp></Id><Cntt>" +
           content + "</Cntt></DataSet></AccptrCfgtn></AccptrCfgtnUpd></Document>";
}

const KVRError kCannotConnect(NSURLErrorDomain, NSURLErrorCannotConnectToHost);

class ActivationTest : public KVRTestFixture {
protected:
    void SetUp() override {
        KVRTestFixture::setNetworkFlags(KVRReachability::kFlagReachable);
        KVRApplicationInfo::setValue("Kovra TMS Host", std::string("tms.test:8443"));
    }

    static bool enrol(const std::string& code) {
        return KVRCompletionRecorder::firstCall([&](KVRCompletion done) {
                   KVRKovraCodeActivationProvider::activateKovraCode(code, done);
               }).success;
    }

    KVRTemporaryStore store_;
    KVRFakeExchange host_;
};

// The controller runs synchronously, so every call it makes has been made
// when it returns: the exact sequence of outcomes is checked.
TEST_F(ActivationTest, ControllerOutcomesForEveryKindOfReply) {
    const std::optional<KVRError> ok;
    struct Row {
        const char* name;
        std::function<void(KVRFakeExchange&)> host;
        std::vector<std::optional<KVRError>> outcomes;  // none: success
    } rows[] = {
        {"transport failure reports twice", [](KVRFakeExchange& h) { h.failWith(kCannotConnect); },
         {kCannotConnect, KVRErrors::nullResponse()}},
        {"empty reply", [](KVRFakeExchange& h) { h.replyWith(""); }, {KVRErrors::nullResponse()}},
        {"HTML error page", [](KVRFakeExchange& h) { h.replyWith("<html><body>502 Bad Gateway</body></html>"); },
         {KVRErrors::nullResponse()}},
        {"reply cut after the merchant", [](KVRFakeExchange& h) {
             std::string full = configurationUpdate(kMerchantParameters);
             h.replyWith(full.substr(0, full.find("</Cntt>")));
         }, {ok}},
        {"no merchant parameters", [](KVRFakeExchange& h) { h.replyWith(configurationUpdate("")); }, {ok}},
        {"full configuration", [](KVRFakeExchange& h) { h.replyWith(configurationUpdate(kMerchantParameters)); }, {ok}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        row.host(host_);
        KVRActivationController controller;
        std::vector<std::optional<KVRError>> outcomes;
        controller.activativateWithKovraCode("KOVRA-0001", [&](bool success, std::optional<KVRError> error) {
            outcomes.push_back(error);
            EXPECT_EQ(success, !error);
        });
        EXPECT_EQ(outcomes, row.outcomes);
        EXPECT_EQ(controller.authorisationResponse && controller.authorisationResponse->data, row.outcomes[0] == ok);
    }
    EXPECT_TRUE(KVRMerchantModel::findAll().empty()) << "the controller itself stores no merchant";

    auto request = host_.requests().back();
    EXPECT_EQ(request.url, "https://tms.test:8443/Report");
    EXPECT_EQ(request.contentType, "text/xml");
    EXPECT_NE(request.body.find("<Id>KOVRA-0001</Id>"), std::string::npos) << request.body;
    EXPECT_NE(request.body.find("<PrvdrId>KOVRACODE</PrvdrId>"), std::string::npos) << request.body;
}

TEST_F(ActivationTest, EnrolmentStoresTheMerchantWithItsAddressOrTheCodeAlone) {
    host_.replyWith(configurationUpdate(kMerchantParameters));
    ASSERT_TRUE(enrol("KOVRA-0001"));
    store_.reopen();  // what was saved, not what is in memory
    auto merchant = KVRMerchantModel::findFirstByAttribute("kovracode", "KOVRA-0001");
    ASSERT_TRUE(merchant);
    EXPECT_EQ(merchant->saleAffiliationKey(), "1234-5678-90");
    EXPECT_EQ(merchant->merchantName(), "Padaria Pão Quente");
    EXPECT_EQ(merchant->documentNumber(), "12.345.678/0001-90");
    ASSERT_TRUE(merchant->address()) << "the reply's address, read by its own suite, is stored with it";
    EXPECT_EQ(merchant->address()->zipCode(), "01310-200");

    host_.replyWith(configurationUpdate(""));
    ASSERT_TRUE(enrol("KOVRA-0002"));
    auto bare = KVRMerchantModel::findFirstByAttribute("kovracode", "KOVRA-0002");
    ASSERT_TRUE(bare);
    EXPECT_FALSE(bare->saleAffiliationKey());
    EXPECT_FALSE(bare->address());
}

TEST_F(ActivationTest, DeactivationAllowsReEnrolment) {
    host_.replyWith(configurationUpdate(kMerchantParameters));
    ASSERT_TRUE(enrol("KOVRA-0001"));
    ASSERT_TRUE(enrol("KOVRA-0002"));
    KVRKovraCodeActivationProvider::deactivateMerchantWithKovraCode("KOVRA-9999");  // unknown: nothing happens
    EXPECT_EQ(KVRMerchantModel::findAll().size(), 2u);

    KVRKovraCodeActivationProvider::deactivateMerchantWithKovraCode("KOVRA-0001");
    KVRKovraCodeActivationProvider::deactivateMerchant(KVRMerchantModel::findFirstByAttribute("kovracode", "KOVRA-0002"));
    KVRKovraCodeActivationProvider::deactivateMerchant(nullptr);
    store_.reopen();
    EXPECT_TRUE(KVRMerchantModel::findAll().empty());
    EXPECT_TRUE(KVRAddressModel::findAll().empty()) << "a merchant's address goes with it";

    ASSERT_TRUE(enrol("KOVRA-0001"));
    EXPECT_EQ(host_.count(), 3u) << "re-enrolment sends a new status report";
}

}  // namespace

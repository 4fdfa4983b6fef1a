// "/Report": enrolment by KovraCode and EMV table download by sale
// affiliation key, as the library's status reports ask for them.
#include "Messages.h"
#include "SimSession.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <pugixml.hpp>

#include <map>
#include <memory>

namespace {

constexpr const char* kMerchantParams = "/Document/AccptrCfgtnUpd/AccptrCfgtn/DataSet/Cntt/MrchntParams";

class ReportTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { session_ = std::make_unique<SimSession>(); }
    static void TearDownTestSuite() { session_.reset(); }

    static HttpReply report(const std::string& body) { return session_->client().postXml("/Report", body); }

    static std::unique_ptr<SimSession> session_;
};

std::unique_ptr<SimSession> ReportTest::session_;

TEST_F(ReportTest, KnownKovraCodeAnswersTheMerchantParameters) {
    HttpReply reply = report(statusReportForKovraCode("KOVRA-0001"));
    ASSERT_EQ(reply.error, CURLE_OK);
    EXPECT_EQ(reply.status, 200);
    const std::string params = kMerchantParams;
    EXPECT_EQ(valueAt(reply.body, params + "/Sak"), "1234-5678");
    EXPECT_EQ(valueAt(reply.body, params + "/CpnyNm"), "Padaria Pão Quente Ltda");
    EXPECT_EQ(valueAt(reply.body, params + "/IdCd"), "12.345.678/0001-95");
    EXPECT_EQ(valueAt(reply.body, params + "/Adr/City"), "São Paulo");
    EXPECT_EQ(valueAt(reply.body, params + "/Adr/Nghbhd"), "Consolação");
    for (const char* tag : {"Strt", "Dstrct", "DrNb", "ZipCd", "Cmplmt"})
        EXPECT_TRUE(hasNode(reply.body, params + "/Adr/" + tag)) << tag;
}

// Tables by sale affiliation key, with or without its dash; an unknown code
// or key is answered without a configuration update.
TEST_F(ReportTest, TableDownloadAndUnknownCodesOrKeys) {
    for (const char* key : {"1234-5678", "12345678", "8765-4321"}) {
        HttpReply reply = report(statusReportForSaleKey(key));
        EXPECT_TRUE(hasNode(reply.body, "/Document/AccptrCfgtnUpd/AccptrCfgtn/DataSet/Cntt/TermnlParams")) << key;
    }
    for (const std::string& unknown : {statusReportForKovraCode("KOVRA-9999"), statusReportForSaleKey("9999-0000")}) {
        HttpReply reply = report(unknown);
        EXPECT_EQ(reply.status, 200);
        EXPECT_TRUE(hasNode(reply.body, "/Document/AccptrRjctn"));
        EXPECT_EQ(reply.body.find("AccptrCfgtnUpd"), std::string::npos);
        EXPECT_EQ(reply.body.find("<AidTbl>"), std::string::npos);
    }
}

std::string sha1Of(const std::string& hex) {
    std::string bytes;
    for (size_t i = 0; i + 1 < hex.size(); i += 2) bytes.push_back(static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    EVP_Digest(bytes.data(), bytes.size(), digest, &length, EVP_sha1(), nullptr);
    std::string out(2 * length, ' ');
    for (unsigned int i = 0; i < length; ++i) snprintf(&out[2 * i], 3, "%02X", digest[i]);
    return out;
}

// The keys are the brands' public test keys: their moduli hash to the check
// values the brands publish with them.
TEST_F(ReportTest, CapkTableHoldsThePublicTestKeysWithTheirChecksums) {
    // Cut out of the raw reply, as the library does before it stores a
    // table, and parsed on its own.
    const std::string reply = report(statusReportForSaleKey("1234-5678")).body;
    size_t start = reply.find("<CapkTable>");
    size_t end = reply.find("</CapkTable>", start);
    ASSERT_NE(end, std::string::npos) << reply;
    pugi::xml_document doc;
    ASSERT_TRUE(doc.load_string(reply.substr(start, end + 12 - start).c_str()));
    pugi::xml_node table = doc.document_element();

    struct Published {
        size_t modulusBytes;
        const char* checksum;
    };
    const std::map<std::string, Published> published = {
        {"A00000000392", {176, "429C954A3859CEF91295F663C963E582ED6EB253"}},
        {"A00000000394", {248, "C4A3C43CCF87327D136B804160E47D43B60E6E0F"}},
        {"A00000000395", {144, "EE1511CEC71020A9B90443B37B1D5F6E703030F6"}},
        {"A000000004EF", {248, "21766EBB0EE122AFB65D7845B73DB46BAB65427A"}},
        {"A000000004F1", {176, "D8E68DA167AB5A85D8C3D55ECB9B0517A1A5B4BB"}},
        {"A000000004FA", {144, "5BED4068D96EA16D2D77E03D6036FC7A160EA99C"}},
    };
    size_t seen = 0;
    for (pugi::xml_node capk : table.children("Capk")) {
        const std::string rid = capk.child_value("RID");
        const std::string index = capk.child_value("CapkIdx");
        const std::string modulus = capk.child_value("Modulus");
        const std::string exponent = capk.child_value("Exponent");
        auto it = published.find(rid + index);
        ASSERT_NE(it, published.end()) << rid << " " << index;
        ++seen;
        EXPECT_EQ(std::stoul(capk.child_value("ModulusLen")), it->second.modulusBytes) << index;
        EXPECT_EQ(modulus.size(), it->second.modulusBytes * 2) << index;
        EXPECT_EQ(std::stoul(capk.child_value("ExponentLen")) * 2, exponent.size()) << index;
        EXPECT_STREQ(capk.child_value("CheckSum"), it->second.checksum) << index;
        EXPECT_EQ(sha1Of(rid + index + modulus + exponent), it->second.checksum) << index;
        EXPECT_STREQ(capk.child_value("AcquirerNumber"), "8") << index;
        EXPECT_TRUE(capk.child("RecIdx")) << index;
    }
    EXPECT_EQ(seen, published.size());
}

TEST_F(ReportTest, BrokenReportIsRejected) {
    const std::string enrol = statusReportForKovraCode("KOVRA-0001");
    const std::string tables = statusReportForSaleKey("1234-5678");
    const std::string header = enrol.substr(enrol.find("<Hdr>"), enrol.find("</Hdr>") + 6 - enrol.find("<Hdr>"));
    const std::vector<std::pair<const char*, std::string>> broken{
        {"WrongNamespace", replace(enrol, "urn:StatusReportV02.1", "urn:StatusReportV01")},
        {"NotXml", "KOVRA-0001"},
        {"FormatVersion", replace(enrol, "<FrmtVrsn>2.0</FrmtVrsn>", "<FrmtVrsn>1.0</FrmtVrsn>")},
        {"ProviderNotKovraCode", replace(enrol, "<PrvdrId>KOVRACODE</PrvdrId>", "<PrvdrId>OTHER</PrvdrId>")},
        {"NoSecurityTrailer", replace(enrol, "<CnttTp>DATA</CnttTp>", "<CnttTp>SIGN</CnttTp>")},
        {"DataSetsOutOfOrder", replace(replace(tables, "<Nm>AIDS</Nm>", "<Nm>X</Nm>"), "<Nm>CAPKS</Nm>", "<Nm>AIDS</Nm>")},
        {"DataSetVersion", replace(tables, "<Vrsn>1</Vrsn>", "<Vrsn>2</Vrsn>")},
        {"TableDownloadWithPartyType", replace(tables, "<Id>1234-5678</Id>", "<Tp>OPOI</Tp><Id>1234-5678</Id>")},
        {"HeaderAfterBody", replace(replace(enrol, header, ""), "<SctyTrlr>", header + "<SctyTrlr>")},
    };
    for (const auto& [name, body] : broken) {
        SCOPED_TRACE(name);
        HttpReply reply = report(body);
        EXPECT_EQ(reply.status, 400);
        EXPECT_TRUE(hasNode(reply.body, "/Document/AccptrRjctn"));
        EXPECT_EQ(reply.body.find("AccptrCfgtnUpd"), std::string::npos);
    }
}

} // namespace

#include <gtest/gtest.h>

#include "Host/KVRServiceEndpoint.h"
#include "Host/KVRXmlUtil.h"
#include "testing/KVRTempDirectory.h"
#include "testing/KVRTestEnvironment.h"
#include "testing/KVRTestFixture.h"

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRDirectories.h>

#include <fstream>
#include <sstream>

namespace {

TEST(KVRXmlUtil, GetBlockFromXml) {
    struct Case {
        const char* text;
        std::optional<std::string> block;
    };
    const Case cases[] = {
        {"aa<X>1</X>bb", "<X>1</X>"},
        {"<X>1</X><X>2</X>", "<X>1</X>"},
        {"aa<X>1 and no end", "<X>1 and no end"},
        {"</X> before <X>1</X>", "<X>1</X>"},
        {"no start </X>", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& c : cases) EXPECT_EQ(KVRXmlUtil::getBlockFromXml(c.text, "<X>", "</X>"), c.block) << c.text;
    // The end marker is looked for after the start marker, not inside it.
    EXPECT_EQ(KVRXmlUtil::getBlockFromXml("<AB>x</A>", "<AB>", "AB>"), "<AB>x</A>");
}

TEST(KVRXmlUtil, SavesUnderTheDocumentsDirectory) {
    KVRTempDirectory dir;
    KVRDirectories::setDocumentsDirectory(dir.path());
    EXPECT_EQ(KVRXmlUtil::getXmlPathWithFileName("report"), dir.path() + "/report.xml");
    KVRXmlUtil::saveXmlString("<A>ç</A>", "report");
    KVRXmlUtil::saveXmlString("<B/>", "report");
    std::ifstream in(dir.path() + "/report.xml", std::ios::binary);
    std::stringstream contents;
    contents << in.rdbuf();
    EXPECT_EQ(contents.str(), "<B/>");
}

class KVRServiceEndpointTest : public KVRTestFixture {};

TEST_F(KVRServiceEndpointTest, HomologationSelectsStagingOnEveryCall) {
    KVRApplicationInfo::setValue("Kovra TMS Host", std::string("tms.example"));
    KVRApplicationInfo::setValue("Kovra TMS Staging Host", std::string("tms-hml.example"));
    KVRApplicationInfo::setValue("Kovra Authorizer Host", std::string("auth.example"));
    KVRApplicationInfo::setValue("Kovra Authorizer Staging Host", std::string("127.0.0.1:8443"));
    KVRApplicationInfo::setValue("Kovra Mail Host", std::string("mail.example"));

    EXPECT_FALSE(KVRServiceEndpoint::isHolomogation());
    EXPECT_EQ(KVRServiceEndpoint::tmsUrl(), "https://tms.example/Report");
    EXPECT_EQ(KVRServiceEndpoint::authorizerUrl(), "https://auth.example/Authorize");
    EXPECT_EQ(KVRServiceEndpoint::cancellationUrl(), "https://auth.example/CancellationAdvice");

    KVRApplicationInfo::setValue("Kovra Homologation", true);
    EXPECT_TRUE(KVRServiceEndpoint::isHolomogation());
    EXPECT_EQ(KVRServiceEndpoint::tmsUrl(), "https://tms-hml.example/Report");
    EXPECT_EQ(KVRServiceEndpoint::authorizerUrl(), "https://127.0.0.1:8443/Authorize");
    EXPECT_EQ(KVRServiceEndpoint::cancellationUrl(), "https://127.0.0.1:8443/CancellationAdvice");
    EXPECT_EQ(KVRServiceEndpoint::mailUrl(), "https://mail.example/send");

    KVRApplicationInfo::setValue("Kovra Homologation", false);
    EXPECT_EQ(KVRServiceEndpoint::authorizerUrl(), "https://auth.example/Authorize");
}

TEST_F(KVRServiceEndpointTest, DefaultsWhenHostsAreNotConfigured) {
    KVRApplicationInfo::setValue("Kovra TMS Host", std::string(""));
    EXPECT_EQ(KVRServiceEndpoint::tmsUrl(), "https://tms.kovra.com.br/Report");
    EXPECT_EQ(KVRServiceEndpoint::authorizerUrl(), "https://authorizer.kovra.com.br/Authorize");
    EXPECT_EQ(KVRServiceEndpoint::mailUrl(), "https://mail.kovra.com.br/send");
    KVRApplicationInfo::setValue("Kovra Homologation", true);
    EXPECT_EQ(KVRServiceEndpoint::tmsUrl(), "https://tms.staging.kovra.com.br/Report");
    EXPECT_EQ(KVRServiceEndpoint::cancellationUrl(), "https://authorizer.staging.kovra.com.br/CancellationAdvice");
    EXPECT_EQ(KVRServiceEndpoint::mailUrl(), "https://mail.kovra.com.br/send");
}

}  // namespace

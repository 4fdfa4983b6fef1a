#include <gtest/gtest.h>

#include <kovra/KVRDirectories.h>
#include "testing/KVRTempDirectory.h"
#include "Host/KVRServiceEndpoint.h"
#include "Host/KVRXmlUtil.h"
#include "testing/KVRTestEnvironment.h"
#include "testing/KVRTestFixture.h"

#include <kovra/KVRApplicationInfo.h>

#include <vector>

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

class KVRServiceEndpointTest : public KVRTestFixture {};

// Homologation is read on every call: a terminal switched to staging must
// never send its next sale to production.
TEST_F(KVRServiceEndpointTest, HomologationSelectsStagingOnEveryCallAndHostsHaveDefaults) {
    using E = KVRServiceEndpoint;
    KVRApplicationInfo::setValue("Kovra TMS Host", std::string(""));  // set but empty is the default too
    auto urls = [] { return std::vector<std::string>{E::tmsUrl(), E::authorizerUrl(), E::cancellationUrl(), E::mailUrl()}; };
    EXPECT_EQ(urls(), (std::vector<std::string>{"https://tms.kovra.com.br/Report", "https://authorizer.kovra.com.br/Authorize",
                                                "https://authorizer.kovra.com.br/CancellationAdvice",
                                                "https://mail.kovra.com.br/send"}));
    KVRApplicationInfo::setValue("Kovra Homologation", true);
    EXPECT_TRUE(E::isHolomogation());
    EXPECT_EQ(urls(), (std::vector<std::string>{"https://tms.staging.kovra.com.br/Report",
                                                "https://authorizer.staging.kovra.com.br/Authorize",
                                                "https://authorizer.staging.kovra.com.br/CancellationAdvice",
                                                "https://mail.kovra.com.br/send"}));

    KVRApplicationInfo::setValue("Kovra TMS Host", std::string("tms.example"));
    KVRApplicationInfo::setValue("Kovra TMS Staging Host", std::string("tms-hml.example"));
    KVRApplicationInfo::setValue("Kovra Authorizer Host", std::string("auth.example"));
    KVRApplicationInfo::setValue("Kovra Authorizer Staging Host", std::string("127.0.0.1:8443"));
    KVRApplicationInfo::setValue("Kovra Mail Host", std::string("mail.example"));
    EXPECT_EQ(urls(), (std::vector<std::string>{"https://tms-hml.example/Report", "https://127.0.0.1:8443/Authorize",
                                                "https://127.0.0.1:8443/CancellationAdvice", "https://mail.example/send"}));
    KVRApplicationInfo::setValue("Kovra Homologation", false);
    EXPECT_FALSE(E::isHolomogation());
    EXPECT_EQ(urls(), (std::vector<std::string>{"https://tms.example/Report", "https://auth.example/Authorize",
                                                "https://auth.example/CancellationAdvice", "https://mail.example/send"}));
}

TEST(KVRXmlUtil, SavesWholeUnderTheDocumentsDirectory) {
    KVRTempDirectory dir;
    KVRDirectories::setDocumentsDirectory(dir.path());
    EXPECT_EQ(KVRXmlUtil::getXmlPathWithFileName("report"), dir.path() + "/report.xml");
    KVRXmlUtil::saveXmlString("<A>ç</A>", "report");
    KVRXmlUtil::saveXmlString("<B/>", "report");
    EXPECT_EQ(dir.read("report.xml"), "<B/>");
}

}  // namespace

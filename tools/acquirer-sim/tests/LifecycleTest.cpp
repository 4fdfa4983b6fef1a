// Start, certificates, command line, routing and the request log.
#include "Messages.h"
#include "SimSession.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <regex>

#include <nlohmann/json.hpp>

namespace {

TEST(LifecycleTest, ServesHttpsOnLoopbackWithACertificateOfItsOwnCa) {
    SimSession session;
    EXPECT_TRUE(std::regex_match(session.readyLine(),
                                 std::regex(R"(kovra-acquirer-sim ready at https://127\.0\.0\.1:[1-9]\d*)")))
        << session.readyLine();
    EXPECT_EQ(session.caFile(), (std::filesystem::canonical(session.state()) / "ca.pem").string());
    // Both names verify over the wire with the CA file and nothing else.
    std::string port = session.baseUrl().substr(session.baseUrl().rfind(':'));
    for (const std::string host : {"127.0.0.1", "localhost"}) {
        HttpsClient client("https://" + host + port, session.caFile());
        EXPECT_EQ(client.send("GET", "/", "", {}).status, 404) << host;
    }
    HttpsClient untrusting(session.baseUrl(), "/dev/null");
    EXPECT_NE(untrusting.send("GET", "/", "", {}).error, CURLE_OK);
}

// A restart keeps the CA, the server certificate and the authorisations (a
// sale authorised before it can be cancelled after it); a damaged server
// certificate is issued again under the same CA.
TEST(LifecycleTest, RestartKeepsTheCertificatesAndTheLedger) {
    KVRTempDirectory directory;
    std::string caBefore;
    std::string serverBefore;
    CancellationFields advice;
    for (int round = 0; round < 2; ++round) {
        SimSession session({}, directory.path());
        if (round == 0) {
            caBefore = directory.read("ca.pem");
            serverBefore = directory.read("server.pem");
            advice = authorised(session.client(), "4200");
        } else {
            HttpReply reply = session.client().postXml("/CancellationAdvice", cancellationAdvice(advice));
            EXPECT_EQ(valueAt(reply.body, "/Document/AccptrCxlAdvcRspn/CxlAdvcRspn/Tx/Rspn"), "APPR");
        }
        EXPECT_EQ(directory.read("ca.pem"), caBefore);
        EXPECT_EQ(directory.read("server.pem"), serverBefore);
        EXPECT_EQ(session.stop(), 0);
    }
    auto ledger = nlohmann::json::parse(directory.read("state.json"));
    EXPECT_EQ(ledger["authorisations"][advice.receiptId]["cancelled"], true) << ledger.dump(2);
    auto printed = runSim({"--print-ca", "--state", directory.path()});
    EXPECT_EQ(printed.exitCode, 0);
    EXPECT_EQ(printed.out, (std::filesystem::canonical(directory.path()) / "ca.pem").string() + "\n");

    std::ofstream(directory.file("server.pem")) << "garbage";
    SimSession repaired({}, directory.path());
    EXPECT_EQ(directory.read("ca.pem"), caBefore);
    EXPECT_EQ(repaired.client().send("GET", "/", "", {}).status, 404);
}

TEST(LifecycleTest, EveryRequestIsLoggedAndUnknownRoutesAnswer404) {
    SimSession session;
    HttpsClient& client = session.client();
    EXPECT_EQ(client.send("GET", "/Authorize", "", {}).status, 404);
    EXPECT_EQ(client.send("POST", "/authorize", "x", {"Content-Type: text/xml", "Accept:", "Expect:"}).status, 404);
    EXPECT_EQ(client.send("PUT", "/send", "{}", {}).status, 404);
    EXPECT_EQ(client.postXml("/Report", statusReportForKovraCode("KOVRA-0001")).status, 200);

    std::vector<std::string> log = session.requestLog();
    ASSERT_EQ(log.size(), 4u);
    const std::regex line(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z (GET|POST|PUT) /\S* \d{3} .+)");
    for (const std::string& entry : log) EXPECT_TRUE(std::regex_match(entry, line)) << entry;
    EXPECT_NE(log[0].find("GET /Authorize 404"), std::string::npos);
    EXPECT_NE(log[1].find("POST /authorize 404"), std::string::npos);
    EXPECT_NE(log[3].find("POST /Report 200 merchant parameters for KOVRA-0001"), std::string::npos);
}

// A stop signal right after the ready line must not be lost.
TEST(LifecycleTest, StopsCleanlyRightAfterItIsReady) {
    KVRTempDirectory directory;
    for (int round = 0; round < 3; ++round) {
        SimSession session({}, directory.path());
        EXPECT_EQ(session.stop(), 0) << "round " << round;
    }
    EXPECT_EQ(directory.read("requests.log"), "") << "something was logged without a request";
}

TEST(LifecycleTest, MerchantFileReplacesTheDefaults) {
    KVRTempDirectory directory;
    const std::string file = directory.file("merchants.json");
    std::ofstream(file) << R"({"LOJA-7": {"saleAffiliationKey": "7777-0007", "companyName": "Loja Sete",
        "documentNumber": "11.222.333/0001-81", "address": {"city": "Recife", "street": "Rua da Aurora",
        "district": "PE", "doorNumber": "7", "neighborhood": "Boa Vista", "zipCode": "50050-000",
        "complement": ""}}})";
    SimSession session({"--merchants", file});

    HttpReply own = session.client().postXml("/Report", statusReportForKovraCode("LOJA-7"));
    EXPECT_EQ(valueAt(own.body, "/Document/AccptrCfgtnUpd/AccptrCfgtn/DataSet/Cntt/MrchntParams/Sak"), "7777-0007");
    HttpReply builtIn = session.client().postXml("/Report", statusReportForKovraCode("KOVRA-0001"));
    EXPECT_TRUE(hasNode(builtIn.body, "/Document/AccptrRjctn"));
}

TEST(LifecycleTest, UnusableMerchantFileOrMissingPortStopsAtStart) {
    KVRTempDirectory directory;
    const std::string file = directory.file("merchants.json");
    std::ofstream(file) << R"({"A": {"saleAffiliationKey": "1-2"}})";
    const std::vector<std::pair<std::vector<std::string>, const char*>> cases{
        {{"--port", "0", "--state", directory.file("state"), "--merchants", file}, "companyName"},
        {{"--state", directory.file("state")}, "--port"}};
    for (const auto& [arguments, reason] : cases) {
        auto result = runSim(arguments);
        EXPECT_NE(result.exitCode, 0) << reason;
        EXPECT_NE(result.err.find(reason), std::string::npos) << result.err;
    }
}

} // namespace

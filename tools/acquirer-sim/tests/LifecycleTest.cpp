// Start, certificates, command line, routing and the request log.
#include "Messages.h"
#include "SimSession.h"

#include <gtest/gtest.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <fstream>
#include <memory>
#include <regex>
#include <sstream>

namespace {

std::string readFile(const std::filesystem::path& file) {
    std::ifstream in(file);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

using CertPtr = std::unique_ptr<X509, decltype(&X509_free)>;

CertPtr loadCertificate(const std::filesystem::path& file) {
    FILE* in = fopen(file.c_str(), "r");
    X509* cert = in != nullptr ? PEM_read_X509(in, nullptr, nullptr, nullptr) : nullptr;
    if (in != nullptr) {
        fclose(in);
    }
    return CertPtr(cert, X509_free);
}

TEST(LifecycleTest, ReadyLinesNameTheUrlAndTheCaFile) {
    SimSession session;
    EXPECT_TRUE(std::regex_match(session.process().readyLine(),
                                 std::regex(R"(kovra-acquirer-sim ready at https://127\.0\.0\.1:[1-9]\d*)")))
        << session.process().readyLine();
    const std::filesystem::path ca = session.process().caFile();
    EXPECT_TRUE(ca.is_absolute()) << ca;
    EXPECT_EQ(ca, std::filesystem::canonical(session.process().stateDirectory()) / "ca.pem");
    EXPECT_NE(readFile(ca).find("BEGIN CERTIFICATE"), std::string::npos);
}

TEST(LifecycleTest, ServerCertificateIsIssuedByTheCaForTheLoopbackNames) {
    SimSession session;
    const std::filesystem::path state = session.process().stateDirectory();
    CertPtr ca = loadCertificate(state / "ca.pem");
    CertPtr server = loadCertificate(state / "server.pem");
    ASSERT_TRUE(ca && server);

    EXPECT_EQ(X509_verify(server.get(), X509_get0_pubkey(ca.get())), 1);
    EXPECT_EQ(X509_check_ip_asc(server.get(), "127.0.0.1", 0), 1);
    EXPECT_EQ(X509_check_host(server.get(), "localhost", 0, 0, nullptr), 1);
    EXPECT_EQ(X509_check_ca(ca.get()), 1);
    EXPECT_EQ(X509_check_ca(server.get()), 0);

    // Both names verify over the wire with the CA file and nothing else.
    std::string port = session.process().baseUrl().substr(session.process().baseUrl().rfind(':'));
    for (const std::string host : {"127.0.0.1", "localhost"}) {
        HttpsClient client("https://" + host + port, session.process().caFile());
        EXPECT_EQ(client.send("GET", "/", "", {}).status, 404) << host;
    }
    HttpsClient untrusting(session.process().baseUrl(), "/dev/null");
    EXPECT_NE(untrusting.send("GET", "/", "", {}).error, CURLE_OK);
}

TEST(LifecycleTest, RestartReusesTheCertificatesAndStopsCleanly) {
    TempDir directory;
    std::string caBefore;
    std::string serverBefore;
    {
        SimProcess first(directory.path());
        caBefore = readFile(first.caFile());
        serverBefore = readFile(directory.path() / "server.pem");
        EXPECT_EQ(first.stop(), 0);
    }
    SimProcess second(directory.path());
    EXPECT_EQ(readFile(second.caFile()), caBefore);
    EXPECT_EQ(readFile(directory.path() / "server.pem"), serverBefore);
    HttpsClient client(second.baseUrl(), second.caFile());
    EXPECT_EQ(client.postXml("/Report", statusReportForKovraCode("KOVRA-0002")).status, 200);
    EXPECT_EQ(second.stop(), 0);

    SimProcess::Finished printed = SimProcess::runToCompletion({"--print-ca", "--state", directory.path().string()});
    EXPECT_EQ(printed.status, 0);
    EXPECT_EQ(printed.output, second.caFile() + "\n");
    EXPECT_EQ(readFile(second.caFile()), caBefore);
}

TEST(LifecycleTest, DamagedServerCertificateIsReissuedUnderTheSameCa) {
    TempDir directory;
    SimProcess::runToCompletion({"--print-ca", "--state", directory.path().string()});
    const std::string ca = readFile(directory.path() / "ca.pem");
    std::ofstream(directory.path() / "server.pem") << "garbage";

    SimProcess process(directory.path());
    EXPECT_EQ(readFile(process.caFile()), ca);
    HttpsClient client(process.baseUrl(), process.caFile());
    EXPECT_EQ(client.send("GET", "/", "", {}).status, 404);
}

TEST(LifecycleTest, EveryRequestIsLoggedAndUnknownRoutesAnswer404) {
    SimSession session;
    HttpsClient& client = session.client();
    EXPECT_EQ(client.send("GET", "/Authorize", "", {}).status, 404);
    EXPECT_EQ(client.send("POST", "/authorize", "x", {"Content-Type: text/xml", "Accept:", "Expect:"}).status, 404);
    EXPECT_EQ(client.send("PUT", "/send", "{}", {}).status, 404);
    EXPECT_EQ(client.postXml("/Report", statusReportForKovraCode("KOVRA-0001")).status, 200);

    std::vector<std::string> log = session.process().requestLog();
    ASSERT_EQ(log.size(), 4u);
    const std::regex line(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z (GET|POST|PUT) /\S* \d{3} .+)");
    for (const std::string& entry : log) {
        EXPECT_TRUE(std::regex_match(entry, line)) << entry;
    }
    EXPECT_NE(log[0].find("GET /Authorize 404"), std::string::npos);
    EXPECT_NE(log[1].find("POST /authorize 404"), std::string::npos);
    EXPECT_NE(log[3].find("POST /Report 200 merchant parameters for KOVRA-0001"), std::string::npos);
}

// A stop signal right after the ready line must not be lost.
TEST(LifecycleTest, StopsCleanlyRightAfterItIsReady) {
    TempDir directory;
    for (int round = 0; round < 3; ++round) {
        SimProcess process(directory.path());
        EXPECT_EQ(process.stop(), 0) << "round " << round;
    }
    std::ifstream log(directory.path() / "requests.log");
    EXPECT_EQ(log.peek(), std::ifstream::traits_type::eof()) << "something was logged without a request";
}

TEST(LifecycleTest, MerchantFileReplacesTheDefaults) {
    TempDir directory;
    const std::filesystem::path file = directory.path() / "merchants.json";
    std::ofstream(file) << R"({"LOJA-7": {"saleAffiliationKey": "7777-0007", "companyName": "Loja Sete",
        "documentNumber": "11.222.333/0001-81", "address": {"city": "Recife", "street": "Rua da Aurora",
        "district": "PE", "doorNumber": "7", "neighborhood": "Boa Vista", "zipCode": "50050-000",
        "complement": ""}}})";
    SimSession session({"--merchants", file.string()});

    HttpReply own = session.client().postXml("/Report", statusReportForKovraCode("LOJA-7"));
    EXPECT_EQ(valueAt(own.body, "/Document/AccptrCfgtnUpd/AccptrCfgtn/DataSet/Cntt/MrchntParams/Sak"), "7777-0007");
    HttpReply builtIn = session.client().postXml("/Report", statusReportForKovraCode("KOVRA-0001"));
    EXPECT_TRUE(hasNode(builtIn.body, "/Document/AccptrRjctn"));
}

TEST(LifecycleTest, UnusableMerchantFileOrMissingPortStopsAtStart) {
    TempDir directory;
    const std::filesystem::path file = directory.path() / "merchants.json";
    std::ofstream(file) << R"({"A": {"saleAffiliationKey": "1-2"}})";
    SimProcess::Finished bad = SimProcess::runToCompletion(
        {"--port", "0", "--state", (directory.path() / "state").string(), "--merchants", file.string()});
    EXPECT_NE(bad.status, 0);
    EXPECT_NE(bad.errors.find("companyName"), std::string::npos) << bad.errors;

    SimProcess::Finished noPort = SimProcess::runToCompletion({"--state", (directory.path() / "state").string()});
    EXPECT_NE(noPort.status, 0);
}

TEST(LifecycleTest, HelpDocumentsTheAmountRules) {
    SimProcess::Finished help = SimProcess::runToCompletion({"--help"});
    EXPECT_EQ(help.status, 0);
    for (const char* rule : {"..51", "..52", "..53", "..54", "..55", "--auth-delay", "--print-ca", "--merchants"}) {
        EXPECT_NE(help.output.find(rule), std::string::npos) << rule;
    }
}

} // namespace

#include "KVRSimTestBench.h"
#include "KVRSimTestRequests.h"
#include "testing/KVRAbecsWire.h"

#include <gtest/gtest.h>


namespace {

using R = KVRSimTestRequests;

// A start that cannot work stops before the ready line, with the reason on
// standard error: 2 for the command line and the scenario, 1 for saved state.
TEST(KVRSimCommandLine, UnusableStartsStopWithTheReason) {
    KVRTempDirectory place;
    const std::pair<const char*, const char*> scenarios[] = {
        {"cards.json", R"({"cards": ["chip-amex"]})"},
        {"key.json", R"({"faults": [{"command": "GCR", "stauts": 13}]})"},
        {"command.json", R"({"faults": [{"status": 13}]})"},
        {"hangup.json", R"({"faults": [{"command": "GOC", "hangup": "later"}]})"},
        {"top.json", R"({"fault": []})"},
        {"text.json", "not json"}};
    for (const auto& [name, text] : scenarios) place.write(name, text);
    std::filesystem::create_directories(place.file("state"));
    place.write("state/pinpad-tables.json", R"({"stamp":"2014053065","aid":["1too short"],"capk":[]})");
    struct Case {
        std::vector<std::string> arguments;
        int status;
        std::string reason;
    };
    const Case cases[] = {
        {{"--bogus"}, 2, "kovra-pinpad-sim: "},
        {{"--tcp"}, 2, "kovra-pinpad-sim: "},
        {{"--tcp", "70000"}, 2, "kovra-pinpad-sim: "},
        {{"--tcp", "0", "--pty"}, 2, "kovra-pinpad-sim: "},
        {{"--tcp", "0", "--link", "/tmp/x"}, 2, "kovra-pinpad-sim: "},
        {{"--card", "chip-amex"}, 2, "kovra-pinpad-sim: "},
        {{"--name", "A NAME OF MORE THAN TWENTY"}, 2, "kovra-pinpad-sim: "},
        {{"--fault", "{\"command\":\"GCR\",\"status\":1000}"}, 2, "kovra-pinpad-sim: "},
        {{"--tcp", "0", "--scenario", place.file("cards.json")}, 2, "unknown card \"chip-amex\""},
        {{"--tcp", "0", "--scenario", place.file("key.json")}, 2, "unknown fault key \"stauts\""},
        {{"--tcp", "0", "--scenario", place.file("command.json")}, 2, "\"command\""},
        {{"--tcp", "0", "--scenario", place.file("hangup.json")}, 2, "\"hangup\""},
        {{"--tcp", "0", "--scenario", place.file("top.json")}, 2, "unknown scenario key \"fault\""},
        {{"--tcp", "0", "--scenario", place.file("text.json")}, 2, "JSON object"},
        {{"--tcp", "0", "--state", place.file("state")}, 1, "pinpad-tables.json"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.arguments.back());
        auto result = runSim(c.arguments);
        EXPECT_EQ(result.exitCode, c.status);
        EXPECT_EQ(result.out, "") << "no ready line";
        EXPECT_NE(result.err.find(c.reason), std::string::npos) << result.err;
    }
}

TEST(KVRSimCommandLine, GinReportsTheIdentityInItsFieldWidths) {
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{}, "KOVRA PINPAD SIM    KVR-SIM-100        0KVRSIM "},
        {{"--name", "LOJA 1", "--model", "PP-9", "--serial", "SN42", "--sover", "2.0", "--manver", "M1"},
         R::left("LOJA 1", 20) + R::left("PP-9", 19) + "0" + R::left("2.0", 20) + "1.08" + R::left("M1", 16) +
             R::left("SN42", 20)}};
    for (const auto& [arguments, identity] : cases) {
        KVRSimTestBench bench(arguments);
        auto reply = bench.client().exchange("GIN00200");
        ASSERT_EQ(reply.size(), 9u + 100u);
        EXPECT_EQ(reply.substr(0, 9 + identity.size()), "GIN000100" + identity);
        if (!arguments.empty()) continue;
        EXPECT_EQ(reply.substr(69), "1.08KVRMNG 1.0.0    KVR0000000000001234 ");
    }
}

TEST(KVRSimCommandLine, LogsRecordRequestsWithCardDataMaskedAndEveryDisplayStateInUtf8) {
    const std::string pan = "5555555555554444";
    for (bool clear : {false, true}) {
        SCOPED_TRACE(clear ? "--log-card-data" : "masked");
        KVRTempDirectory logs;
        std::vector<std::string> arguments{"--command-log", logs.file("commands.log"), "--display-log",
                                           logs.file("display.log")};
        if (clear) arguments.push_back("--log-card-data");
        KVRSimTestBench bench(arguments);
        auto& host = bench.client();
        host.exchange(R::display("DSP", "Processando..."));
        // A PIN entry: a PIN block in hex and a key serial number in digits.
        auto pin = host.exchange(R::gpn(pan, "SENHA:"));
        ASSERT_EQ(pin.substr(0, 9), "GPN000036");
        EXPECT_EQ(pin.substr(9, 16).find_first_not_of("0123456789ABCDEF"), std::string::npos) << pin;
        EXPECT_EQ(pin.substr(25).find_first_not_of("0123456789"), std::string::npos) << pin;
        for (const char* refused : {"GPN00555555", "DSP005Hello"}) {
            host.send(KVRAbecsWire::frame(refused));
            EXPECT_EQ(host.readByte(), KVRAbecsWire::kNak);
        }
        host.exchange("RMC032    OPERA\xC7\xC3O       FINALIZADA   ");
        EXPECT_EQ(logs.read("commands.log"),
                  R::display("DSP", "Processando...") + "\n" +
                      R::gpn(clear ? pan : "555555******4444", "SENHA:") + "\n" +
                      (clear ? "GPN00555555" : "GPN********") + "\nDSP005Hello\n" +
                      "RMC032    OPERA\xC7\xC3O       FINALIZADA   \n");
        EXPECT_EQ(logs.read("display.log"),
                  "Processando...  |                \n"
                  "SENHA:          |                \n"
                  "    OPERAÇÃO    |   FINALIZADA   \n");
    }
}

}  // namespace

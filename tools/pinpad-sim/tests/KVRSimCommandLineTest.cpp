#include "KVRSimTestBench.h"
#include "KVRSimTestRequests.h"
#include "KVRSimTestWire.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

using R = KVRSimTestRequests;

TEST(KVRSimCommandLine, HelpDescribesEndpointsLogsAndScenarios) {
    KVRSimTestDirectory place;
    auto [status, output] = KVRSimTestProcess::run({"--help"}, place.file("stderr.txt"));
    EXPECT_EQ(status, 0);
    for (const char* topic : {"--pty", "--link", "--tcp", "--state", "--card", "--scenario", "--display-log",
                              "--command-log", "--log-card-data", "--strict-abecs", "--version", "--name", "--model", "--serial", "--sover", "--manver", "ready on",
                              "chip-visa", "stripe-chip", "\"cards\"", "\"ntm\"", "\"split\"", "\"stray_syn\"",
                              "\"bad_crc\"", "\"nak\"", "\"silence\"", "\"hangup\""}) {
        EXPECT_NE(output.find(topic), std::string::npos) << topic;
    }
}

TEST(KVRSimCommandLine, VersionIsPrintedAlone) {
    KVRSimTestDirectory place;
    auto [status, output] = KVRSimTestProcess::run({"--version"}, place.file("stderr.txt"));
    EXPECT_EQ(status, 0);
    EXPECT_EQ(output.rfind("kovra-pinpad-sim ", 0), 0u) << output;
    EXPECT_NE(output.find_first_of("0123456789"), std::string::npos) << output;
}

TEST(KVRSimCommandLine, UnusableCommandLinesExitWithTwo) {
    const std::vector<std::string> mistakes[] = {
        {"--bogus"},
        {"--tcp"},
        {"--tcp", "70000"},
        {"--tcp", "0", "--pty"},
        {"--tcp", "0", "--link", "/tmp/x"},
        {"--card", "chip-amex"},
        {"--name", "A NAME OF MORE THAN TWENTY"},
        {"--fault", "{\"command\":\"GCR\",\"status\":1000}"},
    };
    for (const auto& arguments : mistakes) {
        SCOPED_TRACE(arguments[0]);
        KVRSimTestDirectory place;
        auto [status, output] = KVRSimTestProcess::run(arguments, place.file("stderr.txt"));
        EXPECT_EQ(status, 2);
        EXPECT_EQ(output, "");
        EXPECT_NE(place.read("stderr.txt").find("kovra-pinpad-sim: "), std::string::npos);
    }
}

TEST(KVRSimCommandLine, IdentityOptionsFillTheGinFields) {
    KVRSimTestBench bench({"--name", "LOJA 1", "--model", "PP-9", "--serial", "SN42", "--sover", "2.0", "--manver",
                           "M1"});
    auto reply = bench.client().exchange("GIN00200");
    EXPECT_EQ(reply.substr(9), R::left("LOJA 1", 20) + R::left("PP-9", 19) + "0" + R::left("2.0", 20) + "1.08" +
                                   R::left("M1", 16) + R::left("SN42", 20));
}

TEST(KVRSimCommandLine, LinkNamesTheTerminalUntilTheEmulatorStops) {
    KVRSimTestDirectory place;
    auto link = place.file("pinpad");
    KVRSimTestBench bench({"--pty", "--link", link}, KVRSimTestBench::Endpoint::Pty);
    EXPECT_EQ(bench.endpoint().rfind("/dev/pts/", 0), 0u) << "the ready line names the device, not the link";
    EXPECT_EQ(std::filesystem::read_symlink(link).string(), bench.endpoint());
    EXPECT_NE(bench.errors().find(link), std::string::npos) << "the link is reported";
    EXPECT_EQ(KVRSimTestClient(link).exchange("OPN000"), "OPN000");
    EXPECT_EQ(bench.process().terminate(), 0);
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::symlink_status(link)));
}

TEST(KVRSimCommandLine, LogsRecordRequestsWithCardDataMaskedAndEveryDisplayStateInUtf8) {
    const std::string pan = "5555555555554444";
    for (bool clear : {false, true}) {
        SCOPED_TRACE(clear ? "--log-card-data" : "masked");
        KVRSimTestDirectory logs;
        std::vector<std::string> arguments{"--command-log", logs.file("commands.log"), "--display-log",
                                           logs.file("display.log")};
        if (clear) arguments.push_back("--log-card-data");
        KVRSimTestBench bench(arguments);
        auto& host = bench.client();
        host.exchange(R::display("DSP", "Processando..."));
        host.exchange(R::gpn(pan, "SENHA:"));
        for (const char* refused : {"GPN00555555", "DSP005Hello"}) {
            host.send(KVRSimTestWire::frame(refused));
            EXPECT_EQ(host.readByte(), KVRSimTestWire::kNak);
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

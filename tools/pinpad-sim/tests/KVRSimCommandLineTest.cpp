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
                              "--command-log", "--name", "--model", "--serial", "--sover", "--manver", "ready on",
                              "chip-visa", "stripe-chip", "\"cards\"", "\"ntm\"", "\"split\"", "\"stray_syn\"",
                              "\"bad_crc\"", "\"silence\"", "\"hangup\""}) {
        EXPECT_NE(output.find(topic), std::string::npos) << topic;
    }
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

TEST(KVRSimCommandLine, LogsRecordRequestsAsReceivedAndEveryDisplayState) {
    KVRSimTestDirectory logs;
    KVRSimTestBench bench({"--command-log", logs.file("commands.log"), "--display-log", logs.file("display.log")});
    auto& host = bench.client();
    host.exchange(R::display("DSP", "Processando..."));
    host.exchange(R::display("RMC", R::left("TRANSACAO", 16) + "APROVADA"));
    host.send(KVRSimTestWire::frame("DSP005Hello"));
    EXPECT_EQ(host.readByte(), KVRSimTestWire::kNak);
    host.exchange(R::display("CLO", "KOVRA"));
    EXPECT_EQ(logs.read("commands.log"), R::display("DSP", "Processando...") + "\n" +
                                             R::display("RMC", R::left("TRANSACAO", 16) + "APROVADA") + "\n" +
                                             "DSP005Hello\n" + R::display("CLO", "KOVRA") + "\n");
    EXPECT_EQ(logs.read("display.log"),
              "Processando...  |                \n"
              "TRANSACAO       |APROVADA        \n"
              "KOVRA           |                \n");
}

}  // namespace

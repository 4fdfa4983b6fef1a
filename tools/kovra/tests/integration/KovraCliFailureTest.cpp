// Bad inputs and unhelpful peers: each ends with one clear line and exit code
// 1, or with Ctrl-C.
#include "KovraEmulatorBench.h"

#include "support/KVRTempDirectory.h"
#include "support/KVRWaitUntil.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;

const char* const kNoPinpad = "error 303: Connection to Pinpad not found.\n";

TEST(KovraCliFailureTest, DevicePathThatDoesNotExist) {
    KVRTempDirectory data;
    const std::vector<std::vector<std::string>> commands{
        {"connect"}, {"display", "OI"}, {"card-pan"}, {"tables", "load"}, {"list", "--card"}};
    for (const auto& command : commands) {
        std::vector<std::string> arguments{"--pinpad", data.file("no-such-tty")};
        arguments.insert(arguments.end(), command.begin(), command.end());
        auto result = runKovra(arguments, {"KOVRA_DATA_DIR=" + data.path()});
        EXPECT_EQ(result.exitCode, 1) << command.front();
        EXPECT_EQ(result.err, kNoPinpad) << command.front();
        EXPECT_EQ(result.out, "") << command.front();
    }
}

TEST(KovraCliFailureTest, UnreachableAcquirer) {
    KovraEmulatorBench::Options options;
    options.deadAcquirer = true;
    KovraEmulatorBench bench(options);
    // Enrolment reports a transport failure twice (the error, then an empty
    // reply); only the first is printed.
    auto enrolled = bench.run({"enroll", "KOVRA-0001"});
    EXPECT_EQ(enrolled.exitCode, 1);
    EXPECT_EQ(enrolled.err, "error -1004: Could not connect to the server.\n");
    auto mailed = bench.run({"feedback", "oi"});
    EXPECT_EQ(mailed.exitCode, 1);
    EXPECT_EQ(mailed.err, "error 103: Your message got an error.\n");
}

TEST(KovraCliFailureTest, PreconditionsOfTheLibrary) {
    KovraEmulatorBench bench;
    struct Case {
        std::vector<std::string> arguments;
        std::string error;
    };
    const std::vector<Case> cases{
        {{"sale", "--amount", "1000"}, "error 201: Kovracode activation is needed before running this operation.\n"},
        {{"tables", "download"}, "error 201: Kovracode activation is needed before running this operation.\n"},
        {{"sale", "--amount", "9"}, "error 203: Invalid value for transaction.\n"},
        {{"enroll", "KOVRA-9999"}, "error 306: Error reading response from server.\n"},
    };
    for (const auto& testCase : cases) {
        auto result = bench.run(testCase.arguments);
        EXPECT_EQ(result.exitCode, 1) << testCase.arguments.front();
        EXPECT_EQ(result.err, testCase.error);
    }
}

TEST(KovraCliFailureTest, ReferenceThatDoesNotExist) {
    KovraEmulatorBench bench;
    ASSERT_EQ(bench.run({"enroll", "KOVRA-0001"}).exitCode, 0);
    for (const auto& arguments : std::vector<std::vector<std::string>>{
             {"cancel", "NOPE"}, {"receipt", "NOPE", "--to", "a@example.com"}, {"--json", "cancel", "NOPE"}}) {
        auto result = bench.run(arguments);
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.err, "kovra: no stored transaction has the reference NOPE\n");
        EXPECT_EQ(result.out, "");
    }
    EXPECT_TRUE(bench.outbox().empty());
}

class KovraCliSilentPinpadTest : public ::testing::Test {
protected:
    KovraCliSilentPinpadTest() : bench_(silentDisplay()) {}

    static KovraEmulatorBench::Options silentDisplay() {
        KovraEmulatorBench::Options options;
        options.pinpadFaults = {{{"command", "DSP"}, {"silence", true}}};
        return options;
    }

    // The emulator logs a request as it takes it.
    bool displayReceived() const {
        return kvrWaitUntil([this] {
            for (const auto& command : bench_.pinpadCommands())
                if (command.rfind("DSP", 0) == 0) return true;
            return false;
        });
    }

    KovraEmulatorBench bench_;
};

TEST_F(KovraCliSilentPinpadTest, ReadTimeOutEndsTheCommand) {
    auto result = bench_.run({"--read-timeout", "0.3", "display", "OI"});
    EXPECT_EQ(result.exitCode, 1);
    ASSERT_EQ(result.errorLines().size(), 1u) << result.err;
    EXPECT_EQ(result.err.rfind("error ", 0), 0u) << result.err;
}

TEST_F(KovraCliSilentPinpadTest, WithoutTimeOutCtrlCEndsTheWait) {
    KovraCliProcess waiting({"display", "OI"}, bench_.environment());
    ASSERT_TRUE(displayReceived());
    waiting.interrupt();
    auto result = waiting.finish(10s);
    EXPECT_EQ(result.exitCode, 130);
    EXPECT_NE(result.err.find("kovra: interrupted"), std::string::npos) << result.err;
}

}  // namespace

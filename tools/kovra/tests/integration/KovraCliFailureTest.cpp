// Bad inputs and unhelpful peers: each ends with one clear line and the exit
// code of its kind (2 refused, 3 technical), or with Ctrl-C.
#include "KovraEmulatorBench.h"

#include "testing/KVRTempDirectory.h"
#include "testing/KVRWaitUntil.h"

#include <kovra/KVRErrors.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <fstream>

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
        EXPECT_EQ(result.exitCode, 3) << command.front();
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
    EXPECT_EQ(enrolled.exitCode, 3);
    EXPECT_EQ(enrolled.err, "error -1004: Could not connect to the server.\n");
    auto mailed = bench.run({"feedback", "oi"});
    EXPECT_EQ(mailed.exitCode, 3);
    EXPECT_EQ(mailed.err, "error 103: Your message got an error.\n");
}

// The exit code says what kind of failure it was; --json gives the same
// error as a document on standard output.
TEST(KovraCliFailureTest, ExitCodeAndJsonErrorFollowTheKindOfFailure) {
    KovraEmulatorBench bench;
    const std::string library = KVRErrors::domain();
    struct Case {
        std::vector<std::string> arguments;
        int exitCode;
        std::string domain;
        long code;
        std::string message;
    };
    const std::vector<Case> cases{
        {{"sale", "--amount", "1000"}, 2, library, 201, "Kovracode activation is needed before running this operation."},
        {{"tables", "download"}, 2, library, 201, "Kovracode activation is needed before running this operation."},
        {{"sale", "--amount", "9"}, 2, library, 203, "Invalid value for transaction."},
        {{"cancel", "NOPE"}, 2, "usage", 2, "no stored transaction has the reference NOPE"},
        {{"receipt", "NOPE", "--to", "a@example.com"}, 2, "usage", 2, "no stored transaction has the reference NOPE"},
        {{"enroll", "KOVRA-9999"}, 3, library, 306, "Error reading response from server."},
    };
    for (const auto& testCase : cases) {
        SCOPED_TRACE(testCase.arguments.front());
        auto result = bench.run(testCase.arguments);
        EXPECT_EQ(result.exitCode, testCase.exitCode);
        EXPECT_EQ(result.err, (testCase.domain == "usage" ? "kovra: " : "error " + std::to_string(testCase.code) + ": ") +
                                  testCase.message + "\n");
        auto arguments = testCase.arguments;
        arguments.insert(arguments.begin(), "--json");
        auto json = bench.run(arguments);
        EXPECT_EQ(json.exitCode, testCase.exitCode);
        EXPECT_EQ(json.err, "");
        EXPECT_EQ(nlohmann::json::parse(json.out, nullptr, false),
                  (nlohmann::json{{"error", {{"code", testCase.code}, {"domain", testCase.domain},
                                             {"message", testCase.message}}}}))
            << json.out;
    }
}

// A PIN pad that never answers: the read time-out ends the command, and
// without one Ctrl-C ends the wait.
TEST(KovraCliFailureTest, SilentPinpadEndsByTimeOutOrCtrlC) {
    KovraEmulatorBench::Options options;
    options.pinpadFaults = {{{"command", "DSP"}, {"silence", true}}};
    KovraEmulatorBench bench(options);
    auto timedOut = bench.run({"--read-timeout", "0.3", "display", "OI"});
    EXPECT_EQ(timedOut.exitCode, 3);
    ASSERT_EQ(timedOut.errorLines().size(), 1u) << timedOut.err;
    EXPECT_EQ(timedOut.err.rfind("error ", 0), 0u) << timedOut.err;

    size_t before = bench.pinpadCommands().size();
    auto waiting = startKovra({"display", "OI"}, bench.environment());
    // The emulator logs a request as it takes it.
    ASSERT_TRUE(kvrWaitUntil([&] {
        auto commands = bench.pinpadCommands();
        return commands.size() > before && commands.back().rfind("DSP", 0) == 0;
    }));
    waiting->signal(SIGINT);
    auto interrupted = waiting->finish(10s);
    EXPECT_EQ(interrupted.exitCode, 130);
    EXPECT_NE(interrupted.err.find("kovra: interrupted"), std::string::npos) << interrupted.err;
}

// Interrupted while the card has yet to hear the approval: the tool waits
// until the journal has settled the sale (here the PIN pad's silence makes it
// a reversal) and then leaves with 130; nothing is left approved or owed. The
// interrupt aborts the PIN pad command, so the card ends as one that did not
// take the approval: declined, and the approval reversed.
TEST(KovraCliInterruptTest, AnInterruptedSaleLeavesNothingApprovedOrOwed) {
    KovraEmulatorBench::Options options;
    options.pinpadFaults = {{{"command", "FNC"}, {"silence", true}}};
    KovraEmulatorBench bench(options);
    ASSERT_EQ(bench.run({"enroll", "KOVRA-0001"}).exitCode, 0);
    ASSERT_EQ(bench.run({"tables", "download"}).exitCode, 0);
    for (int signal : {SIGINT, SIGTERM, SIGHUP}) {
        SCOPED_TRACE(signal);
        size_t before = bench.pinpadCommands().size();
        auto sale = startKovra({"--read-timeout", "2", "sale", "--amount", "1000"}, bench.environment());
        ASSERT_TRUE(kvrWaitUntil([&] {
            auto commands = bench.pinpadCommands();
            return std::any_of(commands.begin() + std::min(before, commands.size()), commands.end(),
                               [](const std::string& command) { return command.rfind("FNC", 0) == 0; });
        }));
        sale->signal(signal);
        auto result = sale->finish(30s);
        EXPECT_EQ(result.exitCode, 130) << result.err;
        auto last = nlohmann::json::parse(bench.run({"--json", "last"}).out);
        EXPECT_EQ(last["state"], "reversed") << last.dump(2);
        EXPECT_EQ(last["transaction"]["status"], 1) << last.dump(2);
        EXPECT_EQ(bench.run({"pending"}).out, "nothing is owed to the acquirer\n");
    }
}

// A store that cannot be read is moved aside: the commands that show the
// history say so, now with a failure and afterwards with a warning.
TEST(KovraCliFailureTest, UnreadableStoreIsReported) {
    KovraEmulatorBench bench;
    ASSERT_EQ(bench.run({"merchants"}).exitCode, 0);
    std::string store = bench.dataDirectory() + "/Library/br.com.kovra.KovraSDK/KovraSDK.sqlite";
    std::filesystem::remove(store + "-wal");
    std::ofstream(store, std::ios::trunc) << std::string(5000, 'x');
    auto found = bench.run({"list"});
    EXPECT_EQ(found.exitCode, 3);
    EXPECT_NE(found.err.find("could not be read and was moved to " + store + ".corrupt-"), std::string::npos)
        << found.err;
    auto later = bench.run({"list"});
    EXPECT_EQ(later.exitCode, 0);
    EXPECT_EQ(later.out, "no transactions\n");
    EXPECT_NE(later.err.find("warning: an unreadable store was set aside as " + store + ".corrupt-"), std::string::npos)
        << later.err;
}

}  // namespace

// `kovra demo` from a clean machine: both emulators started and stopped by it.
#include "KovraEmulatorBench.h"

#include "KVRSimCard.h"
#include "testing/KVRFiles.h"
#include "testing/KVRTempDirectory.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <regex>
#include <set>

namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

// Processes whose command line mentions the text (the emulators name their
// work directory in their arguments).
int processesMentioning(const std::string& text) {
    int count = 0;
    for (const auto& entry : fs::directory_iterator("/proc")) {
        if (KVRFiles::read(entry.path() / "cmdline").find(text) != std::string::npos) ++count;
    }
    return count;
}

// What the run left behind: every file under the kept directory, then its output.
std::vector<std::pair<std::string, std::string>> everythingWritten(const std::string& kept, const KVRProcess::Result& result) {
    std::vector<std::pair<std::string, std::string>> texts;
    for (const auto& entry : fs::recursive_directory_iterator(kept))
        if (entry.is_regular_file()) texts.emplace_back(entry.path().string(), KVRFiles::read(entry.path()));
    texts.emplace_back("standard output", result.out);
    texts.emplace_back("standard error", result.err);
    return texts;
}

// No full PAN or track of the emulator's cards anywhere, and the card data
// elements of the logged XML hold asterisks only (PIN blocks and key serial
// numbers are random or counted, so they are checked by their place).
void expectNoCardDataIn(const std::vector<std::pair<std::string, std::string>>& texts) {
    std::vector<std::string> secrets = {"9999012345"};  // the emulator's base key serial number
    for (const auto& name : KVRSimCard::names()) {
        auto card = *KVRSimCard::named(name);
        secrets.insert(secrets.end(), {card.pan, card.secondTrack().substr(card.pan.size()),
                                       card.firstTrack().substr(1 + card.pan.size())});
    }
    const std::regex cardElement("<(PAN|TrckVal|NcrptdData|NcrptdKey|DerivtnId)>([^<]*)<");
    for (const auto& [where, text] : texts) {
        for (const auto& secret : secrets) EXPECT_EQ(text.find(secret), std::string::npos) << secret << " in " << where;
        for (std::sregex_iterator it(text.begin(), text.end(), cardElement), end; it != end; ++it) {
            std::string value = (*it)[2];
            size_t clear = (*it)[1] == "PAN" ? 10 : 0;
            EXPECT_LE(value.size() - std::count(value.begin(), value.end(), '*'), clear) << (*it)[0] << " in " << where;
        }
    }
}

// The removal of the temporary directory is the one an interrupt runs too.
TEST(KovraDemoTest, RunsAMerchantsDayKeptForLaterCommandsWithoutCardData) {
    KVRTempDirectory temporary;
    std::string kept = temporary.file("demo");
    auto result = runKovra({"demo", "--pause", "0", "--keep", kept, "--verbose"}, {}, 120s);
    ASSERT_EQ(result.exitCode, 0) << result.out << result.err;
    for (const char* expected : {
             "[1/9] Enrol the merchant with KovraCode KOVRA-0001",
             "the PIN pad reported missing tables",
             "the PIN pad shows \"TRANSACAO / APROVADA\"",
             "declined as expected: error 211: Your transaction was rejected by Authorizer.",
             "card                **** 4444",
             "status now: Transação Cancelada",
             "\"template\": \"void_transaction\"",
             "sales           3: 2 approved, 1 declined; 1 cancelled",
             "the write pause of 0 s after each cost 0 s",
         }) {
        EXPECT_NE(result.out.find(expected), std::string::npos) << expected << "\n" << result.out;
    }
    EXPECT_EQ(result.out.find("FAILED"), std::string::npos) << result.out;
    EXPECT_EQ(processesMentioning(kept), 0);
    expectNoCardDataIn(everythingWritten(kept, result));

    // The pause line counts the requests the PIN pad emulator logged.
    auto log = KVRFiles::read(kept + "/pinpad-commands.log");
    auto commands = std::count(log.begin(), log.end(), '\n');
    EXPECT_NE(result.out.find("PIN pad         " + std::to_string(commands) + " commands"), std::string::npos)
        << result.out;

    auto listed = runKovra({"--info", kept + "/Info.plist", "--data-dir", kept + "/data", "--json", "list"});
    ASSERT_EQ(listed.exitCode, 0) << listed.err;
    std::multiset<int> statuses;
    for (const auto& transaction : nlohmann::json::parse(listed.out)) statuses.insert(transaction["status"].get<int>());
    EXPECT_EQ(statuses, (std::multiset<int>{1, 2, 5}));

    auto again = runKovra({"demo", "--keep", kept});
    EXPECT_EQ(again.exitCode, 2);
    EXPECT_EQ(again.err, "kovra: --keep needs a new or empty directory; " + kept + " is not empty\n");
}

TEST(KovraDemoTest, CtrlCStopsTheEmulatorsAndRemovesItsDirectory) {
    KVRTempDirectory temporary;
    // With the library's write pause the sales take seconds: time to interrupt one.
    auto demo = startKovra({"demo", "--pause", "0.5"}, {"TMPDIR=" + temporary.path()});
    ASSERT_TRUE(demo->waitForLine("[4/9]", 60s));
    demo->signal(SIGINT);
    auto result = demo->finish(20s);
    EXPECT_EQ(result.exitCode, 130);
    EXPECT_NE(result.err.find("kovra: interrupted"), std::string::npos) << result.err;
    EXPECT_EQ(processesMentioning(temporary.path()), 0);
    EXPECT_TRUE(fs::is_empty(temporary.path()));
}

TEST(KovraDemoTest, MissingEmulatorsAreNamed) {
    KVRTempDirectory alone;
    std::string copy = alone.file("kovra");
    fs::copy_file(KOVRA_CLI_BINARY, copy);
    fs::permissions(copy, fs::perms::owner_all);
    auto result = runKovra({"demo"}, {"PATH=" + alone.path(), "TMPDIR=" + alone.path()}, 60s, copy);
    EXPECT_EQ(result.exitCode, 3);
    ASSERT_EQ(result.errorLines().size(), 1u) << result.err;
    EXPECT_EQ(result.err.rfind("kovra: cannot find kovra-acquirer-sim", 0), 0u) << result.err;
}

}  // namespace

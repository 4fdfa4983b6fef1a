// The command line itself: usage errors, the information dictionary and its
// template; none of these needs an emulator.
#include "KovraEmulatorBench.h"

#include "testing/KVRFiles.h"
#include "testing/KVRTempDirectory.h"

#include <kovra/KVRApplicationInfo.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <ostream>

namespace {

struct UsageCase {
    std::vector<std::string> arguments;
    std::string says;
};

void PrintTo(const UsageCase& usage, std::ostream* out) {
    *out << "kovra";
    for (const auto& argument : usage.arguments) *out << " " << argument;
}

class KovraCliUsageTest : public ::testing::TestWithParam<UsageCase> {};

// One plain line on standard error, or with --json (wherever it stands) the
// error document on standard output; exit code 2 either way.
TEST_P(KovraCliUsageTest, BadUsageIsOneLineAndExitCodeTwo) {
    KVRTempDirectory data;
    auto arguments = GetParam().arguments;
    auto result = runKovra(arguments, {"KOVRA_DATA_DIR=" + data.path()});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.out, "");
    ASSERT_EQ(result.errorLines().size(), 1u) << result.err;
    EXPECT_EQ(result.err.rfind("kovra: ", 0), 0u) << result.err;
    EXPECT_NE(result.err.find(GetParam().says), std::string::npos) << result.err;

    arguments.push_back("--json");
    auto json = runKovra(arguments, {"KOVRA_DATA_DIR=" + data.path()});
    EXPECT_EQ(json.exitCode, 2);
    EXPECT_EQ(json.err, "");
    auto document = nlohmann::json::parse(json.out, nullptr, false);
    ASSERT_TRUE(document.is_object()) << json.out;
    EXPECT_EQ(document["error"]["code"], 2);
    EXPECT_EQ(document["error"]["domain"], "usage");
    EXPECT_EQ(document["error"]["message"], result.err.substr(7, result.err.size() - 8)) << json.out;
}

INSTANTIATE_TEST_SUITE_P(
    Arguments, KovraCliUsageTest,
    ::testing::Values(UsageCase{{}, "subcommand is required"},
                      UsageCase{{"frob"}, "unknown command frob"},
                      UsageCase{{"tables", "frob"}, "unknown command frob"},
                      UsageCase{{"tables"}, "subcommand is required"},
                      UsageCase{{"--frob", "list"}, "--frob"},
                      UsageCase{{"list", "--frob"}, "--frob"},
                      UsageCase{{"sale"}, "--amount"},
                      UsageCase{{"sale", "--amount", "ten"}, "--amount"},
                      UsageCase{{"sale", "--amount", "1000", "--credit", "--debit"}, "excludes"},
                      UsageCase{{"sale", "--amount", "1000", "--instalments", "-1"}, "--instalments"},
                      UsageCase{{"sale", "--amount", "1000", "--debit", "--instalments", "2"}, "single payment"},
                      UsageCase{{"list", "--pan", "123"}, "last four digits"},
                      UsageCase{{"list", "--pan", "12a4"}, "last four digits"},
                      UsageCase{{"list", "--pan", "1234", "--card"}, "excludes"},
                      UsageCase{{"enroll"}, "KOVRACODE"},
                      UsageCase{{"display", "one", "two"}, "two"},
                      UsageCase{{"receipt", "ABC"}, "--to"},
                      UsageCase{{"receipt", "ABC", "--to", "not-an-email"}, "e-mail address"},
                      UsageCase{{"help", "tables", "frob"}, "unknown command tables frob"},
                      UsageCase{{"--read-timeout", "0", "connect"}, "--read-timeout: expected a number of seconds above 0"},
                      UsageCase{{"--pinpad", "/dev/ttyUSB0@abc", "connect"}, "one of 1200"},
                      UsageCase{{"--pinpad", "/dev/ttyUSB0@12345", "connect"}, "one of 1200"},
                      UsageCase{{"demo", "--pause", "-1"}, "--pause"}));

struct DictionaryCase {
    std::string name;
    std::string contents;  // empty: no file at all
    std::string says;
};

void PrintTo(const DictionaryCase& dictionary, std::ostream* out) { *out << dictionary.name; }

class KovraCliDictionaryTest : public ::testing::TestWithParam<DictionaryCase> {};

TEST_P(KovraCliDictionaryTest, UnusableDictionaryIsAUsageError) {
    KVRTempDirectory directory;
    std::string file = directory.file("Info.plist");
    if (!GetParam().contents.empty()) std::ofstream(file) << GetParam().contents;
    // Given as an option and through the environment.
    for (const auto& [arguments, environment] :
         std::vector<std::pair<std::vector<std::string>, std::vector<std::string>>>{
             {{"--info", file, "merchants"}, {}}, {{"merchants"}, {"KOVRA_INFO_PLIST=" + file}}}) {
        auto env = environment;
        env.push_back("KOVRA_DATA_DIR=" + directory.file("data"));
        auto result = runKovra(arguments, env);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_EQ(result.out, "");
        ASSERT_EQ(result.errorLines().size(), 1u) << result.err;
        EXPECT_EQ(result.err, "kovra: cannot use the information dictionary " + file + ": " + GetParam().says + "\n");
    }
}

INSTANTIATE_TEST_SUITE_P(
    Files, KovraCliDictionaryTest,
    ::testing::Values(DictionaryCase{"Missing", "", "no such file"},
                      DictionaryCase{"NotAPropertyList", "Kovra Pinpad = /dev/ttyACM0\n", "not a property list"},
                      DictionaryCase{"ArrayAtTheRoot",
                                     "<?xml version=\"1.0\"?><plist version=\"1.0\"><array><string>x</string>"
                                     "</array></plist>",
                                     "root is not a dictionary"},
                      DictionaryCase{"NulInsideAString",
                                     std::string("<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>Kovra "
                                                 "Pinpad</key><string>x") + '\0' + "y</string></dict></plist>",
                                     "NUL byte in an XML property list"}),
    [](const auto& info) { return info.param.name; });

TEST(KovraCliConfigTest, InitWritesTheCommentedTemplateOnceAndTheLibraryReadsIt) {
    KVRTempDirectory directory;
    std::string file = directory.file("Info.plist");
    auto written = runKovra({"config", "init", file});
    ASSERT_EQ(written.exitCode, 0) << written.err;
    std::string text = KVRFiles::read(file);
    EXPECT_EQ(text, KVRFiles::read(KOVRA_TEST_DATA_DIR "/../../examples/Info.plist"));
    EXPECT_EQ(runKovra({"config", "init"}).out, text);

    ASSERT_TRUE(KVRApplicationInfo::loadFromPlistFile(file));
    EXPECT_EQ(KVRApplicationInfo::stringForKey("Kovra Pinpad Link"), "abecs");
    EXPECT_EQ(KVRApplicationInfo::stringForKey("Kovra Pinned Public Keys"), std::nullopt) << "left in a comment";

    std::ofstream(file, std::ios::app) << "<!-- edited -->\n";
    auto again = runKovra({"config", "init", file});
    EXPECT_EQ(again.exitCode, 2);
    EXPECT_EQ(again.err, "kovra: " + file + " exists; it is left as it is\n");
    EXPECT_EQ(KVRFiles::read(file), text + "<!-- edited -->\n");
}

}  // namespace

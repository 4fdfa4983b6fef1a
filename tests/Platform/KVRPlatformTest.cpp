#include <gtest/gtest.h>

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRDirectories.h>
#include <kovra/KVRLoggingUtil.h>

#include "Platform/KVRPropertyList.h"
#include "testing/KVRTempDirectory.h"
#include "testing/KVRTestEnvironment.h"
#include "testing/KVRTestFixture.h"

#include <cstdlib>
#include <fstream>
#include <regex>

namespace {

// Restores the dictionary the test main installed.
class ApplicationInfoTest : public KVRTestFixture {
protected:
    KVRTempDirectory dir_;
};

TEST_F(ApplicationInfoTest, LoadsXmlAndBinaryPropertyLists) {
    KVRPropertyDictionary d = {{"Kovra Homologation", true},
                               {"CFBundleVersion", std::string("1.2.3")},
                               {"Kovra Pinpad Write Pause", 0.25},
                               {"Count", 7LL}};
    for (bool binary : {false, true}) {
        SCOPED_TRACE(binary ? "binary" : "xml");
        std::string path = dir_.file(binary ? "info.bplist" : "info.plist");
        ASSERT_TRUE(KVRPropertyList::writeDictionary(path, d, binary));
        ASSERT_TRUE(KVRApplicationInfo::loadFromPlistFile(path));
        EXPECT_TRUE(KVRApplicationInfo::boolForKey("Kovra Homologation"));
        EXPECT_EQ(KVRApplicationInfo::stringForKey("CFBundleVersion"), "1.2.3");
        EXPECT_DOUBLE_EQ(*KVRApplicationInfo::numberForKey("Kovra Pinpad Write Pause"), 0.25);
        EXPECT_EQ(KVRApplicationInfo::stringForKey("Count"), "7");
        EXPECT_FALSE(KVRApplicationInfo::boolForKey("Absent"));
    }
}

TEST_F(ApplicationInfoTest, MissingOrMalformedFileLeavesAnEmptyDictionaryAndLogs) {
    std::vector<std::string> lines;
    KVRLoggingUtil::setSink([&](const std::string& l) { lines.push_back(l); });
    std::ofstream(dir_.file("bad.plist")) << "<plist><dict><key>x</key>";
    std::ofstream(dir_.file("array.plist")) << "<?xml version=\"1.0\"?><plist version=\"1.0\"><array/></plist>";
    std::ofstream(dir_.file("nul.plist")) << std::string("<plist><dict><key>x</key><string>a") + '\0' + "b</string></dict></plist>";
    for (const char* name : {"missing.plist", "bad.plist", "array.plist", "nul.plist", ""}) {
        KVRApplicationInfo::setValue("Stale", true);
        EXPECT_FALSE(KVRApplicationInfo::loadFromPlistFile(name[0] ? dir_.file(name) : dir_.path()));
        EXPECT_TRUE(KVRApplicationInfo::dictionary().empty());
    }
    EXPECT_EQ(lines.size(), 5u);
}

TEST_F(ApplicationInfoTest, DebugLogPrintsOnlyWhenSwitchedOnConsoleAlways) {
    std::vector<std::string> lines;
    KVRLoggingUtil::setSink([&](const std::string& l) { lines.push_back(l); });
    KVRApplicationInfo::removeValue("Kovra Debugginho Developer");
    KVRLoggingUtil::printLog("hidden");
    KVRLoggingUtil::console("always");
    KVRApplicationInfo::setValue("Kovra Debugginho Developer", true);
    KVRLoggingUtil::printLog("shown");
    EXPECT_EQ(lines, (std::vector<std::string>{"always", "shown"}));
    EXPECT_FALSE(KVRLoggingUtil::logsCardData());

    // Without a sink the lines go to the system log, not onto the
    // application's standard error, unless KOVRA_LOG asks for that.
    KVRLoggingUtil::setSink({});
    for (const char* destination : {"syslog", "stderr"}) {
        ::setenv("KOVRA_LOG", destination, 1);
        ::testing::internal::CaptureStderr();
        KVRLoggingUtil::console("+++++++++ GIN00200");
        KVRLoggingUtil::printLog("debug line");
        std::string printed = ::testing::internal::GetCapturedStderr();
        EXPECT_EQ(printed, std::string(destination) == "stderr" ? "+++++++++ GIN00200\ndebug line\n" : "")
            << destination;
    }
    ::unsetenv("KOVRA_LOG");
}

TEST_F(ApplicationInfoTest, DirectoriesAreCreatedOnFirstUseAndVendorIdIsKept) {
    KVRDirectories::setDataDirectory(dir_.file("data"));
    std::string docs = KVRDirectories::documentsDirectory();
    EXPECT_EQ(docs, dir_.file("data/Documents"));
    EXPECT_TRUE(std::filesystem::is_directory(docs));
    std::string vendor = KVRDirectories::vendorIdentifier();
    EXPECT_TRUE(std::regex_match(vendor, std::regex("[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}")));
    EXPECT_EQ(KVRDirectories::vendorIdentifier(), vendor);

    std::ofstream(dir_.file("file")) << "x";
    KVRDirectories::setLibraryDirectory(dir_.file("file"));
    std::vector<std::string> lines;
    KVRLoggingUtil::setSink([&](const std::string& l) { lines.push_back(l); });
    EXPECT_EQ(KVRDirectories::libraryDirectory(), "");
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NE(lines[0].find("exists but is no directory"), std::string::npos);
}

}  // namespace

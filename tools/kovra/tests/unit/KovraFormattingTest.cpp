// The tool's own text helpers: what every command prints goes through them.
#include "KovraPlistWriter.h"
#include "KovraTableLoadProgress.h"
#include "KovraText.h"
#include "KovraTextTable.h"

#include "testing/KVRTempDirectory.h"

#include <kovra/KVRApplicationInfo.h>

#include <gtest/gtest.h>

namespace {

TEST(KovraTextTest, ReaisGroupThousandsAndKeepTwoDecimals) {
    const std::vector<std::pair<long long, std::string>> cases{
        {0, "R$ 0,00"},         {5, "R$ 0,05"},           {100, "R$ 1,00"},
        {12345, "R$ 123,45"},   {100000, "R$ 1.000,00"},  {123456789, "R$ 1.234.567,89"},
        {-5051, "-R$ 50,51"},
    };
    for (const auto& [cents, text] : cases) EXPECT_EQ(KovraText::reais(cents), text) << cents;
}

TEST(KovraTextTableTest, ColumnsAlignOnAccentedText) {
    KovraTextTable table({"TYPE", "STATUS"});
    table.addRow({"Crédito", "Transação Aprovada"});
    table.addRow({"Débito", "Negada"});
    auto lines = table.lines();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0], "TYPE     STATUS");
    EXPECT_EQ(lines[1], "Crédito  Transação Aprovada");
    EXPECT_EQ(lines[2], "Débito   Negada");
}

TEST(KovraTableLoadProgressTest, ReadsOnlyWellFormedCounts) {
    EXPECT_EQ(KovraTableLoadProgress::parse("3/10"), std::make_pair(3, 10));
    EXPECT_EQ(KovraTableLoadProgress::parse("10/10"), std::make_pair(10, 10));
    for (const char* text : {"", "3", "/10", "3/", "a/10", "3/10x", "11/10", "3/0", "-1/10"})
        EXPECT_FALSE(KovraTableLoadProgress::parse(text)) << text;
}

// The demo writes its dictionary with this and loads it back with the library.
TEST(KovraPlistWriterTest, WhatItWritesTheLibraryReadsBack) {
    KVRTempDirectory directory;
    KVRPropertyDictionary written{{"Kovra Pinpad", std::string("/tmp/a&b <c>/pinpad")},
                                  {"Kovra Pinpad Write Pause", 0.25},
                                  {"Kovra Debugginho Developer", true},
                                  {"Count", 3LL}};
    std::string file = directory.file("Info.plist");
    ASSERT_TRUE(KovraPlistWriter::write(file, written));
    ASSERT_TRUE(KVRApplicationInfo::loadFromPlistFile(file));
    EXPECT_EQ(KVRApplicationInfo::dictionary(), written);
}

}  // namespace

#include <gtest/gtest.h>

#include <kovra/KVRErrors.h>
#include <kovra/KVRException.h>

#include "Host/TBXML.h"
#include "Host/XMLWriter.h"
#include "Pinpad/Commands/KVRTlrCommandRequest.h"
#include "Tms/KVRAidTable.h"
#include "Tms/KVRCapkTable.h"
#include "Tms/KVRTableRecordText.h"
#include "Utils/KVRStringUtil.h"

namespace {

// Visa's public test key A000000003 index 94 (1984 bits); its checksum is the
// SHA-1 of RID, index, modulus and exponent.
const std::string kVisa94Modulus =
    "ACD2B12302EE644F3F835ABD1FC7A6F62CCE48FFEC622AA8EF062BEF6FB8BA8BC68BBF6AB5870EED579BC3973E121303D34841A796D6DCBC"
    "41DBF9E52C4609795C0CCF7EE86FA1D5CB041071ED2C51D2202F63F1156C58A92D38BC60BDF424E1776E2BC9648078A03B36FB554375FC53"
    "D57C73F5160EA59F3AFC5398EC7B67758D65C9BFF7828B6B82D4BE124A416AB7301914311EA462C19F771F31B3B57336000DFF732D3B83DE"
    "07052D730354D297BEC72871DCCF0E193F171ABA27EE464C6A97690943D59BDABB2A27EB71CEEBDAFA1176046478FD62FEC452D5CA393296"
    "530AA3F41927ADFE434A2DF2AE3054F8840657A26E0FC617";
const std::string kVisa94CheckSum = "C4A3C43CCF87327D136B804160E47D43B60E6E0F";

std::string capk(const std::string& exponent, const std::string& exponentLength, const std::string& modulus,
                 const std::string& modulusLength, const std::string& checkSum = kVisa94CheckSum) {
    std::string text = "<Capk><AcquirerNumber>4</AcquirerNumber><RecIdx>1</RecIdx><RID>A000000003</RID>"
                       "<CapkIdx>94</CapkIdx><DataSetVersion>12</DataSetVersion>";
    text += "<Exponent>" + exponent + "</Exponent><ExponentLen>" + exponentLength + "</ExponentLen>";
    text += "<Modulus>" + modulus + "</Modulus><ModulusLen>" + modulusLength + "</ModulusLen>";
    if (!checkSum.empty()) text += "<CheckSum>" + checkSum + "</CheckSum>";
    return text + "</Capk>";
}

const std::string kVisa94 = capk("03", "1", kVisa94Modulus, "248");

std::string table(const std::string& keys) { return "<CapkTable>" + keys + "</CapkTable>"; }

std::string onlyRecord(const std::string& key) {
    KVRCapkTable keys;
    auto commands = keys.readCapkString(table(key), nullptr);
    EXPECT_TRUE(commands && commands->size() == 1);
    if (!commands || commands->empty()) return {};
    std::string record = recordText(*commands->front());
    EXPECT_EQ(record.substr(0, 3), "611");
    return record.substr(3);
}

TEST(KVRCapkTable, Visa94RecordHasEveryFieldInPlace) {
    std::string record = onlyRecord(kVisa94);
    ASSERT_EQ(record.size(), 608u);
    const KVRRecordSlice layout[] = {
        {"table type", 0, 1, "2"},
        {"TAB_ACQ", 1, 2, "04"},
        {"TAB_RECIDX", 3, 2, "01"},
        {"T2_RID", 5, 10, "A000000003"},
        {"T2_CAPKIDX", 15, 2, "94"},
        {"T2_RUF1", 17, 2, "00"},
        {"exponent length", 19, 1, "1"},
        {"T2_EXP", 20, 6, "030000"},
        {"modulus length", 26, 3, "248"},
        {"T2_MOD", 29, 496, kVisa94Modulus},
        {"T2_CHKSTAT", 525, 1, "1"},
        {"T2_CHECKSUM", 526, 40, kVisa94CheckSum},
        {"T2_RUF2", 566, 42, std::string(42, '0')},
    };
    size_t next = 0;
    for (const KVRRecordSlice& s : layout) {
        EXPECT_EQ(s.offset, next) << s.field;
        ASSERT_EQ(s.expected.size(), s.width) << s.field;
        EXPECT_EQ(record.substr(s.offset, s.width), s.expected) << s.field;
        next = s.offset + s.width;
    }
    EXPECT_EQ(next, 608u);
}

TEST(KVRCapkTable, LengthsSelectTheLeadingDigitsAndZeroKeepsTheWholeText) {
    struct Case {
        const char* name;
        std::string key;
        size_t offset;
        std::string expected;
    } cases[] = {
        {"exponent length 0 keeps the text", capk("010001", "0", kVisa94Modulus, "248"), 19, "3010001"},
        {"exponent length 3", capk("010001", "3", kVisa94Modulus, "248"), 19, "3010001"},
        {"exponent cut to its length", capk("0300", "1", kVisa94Modulus, "248"), 19, "1030000"},
        {"modulus length 0 keeps the text", capk("03", "1", "ABCD", "0"), 26, "002ABCD" + std::string(492, '0')},
        {"modulus cut to its length", capk("03", "1", kVisa94Modulus, "2"), 26, "002ACD2" + std::string(492, '0')},
        {"no checksum", capk("03", "1", kVisa94Modulus, "248", ""), 525, "0" + std::string(40, '0')},
    };
    for (const Case& c : cases) {
        std::string record = onlyRecord(c.key);
        EXPECT_EQ(record.substr(c.offset, c.expected.size()), c.expected) << c.name;
    }
}

TEST(KVRCapkTable, LengthsBeyondTheTextsFailTheWholeTableWithTheLoadingError) {
    const std::string refused[] = {
        capk("03", "1", kVisa94Modulus, "249"),
        capk("03", "2", kVisa94Modulus, "248"),
        capk("03", "1", kVisa94Modulus, "-1"),
        "<Capk><RID>A000000003</RID><ModulusLen>248</ModulusLen><Exponent>03</Exponent></Capk>",
    };
    for (const std::string& key : refused) {
        KVRCapkTable keys;
        std::optional<KVRError> error;
        EXPECT_FALSE(keys.readCapkString(table(kVisa94 + key), &error)) << key;
        ASSERT_TRUE(error) << key;
        EXPECT_EQ(*error, KVRErrors::loadingTablesError());
    }
}

TEST(KVRCapkTable, ValuesWiderThanTheirFieldsRaiseWhenTheRecordIsWritten) {
    struct Case {
        std::string key;
        const char* reason;
    } cases[] = {
        {capk("03", "1", kVisa94Modulus + "AB", "0"), "String has a length of 498 while the limit is 496"},
        {capk("0100010", "0", kVisa94Modulus, "248"), "String has a length of 7 while the limit is 6"},
        {capk("03", "1", kVisa94Modulus, "248", kVisa94CheckSum + "00"), "String has a length of 42 while the limit is 40"},
        {KVRStringUtil::replaceAll(kVisa94, "<RID>A000000003</RID>", "<RID>A0000000031</RID>"),
         "String has a length of 11 while the limit is 10"},
    };
    for (const Case& c : cases) {
        KVRCapkTable keys;
        auto commands = keys.readCapkString(table(c.key), nullptr);
        ASSERT_TRUE(commands && commands->size() == 1) << c.key;
        try {
            recordText(*commands->front());
            ADD_FAILURE() << "no exception for " << c.key;
        } catch (const KVRException& e) {
            EXPECT_EQ(e.name(), "String doesn't fit");
            EXPECT_EQ(e.reason(), c.reason);
        }
    }
}

TEST(KVRCapkTable, UnparsableTextGivesTheReadersErrorAndAnEarlierErrorIsKept) {
    KVRCapkTable keys;
    std::optional<KVRError> error;
    EXPECT_FALSE(keys.readCapkString("503 Service Unavailable", &error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), TBXMLErrorDomain);

    // The loader shares one error between the AID and the CAPK table.
    KVRAidTable aids;
    std::optional<KVRError> shared;
    EXPECT_FALSE(aids.readAidString("", &shared));
    auto commands = keys.readCapkString(table(kVisa94 + kVisa94), &shared);
    ASSERT_TRUE(commands);
    EXPECT_EQ(commands->size(), 2u);
    ASSERT_TRUE(shared);
    EXPECT_EQ(shared->code(), TBXMLErrorDecodeFailed);
}

TEST(KVRCapks, ReadsAndWritesEveryField) {
    TBXML xml(kVisa94);
    KVRCapks key;
    key.read(xml.rootXMLElement());
    EXPECT_EQ(key.rid, "A000000003");
    EXPECT_EQ(key.capkIdx, "94");
    EXPECT_EQ(key.recIdx, "1");
    EXPECT_EQ(key.dataSetVersion, "12");
    EXPECT_EQ(key.exponent, "03");
    EXPECT_EQ(key.modulus, kVisa94Modulus);
    EXPECT_EQ(key.checkSum, kVisa94CheckSum);
    EXPECT_EQ(key.exponentLength, 1);
    EXPECT_EQ(key.modulusLength, 248);
    EXPECT_EQ(key.acquirerNumber, 4);

    XMLWriter writer;
    key.write(writer);
    EXPECT_EQ(writer.toString(), "\n<Capk>\n\t<CapkIdx>94</CapkIdx>\n\t<CheckSum>" + kVisa94CheckSum +
                                     "</CheckSum>\n\t<DataSetVersion>12</DataSetVersion>\n\t<Exponent>03</Exponent>"
                                     "\n\t<Modulus>" + kVisa94Modulus +
                                     "</Modulus>\n\t<RID>A000000003</RID>\n\t<RecIdx>1</RecIdx>"
                                     "\n\t<ExponentLen>1</ExponentLen>\n\t<ModulusLen>248</ModulusLen>"
                                     "\n\t<AcquirerNumber>4</AcquirerNumber>\n</Capk>");

    // The AID table's spelling of the record index is not the CAPK table's.
    TBXML other("<Capk><Recidx>7</Recidx></Capk>");
    KVRCapks unindexed;
    unindexed.read(other.rootXMLElement());
    EXPECT_EQ(unindexed.recIdx, std::nullopt);
}

TEST(KVRCapkTable, TableLoadRequestCarriesBothRecordsWithTheirLengths) {
    KVRAidTable aids;
    auto aidCommands = aids.readAidString(
        "<AidTbl><Aid><AcquirerNumber>4</AcquirerNumber><Recidx>1</Recidx><AID>A0000000041010</AID>"
        "<AppName>MASTERCARD</AppName><AdditionalTerminalCapabilities>F000F0A001</AdditionalTerminalCapabilities>"
        "<TACDefault>FE50BCA000</TACDefault><TACDenial>0000000000</TACDenial><TACOnline>FE50BCF800</TACOnline>"
        "</Aid></AidTbl>",
        nullptr);
    KVRCapkTable keys;
    auto capkCommands = keys.readCapkString(table(kVisa94), nullptr);
    ASSERT_TRUE(aidCommands && capkCommands);

    KVRTlrCommandRequest request;
    request.aidCommand = aidCommands->front();
    request.capkCommand = capkCommands->front();
    char buffer[KVRCommandBufferSize];
    request.getCommand(buffer);
    std::string text(buffer);
    ASSERT_EQ(text.size(), 3u + 3u + 2u + 284u + 611u);
    EXPECT_EQ(text.substr(0, 8), "TLR89702");
    EXPECT_EQ(text.substr(8, 3), "284");
    EXPECT_EQ(text.substr(11, 1), "1");
    EXPECT_EQ(text.substr(8 + 284, 3), "611");
    EXPECT_EQ(text.substr(8 + 284 + 3, 1), "2");
    EXPECT_EQ(text.substr(8 + 284 + 3 + 29, 496), kVisa94Modulus);
}

}  // namespace

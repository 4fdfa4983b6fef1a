#include <gtest/gtest.h>

#include <kovra/KVRErrors.h>
#include <kovra/KVRException.h>

#include "Host/TBXML.h"
#include "Host/XMLWriter.h"
#include "Pinpad/Commands/KVRCommandRequestBuilder.h"
#include "Tms/KVRAidTable.h"
#include "Tms/KVRCapkTable.h"
#include "Utils/KVRStringUtil.h"

namespace {

// Public EMV parameters: Visa credit and Mastercard credit applications with
// the schemes' usual terminal action codes, for a Brazilian terminal.
const std::string kVisa =
    "<Aid>"
    "<AcquirerNumber>4</AcquirerNumber><Recidx>1</Recidx><AID>A0000000031010</AID><BrandId>1</BrandId>"
    "<ApplicationType>1</ApplicationType><AppName>VISA CREDITO</AppName><AidLen>7</AidLen>"
    "<TerminalCountry>076</TerminalCountry><TerminalCurrencyCode>986</TerminalCurrencyCode>"
    "<TerminalCurrencyExponent>2</TerminalCurrencyExponent><TerminalCapabilities>E0F8C8</TerminalCapabilities>"
    "<AdditionalTerminalCapabilities>F000F0A001</AdditionalTerminalCapabilities><TerminalType>22</TerminalType>"
    "<TACDefault>DC4000A800</TACDefault><TACDenial>0010000000</TACDenial><TACOnline>DC4004F800</TACOnline>"
    "<FloorLimit>00000000</FloorLimit><CTLSZEROAM>1</CTLSZEROAM><CTLSMODE>1</CTLSMODE>"
    "<CTLSTRNLIM>00010000</CTLSTRNLIM><CTLSFLRLIM>00000000</CTLSFLRLIM><CTLSCVMLIM>00005000</CTLSCVMLIM>"
    "<CTLSAPPVER>008C</CTLSAPPVER><tDol>9F02065F2A029A039C0195059F3704</tDol><dDol>9F3704</dDol>"
    // Sent by the host but not part of the PIN pad record.
    "<MerchantId>123456</MerchantId><Mcc>5812</Mcc><TerminalId>87654321</TerminalId>"
    "</Aid>";

// Numbers the host sends short are right-filled with zeros.
const std::string kMastercard =
    "<Aid>"
    "<AcquirerNumber>4</AcquirerNumber><Recidx>2</Recidx><AID>A0000000041010</AID>"
    "<ApplicationType>1</ApplicationType><AppName>MASTERCARD</AppName>"
    "<TerminalCountry>076</TerminalCountry><TerminalCurrencyCode>986</TerminalCurrencyCode>"
    "<TerminalCurrencyExponent>2</TerminalCurrencyExponent><TerminalCapabilities>E0F8C8</TerminalCapabilities>"
    "<AdditionalTerminalCapabilities>F000F0A001</AdditionalTerminalCapabilities><TerminalType>22</TerminalType>"
    "<TACDefault>FE50BCA000</TACDefault><TACDenial>0000000000</TACDenial><TACOnline>FE50BCF800</TACOnline>"
    "<FloorLimit>5000</FloorLimit><TCC>R</TCC><CTLSZEROAM>0</CTLSZEROAM><CTLSMODE>2</CTLSMODE>"
    "<CTLSTRNLIM>15000</CTLSTRNLIM><CTLSFLRLIM>0</CTLSFLRLIM><CTLSCVMLIM>3000</CTLSCVMLIM>"
    "<CTLSAPPVER>0002</CTLSAPPVER>"
    "</Aid>";

// Visa's public test key A000000003 index 94 (1984 bits); its checksum is the
// SHA-1 of RID, index, modulus and exponent.
const std::string kModulus =
    "ACD2B12302EE644F3F835ABD1FC7A6F62CCE48FFEC622AA8EF062BEF6FB8BA8BC68BBF6AB5870EED579BC3973E121303D34841A796D6DCBC"
    "41DBF9E52C4609795C0CCF7EE86FA1D5CB041071ED2C51D2202F63F1156C58A92D38BC60BDF424E1776E2BC9648078A03B36FB554375FC53"
    "D57C73F5160EA59F3AFC5398EC7B67758D65C9BFF7828B6B82D4BE124A416AB7301914311EA462C19F771F31B3B57336000DFF732D3B83DE"
    "07052D730354D297BEC72871DCCF0E193F171ABA27EE464C6A97690943D59BDABB2A27EB71CEEBDAFA1176046478FD62FEC452D5CA393296"
    "530AA3F41927ADFE434A2DF2AE3054F8840657A26E0FC617";
const std::string kCheckSum = "C4A3C43CCF87327D136B804160E47D43B60E6E0F";

std::string capk(const std::string& exponent, const std::string& exponentLength, const std::string& modulus = kModulus,
                 const std::string& modulusLength = "248", const std::string& checkSum = kCheckSum) {
    std::string text = "<Capk><AcquirerNumber>4</AcquirerNumber><RecIdx>1</RecIdx><RID>A000000003</RID>"
                       "<CapkIdx>94</CapkIdx><DataSetVersion>12</DataSetVersion>";
    text += "<Exponent>" + exponent + "</Exponent><ExponentLen>" + exponentLength + "</ExponentLen>";
    text += "<Modulus>" + modulus + "</Modulus><ModulusLen>" + modulusLength + "</ModulusLen>";
    if (!checkSum.empty()) text += "<CheckSum>" + checkSum + "</CheckSum>";
    return text + "</Capk>";
}

const std::string kVisa94 = capk("03", "1");

std::string withChild(const std::string& record, const std::string& tag, const std::string& text) {
    size_t start = record.find("<" + tag + ">");
    size_t end = record.find("</" + tag + ">");
    return record.substr(0, start) + "<" + tag + ">" + text + record.substr(end);
}

bool isCapk(const std::string& record) { return record.rfind("<Capk>", 0) == 0; }

// The records a table text gives, as the PIN pad receives them: each with its
// three-digit length in front.
std::optional<std::vector<std::string>> records(const std::string& entries, std::optional<KVRError>* error = nullptr) {
    std::vector<std::shared_ptr<KVRTableRecordCommand>> commands;
    if (isCapk(entries)) {
        auto read = KVRCapkTable().readCapkString("<CapkTable>" + entries + "</CapkTable>", error);
        if (!read) return std::nullopt;
        commands.assign(read->begin(), read->end());
    } else {
        auto read = KVRAidTable().readAidString("<AidTbl>" + entries + "</AidTbl>", error);
        if (!read) return std::nullopt;
        commands.assign(read->begin(), read->end());
    }
    std::vector<std::string> texts;
    for (const auto& command : commands) {
        char buffer[KVRCommandBufferSize];
        KVRCommandRequestBuilder builder(buffer);
        command->getCommand(builder);
        texts.emplace_back(buffer, static_cast<size_t>(builder.position()));
    }
    return texts;
}

struct Slice {
    const char* field;
    size_t offset, width;  // after the record's own length
    std::string expected;
};

struct RecordCase {
    const char* name;
    std::string entry;
    std::vector<Slice> slices;
    /// Set: writing the record raises "String doesn't fit" with this reason.
    const char* refusal = nullptr;
};

// Every field of a Visa and a Mastercard AID record and of the Visa 94 key,
// back to back; then the fields that hosts get wrong.
const RecordCase kRecords[] = {
    {"VisaAid", kVisa, {
        {"table type", 0, 1, "1"}, {"TAB_ACQ", 1, 2, "04"}, {"TAB_RECIDX", 3, 2, "01"}, {"AID length", 5, 2, "07"},
        {"T1_AID", 7, 32, "A0000000031010000000000000000000"}, {"T1_APPTYPE", 39, 2, "01"},
        {"T1_DEFLABEL", 41, 16, "VISA CREDITO    "}, {"T1_ICCSTD", 57, 2, "03"},
        {"T1_APPVER1..3", 59, 12, "000200020000"}, {"T1_TRMCNTRY", 71, 3, "076"}, {"T1_TRMCURR", 74, 3, "986"},
        {"T1_TRMCRREXP", 77, 1, "2"}, {"T1_MERCHID", 78, 15, "020000080750001"}, {"T1_MCC", 93, 4, "0000"},
        {"T1_TRMID", 97, 8, "00000000"}, {"T1_TRMCAPAB", 105, 6, "E0F8C8"}, {"T1_ADDTRMCP", 111, 10, "F000F0A001"},
        {"T1_TRMTYP", 121, 2, "22"}, {"T1_TACDEF", 123, 10, "DC4000A800"}, {"T1_TACDEN", 133, 10, "0010000000"},
        {"T1_TACONL", 143, 10, "DC4004F800"}, {"T1_FLRLIMIT", 153, 8, "00000000"}, {"T1_TCC", 161, 1, "0"},
        {"T1_CTLSZEROAM", 162, 1, "1"}, {"T1_CTLSMODE", 163, 1, "1"}, {"T1_CTLSTRNLIM", 164, 8, "00010000"},
        {"T1_CTLSFLRLIM", 172, 8, "00000000"}, {"T1_CTLSCVMLIM", 180, 8, "00005000"}, {"T1_CTLSAPPVER", 188, 4, "008C"},
        {"T1_RUF1", 192, 1, "0"}, {"T1_TDOLDEF", 193, 40, "9F02065F2A029A039C0195059F37040000000000"},
        {"T1_DDOLDEF", 233, 40, "9F37040000000000000000000000000000000000"}, {"T1_ARCOFFLN", 273, 8, "Y1Z1Y3Z3"}}},
    {"MastercardAid", kMastercard, {
        {"TAB_RECIDX", 3, 2, "02"}, {"T1_TACDEF", 123, 10, "FE50BCA000"}, {"T1_FLRLIMIT", 153, 8, "50000000"},
        {"T1_TCC", 161, 1, "R"}, {"T1_CTLSMODE", 163, 1, "2"}, {"T1_CTLSTRNLIM", 164, 8, "15000000"},
        {"T1_CTLSCVMLIM", 180, 8, "30000000"}, {"T1_CTLSAPPVER", 188, 4, "0002"}, {"T1_ARCOFFLN", 273, 8, "Y1Z1Y3Z3"}}},
    {"Visa94Capk", kVisa94, {
        {"table type", 0, 1, "2"}, {"TAB_ACQ", 1, 2, "04"}, {"TAB_RECIDX", 3, 2, "01"}, {"T2_RID", 5, 10, "A000000003"},
        {"T2_CAPKIDX", 15, 2, "94"}, {"T2_RUF1", 17, 2, "00"}, {"exponent length", 19, 1, "1"},
        {"T2_EXP", 20, 6, "030000"}, {"modulus length", 26, 3, "248"}, {"T2_MOD", 29, 496, kModulus},
        {"T2_CHKSTAT", 525, 1, "1"}, {"T2_CHECKSUM", 526, 40, kCheckSum}, {"T2_RUF2", 566, 42, std::string(42, '0')}}},
    // The AID length is half its characters, rounded down.
    {"OddAid", withChild(kVisa, "AID", "A00000000310101"), {{"AID", 5, 34, "07A00000000310101" + std::string(17, '0')}}},
    {"LongestAid", withChild(kVisa, "AID", std::string(32, 'F')), {{"AID", 5, 34, "16" + std::string(32, 'F')}}},
    {"NoAid", withChild(kVisa, "AID", ""), {{"AID", 5, 34, "00" + std::string(32, '0')}}},
    {"FullLabel", withChild(kVisa, "AppName", "VISA ELECTRON DE"), {{"label", 41, 16, "VISA ELECTRON DE"}}},
    {"OverlongDol", withChild(kVisa, "dDol", std::string(400, '9')), {}, "String has a length of 400 while the limit is 40"},
    {"LabelOver16", withChild(kVisa, "AppName", "VISA ELECTRON DEB"), {}, "String has a length of 17 while the limit is 16"},
    {"AidOver32", withChild(kVisa, "AID", std::string(33, 'A')), {}, "String has a length of 33 while the limit is 32"},
    {"ShortTac", withChild(kVisa, "TACDenial", "00100000"), {}, "String has a length of 8 while the desired is 10"},
    // A host that leaves out a terminal action code cannot be loaded.
    {"NoTac", KVRStringUtil::replaceAll(kVisa, "<TACOnline>DC4004F800</TACOnline>", ""), {},
     "String has a length of 0 while the desired is 10"},
    // Exponent and modulus lengths select leading digits; 0 keeps the whole text.
    {"ExponentLengthZero", capk("010001", "0"), {{"exponent", 19, 7, "3010001"}}},
    {"ExponentCut", capk("0300", "1"), {{"exponent", 19, 7, "1030000"}}},
    {"ModulusLengthZero", capk("03", "1", "ABCD", "0"), {{"modulus", 26, 7, "002ABCD"}}},
    {"ModulusCut", capk("03", "1", kModulus, "2"), {{"modulus", 26, 7, "002ACD2"}}},
    {"NoCheckSum", capk("03", "1", kModulus, "248", ""), {{"check", 525, 41, std::string(41, '0')}}},
    {"ModulusOver496", capk("03", "1", kModulus + "AB", "0"), {}, "String has a length of 498 while the limit is 496"},
    {"ExponentOver6", capk("0100010", "0"), {}, "String has a length of 7 while the limit is 6"},
    {"RidOver10", withChild(kVisa94, "RID", "A0000000031"), {}, "String has a length of 11 while the limit is 10"},
};

class KVREmvTableTest : public ::testing::TestWithParam<RecordCase> {};

TEST_P(KVREmvTableTest, RecordTextHasEveryFieldInPlace) {
    const RecordCase& c = GetParam();
    std::optional<std::vector<std::string>> texts;
    try {
        texts = records(c.entry);
        ASSERT_EQ(c.refusal, nullptr) << "no exception";
    } catch (const KVRException& e) {
        ASSERT_NE(c.refusal, nullptr) << e.reason();
        EXPECT_EQ(e.name(), "String doesn't fit");
        EXPECT_EQ(e.reason(), c.refusal);
        return;
    }
    ASSERT_TRUE(texts && texts->size() == 1u);
    // The length counts its own three digits.
    std::string record = texts->front();
    EXPECT_EQ(record.substr(0, 3), isCapk(c.entry) ? "611" : "284");
    ASSERT_EQ(record.size(), isCapk(c.entry) ? 611u : 284u);
    record.erase(0, 3);
    size_t covered = 0;
    bool contiguous = true;
    for (const Slice& s : c.slices) {
        ASSERT_EQ(s.expected.size(), s.width) << s.field;
        EXPECT_EQ(record.substr(s.offset, s.width), s.expected) << s.field;
        contiguous = contiguous && s.offset == covered;
        covered = s.offset + s.width;
    }
    if (c.slices.front().field == std::string("table type")) {
        EXPECT_TRUE(contiguous && covered == record.size()) << "a whole layout, field after field";
    }
}

INSTANTIATE_TEST_SUITE_P(Records, KVREmvTableTest, ::testing::ValuesIn(kRecords),
                         [](const auto& info) { return info.param.name; });

TEST(KVREmvTable, TablesThatCannotBeReadGiveNothingAndAnError) {
    std::optional<KVRError> error;
    EXPECT_FALSE(KVRAidTable().readAidString("AidTbl: A0000000031010", &error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), TBXMLErrorDomain);
    // Key lengths beyond their texts fail the whole table.
    const std::string refused[] = {
        capk("03", "1", kModulus, "249"), capk("03", "2"), capk("03", "1", kModulus, "-1"),
        "<Capk><RID>A000000003</RID><ModulusLen>248</ModulusLen><Exponent>03</Exponent></Capk>",
    };
    for (const std::string& key : refused) {
        SCOPED_TRACE(key);
        std::optional<KVRError> loading;
        EXPECT_FALSE(records(kVisa94 + key, &loading));
        EXPECT_EQ(loading, KVRErrors::loadingTablesError());
    }
    // The loader shares one error between both tables: a later table that
    // reads well leaves it for the caller to see.
    std::optional<KVRError> shared;
    EXPECT_FALSE(KVRAidTable().readAidString("", &shared));
    auto keys = records(kVisa94 + kVisa94, &shared);
    ASSERT_TRUE(keys);
    EXPECT_EQ(keys->size(), 2u);
    ASSERT_TRUE(shared);
    EXPECT_EQ(shared->code(), TBXMLErrorDecodeFailed);
    EXPECT_EQ(records(""), std::vector<std::string>{}) << "an empty AID table";
}

// What the store keeps is written back as XML; read again it gives the PIN
// pad the same records.
TEST(KVREmvTable, WrittenTablesReadBackToTheSameRecords) {
    KVRAidTable aids;
    ASSERT_TRUE(aids.readAidString("<AidTbl>" + kVisa + kMastercard + "</AidTbl>", nullptr));
    XMLWriter writer;
    aids.writeAidWithXmlWriter(writer);
    std::string written = writer.toString();
    size_t currencies = 0;
    for (size_t at = written.find("<TerminalCurrencyCode>"); at != std::string::npos;
         at = written.find("<TerminalCurrencyCode>", at + 1))
        ++currencies;
    EXPECT_EQ(currencies, 4u) << "each AID's currency again before its CTLSZEROAM";
    std::string entries = written.substr(written.find("<Aid>"), written.rfind("</Aid>") + 6 - written.find("<Aid>"));
    EXPECT_EQ(records(entries), records(kVisa + kMastercard));

    TBXML xml(kVisa94);
    KVRCapks key;
    key.read(xml.rootXMLElement());
    XMLWriter keyWriter;
    key.write(keyWriter);
    EXPECT_EQ(records(keyWriter.toString().substr(1)), records(kVisa94));
}

}  // namespace

#include <gtest/gtest.h>

#include <kovra/KVRException.h>

#include "Host/TBXML.h"
#include "Host/XMLWriter.h"
#include "Tms/KVRAidTable.h"
#include "Tms/KVRTableRecordText.h"

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

const std::string kMastercard =
    "<Aid>"
    "<dDol>9F3704</dDol><tDol>9F02065F2A029A039C0195059F3704</tDol>"
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

std::string table(const std::string& aids) { return "<AidTbl>" + aids + "</AidTbl>"; }

std::shared_ptr<KVRAidTableCommand> onlyCommand(const std::string& aid) {
    KVRAidTable aids;
    auto commands = aids.readAidString(table(aid), nullptr);
    EXPECT_TRUE(commands && commands->size() == 1);
    return commands && !commands->empty() ? commands->front() : std::make_shared<KVRAidTableCommand>();
}

std::string withChild(const std::string& aid, const std::string& tag, const std::string& text) {
    std::string result = aid;
    size_t start = result.find("<" + tag + ">");
    size_t end = result.find("</" + tag + ">");
    result.replace(start, end - start, "<" + tag + ">" + text);
    return result;
}

std::string withoutChild(const std::string& aid, const std::string& tag) {
    std::string result = aid;
    std::string close = "</" + tag + ">";
    size_t start = result.find("<" + tag + ">");
    result.erase(start, result.find(close) + close.size() - start);
    return result;
}

std::string reasonOf(const KVRTableRecordCommand& command) {
    try {
        recordText(command);
    } catch (const KVRException& e) {
        EXPECT_EQ(e.name(), "String doesn't fit");
        return e.reason();
    }
    return "no exception";
}

TEST(KVRAidTable, VisaAndMastercardRecordsInDocumentOrderWithEveryField) {
    KVRAidTable aids;
    std::optional<KVRError> error;
    auto commands = aids.readAidString(table(kVisa + kMastercard), &error);
    ASSERT_TRUE(commands);
    EXPECT_FALSE(error);
    ASSERT_EQ(commands->size(), 2u);
    std::string visa = recordText(*(*commands)[0]);
    std::string mastercard = recordText(*(*commands)[1]);
    // The length counts its own three digits.
    ASSERT_EQ(visa.size(), 3u + 281u);
    ASSERT_EQ(mastercard.size(), 3u + 281u);
    EXPECT_EQ(visa.substr(0, 3), "284");
    EXPECT_EQ(mastercard.substr(0, 3), "284");
    visa.erase(0, 3);
    mastercard.erase(0, 3);

    struct Slice {
        const char* field;
        size_t offset, width;
        std::string visa, mastercard;
    } layout[] = {
        {"table type", 0, 1, "1", "1"},
        {"TAB_ACQ", 1, 2, "04", "04"},
        {"TAB_RECIDX", 3, 2, "01", "02"},
        {"AID length", 5, 2, "07", "07"},
        {"T1_AID", 7, 32, "A0000000031010000000000000000000", "A0000000041010000000000000000000"},
        {"T1_APPTYPE", 39, 2, "01", "01"},
        {"T1_DEFLABEL", 41, 16, "VISA CREDITO    ", "MASTERCARD      "},
        {"T1_ICCSTD", 57, 2, "03", "03"},
        {"T1_APPVER1", 59, 4, "0002", "0002"},
        {"T1_APPVER2", 63, 4, "0002", "0002"},
        {"T1_APPVER3", 67, 4, "0000", "0000"},
        {"T1_TRMCNTRY", 71, 3, "076", "076"},
        {"T1_TRMCURR", 74, 3, "986", "986"},
        {"T1_TRMCRREXP", 77, 1, "2", "2"},
        {"T1_MERCHID", 78, 15, "020000080750001", "020000080750001"},
        {"T1_MCC", 93, 4, "0000", "0000"},
        {"T1_TRMID", 97, 8, "00000000", "00000000"},
        {"T1_TRMCAPAB", 105, 6, "E0F8C8", "E0F8C8"},
        {"T1_ADDTRMCP", 111, 10, "F000F0A001", "F000F0A001"},
        {"T1_TRMTYP", 121, 2, "22", "22"},
        {"T1_TACDEF", 123, 10, "DC4000A800", "FE50BCA000"},
        {"T1_TACDEN", 133, 10, "0010000000", "0000000000"},
        {"T1_TACONL", 143, 10, "DC4004F800", "FE50BCF800"},
        {"T1_FLRLIMIT", 153, 8, "00000000", "50000000"},
        {"T1_TCC", 161, 1, "0", "R"},
        {"T1_CTLSZEROAM", 162, 1, "1", "0"},
        {"T1_CTLSMODE", 163, 1, "1", "2"},
        {"T1_CTLSTRNLIM", 164, 8, "00010000", "15000000"},
        {"T1_CTLSFLRLIM", 172, 8, "00000000", "00000000"},
        {"T1_CTLSCVMLIM", 180, 8, "00005000", "30000000"},
        {"T1_CTLSAPPVER", 188, 4, "008C", "0002"},
        {"T1_RUF1", 192, 1, "0", "0"},
        {"T1_TDOLDEF", 193, 40, "9F02065F2A029A039C0195059F37040000000000",
         "9F02065F2A029A039C0195059F37040000000000"},
        {"T1_DDOLDEF", 233, 40, "9F37040000000000000000000000000000000000",
         "9F37040000000000000000000000000000000000"},
        {"T1_ARCOFFLN", 273, 8, "Y1Z1Y3Z3", "Y1Z1Y3Z3"},
    };
    size_t next = 0;
    for (const Slice& s : layout) {
        EXPECT_EQ(s.offset, next) << s.field;
        ASSERT_EQ(s.visa.size(), s.width) << s.field;
        ASSERT_EQ(s.mastercard.size(), s.width) << s.field;
        EXPECT_EQ(visa.substr(s.offset, s.width), s.visa) << s.field;
        EXPECT_EQ(mastercard.substr(s.offset, s.width), s.mastercard) << s.field;
        next = s.offset + s.width;
    }
    EXPECT_EQ(next, 281u);

    ASSERT_EQ(aids.Aids.size(), 2u);
    EXPECT_EQ(aids.Aids[0]->ApplicationId, "A0000000031010");
    EXPECT_EQ(aids.Aids[0]->ApplicationName, "VISA CREDITO");
    EXPECT_EQ(aids.Aids[0]->TefBrandId, 1);
    EXPECT_EQ(aids.Aids[0]->Mcc, 5812);
    EXPECT_EQ(aids.Aids[1]->ApplicationId, "A0000000041010");
    EXPECT_EQ(aids.Aids[1]->TCC, "R");
    EXPECT_EQ(aids.Aids[1]->TefBrandId, std::nullopt);
}

TEST(KVRAidTable, AidLengthIsHalfItsCharactersAndTheAidIsPaddedWithZeros) {
    struct Case {
        std::string aid;
        std::string length, field;
    } cases[] = {
        {"A0000000031010", "07", "A0000000031010" + std::string(18, '0')},
        {"A00000000310101", "07", "A00000000310101" + std::string(17, '0')},
        {"A000000003101001", "08", "A000000003101001" + std::string(16, '0')},
        {std::string(32, 'F'), "16", std::string(32, 'F')},
        {"", "00", std::string(32, '0')},
    };
    for (const Case& c : cases) {
        std::string record = recordText(*onlyCommand(withChild(kVisa, "AID", c.aid))).substr(3);
        EXPECT_EQ(record.substr(5, 2), c.length) << c.aid;
        EXPECT_EQ(record.substr(7, 32), c.field) << c.aid;
    }
}

TEST(KVRAidTable, FieldsThatDoNotFitRaiseWhenTheRecordIsWritten) {
    EXPECT_EQ(recordText(*onlyCommand(withChild(kVisa, "AppName", "VISA ELECTRON DE"))).substr(3 + 41, 16),
              "VISA ELECTRON DE");

    struct Case {
        std::string aid;
        const char* reason;
    } cases[] = {
        {withChild(kVisa, "AppName", "VISA ELECTRON DEB"), "String has a length of 17 while the limit is 16"},
        {withChild(kVisa, "AID", std::string(33, 'A')), "String has a length of 33 while the limit is 32"},
        {withChild(kVisa, "tDol", std::string(42, '9')), "String has a length of 42 while the limit is 40"},
        {withChild(kVisa, "AcquirerNumber", "123"), "String has a length of 3 while the limit is 2"},
        {withChild(kVisa, "TACDenial", "00100000"), "String has a length of 8 while the desired is 10"},
        // A host that leaves out a terminal action code cannot be loaded.
        {withoutChild(kVisa, "TACOnline"), "String has a length of 0 while the desired is 10"},
        {withoutChild(kVisa, "AdditionalTerminalCapabilities"), "String has a length of 0 while the desired is 10"},
    };
    for (const Case& c : cases) {
        auto command = onlyCommand(c.aid);
        EXPECT_EQ(reasonOf(*command), c.reason) << c.aid;
    }
}

TEST(KVRAidTable, OverLongHostTextsAreNotStoredInTheRecordFields) {
    auto command = onlyCommand(withChild(kVisa, "dDol", std::string(400, '9')));
    EXPECT_EQ(command->T1_DDOLDEF.view(), "");
    EXPECT_EQ(command->T1_DDOLDEF.rejectedLength(), 400u);
    EXPECT_EQ(command->T1_TDOLDEF.view(), "9F02065F2A029A039C0195059F3704");
}

TEST(KVRAidTable, UnparsableTextGivesNothingAndTheReadersError) {
    KVRAidTable aids;
    std::optional<KVRError> error;
    EXPECT_FALSE(aids.readAidString("AidTbl: A0000000031010", &error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), TBXMLErrorDomain);
    EXPECT_EQ(error->code(), TBXMLErrorDecodeFailed);

    // A later table that reads well leaves the error for the caller to see.
    auto commands = aids.readAidString(table(kVisa), &error);
    ASSERT_TRUE(commands);
    EXPECT_EQ(commands->size(), 1u);
    EXPECT_TRUE(error);

    auto empty = aids.readAidString("<AidTbl></AidTbl>", nullptr);
    ASSERT_TRUE(empty);
    EXPECT_TRUE(empty->empty());
    EXPECT_TRUE(aids.Aids.empty());
}

TEST(KVRAidTable, TheTableElementItselfGivesAnEmptyRecord) {
    TBXML xml(table(kVisa));
    KVRAidTable aids;
    auto command = aids.aidCommandFromXml(xml.rootXMLElement());
    EXPECT_EQ(command->T1_AID.view(), "");
    EXPECT_EQ(command->TAB_ACQ, 0);
    EXPECT_EQ(command->T1_MERCHID.view(), "");
}

TEST(KVRAid, WritesItsFieldsInOrderWithTheCurrencyAgainBeforeCTLSZEROAM) {
    KVRAid aid;
    aid.ApplicationId = "A0000000031010";
    aid.TefBrandId = 3;
    aid.TerminalCurrencyCode = "986";
    aid.CTLSZEROAM = "1";
    aid.Mcc = 0;
    aid.ApplicationName = "VISA & CIA";
    XMLWriter writer;
    aid.write(writer);
    EXPECT_EQ(writer.toString(),
              "\n<Aid>"
              "\n\t<AID>A0000000031010</AID>"
              "\n\t<BrandId>3</BrandId>"
              "\n\t<AppName>VISA &amp; CIA</AppName>"
              "\n\t<TerminalCurrencyCode>986</TerminalCurrencyCode>"
              "\n\t<TerminalCurrencyCode>986</TerminalCurrencyCode>"
              "\n\t<CTLSZEROAM>1</CTLSZEROAM>"
              "\n\t<Mcc>0</Mcc>"
              "\n</Aid>");

    aid.CTLSZEROAM.reset();
    XMLWriter without;
    aid.write(without);
    EXPECT_EQ(without.toString().find("<TerminalCurrencyCode>986</TerminalCurrencyCode>\n\t<TerminalCurrencyCode>"),
              std::string::npos);
}

TEST(KVRAid, AWrittenTableReadsBackToTheSameApplications) {
    KVRAidTable original;
    ASSERT_TRUE(original.readAidString(table(kVisa + kMastercard), nullptr));
    XMLWriter writer;
    original.writeAidWithXmlWriter(writer);

    KVRAidTable copy;
    auto commands = copy.readAidString(writer.toString(), nullptr);
    ASSERT_TRUE(commands);
    ASSERT_EQ(copy.Aids.size(), 2u);
    for (size_t i = 0; i < 2; ++i) {
        const KVRAid& a = *original.Aids[i];
        const KVRAid& b = *copy.Aids[i];
        EXPECT_EQ(b.ApplicationId, a.ApplicationId);
        EXPECT_EQ(b.TefBrandId, a.TefBrandId);
        EXPECT_EQ(b.TerminalActionCodeDefault, a.TerminalActionCodeDefault);
        EXPECT_EQ(b.tDol, a.tDol);
        EXPECT_EQ(b.TerminalCurrencyCode, a.TerminalCurrencyCode);
        EXPECT_EQ(b.CTLSZEROAM, a.CTLSZEROAM);
        EXPECT_EQ(b.MerchantId, a.MerchantId);
        EXPECT_EQ(b.TerminalCapabilities, a.TerminalCapabilities);
        // The written table gives the PIN pad the same records.
        EXPECT_EQ(recordText(*(*commands)[i]), recordText(*onlyCommand(i == 0 ? kVisa : kMastercard)));
    }
}

}  // namespace

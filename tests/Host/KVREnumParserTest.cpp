#include <gtest/gtest.h>

#include "Host/KVREnumParser.h"

#include <kovra/KVRException.h>

#include <cctype>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace {

struct WritingTable {
    const char* name;
    std::function<std::string(int32_t)> write;
    std::vector<std::string> codes;
    std::string unexpected;
};

const std::vector<WritingTable>& writingTables() {
    static const std::vector<WritingTable> tables = {
        {"contentType", KVREnumParser::contentTypeToString, {"DATA", "SIGN", "EVLP", "DGST", "ECRP", "AUTH"},
         "Unexpected ContentType."},
        {"authenticationType",
         KVREnumParser::authenticationTypeToString,
         {"BYPS", "MANU", "MERC", "FPIN", "NPIN", "PPSG", "PSWD", "SCRT", "SCNL", "SNCT", "CPSG", "UKNW"},
         "Unexpected authenticationMethodCode."},
        {"cardholderIdentificationType", KVREnumParser::cardholderIdentificationTypeToString,
         {"PASS", "DRLC", "EEID", "DRVR"}, "Unexpected CardholderIdentification."},
        {"contextAttendance", KVREnumParser::contextAttendanceCodeTypeToString, {"ATTD", "SATT", "UATT"},
         "Unexpected ContextAttendance."},
        {"transactionEnvironment", KVREnumParser::transactionEnvironmentCodeTypeToString, {"MERC", "PRIV", "PUBL"},
         "Unexpected TransactionEnvironment."},
        {"transactionChannel", KVREnumParser::transactionChannelCodeTypeToString, {"TLPH", "ECOM", "TVPY", "TVPY"},
         "Unexpected TransactionChannel."},
        {"poiCardDataReading", KVREnumParser::poiCardDataReadingCodeTypeToString,
         {"TAGC", "PHYS", "BRCD", "MGST", "CICC", "DFLE", "CTLS", "ECTL"}, "Unexpected PoiCardDataReading."},
        {"instalmentType", KVREnumParser::instalmentTypeToString, {"NONE", "MCHT", "ISSR"},
         "Unexpected InstalmentType."},
        {"accountType", KVREnumParser::accountTypeToString, {"DFLT", "SVNG", "CHCK", "CRDT", "UVRL", "INVS", "EPRS"},
         "Unexpected AccountType."},
        {"messageFunction",
         KVREnumParser::messageFunctionCodeTypeToString,
         {"AUTQ", "AUTP", "FAUQ", "FAUP", "CMPV", "CMPK", "FCMV", "FCMK", "RVRA", "RVRR", "FRVA",
          "FRVR", "CCAQ", "CCAP", "CCAV", "CCAK", "DGNP", "DGNQ", "RCLQ", "RCLP", "RJCT"},
         "Unexpected MessageFunction."},
        {"initiatingPartyType", KVREnumParser::initiatingPartyTypeToString,
         {"OPOI", "MERC", "ACCP", "ITAG", "ACQR", "CISS", "DLIS"}, "Unexpected InitiatingParty."},
        {"initiatingPartyIssuer", KVREnumParser::initiatingPartyIssuerToString,
         {"OPOI", "MERC", "ACCP", "ITAG", "ACQR", "CISS", "DLIS"}, "Unexpected InitiatingParty."},
    };
    return tables;
}

TEST(KVREnumParser, EveryValueWritesItsCodeAndValuesOutsideTheSetRaise) {
    for (const auto& table : writingTables()) {
        SCOPED_TRACE(table.name);
        for (size_t value = 0; value < table.codes.size(); ++value) {
            EXPECT_EQ(table.write(static_cast<int32_t>(value)), table.codes[value]) << "value " << value;
        }
        for (int32_t value : {static_cast<int32_t>(table.codes.size()), -1}) {
            try {
                table.write(value);
                ADD_FAILURE() << "no exception for " << value;
            } catch (const KVRException& e) {
                EXPECT_EQ(e.name(), KVREnumParser::exceptionName);
                EXPECT_EQ(e.reason(), table.unexpected);
            }
        }
    }
}

struct ReadingTable {
    const char* name;
    std::function<int32_t(std::string_view)> read;
    std::vector<std::pair<const char*, int32_t>> codes;
};

TEST(KVREnumParser, EveryCodeReadsItsValueAndAnythingElseIsZero) {
    const std::vector<std::pair<const char*, int32_t>> parties = {{"OPOI", 0}, {"MERC", 1}, {"ACCP", 2}, {"ITAG", 3},
                                                                  {"ACQR", 4}, {"CISS", 5}, {"DLIS", 6}};
    const std::vector<ReadingTable> tables = {
        {"amountType", KVREnumParser::parseEnumAmountType,
         {{"CSHB", 0}, {"GRTY", 1}, {"FEES", 2}, {"RBTS", 3}, {"VATX", 4}}},
        {"accountType", KVREnumParser::parseEnumAccountType,
         {{"DFLT", 0}, {"SVNG", 1}, {"CHCK", 2}, {"CRDT", 3}, {"UVRL", 4}, {"INVS", 5}, {"EPRS", 6}}},
        {"responseCode", KVREnumParser::parseEnumResponseCode, {{"DECL", 0}, {"APPR", 1}, {"PART", 2}, {"TECH", 3}}},
        {"userInterface", KVREnumParser::parseEnumUserInterfaceCode,
         {{"CDSP", 0}, {"CRCP", 1}, {"MDSP", 2}, {"MRCP", 3}}},
        {"actionType",
         KVREnumParser::parseEnumActionTypeCode,
         {{"BUSY", 0}, {"CPTR", 1}, {"DISP", 2}, {"NOVR", 3}, {"RQID", 4},
          {"PINL", 5}, {"PINR", 6}, {"PRNT", 7}, {"RFRL", 8}, {"RQDT", 9}}},
        {"initiatingPartyType", KVREnumParser::stringToInitiatingPartyType, parties},
        {"initiatingPartyIssuer", KVREnumParser::stringToInitiatingPartyIssuer, parties},
        {"messageFunction",
         KVREnumParser::stringToMessageFunctionCode,
         {{"AUTQ", 0},  {"AUTP", 1},  {"FAUQ", 2},  {"FAUP", 3},  {"CMPV", 4},  {"CMPK", 5},  {"FCMV", 6},
          {"FCMK", 7},  {"RVRA", 8},  {"RVRR", 9},  {"FRVA", 10}, {"FRVR", 11}, {"CCAQ", 12}, {"CCAP", 13},
          {"CCAV", 14}, {"CCAK", 15}, {"DGNP", 16}, {"DGNQ", 17}, {"RCLQ", 18}, {"RCLP", 19}, {"RJCT", 0}}},
    };
    // Codes are matched exactly; anything else reads as the first value
    // (for a response code, a decline).
    for (const auto& table : tables) {
        SCOPED_TRACE(table.name);
        for (const auto& [code, value] : table.codes) EXPECT_EQ(table.read(code), value) << code;
        std::string lower = table.codes[1].first;
        for (auto& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        const std::string code = table.codes[1].first;
        for (const std::string& other : {lower, std::string(), std::string("ZZZZ"), code + " ", code.substr(0, 3)}) {
            EXPECT_EQ(table.read(other), 0) << '"' << other << '"';
        }
    }
}

}  // namespace

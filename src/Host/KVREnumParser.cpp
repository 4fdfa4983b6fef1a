#include "Host/KVREnumParser.h"

#include <kovra/KVRException.h>

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <utility>

namespace {

using Codes = std::initializer_list<const char*>;
using Readings = std::initializer_list<std::pair<const char*, int32_t>>;

std::string codeAt(Codes codes, int32_t value, const char* unexpected) {
    if (value < 0 || static_cast<size_t>(value) >= codes.size()) {
        throw KVRException(KVREnumParser::exceptionName, unexpected);
    }
    return codes.begin()[value];
}

// Every code is four letters: one word, compared with a reply's text in a
// single instruction. A text of any other length is no code.
uint32_t wordOf(const char* fourLetters) {
    uint32_t word;
    std::memcpy(&word, fourLetters, sizeof word);
    return word;
}

// First match wins, in the order given; anything else is 0.
int32_t valueOf(Readings readings, std::string_view code) {
    if (code.size() != sizeof(uint32_t)) return 0;
    const uint32_t word = wordOf(code.data());
    for (const auto& [text, value] : readings) {
        if (wordOf(text) == word) return value;
    }
    return 0;
}

// Positions in the list are the values.
int32_t valueOf(Codes codes, std::string_view code) {
    if (code.size() != sizeof(uint32_t)) return 0;
    const uint32_t word = wordOf(code.data());
    int32_t value = 0;
    for (const char* text : codes) {
        if (wordOf(text) == word) return value;
        ++value;
    }
    return 0;
}

const Codes kAccountTypes = {"DFLT", "SVNG", "CHCK", "CRDT", "UVRL", "INVS", "EPRS"};
const Codes kMessageFunctions = {"AUTQ", "AUTP", "FAUQ", "FAUP", "CMPV", "CMPK", "FCMV",
                                 "FCMK", "RVRA", "RVRR", "FRVA", "FRVR", "CCAQ", "CCAP",
                                 "CCAV", "CCAK", "DGNP", "DGNQ", "RCLQ", "RCLP", "RJCT"};
const Codes kInitiatingParties = {"OPOI", "MERC", "ACCP", "ITAG", "ACQR", "CISS", "DLIS"};

const Readings kInitiatingPartyReadings = {{"ACCP", 2}, {"ACQR", 4}, {"CISS", 5},
                                           {"DLIS", 6}, {"ITAG", 3}, {"MERC", 1}};

}  // namespace

std::string KVREnumParser::contentTypeToString(int32_t value) {
    return codeAt({"DATA", "SIGN", "EVLP", "DGST", "ECRP", "AUTH"}, value, "Unexpected ContentType.");
}

std::string KVREnumParser::authenticationTypeToString(int32_t value) {
    return codeAt({"BYPS", "MANU", "MERC", "FPIN", "NPIN", "PPSG", "PSWD", "SCRT", "SCNL", "SNCT", "CPSG", "UKNW"},
                  value, "Unexpected authenticationMethodCode.");
}

std::string KVREnumParser::cardholderIdentificationTypeToString(int32_t value) {
    return codeAt({"PASS", "DRLC", "EEID", "DRVR"}, value, "Unexpected CardholderIdentification.");
}

std::string KVREnumParser::contextAttendanceCodeTypeToString(int32_t value) {
    return codeAt({"ATTD", "SATT", "UATT"}, value, "Unexpected ContextAttendance.");
}

std::string KVREnumParser::transactionEnvironmentCodeTypeToString(int32_t value) {
    return codeAt({"MERC", "PRIV", "PUBL"}, value, "Unexpected TransactionEnvironment.");
}

std::string KVREnumParser::transactionChannelCodeTypeToString(int32_t value) {
    return codeAt({"TLPH", "ECOM", "TVPY", "TVPY"}, value, "Unexpected TransactionChannel.");
}

std::string KVREnumParser::poiCardDataReadingCodeTypeToString(int32_t value) {
    return codeAt({"TAGC", "PHYS", "BRCD", "MGST", "CICC", "DFLE", "CTLS", "ECTL"}, value,
                  "Unexpected PoiCardDataReading.");
}

std::string KVREnumParser::instalmentTypeToString(int32_t value) {
    return codeAt({"NONE", "MCHT", "ISSR"}, value, "Unexpected InstalmentType.");
}

std::string KVREnumParser::accountTypeToString(int32_t value) {
    return codeAt(kAccountTypes, value, "Unexpected AccountType.");
}

std::string KVREnumParser::messageFunctionCodeTypeToString(int32_t value) {
    return codeAt(kMessageFunctions, value, "Unexpected MessageFunction.");
}

std::string KVREnumParser::initiatingPartyTypeToString(int32_t value) {
    return codeAt(kInitiatingParties, value, "Unexpected InitiatingParty.");
}

std::string KVREnumParser::initiatingPartyIssuerToString(int32_t value) {
    return codeAt(kInitiatingParties, value, "Unexpected InitiatingParty.");
}

KVRAmountType KVREnumParser::parseEnumAmountType(std::string_view code) {
    return static_cast<KVRAmountType>(valueOf(Codes{"CSHB", "GRTY", "FEES", "RBTS", "VATX"}, code));
}

KVRAccountType KVREnumParser::parseEnumAccountType(std::string_view code) {
    return static_cast<KVRAccountType>(valueOf(kAccountTypes, code));
}

KVRResponseCode KVREnumParser::parseEnumResponseCode(std::string_view code) {
    return static_cast<KVRResponseCode>(valueOf(Codes{"DECL", "APPR", "PART", "TECH"}, code));
}

KVRUserInterface KVREnumParser::parseEnumUserInterfaceCode(std::string_view code) {
    return static_cast<KVRUserInterface>(valueOf(Codes{"CDSP", "CRCP", "MDSP", "MRCP"}, code));
}

KVRActionType KVREnumParser::parseEnumActionTypeCode(std::string_view code) {
    return static_cast<KVRActionType>(
        valueOf(Codes{"BUSY", "CPTR", "DISP", "NOVR", "RQID", "PINL", "PINR", "PRNT", "RFRL", "RQDT"}, code));
}

KVRInitiatingParty KVREnumParser::stringToInitiatingPartyType(std::string_view code) {
    return static_cast<KVRInitiatingParty>(valueOf(kInitiatingPartyReadings, code));
}

KVRInitiatingParty KVREnumParser::stringToInitiatingPartyIssuer(std::string_view code) {
    return static_cast<KVRInitiatingParty>(valueOf(kInitiatingPartyReadings, code));
}

KVRMessageFunction KVREnumParser::stringToMessageFunctionCode(std::string_view code) {
    static const Readings readings = {{"AUTQ", 0},  {"AUTP", 1},  {"CCAV", 14}, {"CCAK", 15}, {"CCAQ", 12},
                                      {"CCAP", 13}, {"CMPV", 4},  {"CMPK", 5},  {"DGNP", 16}, {"DGNQ", 17},
                                      {"FAUQ", 2},  {"FAUP", 3},  {"FCMV", 6},  {"FCMK", 7},  {"FRVA", 10},
                                      {"FRVR", 11}, {"RCLQ", 18}, {"RCLP", 19}, {"RVRA", 8},  {"RVRR", 9}};
    return static_cast<KVRMessageFunction>(valueOf(readings, code));
}

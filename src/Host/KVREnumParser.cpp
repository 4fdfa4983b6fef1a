#include "Host/KVREnumParser.h"

#include <kovra/KVRException.h>

#include <array>
#include <cstdint>
#include <utility>

namespace {

// Every code is four letters: one word, compared with a reply's text in a
// single instruction. A text of any other length is no code.
constexpr uint32_t wordOf(const char* fourLetters) {
    auto byte = [fourLetters](int i) { return uint32_t{static_cast<unsigned char>(fourLetters[i])}; };
    return byte(0) | byte(1) << 8 | byte(2) << 16 | byte(3) << 24;
}

/// Codes whose positions are their values, with their words worked out
/// while compiling: a reading scans one small array.
template <size_t N>
struct Codes {
    std::array<const char*, N> texts{};
    std::array<uint32_t, N> words{};
};

template <size_t N>
consteval Codes<N> codes(const char* const (&texts)[N]) {
    Codes<N> made;
    for (size_t i = 0; i < N; ++i) {
        made.texts[i] = texts[i];
        made.words[i] = wordOf(texts[i]);
    }
    return made;
}

/// Codes with the values given; the first match wins.
template <size_t N>
struct Readings {
    std::array<uint32_t, N> words{};
    std::array<int32_t, N> values{};
};

template <size_t N>
consteval Readings<N> readings(const std::pair<const char*, int32_t> (&pairs)[N]) {
    Readings<N> made;
    for (size_t i = 0; i < N; ++i) {
        made.words[i] = wordOf(pairs[i].first);
        made.values[i] = pairs[i].second;
    }
    return made;
}

template <size_t N>
std::string codeAt(const Codes<N>& codes, int32_t value, const char* unexpected) {
    if (value < 0 || static_cast<size_t>(value) >= N) throw KVRException(KVREnumParser::exceptionName, unexpected);
    return codes.texts[static_cast<size_t>(value)];
}

/// Where `code` is in `words`, or N.
template <size_t N>
size_t find(const std::array<uint32_t, N>& words, std::string_view code) {
    if (code.size() != sizeof(uint32_t)) return N;
    const uint32_t word = wordOf(code.data());
    size_t at = 0;
    while (at < N && words[at] != word) ++at;
    return at;
}

// Anything that is not a code reads as 0.
template <size_t N>
int32_t valueOf(const Codes<N>& codes, std::string_view code) {
    const size_t at = find(codes.words, code);
    return at < N ? static_cast<int32_t>(at) : 0;
}

template <size_t N>
int32_t valueOf(const Readings<N>& readings, std::string_view code) {
    const size_t at = find(readings.words, code);
    return at < N ? readings.values[at] : 0;
}

constexpr auto kAccountTypes = codes({"DFLT", "SVNG", "CHCK", "CRDT", "UVRL", "INVS", "EPRS"});
constexpr auto kMessageFunctions = codes({"AUTQ", "AUTP", "FAUQ", "FAUP", "CMPV", "CMPK", "FCMV",
                                          "FCMK", "RVRA", "RVRR", "FRVA", "FRVR", "CCAQ", "CCAP",
                                          "CCAV", "CCAK", "DGNP", "DGNQ", "RCLQ", "RCLP", "RJCT"});
constexpr auto kInitiatingParties = codes({"OPOI", "MERC", "ACCP", "ITAG", "ACQR", "CISS", "DLIS"});

constexpr auto kInitiatingPartyReadings =
    readings({{"ACCP", 2}, {"ACQR", 4}, {"CISS", 5}, {"DLIS", 6}, {"ITAG", 3}, {"MERC", 1}});

}  // namespace

std::string KVREnumParser::contentTypeToString(int32_t value) {
    return codeAt(codes({"DATA", "SIGN", "EVLP", "DGST", "ECRP", "AUTH"}), value, "Unexpected ContentType.");
}

std::string KVREnumParser::authenticationTypeToString(int32_t value) {
    return codeAt(
        codes({"BYPS", "MANU", "MERC", "FPIN", "NPIN", "PPSG", "PSWD", "SCRT", "SCNL", "SNCT", "CPSG", "UKNW"}), value,
        "Unexpected authenticationMethodCode.");
}

std::string KVREnumParser::cardholderIdentificationTypeToString(int32_t value) {
    return codeAt(codes({"PASS", "DRLC", "EEID", "DRVR"}), value, "Unexpected CardholderIdentification.");
}

std::string KVREnumParser::contextAttendanceCodeTypeToString(int32_t value) {
    return codeAt(codes({"ATTD", "SATT", "UATT"}), value, "Unexpected ContextAttendance.");
}

std::string KVREnumParser::transactionEnvironmentCodeTypeToString(int32_t value) {
    return codeAt(codes({"MERC", "PRIV", "PUBL"}), value, "Unexpected TransactionEnvironment.");
}

std::string KVREnumParser::transactionChannelCodeTypeToString(int32_t value) {
    return codeAt(codes({"TLPH", "ECOM", "TVPY", "TVPY"}), value, "Unexpected TransactionChannel.");
}

std::string KVREnumParser::poiCardDataReadingCodeTypeToString(int32_t value) {
    return codeAt(codes({"TAGC", "PHYS", "BRCD", "MGST", "CICC", "DFLE", "CTLS", "ECTL"}), value,
                  "Unexpected PoiCardDataReading.");
}

std::string KVREnumParser::instalmentTypeToString(int32_t value) {
    return codeAt(codes({"NONE", "MCHT", "ISSR"}), value, "Unexpected InstalmentType.");
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
    static constexpr auto kCodes = codes({"CSHB", "GRTY", "FEES", "RBTS", "VATX"});
    return static_cast<KVRAmountType>(valueOf(kCodes, code));
}

KVRAccountType KVREnumParser::parseEnumAccountType(std::string_view code) {
    return static_cast<KVRAccountType>(valueOf(kAccountTypes, code));
}

KVRResponseCode KVREnumParser::parseEnumResponseCode(std::string_view code) {
    static constexpr auto kCodes = codes({"DECL", "APPR", "PART", "TECH"});
    return static_cast<KVRResponseCode>(valueOf(kCodes, code));
}

KVRUserInterface KVREnumParser::parseEnumUserInterfaceCode(std::string_view code) {
    static constexpr auto kCodes = codes({"CDSP", "CRCP", "MDSP", "MRCP"});
    return static_cast<KVRUserInterface>(valueOf(kCodes, code));
}

KVRActionType KVREnumParser::parseEnumActionTypeCode(std::string_view code) {
    static constexpr auto kCodes =
        codes({"BUSY", "CPTR", "DISP", "NOVR", "RQID", "PINL", "PINR", "PRNT", "RFRL", "RQDT"});
    return static_cast<KVRActionType>(valueOf(kCodes, code));
}

KVRInitiatingParty KVREnumParser::stringToInitiatingPartyType(std::string_view code) {
    return static_cast<KVRInitiatingParty>(valueOf(kInitiatingPartyReadings, code));
}

KVRInitiatingParty KVREnumParser::stringToInitiatingPartyIssuer(std::string_view code) {
    return static_cast<KVRInitiatingParty>(valueOf(kInitiatingPartyReadings, code));
}

KVRMessageFunction KVREnumParser::stringToMessageFunctionCode(std::string_view code) {
    static constexpr auto kReadings = readings({{"AUTQ", 0},  {"AUTP", 1},  {"CCAV", 14}, {"CCAK", 15}, {"CCAQ", 12},
                                                {"CCAP", 13}, {"CMPV", 4},  {"CMPK", 5},  {"DGNP", 16}, {"DGNQ", 17},
                                                {"FAUQ", 2},  {"FAUP", 3},  {"FCMV", 6},  {"FCMK", 7},  {"FRVA", 10},
                                                {"FRVR", 11}, {"RCLQ", 18}, {"RCLP", 19}, {"RVRA", 8},  {"RVRR", 9}});
    return static_cast<KVRMessageFunction>(valueOf(kReadings, code));
}

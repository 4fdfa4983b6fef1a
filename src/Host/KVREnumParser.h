#pragma once

#include "Host/KVREnumTypes.h"

#include <cstdint>
#include <string>
#include <string_view>

/// Maps the ISO 20022 code sets between their numbers and their four-letter
/// codes. Writing a number outside its set throws a KVRException named
/// KVREnumParser::exceptionName with the set's own reason; reading never fails
/// (an unknown, empty or null code is 0) and compares codes case-sensitively.
class KVREnumParser {
public:
    static constexpr const char* exceptionName = "NSGenericException";

    KVREnumParser() = delete;

    static std::string contentTypeToString(int32_t value);
    static std::string authenticationTypeToString(int32_t value);
    static std::string cardholderIdentificationTypeToString(int32_t value);
    static std::string contextAttendanceCodeTypeToString(int32_t value);
    static std::string transactionEnvironmentCodeTypeToString(int32_t value);
    static std::string transactionChannelCodeTypeToString(int32_t value);
    static std::string poiCardDataReadingCodeTypeToString(int32_t value);
    static std::string instalmentTypeToString(int32_t value);
    static std::string accountTypeToString(int32_t value);
    static std::string messageFunctionCodeTypeToString(int32_t value);
    static std::string initiatingPartyTypeToString(int32_t value);
    static std::string initiatingPartyIssuerToString(int32_t value);

    static KVRAmountType parseEnumAmountType(std::string_view code);
    static KVRAccountType parseEnumAccountType(std::string_view code);
    static KVRResponseCode parseEnumResponseCode(std::string_view code);
    static KVRUserInterface parseEnumUserInterfaceCode(std::string_view code);
    static KVRActionType parseEnumActionTypeCode(std::string_view code);
    static KVRInitiatingParty stringToInitiatingPartyType(std::string_view code);
    static KVRInitiatingParty stringToInitiatingPartyIssuer(std::string_view code);
    static KVRMessageFunction stringToMessageFunctionCode(std::string_view code);
};

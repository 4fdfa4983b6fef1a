#pragma once

#include <string>
#include <string_view>

namespace acqsim {

// Checks of single field values as they travel in the messages.
class FieldFormat {
public:
    static bool isDigits(std::string_view text);
    static bool isHex(std::string_view text);
    static bool isUpperHex(std::string_view text);
    static bool passesLuhn(std::string_view pan);
    // "yyyy-MM-ddTHH:mm:ss", no fraction and no zone.
    static bool isLocalDateTime(std::string_view text);
    // "yyyy-MM".
    static bool isYearMonth(std::string_view text);
    static std::string withoutDashes(std::string_view text);
    static std::string toHex(const unsigned char* bytes, size_t length);
    static std::string fromHex(std::string_view hex);
};

} // namespace acqsim

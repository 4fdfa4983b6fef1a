#include "FieldFormat.h"

#include <algorithm>
#include <cctype>
#include <regex>
#include <stdexcept>

namespace acqsim {

bool FieldFormat::isDigits(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c); });
}

bool FieldFormat::isHex(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isxdigit(c); });
}

bool FieldFormat::isUpperHex(std::string_view text) {
    return isHex(text) && std::none_of(text.begin(), text.end(), [](unsigned char c) { return std::islower(c); });
}

bool FieldFormat::passesLuhn(std::string_view pan) {
    if (pan.size() < 12 || pan.size() > 19 || !isDigits(pan)) {
        return false;
    }
    int sum = 0;
    bool doubleIt = false;
    for (auto it = pan.rbegin(); it != pan.rend(); ++it) {
        int digit = *it - '0';
        if (doubleIt) {
            digit *= 2;
            if (digit > 9) {
                digit -= 9;
            }
        }
        sum += digit;
        doubleIt = !doubleIt;
    }
    return sum % 10 == 0;
}

bool FieldFormat::isLocalDateTime(std::string_view text) {
    static const std::regex pattern(R"(\d{4}-(0[1-9]|1[0-2])-(0[1-9]|[12]\d|3[01])T([01]\d|2[0-3]):[0-5]\d:[0-5]\d)");
    return std::regex_match(text.begin(), text.end(), pattern);
}

bool FieldFormat::isYearMonth(std::string_view text) {
    static const std::regex pattern(R"(\d{4}-(0[1-9]|1[0-2]))");
    return std::regex_match(text.begin(), text.end(), pattern);
}

std::string FieldFormat::withoutDashes(std::string_view text) {
    std::string out;
    std::copy_if(text.begin(), text.end(), std::back_inserter(out), [](char c) { return c != '-'; });
    return out;
}

std::string FieldFormat::toHex(const unsigned char* bytes, size_t length) {
    static const char digits[] = "0123456789ABCDEF";
    std::string out;
    out.reserve(length * 2);
    for (size_t i = 0; i < length; ++i) {
        out.push_back(digits[bytes[i] >> 4]);
        out.push_back(digits[bytes[i] & 0x0F]);
    }
    return out;
}

std::string FieldFormat::fromHex(std::string_view hex) {
    if (hex.size() % 2 != 0 || (!hex.empty() && !isHex(hex))) {
        throw std::invalid_argument("not a hexadecimal byte string");
    }
    std::string out;
    out.reserve(hex.size() / 2);
    for (size_t i = 0; i < hex.size(); i += 2) {
        out.push_back(static_cast<char>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16)));
    }
    return out;
}

} // namespace acqsim

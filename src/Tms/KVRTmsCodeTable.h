#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

/// One code set of the terminal-management messages: consecutive numbers from
/// `first`, each with its four-letter code.
class KVRTmsCodeTable {
public:
    /// `unexpected` is the reason of the exception raised for a number
    /// outside the set; nullptr for a set whose unknown numbers have no code.
    KVRTmsCodeTable(uint32_t first, std::initializer_list<const char*> codes, const char* unexpected);

    /// The code, or nothing for a number outside the set.
    std::optional<std::string> code(uint32_t value) const;
    /// The code; a number outside the set raises the set's exception.
    std::string codeOrThrow(uint32_t value) const;
    /// The number of a code (exact, case-sensitive); 0 for an unknown or null code.
    uint32_t value(const char* code) const;

private:
    uint32_t first_;
    std::vector<const char*> codes_;
    const char* unexpected_;
};

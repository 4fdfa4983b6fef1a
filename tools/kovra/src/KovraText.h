#pragma once

#include <string>

/// Small text helpers for what the tool prints.
class KovraText {
public:
    KovraText() = delete;

    /// Cents as Brazilian reais: 123456 -> "R$ 1.234,56", -5 -> "-R$ 0,05".
    static std::string reais(long long cents);
    /// Columns the text takes on a terminal: UTF-8 code points (the tool's
    /// texts are Latin letters with accents, one column each).
    static size_t width(const std::string& text);
    /// The text followed by blanks up to the given width.
    static std::string padded(const std::string& text, size_t columns);
    /// Seconds with at most two decimals and no trailing zeros: 0.5 -> "0.5".
    static std::string seconds(double value);
};

#include "KovraText.h"

#include <cstdio>

std::string KovraText::reais(long long cents) {
    bool negative = cents < 0;
    unsigned long long value = negative ? 0ULL - static_cast<unsigned long long>(cents) : cents;
    std::string whole = std::to_string(value / 100);
    for (size_t i = whole.size(); i > 3; i -= 3) whole.insert(i - 3, ".");
    char fraction[4];
    std::snprintf(fraction, sizeof fraction, "%02llu", value % 100);
    return std::string(negative ? "-" : "") + "R$ " + whole + "," + fraction;
}

size_t KovraText::width(const std::string& text) {
    size_t columns = 0;
    for (unsigned char c : text)
        if ((c & 0xC0) != 0x80) ++columns;
    return columns;
}

std::string KovraText::padded(const std::string& text, size_t columns) {
    size_t used = width(text);
    return used >= columns ? text : text + std::string(columns - used, ' ');
}

std::string KovraText::seconds(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", value);
    std::string result = text;
    while (!result.empty() && result.back() == '0') result.pop_back();
    if (!result.empty() && result.back() == '.') result.pop_back();
    return result;
}

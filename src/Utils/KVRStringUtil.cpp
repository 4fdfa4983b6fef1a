#include "Utils/KVRStringUtil.h"

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdio>

namespace KVRStringUtil {

std::string vformat(const char* fmt, va_list args) {
    va_list copy;
    va_copy(copy, args);
    int needed = std::vsnprintf(nullptr, 0, fmt, copy);
    va_end(copy);
    if (needed <= 0) return {};
    std::string out(static_cast<size_t>(needed) + 1, '\0');
    std::vsnprintf(out.data(), out.size(), fmt, args);
    out.resize(static_cast<size_t>(needed));
    return out;
}

std::string format(const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    std::string out = vformat(fmt, args);
    va_end(args);
    return out;
}

std::vector<std::string> split(const std::string& text, const std::string& separator) {
    std::vector<std::string> pieces;
    if (separator.empty()) return {text};
    size_t start = 0;
    for (;;) {
        size_t at = text.find(separator, start);
        if (at == std::string::npos) {
            pieces.push_back(text.substr(start));
            return pieces;
        }
        pieces.push_back(text.substr(start, at - start));
        start = at + separator.size();
    }
}

std::string replaceAll(std::string text, const std::string& from, const std::string& to) {
    if (from.empty()) return text;
    size_t at = 0;
    while ((at = text.find(from, at)) != std::string::npos) {
        text.replace(at, from.size(), to);
        at += to.size();
    }
    return text;
}

std::string removeAll(const std::string& text, char c) {
    std::string out;
    out.reserve(text.size());
    for (char ch : text)
        if (ch != c) out.push_back(ch);
    return out;
}

std::string trim(const std::string& text) {
    auto isSpace = [](unsigned char c) { return std::isspace(c) != 0; };
    size_t b = 0, e = text.size();
    while (b < e && isSpace(static_cast<unsigned char>(text[b]))) ++b;
    while (e > b && isSpace(static_cast<unsigned char>(text[e - 1]))) --e;
    return text.substr(b, e - b);
}

std::string toUpper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

bool startsWith(const std::string& text, const std::string& prefix) {
    return text.size() >= prefix.size() && text.compare(0, prefix.size(), prefix) == 0;
}

long long leadingInteger(const std::string& text) {
    size_t i = 0;
    while (i < text.size() && (text[i] == ' ' || text[i] == '\t' || text[i] == '\n')) ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == '-' || text[i] == '+')) negative = text[i++] == '-';
    long long value = 0;
    for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
        int digit = text[i] - '0';
        if (value > (LLONG_MAX - digit) / 10) return negative ? LLONG_MIN : LLONG_MAX;
        value = value * 10 + digit;
    }
    return negative ? -value : value;
}

std::string safeSubstr(const std::string& text, size_t start, size_t length) {
    if (start >= text.size()) return {};
    return text.substr(start, length);
}

}  // namespace KVRStringUtil

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

int32_t leadingInt32(const std::string& text) {
    long long value = leadingInteger(text);
    if (value > INT32_MAX) return INT32_MAX;
    if (value < INT32_MIN) return INT32_MIN;
    return static_cast<int32_t>(value);
}

std::string safeSubstr(const std::string& text, size_t start, size_t length) {
    if (start >= text.size()) return {};
    return text.substr(start, length);
}

size_t utf8SequenceLength(std::string_view text, size_t at, uint32_t& codePoint) {
    auto byte = [&](size_t k) { return static_cast<unsigned char>(text[at + k]); };
    auto continuation = [&](size_t k) { return (byte(k) & 0xC0) == 0x80; };
    size_t remaining = text.size() - at;
    unsigned char lead = byte(0);
    if (lead < 0x80) {
        codePoint = lead;
        return 1;
    }
    if (lead >= 0xC2 && lead <= 0xDF) {
        if (remaining < 2 || !continuation(1)) return 0;
        codePoint = ((lead & 0x1Fu) << 6) | (byte(1) & 0x3Fu);
        return 2;
    }
    if (lead >= 0xE0 && lead <= 0xEF) {
        if (remaining < 3 || !continuation(1) || !continuation(2)) return 0;
        if ((lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xED && byte(1) > 0x9F)) return 0;
        codePoint = ((lead & 0x0Fu) << 12) | ((byte(1) & 0x3Fu) << 6) | (byte(2) & 0x3Fu);
        return 3;
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        if (remaining < 4 || !continuation(1) || !continuation(2) || !continuation(3)) return 0;
        if ((lead == 0xF0 && byte(1) < 0x90) || (lead == 0xF4 && byte(1) > 0x8F)) return 0;
        codePoint = ((lead & 0x07u) << 18) | ((byte(1) & 0x3Fu) << 12) | ((byte(2) & 0x3Fu) << 6) | (byte(3) & 0x3Fu);
        return 4;
    }
    return 0;
}

bool isValidUtf8(std::string_view text) {
    size_t at = 0;
    while (at < text.size()) {
        // ASCII runs are the common case.
        if (static_cast<unsigned char>(text[at]) < 0x80) {
            ++at;
            continue;
        }
        uint32_t codePoint = 0;
        size_t length = utf8SequenceLength(text, at, codePoint);
        if (length == 0) return false;
        at += length;
    }
    return true;
}

}  // namespace KVRStringUtil

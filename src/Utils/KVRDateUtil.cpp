#include "Utils/KVRDateUtil.h"

#include "Utils/KVRClock.h"

#include <cctype>
#include <cstdio>
#include <ctime>
#include <vector>

namespace {

struct Token {
    char field = 0;     // pattern letter, or 0 for a literal
    int count = 0;      // repetitions of the letter
    std::string literal;
};

bool isNumericField(char f) { return f == 'y' || f == 'M' || f == 'd' || f == 'H' || f == 'h' || f == 'm' || f == 's'; }

std::vector<Token> tokenize(const std::string& pattern) {
    std::vector<Token> tokens;
    auto addLiteral = [&tokens](const std::string& text) {
        if (!tokens.empty() && tokens.back().field == 0) tokens.back().literal += text;
        else tokens.push_back(Token{0, 0, text});
    };
    for (size_t i = 0; i < pattern.size();) {
        char c = pattern[i];
        if (c == '\'') {
            if (i + 1 < pattern.size() && pattern[i + 1] == '\'') {
                addLiteral("'");
                i += 2;
                continue;
            }
            std::string text;
            size_t j = i + 1;
            for (; j < pattern.size(); ++j) {
                if (pattern[j] == '\'') {
                    if (j + 1 < pattern.size() && pattern[j + 1] == '\'') {
                        text += '\'';
                        ++j;
                        continue;
                    }
                    break;
                }
                text += pattern[j];
            }
            addLiteral(text);
            i = j + 1;
        } else if (std::isalpha(static_cast<unsigned char>(c))) {
            size_t j = i;
            while (j < pattern.size() && pattern[j] == c) ++j;
            tokens.push_back(Token{c, static_cast<int>(j - i), {}});
            i = j;
        } else {
            addLiteral(std::string(1, c));
            ++i;
        }
    }
    return tokens;
}

std::string padded(int value, int width) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%0*d", width, value);
    return buffer;
}

std::tm localTime(KVRDateUtil::TimePoint date) {
    std::time_t t = std::chrono::system_clock::to_time_t(date);
    std::tm tm{};
    localtime_r(&t, &tm);
    return tm;
}

int currentYear() { return localTime(KVRClock::now()).tm_year + 1900; }

int twoDigitYear(int value) {
    int start = currentYear() - 80;
    int year = start - start % 100 + value;
    if (year < start) year += 100;
    return year;
}

}  // namespace

std::string KVRDateUtil::dateStringWithFormat(const std::string& format, TimePoint date) {
    std::tm tm = localTime(date);
    std::string out;
    for (const Token& token : tokenize(format)) {
        switch (token.field) {
            case 0: out += token.literal; break;
            case 'y': {
                int year = tm.tm_year + 1900;
                out += token.count == 2 ? padded(year % 100, 2) : padded(year, token.count);
                break;
            }
            case 'M': out += padded(tm.tm_mon + 1, token.count); break;
            case 'd': out += padded(tm.tm_mday, token.count); break;
            case 'H': out += padded(tm.tm_hour, token.count); break;
            case 'h': out += padded(tm.tm_hour % 12 == 0 ? 12 : tm.tm_hour % 12, token.count); break;
            case 'm': out += padded(tm.tm_min, token.count); break;
            case 's': out += padded(tm.tm_sec, token.count); break;
            case 'a': out += tm.tm_hour < 12 ? "AM" : "PM"; break;
            default: out += std::string(static_cast<size_t>(token.count), token.field); break;
        }
    }
    return out;
}

std::optional<KVRDateUtil::TimePoint> KVRDateUtil::buildDateWithString(const std::string& text,
                                                                      const std::string& format) {
    std::vector<Token> tokens = tokenize(format);
    int year = 1970, month = 1, day = 1, hour = 0, minute = 0, second = 0;
    bool twelveHour = false, pm = false, sawAmPm = false;
    size_t pos = 0;
    for (size_t k = 0; k < tokens.size(); ++k) {
        const Token& token = tokens[k];
        if (token.field == 0) {
            if (text.compare(pos, token.literal.size(), token.literal) != 0) return std::nullopt;
            pos += token.literal.size();
            continue;
        }
        if (token.field == 'a') {
            std::string marker = text.substr(pos, 2);
            if (marker == "AM" || marker == "am") pm = false;
            else if (marker == "PM" || marker == "pm") pm = true;
            else return std::nullopt;
            sawAmPm = true;
            pos += 2;
            continue;
        }
        if (!isNumericField(token.field)) return std::nullopt;
        bool adjacent = k + 1 < tokens.size() && isNumericField(tokens[k + 1].field);
        size_t maxDigits = adjacent ? static_cast<size_t>(token.count) : 9;
        size_t start = pos;
        while (pos < text.size() && pos - start < maxDigits && std::isdigit(static_cast<unsigned char>(text[pos]))) ++pos;
        size_t digits = pos - start;
        if (digits == 0 || (adjacent && digits != static_cast<size_t>(token.count))) return std::nullopt;
        int value = std::stoi(text.substr(start, digits));
        switch (token.field) {
            case 'y': year = (token.count == 2 && digits == 2) ? twoDigitYear(value) : value; break;
            case 'M': month = value; break;
            case 'd': day = value; break;
            case 'H': hour = value; break;
            case 'h': hour = value; twelveHour = true; break;
            case 'm': minute = value; break;
            case 's': second = value; break;
        }
    }
    if (pos != text.size()) return std::nullopt;
    if (twelveHour) {
        if (hour < 1 || hour > 12) return std::nullopt;
        hour %= 12;
        if (sawAmPm && pm) hour += 12;
    }
    if (month < 1 || month > 12 || day < 1 || day > 31 || hour > 23 || minute > 59 || second > 59) return std::nullopt;

    std::tm tm{};
    tm.tm_year = year - 1900;
    tm.tm_mon = month - 1;
    tm.tm_mday = day;
    tm.tm_hour = hour;
    tm.tm_min = minute;
    tm.tm_sec = second;
    tm.tm_isdst = -1;
    std::time_t t = std::mktime(&tm);
    if (t == static_cast<std::time_t>(-1) && !(year == 1969 && month == 12 && day == 31)) return std::nullopt;
    if (tm.tm_mday != day || tm.tm_mon != month - 1) return std::nullopt;  // 31 February and the like
    return std::chrono::system_clock::from_time_t(t);
}

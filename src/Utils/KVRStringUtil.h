#pragma once

#include <cstdarg>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Small text helpers shared by the whole library.
namespace KVRStringUtil {
/// printf-style formatting into a string.
std::string format(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
std::string vformat(const char* fmt, va_list args);
/// Splits at every occurrence of the separator, keeping empty pieces (like
/// the platform's componentsSeparatedByString:). An empty text gives {""}.
std::vector<std::string> split(const std::string& text, const std::string& separator);
std::string replaceAll(std::string text, const std::string& from, const std::string& to);
std::string removeAll(const std::string& text, char c);
std::string trim(const std::string& text);
std::string toUpper(std::string text);
bool startsWith(const std::string& text, const std::string& prefix);
/// The leading decimal integer of the text (optional sign, leading blanks
/// skipped); 0 when there are no digits. Saturates instead of overflowing.
long long leadingInteger(const std::string& text);
/// leadingInteger clamped to the 32-bit range.
int32_t leadingInt32(const std::string& text);
/// Substring that never throws: clamps start and length to the text.
std::string safeSubstr(const std::string& text, size_t start, size_t length = std::string::npos);
/// Length (1 to 4) of the well-formed UTF-8 sequence at `at`, with its code
/// point; 0 when the bytes there are not one (stray continuation bytes,
/// overlong forms, encoded surrogates, code points above U+10FFFF, a sequence
/// cut short by the end of the text).
size_t utf8SequenceLength(std::string_view text, size_t at, uint32_t& codePoint);
bool isValidUtf8(std::string_view text);
}  // namespace KVRStringUtil

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Converts between application texts (UTF-8) and PIN pad texts (ISO-8859-1,
/// one byte per character, so a 16-character line is 16 bytes).
class KVRDisplayText {
public:
    KVRDisplayText() = delete;

    /// Characters as the user counts them: UTF-8 code points. A byte that does
    /// not start a well-formed sequence counts as one character.
    static size_t characterCount(std::string_view text);

    /// One Latin-1 byte per character: accented letters are kept ("ção" is
    /// E7 E3 6F), controls become spaces, characters outside Latin-1 "?".
    static std::string pinpadCharacters(std::string_view text);

    /// A Latin-1 text from the PIN pad (its notifications) as UTF-8.
    static std::string utf8FromLatin1(std::string_view text);

    /// Display texts were once passed through printf as the format itself.
    /// Texts written for that keep working ("100%%" still shows "100%"), but
    /// nothing is ever read from arguments: "%%" becomes "%" and every other
    /// "%" (a directive such as "%s" or "%n", or a lone "%") stays as written.
    static std::string literalFromFormat(std::string_view text);
};

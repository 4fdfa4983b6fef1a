#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Turns application texts into what a PIN pad display can show: printable
/// ASCII, one byte per character, so a 16-character line is 16 bytes.
class KVRDisplayText {
public:
    KVRDisplayText() = delete;

    /// Characters as the user counts them: UTF-8 code points. A byte that does
    /// not start a well-formed sequence counts as one character.
    static size_t characterCount(std::string_view text);

    /// One printable ASCII byte per character: accented Latin letters lose
    /// their accent ("ção" -> "cao"), blanks and controls become spaces, any
    /// other character becomes "?".
    static std::string pinpadCharacters(std::string_view text);

    /// Display texts were once passed through printf as the format itself.
    /// Texts written for that keep working ("100%%" still shows "100%"), but
    /// nothing is ever read from arguments: "%%" becomes "%" and every other
    /// "%" (a directive such as "%s" or "%n", or a lone "%") stays as written.
    static std::string literalFromFormat(std::string_view text);
};

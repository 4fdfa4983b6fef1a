#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Walks a request text field by field and enforces each field's form. Every
/// violation throws KVRSimLayoutError naming the field and its offset.
class KVRSimFieldReader {
public:
    /// `context` prefixes error messages ("GCR block"); `base` is where `text`
    /// starts in the whole request.
    KVRSimFieldReader(std::string_view text, std::string context, size_t base = 0);

    /// Exactly `width` decimal digits; returns their value.
    long long number(const char* field, size_t width);
    /// Exactly `width` hexadecimal digits (either case).
    std::string hex(const char* field, size_t width);
    /// Exactly `width` printable ASCII characters.
    std::string text(const char* field, size_t width);
    /// Exactly `width` display characters: bytes 0x20 to 0xFF, Latin-1.
    std::string display(const char* field, size_t width);
    /// "0" or "1".
    bool flag(const char* field);
    /// Text right-aligned in `width`, padded on the left with spaces; the
    /// non-blank part must be digits. Returns the whole field.
    std::string rightAlignedDigits(const char* field, size_t width);
    /// A three-digit count of bytes followed by twice as many hex digits.
    std::string countedHex(const char* field);
    /// A three-digit character count and a reader over that many characters.
    KVRSimFieldReader block(const char* field);
    /// The next character, without taking it ('\0' at the end).
    char peek() const;
    size_t remaining() const { return text_.size() - position_; }
    /// Where the next field starts in the whole request.
    size_t offset() const { return base_ + position_; }
    /// Fails unless every character has been taken.
    void expectEnd() const;

private:
    std::string_view take(const char* field, size_t width);
    [[noreturn]] void fail(const char* field, const std::string& rule) const;

    std::string_view text_;
    std::string context_;
    size_t base_;
    size_t position_ = 0;
};

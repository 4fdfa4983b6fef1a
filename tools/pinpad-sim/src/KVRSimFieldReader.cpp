#include "KVRSimFieldReader.h"

#include "KVRSimLayoutError.h"

#include <algorithm>
#include <cctype>

namespace {

bool allOf(std::string_view text, int (*predicate)(int)) {
    return std::all_of(text.begin(), text.end(), [predicate](char c) { return predicate(static_cast<unsigned char>(c)) != 0; });
}

int isPrintableAscii(int c) {
    return c >= 0x20 && c <= 0x7E;
}

}  // namespace

KVRSimFieldReader::KVRSimFieldReader(std::string_view text, std::string context, size_t base)
    : text_(text), context_(std::move(context)), base_(base) {}

std::string_view KVRSimFieldReader::take(const char* field, size_t width) {
    if (remaining() < width) {
        fail(field, "needs " + std::to_string(width) + " characters, only " + std::to_string(remaining()) + " left");
    }
    auto piece = text_.substr(position_, width);
    position_ += width;
    return piece;
}

void KVRSimFieldReader::fail(const char* field, const std::string& rule) const {
    throw KVRSimLayoutError(context_ + ": field " + field + " at offset " + std::to_string(position_) + " " + rule);
}

long long KVRSimFieldReader::number(const char* field, size_t width) {
    size_t start = position_;
    auto piece = take(field, width);
    if (!allOf(piece, isdigit)) {
        position_ = start;
        fail(field, "must be " + std::to_string(width) + " decimal digits");
    }
    return width == 0 ? 0 : std::stoll(std::string(piece));
}

std::string KVRSimFieldReader::hex(const char* field, size_t width) {
    size_t start = position_;
    auto piece = take(field, width);
    if (!allOf(piece, isxdigit)) {
        position_ = start;
        fail(field, "must be " + std::to_string(width) + " hexadecimal digits");
    }
    return std::string(piece);
}

std::string KVRSimFieldReader::text(const char* field, size_t width) {
    size_t start = position_;
    auto piece = take(field, width);
    if (!allOf(piece, isPrintableAscii)) {
        position_ = start;
        fail(field, "must be printable ASCII");
    }
    return std::string(piece);
}

std::string KVRSimFieldReader::display(const char* field, size_t width) {
    size_t start = position_;
    auto piece = take(field, width);
    if (!std::all_of(piece.begin(), piece.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x20; })) {
        position_ = start;
        fail(field, "must be display text (bytes 0x20 to 0xFF)");
    }
    return std::string(piece);
}

bool KVRSimFieldReader::flag(const char* field) {
    size_t start = position_;
    auto piece = take(field, 1);
    if (piece != "0" && piece != "1") {
        position_ = start;
        fail(field, "must be 0 or 1");
    }
    return piece == "1";
}

std::string KVRSimFieldReader::rightAlignedDigits(const char* field, size_t width) {
    size_t start = position_;
    auto piece = take(field, width);
    auto firstNonBlank = piece.find_first_not_of(' ');
    if (firstNonBlank != std::string_view::npos && !allOf(piece.substr(firstNonBlank), isdigit)) {
        position_ = start;
        fail(field, "must be digits right-aligned with blanks on the left");
    }
    return std::string(piece);
}

std::string KVRSimFieldReader::countedHex(const char* field) {
    auto bytes = number(field, 3);
    return hex(field, static_cast<size_t>(bytes) * 2);
}

KVRSimFieldReader KVRSimFieldReader::block(const char* field) {
    auto length = static_cast<size_t>(number(field, 3));
    size_t start = position_;
    take(field, length);
    return KVRSimFieldReader(text_.substr(start, length), context_ + " " + field, base_ + start);
}

char KVRSimFieldReader::peek() const {
    return remaining() > 0 ? text_[position_] : '\0';
}

void KVRSimFieldReader::expectEnd() const {
    if (remaining() != 0) {
        throw KVRSimLayoutError(context_ + ": " + std::to_string(remaining()) + " unexpected characters at offset " +
                                std::to_string(position_));
    }
}

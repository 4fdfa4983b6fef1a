#include "Pinpad/Commands/KVRCommandRequestBuilder.h"

#include <kovra/KVRException.h>

#include "Utils/KVRDateUtil.h"
#include "Utils/KVRStringUtil.h"

#include <charconv>
#include <cstring>

namespace {
constexpr int kBlockLengthWidth = 3;

/// The decimal text of a number ("%lld"), without a trip through printf:
/// every numeric field of every record is written this way.
struct Decimal {
    char digits[24];
    size_t length;
    std::string_view view() const { return std::string_view(digits, length); }
};

Decimal decimal(int64_t value) {
    Decimal text;
    auto result = std::to_chars(text.digits, text.digits + sizeof text.digits, value);
    text.length = static_cast<size_t>(result.ptr - text.digits);
    return text;
}

[[noreturn]] void throwDoesNotFit(size_t length, int limit) {
    throw KVRException("String doesn't fit",
                       KVRStringUtil::format("String has a length of %ld while the limit is %d", static_cast<long>(length), limit));
}
}  // namespace

KVRCommandRequestBuilder::KVRCommandRequestBuilder(char* request, size_t capacity)
    : request_(request), capacity_(capacity) {
    if (request_ == nullptr || capacity_ == 0)
        throw KVRException("Request doesn't fit", "The request buffer is empty");
    request_[0] = '\0';
}

void KVRCommandRequestBuilder::ensureRoom(size_t bytes) const {
    // One byte stays reserved for the terminating NUL.
    size_t used = static_cast<size_t>(position_);
    if (bytes > capacity_ - 1 - used)
        throw KVRException("Request doesn't fit",
                           KVRStringUtil::format("Writing %zu bytes at position %d would pass the end of a %zu-byte buffer",
                                                 bytes, position_, capacity_));
}

void KVRCommandRequestBuilder::write(std::string_view bytes) {
    std::memcpy(request_ + position_, bytes.data(), bytes.size());
    position_ += static_cast<int32_t>(bytes.size());
    request_[position_] = '\0';
}

void KVRCommandRequestBuilder::writePadding(char padding, size_t count) {
    std::memset(request_ + position_, padding, count);
    position_ += static_cast<int32_t>(count);
    request_[position_] = '\0';
}

void KVRCommandRequestBuilder::appendString(std::string_view text, int length) {
    if (length < 0 || text.size() != static_cast<size_t>(length))
        throw KVRException("String doesn't fit",
                           KVRStringUtil::format("String has a length of %ld while the desired is %ld",
                                                 static_cast<long>(text.size()), static_cast<long>(length)));
    ensureRoom(text.size());
    write(text);
}

void KVRCommandRequestBuilder::appendStringRight(std::string_view text, int length, char padding) {
    if (length < 0 || text.size() > static_cast<size_t>(length)) throwDoesNotFit(text.size(), length);
    ensureRoom(static_cast<size_t>(length));
    write(text);
    writePadding(padding, static_cast<size_t>(length) - text.size());
}

void KVRCommandRequestBuilder::appendStringLeft(std::string_view text, int length, char padding) {
    if (length < 0 || text.size() > static_cast<size_t>(length)) throwDoesNotFit(text.size(), length);
    ensureRoom(static_cast<size_t>(length));
    writePadding(padding, static_cast<size_t>(length) - text.size());
    write(text);
}

void KVRCommandRequestBuilder::appendInt(int32_t value, int length) { appendStringLeft(decimal(value).view(), length, '0'); }

void KVRCommandRequestBuilder::appendLong(int64_t value, int length) { appendStringLeft(decimal(value).view(), length, '0'); }

void KVRCommandRequestBuilder::appendBool(bool value) { appendStringRight(value ? "1" : "0", 1, ' '); }

void KVRCommandRequestBuilder::appendNSDate(TimePoint date, const std::string& format, int length) {
    appendStringRight(KVRDateUtil::dateStringWithFormat(format, date), length, ' ');
}

void KVRCommandRequestBuilder::appendDate(TimePoint date) { appendNSDate(date, "yyMMdd", 6); }

void KVRCommandRequestBuilder::appendTime(TimePoint date) { appendNSDate(date, "hhmmss", 6); }

void KVRCommandRequestBuilder::startCommandBlock() {
    int32_t start = position_;
    appendInt(0, kBlockLengthWidth);
    blockstarts_.push_back(start);
}

void KVRCommandRequestBuilder::stopCommandBlock() { stopCommandBlock(0); }

void KVRCommandRequestBuilder::stopCommandBlock(int32_t extra) {
    if (blockstarts_.empty())
        throw KVRException("StopCommandBlock called before StartCommandBlock",
                           "StopCommandBlock called before StartCommandBlock");
    int32_t start = blockstarts_.back();
    blockstarts_.pop_back();
    int64_t blockLength = static_cast<int64_t>(position_) - kBlockLengthWidth - start + extra;
    std::string digits(decimal(blockLength).view());
    if (digits.size() > static_cast<size_t>(kBlockLengthWidth))
        throw KVRException("Integer doesn't fit",
                           KVRStringUtil::format("Integer has a length of %d while the limit is %d",
                                                 static_cast<int>(digits.size()), kBlockLengthWidth));
    std::string field(kBlockLengthWidth - digits.size(), '0');
    field += digits;
    std::memcpy(request_ + start, field.data(), field.size());
}

#include "Pinpad/Commands/KVRCommandResponseReader.h"

#include "Utils/KVRDateUtil.h"
#include "Utils/KVRStringUtil.h"

#include <climits>
#include <cstring>

KVRCommandResponseReader::KVRCommandResponseReader(const char* response)
    : response_(response ? std::string_view(response) : std::string_view()) {}

KVRCommandResponseReader::KVRCommandResponseReader(std::string_view response)
    : response_(response.substr(0, response.find('\0'))) {}

std::string KVRCommandResponseReader::readString(int32_t length) {
    if (length <= 0) return {};
    std::string field = KVRStringUtil::safeSubstr(response_, static_cast<size_t>(position_), static_cast<size_t>(length));
    skip(length);
    return field;
}

int32_t KVRCommandResponseReader::readInt(int32_t length) {
    long long value = KVRStringUtil::leadingInteger(readString(length));
    if (value > INT32_MAX) return INT32_MAX;
    if (value < INT32_MIN) return INT32_MIN;
    return static_cast<int32_t>(value);
}

bool KVRCommandResponseReader::readBool() { return readInt(1) == 1; }

std::optional<KVRCommandResponseReader::TimePoint> KVRCommandResponseReader::readDate() {
    return KVRDateUtil::buildDateWithString(readString(6), "yyMMdd");
}

void KVRCommandResponseReader::skip(int32_t length) {
    if (length <= 0) return;
    // Past the end every read is empty; stopping there keeps the position from overflowing.
    int64_t next = static_cast<int64_t>(position_) + length;
    position_ = static_cast<int32_t>(next > static_cast<int64_t>(response_.size()) ? response_.size() : next);
}

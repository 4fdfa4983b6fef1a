#include "Tms/KVRTmsCodeTable.h"

#include <kovra/KVRException.h>

#include "Host/KVREnumParser.h"

#include <cstring>

KVRTmsCodeTable::KVRTmsCodeTable(uint32_t first, std::initializer_list<const char*> codes, const char* unexpected)
    : first_(first), codes_(codes), unexpected_(unexpected) {}

std::optional<std::string> KVRTmsCodeTable::code(uint32_t value) const {
    if (value < first_ || value - first_ >= codes_.size()) return std::nullopt;
    return std::string(codes_[value - first_]);
}

std::string KVRTmsCodeTable::codeOrThrow(uint32_t value) const {
    if (auto text = code(value)) return *text;
    throw KVRException(KVREnumParser::exceptionName, unexpected_ ? unexpected_ : "");
}

uint32_t KVRTmsCodeTable::value(const char* code) const {
    if (code == nullptr) return 0;
    for (size_t i = 0; i < codes_.size(); ++i)
        if (std::strcmp(code, codes_[i]) == 0) return first_ + static_cast<uint32_t>(i);
    return 0;
}

#include "KVRSimLatin1.h"

std::string KVRSimLatin1::toUtf8(const std::string& latin1) {
    std::string utf8;
    for (unsigned char c : latin1) {
        if (c < 0x80) {
            utf8.push_back(static_cast<char>(c));
        } else {
            utf8.push_back(static_cast<char>(0xC0 | (c >> 6)));
            utf8.push_back(static_cast<char>(0x80 | (c & 0x3F)));
        }
    }
    return utf8;
}

std::string KVRSimLatin1::fromUtf8(const std::string& utf8) {
    std::string latin1;
    for (size_t i = 0; i < utf8.size();) {
        auto lead = static_cast<unsigned char>(utf8[i]);
        size_t length = lead < 0x80 ? 1 : (lead >> 5) == 0x6 ? 2 : (lead >> 4) == 0xE ? 3 : (lead >> 3) == 0x1E ? 4 : 0;
        if (length == 0 || i + length > utf8.size()) {
            latin1.push_back('?');
            ++i;
            continue;
        }
        unsigned code = length == 1 ? lead : lead & (0x7F >> length);
        bool valid = true;
        for (size_t k = 1; k < length; ++k) {
            auto next = static_cast<unsigned char>(utf8[i + k]);
            valid = valid && (next & 0xC0) == 0x80;
            code = (code << 6) | (next & 0x3F);
        }
        latin1.push_back(valid && code <= 0xFF ? static_cast<char>(code) : '?');
        i += valid ? length : 1;
    }
    return latin1;
}

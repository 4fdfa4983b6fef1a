#include "Utils/KVRUUID.h"

#include "Utils/KVRPlatformHooks.h"

#include <openssl/rand.h>

#include <cstdio>
#include <random>

namespace {
std::string randomUuid() {
    unsigned char b[16];
    if (RAND_bytes(b, sizeof b) != 1) {
        std::random_device rd;
        for (auto& byte : b) byte = static_cast<unsigned char>(rd());
    }
    b[6] = static_cast<unsigned char>((b[6] & 0x0F) | 0x40);
    b[8] = static_cast<unsigned char>((b[8] & 0x3F) | 0x80);
    char out[37];
    std::snprintf(out, sizeof out, "%02X%02X%02X%02X-%02X%02X-%02X%02X-%02X%02X-%02X%02X%02X%02X%02X%02X", b[0], b[1],
                  b[2], b[3], b[4], b[5], b[6], b[7], b[8], b[9], b[10], b[11], b[12], b[13], b[14], b[15]);
    return out;
}
}  // namespace

std::string KVRUUID::uuidString() {
    auto hooks = KVRPlatformHooks::installed();
    return hooks->uuid ? hooks->uuid() : randomUuid();
}

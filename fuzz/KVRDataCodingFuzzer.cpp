// Feeds arbitrary bytes to the base64 decoder and to gzip inflation, and
// checks that encoding and deflating come back to what they started from.

#include "Host/KVRDataCoding.h"
#include "KVRFuzzCheck.h"

#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view bytes(reinterpret_cast<const char*>(data), size);
    if (auto decoded = KVRDataCoding::dataWithBase64EncodedString(bytes))
        check(KVRDataCoding::dataWithBase64EncodedString(KVRDataCoding::base64Encoding(*decoded)) == decoded);
    check(KVRDataCoding::dataWithBase64EncodedString(KVRDataCoding::base64EncodingWithLineLength(bytes, 76)) ==
          std::string(bytes));
    KVRDataCoding::gzipInflate(bytes, 1u << 20);
    auto deflated = KVRDataCoding::gzipDeflate(bytes);
    check(deflated && KVRDataCoding::gzipInflate(*deflated) == std::string(bytes));
    return 0;
}

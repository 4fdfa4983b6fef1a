// Feeds arbitrary bytes, as XML or binary, to the property-list loader. Any
// abort inside libplist, or a crash, is a finding; a refusal is fine.

#include "KVRFuzzCheck.h"
#include "Platform/KVRPropertyList.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string why;
    auto dictionary = KVRPropertyList::parseDictionary(std::string(reinterpret_cast<const char*>(data), size), &why);
    check(dictionary.has_value() || !why.empty());
    return 0;
}

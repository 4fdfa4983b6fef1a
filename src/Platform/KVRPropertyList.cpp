#include "Platform/KVRPropertyList.h"

#include <plist/plist.h>

#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <string_view>
#include <sys/stat.h>

namespace {

struct PlistDeleter {
    void operator()(void* node) const { plist_free(static_cast<plist_t>(node)); }
};
using PlistPtr = std::unique_ptr<void, PlistDeleter>;

std::optional<KVRPropertyValue> scalar(plist_t node) {
    switch (plist_get_node_type(node)) {
        case PLIST_BOOLEAN: {
            uint8_t b = 0;
            plist_get_bool_val(node, &b);
            return KVRPropertyValue(b != 0);
        }
        case PLIST_UINT: {
            uint64_t v = 0;
            plist_get_uint_val(node, &v);
            return KVRPropertyValue(static_cast<long long>(v));
        }
        case PLIST_REAL: {
            double d = 0;
            plist_get_real_val(node, &d);
            return KVRPropertyValue(d);
        }
        case PLIST_STRING: {
            // The pointer getter: plist_get_string_val asserts (aborts) on a NUL inside the string.
            uint64_t length = 0;
            const char* text = plist_get_string_ptr(node, &length);
            return KVRPropertyValue(text ? std::string(text, length) : std::string());
        }
        default:
            return std::nullopt;
    }
}

void fail(std::string* why, const std::string& reason) {
    if (why) *why = reason;
}

}  // namespace

std::optional<KVRPropertyDictionary> KVRPropertyList::parseDictionary(const std::string& bytes, std::string* why) {
    if (bytes.empty()) return fail(why, "empty file"), std::nullopt;
    if (bytes.size() > 16u * 1024 * 1024) return fail(why, "file larger than 16 MiB"), std::nullopt;
    // libplist keeps a NUL inside the key or string it reads and later aborts
    // on it (its getters assert that the length is the C string's). XML
    // allows no NUL at all, so such a text is refused before parsing; a
    // binary list is printed as XML first, which shows every key and string
    // as it stands without asserting anything.
    bool binary = plist_is_binary(bytes.data(), static_cast<uint32_t>(bytes.size())) != 0;
    if (!binary && bytes.find('\0') != std::string::npos) return fail(why, "NUL byte in an XML property list"), std::nullopt;
    plist_t raw = nullptr;
    plist_from_memory(bytes.data(), static_cast<uint32_t>(bytes.size()), &raw);
    PlistPtr root(raw);
    if (!root) return fail(why, "not a property list"), std::nullopt;
    if (plist_get_node_type(raw) != PLIST_DICT) return fail(why, "root is not a dictionary"), std::nullopt;
    if (binary) {
        char* xml = nullptr;
        uint32_t length = 0;
        plist_to_xml(raw, &xml, &length);
        bool nul = xml && std::string_view(xml, length).find('\0') != std::string_view::npos;
        plist_to_xml_free(xml);
        if (nul) return fail(why, "NUL byte inside a key or string of a binary property list"), std::nullopt;
    }

    KVRPropertyDictionary dictionary;
    plist_dict_iter it = nullptr;
    plist_dict_new_iter(raw, &it);
    for (;;) {
        char* key = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(raw, it, &key, &value);
        if (!key) break;
        if (auto v = scalar(value)) dictionary[key] = *v;
        std::free(key);
    }
    std::free(it);
    return dictionary;
}

std::optional<KVRPropertyDictionary> KVRPropertyList::readDictionary(const std::string& path, std::string* why) {
    struct stat st {};
    if (stat(path.c_str(), &st) != 0) return fail(why, "no such file"), std::nullopt;
    if (!S_ISREG(st.st_mode)) return fail(why, "not a regular file"), std::nullopt;
    std::ifstream in(path, std::ios::binary);
    if (!in) return fail(why, "cannot be read"), std::nullopt;
    std::ostringstream content;
    content << in.rdbuf();
    return parseDictionary(content.str(), why);
}

bool KVRPropertyList::writeDictionary(const std::string& path, const KVRPropertyDictionary& dictionary, bool binary) {
    PlistPtr root(plist_new_dict());
    for (const auto& [key, value] : dictionary) {
        plist_t node = nullptr;
        if (auto b = std::get_if<bool>(&value)) node = plist_new_bool(*b);
        else if (auto i = std::get_if<long long>(&value)) node = plist_new_uint(static_cast<uint64_t>(*i));
        else if (auto d = std::get_if<double>(&value)) node = plist_new_real(*d);
        else node = plist_new_string(std::get<std::string>(value).c_str());
        plist_dict_set_item(static_cast<plist_t>(root.get()), key.c_str(), node);
    }
    char* out = nullptr;
    uint32_t length = 0;
    if (binary) plist_to_bin(static_cast<plist_t>(root.get()), &out, &length);
    else plist_to_xml(static_cast<plist_t>(root.get()), &out, &length);
    if (!out) return false;
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(out, length);
    std::free(out);
    return static_cast<bool>(file);
}

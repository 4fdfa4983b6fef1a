#include <kovra/KVRNumber.h>
#include <kovra/KVRPropertyValue.h>

#include <cstdlib>

namespace KVRPropertyValues {

bool boolValue(const KVRPropertyValue& value) {
    if (auto b = std::get_if<bool>(&value)) return *b;
    if (auto i = std::get_if<long long>(&value)) return *i != 0;
    if (auto d = std::get_if<double>(&value)) return *d != 0;
    const std::string& s = std::get<std::string>(value);
    size_t i = 0;
    while (i < s.size() && (s[i] == ' ' || s[i] == '\t')) ++i;
    if (i < s.size() && (s[i] == '+' || s[i] == '-')) ++i;
    while (i < s.size() && s[i] == '0') ++i;
    if (i >= s.size()) return false;
    char c = s[i];
    return c == 'Y' || c == 'y' || c == 'T' || c == 't' || (c >= '1' && c <= '9');
}

std::string stringValue(const KVRPropertyValue& value) {
    if (auto b = std::get_if<bool>(&value)) return *b ? "1" : "0";
    if (auto i = std::get_if<long long>(&value)) return KVRNumber(*i).description();
    if (auto d = std::get_if<double>(&value)) return KVRNumber(*d).description();
    return std::get<std::string>(value);
}

double doubleValue(const KVRPropertyValue& value) {
    if (auto b = std::get_if<bool>(&value)) return *b ? 1 : 0;
    if (auto i = std::get_if<long long>(&value)) return static_cast<double>(*i);
    if (auto d = std::get_if<double>(&value)) return *d;
    return std::strtod(std::get<std::string>(value).c_str(), nullptr);
}

}  // namespace KVRPropertyValues

#pragma once

#include <kovra/KVRExport.h>

#include <map>
#include <string>
#include <variant>

/// A scalar of a property list: boolean, integer, real or string.
using KVRPropertyValue = std::variant<bool, long long, double, std::string>;
using KVRPropertyDictionary = std::map<std::string, KVRPropertyValue>;

/// Interpretations of a property value the way the platform's accessors read them.
namespace KVRPropertyValues {
/// true for boolean true, a non-zero number, or a string starting with Y, y, T, t or a digit 1-9.
KOVRA_API bool boolValue(const KVRPropertyValue& value);
/// The string itself, or the number printed as the platform prints numbers.
KOVRA_API std::string stringValue(const KVRPropertyValue& value);
/// The number, 1/0 for booleans, or the leading number of a string (0 when none).
KOVRA_API double doubleValue(const KVRPropertyValue& value);
}  // namespace KVRPropertyValues

#pragma once

#include <kovra/KVRNumber.h>

#include <chrono>
#include <string>
#include <variant>

/// One attribute's value in memory: unset, text, number or date.
using KVRStoredValue = std::variant<std::monostate, std::string, KVRNumber, std::chrono::system_clock::time_point>;

#pragma once

#include <kovra/KVRExport.h>

#include <optional>
#include <string>

/// A flat view of the enrolled merchant (or, for a merchant an earlier
/// release kept only in "register.plist", of that file, re-enrolling it).
class KOVRA_API KVRUserInfoProvider {
public:
    KVRUserInfoProvider();

    std::optional<std::string> afKey;
    std::optional<std::string> documentNumber;
    std::optional<std::string> store;
    std::optional<std::string> address;
    std::optional<std::string> kovracode;
};

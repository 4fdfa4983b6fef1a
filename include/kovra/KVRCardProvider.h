#pragma once

#include <kovra/KVRError.h>
#include <kovra/KVRExport.h>

#include <functional>
#include <optional>
#include <string>

/// Reads a card on the PIN pad and returns the last four digits of its number.
class KOVRA_API KVRCardProvider {
public:
    using Completion =
        std::function<void(bool success, std::optional<std::string> lastDigits, std::optional<KVRError> error)>;

    KVRCardProvider() = delete;

    static void getCardPan(Completion block);
};

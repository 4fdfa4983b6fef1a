#pragma once

#include <kovra/KVRError.h>

#include <functional>
#include <optional>

/// The completion every public operation reports through: success, or
/// failure with a catalogue error (or a transport error where stated).
using KVRCompletion = std::function<void(bool success, std::optional<KVRError> error)>;

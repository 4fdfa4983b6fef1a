#pragma once

#include <string>

/// What the PIN pad reports about itself in the GIN reply. Each text is
/// space-filled on the right to its field's width.
struct KVRSimIdentity {
    static constexpr size_t kNameWidth = 20;
    static constexpr size_t kModelWidth = 19;
    static constexpr size_t kSoftwareVersionWidth = 20;
    static constexpr size_t kManagerVersionWidth = 16;
    static constexpr size_t kSerialNumberWidth = 20;

    std::string name = "KOVRA PINPAD SIM";
    std::string model = "KVR-SIM-100";
    std::string contactless = "0";
    std::string softwareVersion = std::string("KVRSIM ") + KOVRA_PINPAD_SIM_VERSION;
    std::string specificationVersion = "1.08";
    std::string managerVersion = "KVRMNG 1.0.0";
    std::string serialNumber = "KVR0000000000001234";
};

#include "Platform/KVRAccessoryManager.h"

#include <kovra/KVRApplicationInfo.h>

#include "Platform/KVRSerialAccessory.h"
#include "Platform/KVRSettingsKeys.h"
#include "Platform/KVRTcpAccessory.h"
#include "Utils/KVRPlatformHooks.h"
#include "Utils/KVRStringUtil.h"

#include <algorithm>
#include <cctype>
#include <libserialport.h>

namespace {

// Words that USB PIN pads put in their product or maker strings.
const char* const kPinpadWords[] = {"pinpad", "pin pad", "pin-pad", "abecs", "gertec", "ingenico", "verifone", "pax"};

std::string lowercase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::string portText(const char* text) { return text ? std::string(text) : std::string(); }

}  // namespace

KVRAccessoryManager& KVRAccessoryManager::sharedAccessoryManager() {
    static KVRAccessoryManager* manager = new KVRAccessoryManager();
    return *manager;
}

std::vector<std::shared_ptr<KVRAccessory>> KVRAccessoryManager::connectedAccessories() {
    auto hooks = KVRPlatformHooks::installed();
    return hooks->accessories ? hooks->accessories() : machineAccessories();
}

std::vector<std::shared_ptr<KVRAccessory>> KVRAccessoryManager::machineAccessories() {
    auto setting = KVRApplicationInfo::stringForKey(KVRSettingsKeys::kPinpad);
    return setting ? configuredAccessories(*setting) : enumeratedAccessories();
}

std::shared_ptr<KVRAccessory> KVRAccessoryManager::accessoryForEntry(const std::string& rawEntry) {
    std::string entry = KVRStringUtil::trim(rawEntry);
    if (entry.empty()) return nullptr;
    if (KVRStringUtil::startsWith(entry, "tcp://")) return KVRTcpAccessory::fromUrl(entry);
    size_t at = entry.rfind('@');
    if (at == std::string::npos) return std::make_shared<KVRSerialAccessory>(entry);
    std::string path = entry.substr(0, at);
    std::string protocol = "abecs-" + entry.substr(at + 1);
    if (path.empty() || !KVRSerialAccessory::baudRateForProtocol(protocol)) return nullptr;
    return std::make_shared<KVRSerialAccessory>(path, std::string(), std::vector<std::string>{protocol});
}

bool KVRAccessoryManager::looksLikePinpad(const std::string& path, const std::string& description) {
    if (KVRStringUtil::startsWith(path, "/dev/ttyACM") || KVRStringUtil::startsWith(path, "/dev/rfcomm")) return true;
    std::string text = lowercase(description);
    for (const char* word : kPinpadWords)
        if (text.find(word) != std::string::npos) return true;
    return false;
}

std::vector<std::shared_ptr<KVRAccessory>> KVRAccessoryManager::configuredAccessories(const std::string& setting) {
    std::vector<std::shared_ptr<KVRAccessory>> list;
    for (const auto& entry : KVRStringUtil::split(setting, ","))
        if (auto accessory = accessoryForEntry(entry)) list.push_back(std::move(accessory));
    return list;
}

std::vector<std::shared_ptr<KVRAccessory>> KVRAccessoryManager::enumeratedAccessories() {
    std::vector<std::shared_ptr<KVRAccessory>> list;
    struct sp_port** ports = nullptr;
    if (sp_list_ports(&ports) != SP_OK) return list;
    for (int i = 0; ports[i]; ++i) {
        std::string path = portText(sp_get_port_name(ports[i]));
        std::string description = portText(sp_get_port_description(ports[i]));
        if (sp_get_port_transport(ports[i]) == SP_TRANSPORT_USB)
            description += " " + portText(sp_get_port_usb_manufacturer(ports[i])) + " " +
                           portText(sp_get_port_usb_product(ports[i]));
        if (looksLikePinpad(path, description))
            list.push_back(std::make_shared<KVRSerialAccessory>(path, KVRStringUtil::trim(description)));
    }
    sp_free_port_list(ports);
    return list;
}

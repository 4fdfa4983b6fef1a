#pragma once

#include <nlohmann/json.hpp>

#include <memory>
#include <string>
#include <vector>

class KVRMerchantModel;

/// How the tool shows an enrolled merchant.
class KovraMerchantFormat {
public:
    using Merchant = std::shared_ptr<KVRMerchantModel>;

    KovraMerchantFormat() = delete;

    static nlohmann::ordered_json toJson(const Merchant& merchant);
    static nlohmann::ordered_json toJson(const std::vector<Merchant>& merchants);
    /// "KOVRA-0001  Padaria ..." then indented document, key and address lines.
    static std::vector<std::string> lines(const Merchant& merchant, const std::string& indent = "");
    /// "Rua Augusta 1500, Consolação, São Paulo", empty without an address.
    static std::string addressText(const KVRMerchantModel& merchant);
};

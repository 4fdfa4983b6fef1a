#include "KovraMerchantFormat.h"

#include "KovraText.h"

#include <kovra/KVRAddressModel.h>
#include <kovra/KVRMerchantModel.h>

namespace {

nlohmann::ordered_json orNull(const std::optional<std::string>& text) {
    return text ? nlohmann::ordered_json(*text) : nlohmann::ordered_json(nullptr);
}

std::string orDash(const std::optional<std::string>& text) { return text && !text->empty() ? *text : "-"; }

void append(std::string& text, const std::optional<std::string>& part, const char* separator) {
    if (!part || part->empty()) return;
    if (!text.empty()) text += separator;
    text += *part;
}

}  // namespace

std::string KovraMerchantFormat::addressText(const KVRMerchantModel& merchant) {
    auto address = merchant.address();
    if (!address) return std::string();
    std::string street;
    append(street, address->street(), "");
    append(street, address->doorNumber(), " ");
    std::string text = street;
    append(text, address->complement(), ", ");
    append(text, address->neighborhood(), ", ");
    append(text, address->city(), ", ");
    append(text, address->district(), " - ");
    append(text, address->zipCode(), ", ");
    return text;
}

nlohmann::ordered_json KovraMerchantFormat::toJson(const Merchant& merchant) {
    nlohmann::ordered_json address = nullptr;
    if (auto stored = merchant->address()) {
        address = {{"street", orNull(stored->street())},           {"doorNumber", orNull(stored->doorNumber())},
                   {"complement", orNull(stored->complement())},   {"neighborhood", orNull(stored->neighborhood())},
                   {"city", orNull(stored->city())},               {"district", orNull(stored->district())},
                   {"zipCode", orNull(stored->zipCode())}};
    }
    return {{"kovracode", orNull(merchant->kovracode())},
            {"merchantName", orNull(merchant->merchantName())},
            {"documentNumber", orNull(merchant->documentNumber())},
            {"saleAffiliationKey", orNull(merchant->saleAffiliationKey())},
            {"address", address}};
}

nlohmann::ordered_json KovraMerchantFormat::toJson(const std::vector<Merchant>& merchants) {
    auto list = nlohmann::ordered_json::array();
    for (const auto& merchant : merchants) list.push_back(toJson(merchant));
    return list;
}

std::vector<std::string> KovraMerchantFormat::lines(const Merchant& merchant, const std::string& indent) {
    std::string address = addressText(*merchant);
    return {indent + orDash(merchant->kovracode()) + "  " + orDash(merchant->merchantName()),
            indent + "  " + KovraText::padded("document", 20) + orDash(merchant->documentNumber()),
            indent + "  " + KovraText::padded("sale affiliation", 20) + orDash(merchant->saleAffiliationKey()),
            indent + "  " + KovraText::padded("address", 20) + (address.empty() ? "-" : address)};
}

#include "MerchantDirectory.h"

#include "DefaultMerchants.h"
#include "FieldFormat.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

#include <nlohmann/json.hpp>

namespace acqsim {
namespace {

using nlohmann::json;

std::string field(const json& object, const char* name, const std::string& where) {
    auto it = object.find(name);
    if (it == object.end() || !it->is_string()) {
        throw std::runtime_error(where + ": \"" + name + "\" must be a string");
    }
    return it->get<std::string>();
}

MerchantAddress readAddress(const json& object, const std::string& where) {
    auto it = object.find("address");
    if (it == object.end() || !it->is_object()) {
        throw std::runtime_error(where + ": \"address\" must be an object");
    }
    const std::string at = where + ".address";
    return MerchantAddress{field(*it, "city", at),         field(*it, "street", at),
                           field(*it, "district", at),     field(*it, "doorNumber", at),
                           field(*it, "neighborhood", at), field(*it, "zipCode", at),
                           field(*it, "complement", at)};
}

} // namespace

MerchantDirectory MerchantDirectory::fromJson(const std::string& text) {
    json root = json::parse(text, nullptr, false);
    if (root.is_discarded() || !root.is_object()) {
        throw std::runtime_error("merchant file is not a JSON object keyed by KovraCode");
    }
    MerchantDirectory directory;
    for (const auto& [code, entry] : root.items()) {
        if (!entry.is_object()) {
            throw std::runtime_error(code + ": merchant must be an object");
        }
        Merchant merchant{code, field(entry, "saleAffiliationKey", code), field(entry, "companyName", code),
                          field(entry, "documentNumber", code), readAddress(entry, code)};
        std::string compact = FieldFormat::withoutDashes(merchant.saleAffiliationKey);
        if (compact.empty()) {
            throw std::runtime_error(code + ": empty sale affiliation key");
        }
        if (!directory.kovraCodeByCompactKey_.emplace(compact, code).second) {
            throw std::runtime_error(code + ": sale affiliation key " + merchant.saleAffiliationKey +
                                     " is already used by another merchant");
        }
        directory.byKovraCode_.emplace(code, std::move(merchant));
    }
    return directory;
}

MerchantDirectory MerchantDirectory::fromFile(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        throw std::runtime_error("cannot read merchant file " + file.string());
    }
    std::ostringstream text;
    text << in.rdbuf();
    try {
        return fromJson(text.str());
    } catch (const std::exception& error) {
        throw std::runtime_error(file.string() + ": " + error.what());
    }
}

MerchantDirectory MerchantDirectory::defaults() {
    return fromJson(kDefaultMerchantsJson);
}

const Merchant* MerchantDirectory::findByKovraCode(const std::string& kovraCode) const {
    auto it = byKovraCode_.find(kovraCode);
    return it == byKovraCode_.end() ? nullptr : &it->second;
}

const Merchant* MerchantDirectory::findBySaleAffiliationKey(const std::string& key) const {
    auto it = kovraCodeByCompactKey_.find(FieldFormat::withoutDashes(key));
    return it == kovraCodeByCompactKey_.end() ? nullptr : findByKovraCode(it->second);
}

} // namespace acqsim

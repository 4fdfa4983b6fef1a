#pragma once

#include <filesystem>
#include <map>
#include <string>

namespace acqsim {

struct MerchantAddress {
    std::string city;
    std::string street;
    std::string district;
    std::string doorNumber;
    std::string neighborhood;
    std::string zipCode;
    std::string complement;
};

struct Merchant {
    std::string kovraCode;
    std::string saleAffiliationKey;   // as issued, e.g. "1234-5678"
    std::string companyName;
    std::string documentNumber;
    MerchantAddress address;
};

// The merchants this acquirer knows, from a JSON object keyed by KovraCode:
//   { "KOVRA-0001": { "saleAffiliationKey": "1234-5678", "companyName": ...,
//     "documentNumber": ..., "address": { "city", "street", "district",
//     "doorNumber", "neighborhood", "zipCode", "complement" } } }
class MerchantDirectory {
public:
    // Throws std::runtime_error naming the fault when the text is not such a
    // file or two merchants share a sale affiliation key.
    static MerchantDirectory fromJson(const std::string& text);
    static MerchantDirectory fromFile(const std::filesystem::path& file);
    static MerchantDirectory defaults();

    const Merchant* findByKovraCode(const std::string& kovraCode) const;
    // Matches with or without the "-" separators (the sale messages send the
    // key without them).
    const Merchant* findBySaleAffiliationKey(const std::string& key) const;
    size_t size() const { return byKovraCode_.size(); }

private:
    std::map<std::string, Merchant> byKovraCode_;
    std::map<std::string, std::string> kovraCodeByCompactKey_;
};

} // namespace acqsim

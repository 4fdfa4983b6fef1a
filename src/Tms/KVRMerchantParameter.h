#pragma once

#include <kovra/KVRAddress.h>

#include <memory>
#include <optional>
#include <string>

struct TBXMLElement;

/// `MrchntParams`: the merchant as the acquirer enrolled it.
class KVRMerchantParameter {
public:
    std::optional<std::string> saleAffiliationKey;  // Sak
    std::shared_ptr<KVRAddress> address;            // Adr
    std::optional<std::string> companyName;         // CpnyNm
    std::optional<std::string> identificationCode;  // IdCd

    /// Each `Adr` creates a new address in the object store as it is read,
    /// whether or not the caller keeps the reply.
    void read(const TBXMLElement* firstChild);
};

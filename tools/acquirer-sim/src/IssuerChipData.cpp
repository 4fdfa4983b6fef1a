#include "IssuerChipData.h"

#include "FieldFormat.h"

#include <stdexcept>

#include <openssl/evp.h>

namespace acqsim {

std::string IssuerChipData::authorisationResponseCode(const std::string& responseCode) {
    if (responseCode == "APPR") {
        return "00";
    }
    if (responseCode == "PART") {
        return "10";
    }
    if (responseCode == "TECH") {
        return "96";
    }
    return "05";
}

std::string IssuerChipData::build(const std::string& responseCode, const std::string& cardRequestData,
                                  const std::string& receiptId) {
    const std::string arc = authorisationResponseCode(responseCode);
    const std::string arcHex = FieldFormat::toHex(reinterpret_cast<const unsigned char*>(arc.data()), arc.size());
    const std::string seed = cardRequestData + receiptId;
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    if (!EVP_Digest(seed.data(), seed.size(), digest, &length, EVP_sha256(), nullptr)) {
        throw std::runtime_error("SHA-256 is not available");
    }
    const std::string cryptogram = FieldFormat::toHex(digest, 8);
    return "8A02" + arcHex + "910A" + cryptogram + arcHex;
}

} // namespace acqsim

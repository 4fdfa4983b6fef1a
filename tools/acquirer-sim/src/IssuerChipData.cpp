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
    std::string echoed;
    const std::string arqc = tagValue(cardRequestData, "9F26");
    if (arqc.size() == 16) echoed = "9F2608" + arqc;
    return echoed + "8A02" + arcHex + "910A" + cryptogram + arcHex;
}

std::string IssuerChipData::tagValue(const std::string& tlvHex, const std::string& wanted) {
    auto byteAt = [&tlvHex](size_t at) -> int {
        if (at + 2 > tlvHex.size()) return -1;
        try {
            return std::stoi(tlvHex.substr(at, 2), nullptr, 16);
        } catch (const std::exception&) {
            return -1;
        }
    };
    size_t at = 0;
    while (at < tlvHex.size()) {
        int first = byteAt(at);
        if (first < 0) return {};
        size_t tagLength = (first & 0x1F) == 0x1F ? 4 : 2;
        if (at + tagLength > tlvHex.size()) return {};
        std::string tag = tlvHex.substr(at, tagLength);
        at += tagLength;
        int length = byteAt(at);
        if (length < 0) return {};
        at += 2;
        if (length > 0x7F) {
            length = byteAt(at);
            if (length < 0) return {};
            at += 2;
        }
        size_t valueLength = static_cast<size_t>(length) * 2;
        if (at + valueLength > tlvHex.size()) return {};
        if (tag == wanted) return tlvHex.substr(at, valueLength);
        at += valueLength;
    }
    return {};
}

} // namespace acqsim

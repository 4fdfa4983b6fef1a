#pragma once

#include <cstdint>
#include <optional>
#include <string>

class XMLWriter;
struct TBXMLElement;

/// One certification-authority public key of the host's CAPK table.
class KVRCapks {
public:
    std::optional<std::string> recIdx;          // RecIdx
    std::optional<std::string> capkIdx;         // CapkIdx
    std::optional<std::string> checkSum;        // CheckSum
    std::optional<std::string> dataSetVersion;  // DataSetVersion
    std::optional<std::string> exponent;        // Exponent, hexadecimal digits
    std::optional<std::string> modulus;         // Modulus, hexadecimal digits
    std::optional<std::string> rid;             // RID
    std::optional<int32_t> exponentLength;      // ExponentLen, in bytes
    std::optional<int32_t> modulusLength;       // ModulusLen, in bytes
    std::optional<int32_t> acquirerNumber;      // AcquirerNumber

    /// Fills the fields from the children of a `Capk` element. The record
    /// index is spelled `RecIdx` here, unlike the AID table's `Recidx`.
    void read(const TBXMLElement* capk);
    /// A `Capk` element with every field that is set.
    void write(XMLWriter& writer) const;
};

#pragma once

#include <cstdint>
#include <optional>
#include <string>

class XMLWriter;

/// A card brand of the host's brand table (`CrdBrdTbl`). Only written: the
/// table download does not keep the brands the host sends.
class KVRCardBrand {
public:
    int32_t identification = 0;                   // Id
    std::optional<std::string> brandDescription;  // Description
    int32_t brandType = 0;                        // BrandType

    void write(XMLWriter& writer) const;
};

#pragma once

#include <cstdint>
#include <optional>
#include <string>

class XMLWriter;

/// A card-number range of a brand (`BinRng`). Only written: the table
/// download does not keep the ranges the host sends.
class KVRBinRange {
public:
    int32_t minRange = 0;                       // MinRange
    int32_t maxRange = 0;                       // MaxRange
    int32_t tefBrandId = 0;                     // TefBrandId
    std::optional<std::string> dataSetVersion;  // not written

    /// Children in the order MaxRange, MinRange, TefBrandId.
    void write(XMLWriter& writer) const;
};

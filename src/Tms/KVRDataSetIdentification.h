#pragma once

#include "Tms/KVRTmsEnumTypes.h"

#include <cstdint>
#include <optional>
#include <string>

class XMLWriter;
struct TBXMLElement;

/// `Id` of a data set: which data set a request asks for or a reply carries.
class KVRDataSetIdentification {
public:
    /// Always written; 0 has no code, so a data set must be given a category.
    KVRDataSetCategory type = static_cast<KVRDataSetCategory>(0);  // Tp
    std::optional<std::string> identification;                      // Id
    std::optional<std::string> version;                             // Vrsn
    std::optional<std::string> creationDateTime;                    // CreDtTm
    std::optional<std::string> name;                                // Nm

    void write(XMLWriter& writer) const;
    /// An unknown category reads as 0.
    void read(const TBXMLElement* firstChild);

    /// Raises "Unexpected DataSetCategoryCode." for a number outside 1 to 12.
    static std::string SerializeDataSetCategoryCodeToString(uint32_t value);
    static KVRDataSetCategory dataSetCategoryFromString(const char* code);
};

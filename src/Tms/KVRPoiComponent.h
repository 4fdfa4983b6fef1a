#pragma once

#include "Tms/KVRTmsEnumTypes.h"
#include "Tms/KVRWritableElement.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class XMLWriter;

/// `Id` of a POI component.
class KVRPointOfInteractionComponentIdentification {
public:
    std::optional<std::string> itemNumber;              // ItmNb
    std::optional<std::string> providerIdentification;  // PrvdrId
    std::optional<std::string> identification;          // Id
    std::optional<std::string> serialNumber;            // SrlNb

    /// Children in the order Id, PrvdrId, ItmNb, SrlNb.
    void write(XMLWriter& writer) const;
};

/// `POICmpnt` that may carry data sets of its own after its identification.
class KVRPoiComponent {
public:
    std::vector<std::shared_ptr<KVRWritableElement>> listDataSet;
    KVRPoiComponentType type = KVRPoiComponentTypeAQPP;  // Tp, always written
    std::shared_ptr<KVRPointOfInteractionComponentIdentification> identification;  // Id

    void write(XMLWriter& writer) const;

    /// Raises "Unexpected PoiComponentTypeCode." for a number outside 0 to 14.
    static std::string PoiComponentTypeCodeToString(uint32_t value);
};

/// `POICmpnt` describing the terminal itself: type and identification only.
class KVRPoiComponentTerm {
public:
    KVRPoiComponentType type = KVRPoiComponentTypeAQPP;  // Tp, always written
    std::shared_ptr<KVRPointOfInteractionComponentIdentification> identification;  // Id

    void write(XMLWriter& writer) const;

    /// Raises "Unexpected PoiComponentTypeCode." for a number outside 0 to 14.
    static std::string poiComponentTypeCodeToString(uint32_t value);
};

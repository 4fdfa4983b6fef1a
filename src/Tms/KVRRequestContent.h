#pragma once

#include "Tms/KVRDataSetIdentification.h"
#include "Tms/KVREvent.h"
#include "Tms/KVRPoiComponent.h"

#include <memory>
#include <optional>
#include <string>

class XMLWriter;

/// `DataSetReqrd`: the data set the terminal asks the host for.
class KVRDataSetRequired {
public:
    std::shared_ptr<KVRDataSetIdentification> identification;  // Id

    void write(XMLWriter& writer) const;
};

/// `Cntt` of a requested data set.
class KVRRequestContent {
public:
    std::shared_ptr<KVRPoiComponent> poiComponent;          // POICmpnt (first)
    std::shared_ptr<KVRPoiComponentTerm> poiComponentTerm;  // POICmpnt (second)
    std::shared_ptr<KVRDataSetRequired> dataSetRequired;    // DataSetReqrd
    std::shared_ptr<KVREvent> event;                        // Evt
    std::optional<std::string> errors;                      // Errs

    /// Children in the order POICmpnt, POICmpnt, DataSetReqrd, Errs, Evt.
    void write(XMLWriter& writer) const;
};

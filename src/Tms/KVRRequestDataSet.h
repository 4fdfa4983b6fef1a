#pragma once

#include "Tms/KVRDataSetIdentification.h"
#include "Tms/KVRRequestContent.h"
#include "Tms/KVRWritableElement.h"

#include <memory>
#include <optional>
#include <string>

class XMLWriter;

/// `DataSet` of a status report: one data set the terminal reports or asks for.
class KVRRequestDataSet : public KVRWritableElement {
public:
    std::shared_ptr<KVRDataSetIdentification> dataIdentification;  // Id
    std::optional<std::string> sequenceCounter;                    // SeqCntr
    std::shared_ptr<KVRRequestContent> requestContent;             // Cntt

    void write(XMLWriter& writer) const override;
    /// A document of its own, with the status report's declaration and root,
    /// holding only this data set.
    std::string write() const;
};

#pragma once

#include "Host/Messages/KVRAuthorisationRequestData.h"
#include "Host/Messages/KVRHeader.h"

#include <memory>
#include <string>

class XMLWriter;

/// `AccptrAuthstnReq`, the request posted to the authoriser. The body comes
/// before the header: the host expects that order.
class KVRAcceptorAuthorisation {
public:
    static constexpr const char* namespaceURI = "urn:AcceptorAuthorisationRequestV02.1";

    std::shared_ptr<KVRAuthorisationRequestData> authorisationRequest;
    std::shared_ptr<KVRHeader> header;

    /// The whole document: declaration, `Document` with its namespace, this element.
    std::string write() const;
    /// This element alone, inside whatever the writer has open.
    void write(XMLWriter& writer) const;
};

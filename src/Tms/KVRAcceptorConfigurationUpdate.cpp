#include "Tms/KVRAcceptorConfigurationUpdate.h"

#include "Host/TBXML.h"

#include <cstring>

namespace {
bool named(const TBXMLElement* element, const char* name) { return std::strcmp(element->name, name) == 0; }

// A new element object that reads the element's children.
template <class Element>
std::shared_ptr<Element> readNew(const TBXMLElement* element) {
    auto object = std::make_shared<Element>();
    object->read(element->firstChild);
    return object;
}
}  // namespace

void KVRContent::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "MrchntParams")) {
            merchantParameters = readNew<KVRMerchantParameter>(e);
        } else if (named(e, "TermnlParams")) {
            terminalParameters = readNew<KVRTerminalParameter>(e);
        } else if (named(e, "HstComParams")) {
            hostCommunicationParameters = readNew<KVRHostCommunicationParameters>(e);
        } else if (named(e, "ApplParams")) {
            appParameters = readNew<KVRApplicationParameter>(e);
        }
    }
}

void KVRDataSet::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "Id")) {
            identification = readNew<KVRDataSetIdentification>(e);
        } else if (named(e, "Cntt")) {
            content = readNew<KVRContent>(e);
        }
    }
}

void KVRAcceptorConfiguration::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "POIId")) {
            poiIdentification = readNew<KVRPoilIdentification>(e);
        } else if (named(e, "DataSet")) {
            dataSet = readNew<KVRDataSet>(e);
        }
    }
}

void KVRAcceptorConfigurationUpdateData::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "Hdr")) {
            header = readNew<KVRTmsHeader>(e);
        } else if (named(e, "AccptrCfgtn")) {
            acceptorConfiguration = readNew<KVRAcceptorConfiguration>(e);
        } else if (named(e, "SctyTrlr")) {
            securityTrailer = readNew<KVRSecurityTrailer>(e);
        }
    }
}

void KVRAcceptorConfigurationUpdate::read(const std::string& body) {
    std::optional<KVRError> error;
    TBXML xml(body, &error);
    // A reply cut short may still hold the element; it is refused as a whole.
    if (error) return;
    const TBXMLElement* element = xml.rootXMLElement();
    while (element && !named(element, "AccptrCfgtnUpd")) element = element->firstChild;
    if (element) data = readNew<KVRAcceptorConfigurationUpdateData>(element);
}

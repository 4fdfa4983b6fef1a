#include "Tms/KVRHostCommunicationParameters.h"

#include "Host/TBXML.h"

#include <cstring>

void KVRHostCommunicationParameters::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (std::strcmp(e->name, "HstId") == 0) {
            hostIdentification = e->text;
        } else if (std::strcmp(e->name, "Adr") == 0) {
            addressData = std::make_shared<KVRHostAddress>();
            addressData->read(e->firstChild);
        }
    }
}

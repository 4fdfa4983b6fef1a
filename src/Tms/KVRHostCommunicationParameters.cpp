#include "Tms/KVRHostCommunicationParameters.h"

#include "Host/Messages/KVRElementReading.h"
#include "Host/TBXML.h"

using KVRElementReading::named;
using KVRElementReading::text;
using KVRElementReading::nested;

void KVRHostCommunicationParameters::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "HstId")) {
            hostIdentification = text(e);
        } else if (named(e, "Adr")) {
            addressData = nested<KVRHostAddress>(e);
        }
    }
}

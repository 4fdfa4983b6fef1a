#include "Tms/KVRHostCommunicationParameters.h"

#include "Host/Messages/KVRElementReading.h"
#include "Host/TBXML.h"

using KVRElementReading::named;
using KVRElementReading::nested;

void KVRHostCommunicationParameters::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "HstId")) {
            hostIdentification = e->text;
        } else if (named(e, "Adr")) {
            addressData = nested<KVRHostAddress>(e);
        }
    }
}

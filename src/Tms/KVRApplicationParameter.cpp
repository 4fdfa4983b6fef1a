#include "Tms/KVRApplicationParameter.h"

#include "Host/Messages/KVRElementReading.h"
#include "Host/TBXML.h"

using KVRElementReading::named;
using KVRElementReading::text;

void KVRApplicationParameter::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "ApplId")) {
            applicationIdentification = text(e);
        } else if (named(e, "Vrsn")) {
            // Recognised, deliberately not converted: nothing reads the version.
        } else if (named(e, "Params")) {
            parameters = text(e);
        }
    }
}

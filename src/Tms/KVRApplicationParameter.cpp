#include "Tms/KVRApplicationParameter.h"

#include "Host/TBXML.h"

#include <cstring>

void KVRApplicationParameter::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (std::strcmp(e->name, "ApplId") == 0) {
            applicationIdentification = e->text;
        } else if (std::strcmp(e->name, "Vrsn") == 0) {
            // Recognised, deliberately not converted: nothing reads the version.
        } else if (std::strcmp(e->name, "Params") == 0) {
            parameters = e->text;
        }
    }
}

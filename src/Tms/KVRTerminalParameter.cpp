#include "Tms/KVRTerminalParameter.h"

#include <kovra/KVRTmsTableModel.h>

#include "Host/TBXML.h"

#include <cstring>

void KVRTerminalParameter::read(const TBXMLElement* firstChild) {
    auto stored = KVRTmsTableModel::findFirst();
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (std::strcmp(e->name, "AidTbl") == 0) {
            if (tableAID && stored && stored->aidTable()) tableAID->readAidString(*stored->aidTable(), nullptr);
        } else if (std::strcmp(e->name, "CapkTable") == 0) {
            if (capkTable && stored && stored->capkTable()) capkTable->readCapkString(*stored->capkTable(), nullptr);
        }
    }
}

#include "Tms/KVRTerminalParameter.h"

#include <kovra/KVRTmsTableModel.h>

#include "Host/Messages/KVRElementReading.h"
#include "Host/TBXML.h"

using KVRElementReading::named;

void KVRTerminalParameter::read(const TBXMLElement* firstChild) {
    // The store is asked only when there is a table to refresh: a plain read
    // of a reply, the usual case, costs no query.
    auto stored = tableAID || capkTable ? KVRTmsTableModel::findFirst() : nullptr;
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "AidTbl")) {
            if (tableAID && stored && stored->aidTable()) tableAID->readAidString(*stored->aidTable(), nullptr);
        } else if (named(e, "CapkTable")) {
            if (capkTable && stored && stored->capkTable()) capkTable->readCapkString(*stored->capkTable(), nullptr);
        }
    }
}

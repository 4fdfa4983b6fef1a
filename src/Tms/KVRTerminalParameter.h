#pragma once

#include "Tms/KVRAidTable.h"
#include "Tms/KVRBinRange.h"
#include "Tms/KVRCapkTable.h"
#include "Tms/KVRCardBrand.h"

#include <memory>

struct TBXMLElement;

/// `TermnlParams`: the EMV tables of the reply. The tables reach the store
/// as raw text cut from the reply by the table download, not through this
/// object.
class KVRTerminalParameter {
public:
    std::shared_ptr<KVRAidTable> tableAID;
    std::shared_ptr<KVRCapkTable> capkTable;
    std::shared_ptr<KVRBinRange> binRange;
    std::shared_ptr<KVRCardBrand> cardBrand;

    /// An `AidTbl` or `CapkTable` child re-reads the tables already stored
    /// into `tableAID` / `capkTable` when those exist; reading never creates
    /// them, so a plain read changes nothing. Harmless without a stored table.
    void read(const TBXMLElement* firstChild);
};

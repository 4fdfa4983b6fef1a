#pragma once

#include "Tms/KVRCapkTableCommand.h"
#include "Tms/KVRCapks.h"

#include <kovra/KVRError.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

struct TBXMLElement;

/// The host's CAPK table (`CapkTable`), turned into PIN pad records.
class KVRCapkTable {
public:
    /// The key being converted: the last one read.
    std::shared_ptr<KVRCapks> capks;

    /// One record per `Capk` element, in document order. Text that does not
    /// parse gives nothing and the XML reader's error; a key whose ModulusLen
    /// or ExponentLen asks for more digits than its text holds gives nothing
    /// and loadingTablesError. A successful read leaves `error` as it was, so
    /// one error variable can collect the failures of several tables.
    std::optional<std::vector<std::shared_ptr<KVRCapkTableCommand>>> readCapkString(const std::string& text,
                                                                                    std::optional<KVRError>* error);
    /// Reads the `Capk` element into a new `capks` and builds its record;
    /// nothing when the key's lengths disagree with its texts.
    std::shared_ptr<KVRCapkTableCommand> capkCommandFromXml(const TBXMLElement* element);
};

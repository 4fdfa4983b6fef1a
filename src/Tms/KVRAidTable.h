#pragma once

#include "Tms/KVRAid.h"
#include "Tms/KVRAidTableCommand.h"

#include <kovra/KVRError.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

class XMLWriter;
struct TBXMLElement;

/// The host's AID table (`AidTbl`), turned into PIN pad records.
class KVRAidTable {
public:
    /// The applications of the last table read, in document order.
    std::vector<std::shared_ptr<KVRAid>> Aids;

    /// One record per `Aid` element, in document order; `Aids` gets the
    /// matching applications. Text that does not parse gives nothing and the
    /// XML reader's error. A successful read leaves `error` as it was, so one
    /// error variable can collect the failures of several tables.
    std::optional<std::vector<std::shared_ptr<KVRAidTableCommand>>> readAidString(const std::string& text,
                                                                                  std::optional<KVRError>* error);
    /// The record of one `Aid` element. The merchant identifier, category code
    /// and terminal identifier of the record are fixed, whatever the host
    /// sends. Given the `AidTbl` element itself, it visits every child and
    /// returns an empty record.
    std::shared_ptr<KVRAidTableCommand> aidCommandFromXml(const TBXMLElement* element);
    /// An `AidTbl` element holding every application of `Aids`.
    void writeAidWithXmlWriter(XMLWriter& writer) const;
};

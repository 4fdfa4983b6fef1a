#pragma once

class KVRCommandRequestBuilder;

/// A table record (AID or CAPK) that writes its fixed-width fields into the
/// block of a table-load command.
class KVRTableRecordCommand {
public:
    virtual ~KVRTableRecordCommand() = default;
    virtual void getCommand(KVRCommandRequestBuilder& builder) const = 0;
};

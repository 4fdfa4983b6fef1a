#pragma once

#include "Pinpad/Commands/KVRTableRecordCommand.h"
#include "Tms/KVRFixedText.h"

#include <cstdint>

class KVRCommandRequestBuilder;

/// One CAPK record (table type 2) of the PIN pad's table-load command. Each
/// text field holds its record width plus a terminator; see KVRFixedText for
/// host texts that are too long.
class KVRCapkTableCommand : public KVRTableRecordCommand {
public:
    /// Characters of the record, without its three-digit length.
    static constexpr int recordLength = 608;

    int32_t TAB_ACQ = 0;
    KVRFixedText<2> TAB_RECIDX;
    KVRFixedText<10> T2_RID;
    KVRFixedText<2> T2_CAPKIDX;
    KVRFixedText<2> T2_RUF1;
    KVRFixedText<6> T2_EXP;
    KVRFixedText<496> T2_MOD;
    bool T2_CHKSTAT = false;
    KVRFixedText<40> T2_CHECKSUM;
    KVRFixedText<42> T2_RUF2;

    /// Appends the record as one block whose length counts its own three
    /// digits too ("611"). A field that does not fit raises "String doesn't fit".
    void getCommand(KVRCommandRequestBuilder& builder) const override;
};

#pragma once

#include "Pinpad/Commands/KVRTableRecordCommand.h"
#include "Tms/KVRFixedText.h"

#include <cstdint>

class KVRCommandRequestBuilder;

/// One AID record (table type 1) of the PIN pad's table-load command. Each
/// text field holds its record width plus a terminator; see KVRFixedText for
/// host texts that are too long.
class KVRAidTableCommand : public KVRTableRecordCommand {
public:
    /// Characters of the record, without its three-digit length.
    static constexpr int recordLength = 281;

    int32_t TAB_ACQ = 0;
    int32_t TAB_RECIDX = 0;
    KVRFixedText<32> T1_AID;
    int32_t T1_APPTYPE = 0;
    KVRFixedText<16> T1_DEFLABEL;
    int32_t T1_ICCSTD = 0;
    KVRFixedText<4> T1_APPVER1;
    KVRFixedText<4> T1_APPVER2;
    KVRFixedText<4> T1_APPVER3;
    int32_t T1_TRMCNTRY = 0;
    int32_t T1_TRMCURR = 0;
    int32_t T1_TRMCRREXP = 0;
    KVRFixedText<15> T1_MERCHID;
    KVRFixedText<4> T1_MCC;
    KVRFixedText<8> T1_TRMID;
    KVRFixedText<6> T1_TRMCAPAB;
    KVRFixedText<10> T1_ADDTRMCP;
    int32_t T1_TRMTYP = 0;
    KVRFixedText<10> T1_TACDEF;
    KVRFixedText<10> T1_TACDEN;
    KVRFixedText<10> T1_TACONL;
    KVRFixedText<8> T1_FLRLIMIT;
    KVRFixedText<1> T1_TCC;
    KVRFixedText<1> T1_CTLSZEROAM;
    KVRFixedText<1> T1_CTLSMODE;
    KVRFixedText<8> T1_CTLSTRNLIM;
    KVRFixedText<8> T1_CTLSFLRLIM;
    KVRFixedText<8> T1_CTLSCVMLIM;
    KVRFixedText<4> T1_CTLSAPPVER;
    KVRFixedText<1> T1_RUF1;
    KVRFixedText<40> T1_TDOLDEF;
    KVRFixedText<40> T1_DDOLDEF;
    KVRFixedText<8> T1_ARCOFFLN;
    // In the PIN pad's record definition, but never filled nor sent.
    KVRFixedText<10> T1_CTLSTACDEF;
    KVRFixedText<10> T1_CTLSTACDEN;
    KVRFixedText<10> T1_CTLSTACONL;

    /// Appends the record as one block whose length counts its own three
    /// digits too ("284"). A field that does not fit raises "String doesn't fit".
    void getCommand(KVRCommandRequestBuilder& builder) const override;
};

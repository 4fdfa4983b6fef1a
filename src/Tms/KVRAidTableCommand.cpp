#include "Tms/KVRAidTableCommand.h"

#include "Pinpad/Commands/KVRCommandRequestBuilder.h"

namespace {
constexpr int32_t kAidTableType = 1;
// The PIN pad counts the length digits in the record length.
constexpr int32_t kLengthDigits = 3;
}  // namespace

void KVRAidTableCommand::getCommand(KVRCommandRequestBuilder& b) const {
    b.startCommandBlock();
    b.appendInt(kAidTableType, 1);
    b.appendInt(TAB_ACQ, 2);
    b.appendInt(TAB_RECIDX, 2);
    b.appendInt(static_cast<int32_t>(T1_AID.length() / 2), 2);
    T1_AID.appendRight(b, '0');
    b.appendInt(T1_APPTYPE, 2);
    T1_DEFLABEL.appendRight(b, ' ');
    b.appendInt(T1_ICCSTD, 2);
    T1_APPVER1.appendLeft(b, '0');
    T1_APPVER2.appendLeft(b, '0');
    T1_APPVER3.appendLeft(b, '0');
    b.appendInt(T1_TRMCNTRY, 3);
    b.appendInt(T1_TRMCURR, 3);
    b.appendInt(T1_TRMCRREXP, 1);
    T1_MERCHID.appendExact(b);
    T1_MCC.appendLeft(b, '0');
    T1_TRMID.appendExact(b);
    T1_TRMCAPAB.appendLeft(b, '0');
    T1_ADDTRMCP.appendExact(b);
    b.appendInt(T1_TRMTYP, 2);
    T1_TACDEF.appendExact(b);
    T1_TACDEN.appendExact(b);
    T1_TACONL.appendExact(b);
    // Limits are padded on the right, unlike the versions and codes above.
    T1_FLRLIMIT.appendRight(b, '0');
    T1_TCC.appendRight(b, '0');
    T1_CTLSZEROAM.appendRight(b, '0');
    T1_CTLSMODE.appendRight(b, '0');
    T1_CTLSTRNLIM.appendRight(b, '0');
    T1_CTLSFLRLIM.appendRight(b, '0');
    T1_CTLSCVMLIM.appendRight(b, '0');
    T1_CTLSAPPVER.appendRight(b, '0');
    T1_RUF1.appendRight(b, '0');
    T1_TDOLDEF.appendRight(b, '0');
    T1_DDOLDEF.appendRight(b, '0');
    T1_ARCOFFLN.appendExact(b);
    b.stopCommandBlock(kLengthDigits);
}

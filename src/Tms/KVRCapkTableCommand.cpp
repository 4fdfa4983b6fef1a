#include "Tms/KVRCapkTableCommand.h"

#include "Pinpad/Commands/KVRCommandRequestBuilder.h"

namespace {
constexpr int32_t kCapkTableType = 2;
// The PIN pad counts the length digits in the record length.
constexpr int32_t kLengthDigits = 3;

int32_t bytesOf(size_t hexDigits) { return static_cast<int32_t>(hexDigits / 2); }
}  // namespace

void KVRCapkTableCommand::getCommand(KVRCommandRequestBuilder& b) const {
    b.startCommandBlock();
    b.appendInt(kCapkTableType, 1);
    b.appendInt(TAB_ACQ, 2);
    // Text, unlike the AID record's index: a non-numeric index passes as it is.
    TAB_RECIDX.appendLeft(b, '0');
    T2_RID.appendRight(b, '0');
    T2_CAPKIDX.appendLeft(b, '0');
    T2_RUF1.appendRight(b, '0');
    b.appendInt(bytesOf(T2_EXP.length()), 1);
    T2_EXP.appendRight(b, '0');
    b.appendInt(bytesOf(T2_MOD.length()), 3);
    T2_MOD.appendRight(b, '0');
    b.appendBool(T2_CHKSTAT);
    T2_CHECKSUM.appendRight(b, '0');
    T2_RUF2.appendRight(b, '0');
    b.stopCommandBlock(kLengthDigits);
}

#include "Pinpad/Commands/KVRGocCommandRequest.h"

namespace {
// A tag list is a block of its own: the block length, then the byte count
// and the hex text ("055" "026" + 52 characters; "003" "000" when empty).
void appendHexBlock(KVRCommandRequestBuilder& b, const std::string& hex) {
    b.startCommandBlock();
    b.appendInt(static_cast<int32_t>(hex.size() / 2), 3);
    b.appendString(hex, static_cast<int>(hex.size()));
    b.stopCommandBlock();
}
}  // namespace

int KVRGocCommandRequest::acquirerDataLength() const {
    if (acqidx == 1) return 3;
    if (acqidx == 2) return 26;
    return 0;
}

void KVRGocCommandRequest::getCommand(char* buffer) {
    auto& b = beginCommand(buffer, "GOC");
    b.startCommandBlock();
    b.appendLong(amount, 12);
    b.appendInt(cashback, 12);
    b.appendBool(exclist);
    b.appendBool(connect);
    b.appendInt(ruf, 1);
    b.appendInt(method, 1);
    b.appendInt(keydix, 2);
    b.appendString(wkenc, 32);
    b.appendInt(riskman, 1);
    b.appendLong(flrlimit, 8);
    b.appendInt(tpbrs, 2);
    b.appendLong(tvbrs, 8);
    b.appendInt(mtpbrs, 2);
    int length = acquirerDataLength();
    b.appendInt(length, 3);
    b.appendString(acqpr, length);
    b.stopCommandBlock();

    appendHexBlock(b, tags1);
    appendHexBlock(b, tags2);

    if (acqidx == 1) {
        b.appendInt(acrprTransactionType, 2);
        b.appendBool(acqprBool);
    } else if (acqidx == 2) {
        b.appendString(acqprPin, 32);
    }
}

#include "Pinpad/Commands/KVRGcrCommandRequest.h"

#include "Utils/KVRClock.h"

KVRGcrCommandRequest::KVRGcrCommandRequest() : date(KVRClock::now()) {}

void KVRGcrCommandRequest::getCommand(char* buffer) {
    auto& b = beginCommand(buffer, "GCR");
    b.startCommandBlock();
    b.appendInt(acqidxreq, 2);
    b.appendInt(apptypreq, 2);
    b.appendLong(amount, 12);
    b.appendDate(date);
    b.appendTime(date);
    b.appendStringLeft(tabver, 10, ' ');
    b.stopCommandBlock();
}

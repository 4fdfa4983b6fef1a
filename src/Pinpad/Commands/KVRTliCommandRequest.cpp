#include "Pinpad/Commands/KVRTliCommandRequest.h"

void KVRTliCommandRequest::getCommand(char* buffer) {
    auto& b = beginCommand(buffer, "TLI");
    b.startCommandBlock();
    b.appendInt(acqidxreq, 2);
    b.appendStringLeft(tabver, 10, ' ');
    b.stopCommandBlock();
}

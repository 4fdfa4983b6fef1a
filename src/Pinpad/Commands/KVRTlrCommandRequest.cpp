#include "Pinpad/Commands/KVRTlrCommandRequest.h"

void KVRTlrCommandRequest::getCommand(char* buffer) {
    auto& b = beginCommand(buffer, "TLR");
    b.startCommandBlock();
    b.appendInt((aidCommand ? 1 : 0) + (capkCommand ? 1 : 0), 2);
    if (aidCommand) aidCommand->getCommand(b);
    if (capkCommand) capkCommand->getCommand(b);
    b.stopCommandBlock();
}

#include "Pinpad/Commands/KVRTleCommandRequest.h"

void KVRTleCommandRequest::getCommand(char* buffer) {
    auto& b = beginCommand(buffer, "TLE");
    b.startCommandBlock();
    b.stopCommandBlock();
}

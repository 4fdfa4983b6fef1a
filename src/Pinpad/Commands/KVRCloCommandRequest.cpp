#include "Pinpad/Commands/KVRCloCommandRequest.h"

void KVRCloCommandRequest::getCommand(char* buffer) {
    auto& b = beginCommand(buffer, "CLO");
    b.startCommandBlock();
    b.appendString(message, 32);
    b.stopCommandBlock();
}

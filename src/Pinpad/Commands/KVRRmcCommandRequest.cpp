#include "Pinpad/Commands/KVRRmcCommandRequest.h"

void KVRRmcCommandRequest::getCommand(char* buffer) {
    auto& b = beginCommand(buffer, "RMC");
    b.startCommandBlock();
    b.appendStringRight(message, 32, ' ');
    b.stopCommandBlock();
}

#include "Pinpad/Commands/KVRGinCommandRequest.h"

void KVRGinCommandRequest::getCommand(char* buffer) {
    auto& b = beginCommand(buffer, "GIN");
    b.startCommandBlock();
    b.appendInt(acqidx, 2);
    b.stopCommandBlock();
}

#include "Pinpad/Commands/KVROpnCommandRequest.h"

void KVROpnCommandRequest::getCommand(char* buffer) {
    auto& b = beginCommand(buffer, "OPN");
    b.startCommandBlock();
    b.stopCommandBlock();
}

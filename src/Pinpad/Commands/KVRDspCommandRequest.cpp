#include "Pinpad/Commands/KVRDspCommandRequest.h"

void KVRDspCommandRequest::getCommand(char* buffer) {
    auto& b = beginCommand(buffer, "DSP");
    b.startCommandBlock();
    b.appendStringRight(message, 32, ' ');
    b.stopCommandBlock();
}

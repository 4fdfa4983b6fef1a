#include "Pinpad/Commands/KVRGpnCommandRequest.h"

void KVRGpnCommandRequest::getCommand(char* buffer) {
    auto& b = beginCommand(buffer, "GPN");
    b.startCommandBlock();
    b.appendInt(method, 1);
    b.appendInt(keydix, 2);
    if (method == 0) b.appendStringRight(wkenc, 32, ' ');
    b.appendInt(panLength, 2);
    b.appendStringLeft(pan, 19, ' ');
    b.appendInt(entries, 1);
    b.appendInt(minimum, 2);
    b.appendInt(maximum, 2);
    b.appendStringRight(message, 32, ' ');
    b.stopCommandBlock();
}

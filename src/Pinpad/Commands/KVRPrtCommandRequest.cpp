#include "Pinpad/Commands/KVRPrtCommandRequest.h"

#include <kovra/KVRException.h>

void KVRPrtCommandRequest::getCommand(char* buffer) {
    auto& b = beginCommand(buffer, "PRT");
    b.startCommandBlock();
    b.appendInt(printAction, 1);
    switch (printAction) {
    case 0:
        b.appendInt(size, 1);
        b.appendInt(alignment, 1);
        b.appendStringRight(message.substr(0, 3), 3, ' ');
        break;
    case 1:
        b.appendInt(horizontal, 4);
        break;
    case 2:
        b.appendInt(steps, 4);
        break;
    default:
        throw KVRException("Erro !!", "Erro na implementação !!!");
    }
    b.stopCommandBlock();
}

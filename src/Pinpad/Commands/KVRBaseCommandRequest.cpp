#include "Pinpad/Commands/KVRBaseCommandRequest.h"

#include <kovra/KVRException.h>

KVRBaseCommandRequest::~KVRBaseCommandRequest() = default;

void KVRBaseCommandRequest::getCommand(char*) {
    throw KVRException("Não foi implementado !", "Não foi implementado");
}

KVRCommandRequestBuilder& KVRBaseCommandRequest::beginCommand(char* buffer, const char* name) {
    builder = std::make_unique<KVRCommandRequestBuilder>(buffer);
    builder->appendStringRight(name, 3, ' ');
    return *builder;
}

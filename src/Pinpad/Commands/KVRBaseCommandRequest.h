#pragma once

#include "Pinpad/Commands/KVRCommandRequestBuilder.h"

#include <memory>

/// A PIN pad command that prints itself as an ABECS text.
class KVRBaseCommandRequest {
public:
    KVRBaseCommandRequest() = default;
    virtual ~KVRBaseCommandRequest();
    KVRBaseCommandRequest(const KVRBaseCommandRequest&) = delete;
    KVRBaseCommandRequest& operator=(const KVRBaseCommandRequest&) = delete;

    /// Writes the command text into `buffer`, which holds KVRCommandBufferSize bytes.
    virtual void getCommand(char* buffer);

protected:
    /// A fresh builder over `buffer` that has already written the command name.
    KVRCommandRequestBuilder& beginCommand(char* buffer, const char* name);

    std::unique_ptr<KVRCommandRequestBuilder> builder;
};

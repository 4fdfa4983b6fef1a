#pragma once

#include <kovra/KVRError.h>

#include "Utils/KVRPlatformHooks.h"

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

/// Stands in for the acquirer's hosts for the life of the object: every post
/// is recorded and answered by the reply function (by default an empty body).
class KVRFakeExchange {
public:
    struct Request {
        std::string body;
        std::string url;
        std::string contentType;
    };
    /// The reply body, or nothing with `error` set to a transport failure.
    using Reply = std::function<std::optional<std::string>(const Request& request, std::optional<KVRError>* error)>;

    KVRFakeExchange();
    ~KVRFakeExchange();
    KVRFakeExchange(const KVRFakeExchange&) = delete;
    KVRFakeExchange& operator=(const KVRFakeExchange&) = delete;

    void setReply(Reply reply);
    /// Every post gets this body.
    void replyWith(std::string body);
    /// Every post fails with this transport error.
    void failWith(KVRError error);

    std::vector<Request> requests() const;
    size_t count() const;

private:
    mutable std::mutex mutex_;
    Reply reply_;
    std::vector<Request> requests_;
    decltype(KVRPlatformHooks::exchange) previous_;
};

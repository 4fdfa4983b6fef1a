#include "testing/KVRFakeExchange.h"

#include "Utils/KVRPlatformHooks.h"

KVRFakeExchange::KVRFakeExchange() {
    replyWith("");
    auto hooks = *KVRPlatformHooks::installed();
    previous_ = hooks.exchange;
    hooks.exchange = [this](const KVRHttpRequest& sent, std::optional<KVRError>& error) {
        Request request{sent.body, sent.url, sent.contentType};
        Reply reply;
        {
            std::lock_guard lock(mutex_);
            requests_.push_back(request);
            reply = reply_;
        }
        return reply(request, &error);
    };
    KVRPlatformHooks::install(std::move(hooks));
}

// Only the exchange is put back: hooks installed meanwhile stay.
KVRFakeExchange::~KVRFakeExchange() {
    auto hooks = *KVRPlatformHooks::installed();
    hooks.exchange = previous_;
    KVRPlatformHooks::install(std::move(hooks));
}

void KVRFakeExchange::setReply(Reply reply) {
    std::lock_guard lock(mutex_);
    reply_ = std::move(reply);
}

void KVRFakeExchange::replyWith(std::string body) {
    setReply([body = std::move(body)](const Request&, std::optional<KVRError>*) { return body; });
}

void KVRFakeExchange::failWith(KVRError failure) {
    setReply([failure = std::move(failure)](const Request&, std::optional<KVRError>* error) {
        *error = failure;
        return std::optional<std::string>();
    });
}

std::vector<KVRFakeExchange::Request> KVRFakeExchange::requests() const {
    std::lock_guard lock(mutex_);
    return requests_;
}

size_t KVRFakeExchange::count() const {
    std::lock_guard lock(mutex_);
    return requests_.size();
}

#include "testing/KVRFakeExchange.h"

#include "Utils/KVRPlatformHooks.h"

KVRFakeExchange::KVRFakeExchange() {
    replyWith("");
    KVRPlatformHooks::change([this](KVRPlatformHooks& hooks) {
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
    });
}

// Only the exchange is put back: hooks installed meanwhile stay.
KVRFakeExchange::~KVRFakeExchange() {
    KVRPlatformHooks::change([this](KVRPlatformHooks& hooks) { hooks.exchange = previous_; });
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

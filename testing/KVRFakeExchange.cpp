#include "testing/KVRFakeExchange.h"

#include "Host/KVRCommunicationController.h"

KVRFakeExchange::KVRFakeExchange() {
    replyWith("");
    KVRCommunicationController::setExchangeOverride(
        [this](const std::string& body, const std::string& url, const std::string& contentType,
               std::optional<KVRError>* error) {
            Request request{body, url, contentType};
            Reply reply;
            {
                std::lock_guard lock(mutex_);
                requests_.push_back(request);
                reply = reply_;
            }
            return reply(request, error);
        });
}

KVRFakeExchange::~KVRFakeExchange() { KVRCommunicationController::setExchangeOverride({}); }

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

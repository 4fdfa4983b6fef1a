#include "support/KVRFakeExchange.h"

#include "Host/KVRCommunicationController.h"

KVRFakeExchange::KVRFakeExchange(Responder responder) : responder_(std::move(responder)) {
    KVRCommunicationController::setExchangeOverride(
        [this](const std::string& body, const std::string& url, const std::string& contentType,
               std::optional<KVRError>* error) -> std::optional<std::string> {
            Post post{body, url, contentType};
            Responder responder;
            {
                std::lock_guard lock(mutex_);
                posts_.push_back(post);
                responder = responder_;
            }
            Reply reply = responder(post);
            if (reply.error) *error = reply.error;
            return reply.body;
        });
}

KVRFakeExchange::~KVRFakeExchange() { KVRCommunicationController::setExchangeOverride(nullptr); }

void KVRFakeExchange::setResponder(Responder responder) {
    std::lock_guard lock(mutex_);
    responder_ = std::move(responder);
}

std::vector<KVRFakeExchange::Post> KVRFakeExchange::posts() const {
    std::lock_guard lock(mutex_);
    return posts_;
}

std::vector<KVRFakeExchange::Post> KVRFakeExchange::postsTo(const std::string& path) const {
    std::vector<Post> matching;
    for (const auto& post : posts()) {
        if (post.url.size() >= path.size() && post.url.compare(post.url.size() - path.size(), path.size(), path) == 0) {
            matching.push_back(post);
        }
    }
    return matching;
}

KVRFakeExchange::Responder KVRFakeExchange::answering(std::string body) {
    return [body = std::move(body)](const Post&) { return Reply{body, std::nullopt}; };
}

KVRFakeExchange::Responder KVRFakeExchange::failingWith(long urlErrorCode) {
    return [urlErrorCode](const Post&) { return Reply{std::nullopt, KVRError(NSURLErrorDomain, urlErrorCode)}; };
}

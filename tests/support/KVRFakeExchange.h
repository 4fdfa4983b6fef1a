#pragma once

#include <kovra/KVRError.h>

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

/// Stands in for the network while it lives: every post of the library goes
/// to the reply function instead, and is remembered.
class KVRFakeExchange {
public:
    struct Post {
        std::string body;
        std::string url;
        std::string contentType;
    };
    /// The reply bytes, or nothing with a transport error.
    struct Reply {
        std::optional<std::string> body;
        std::optional<KVRError> error;
    };
    using Responder = std::function<Reply(const Post& post)>;

    explicit KVRFakeExchange(Responder responder = answering(""));
    ~KVRFakeExchange();
    KVRFakeExchange(const KVRFakeExchange&) = delete;
    KVRFakeExchange& operator=(const KVRFakeExchange&) = delete;

    void setResponder(Responder responder);
    std::vector<Post> posts() const;
    /// The posts whose URL ends with the path ("/Authorize", "/send"...).
    std::vector<Post> postsTo(const std::string& path) const;

    static Responder answering(std::string body);
    /// A transport failure in NSURLErrorDomain with the code (-1001 time-out...).
    static Responder failingWith(long urlErrorCode);

private:
    mutable std::mutex mutex_;
    Responder responder_;
    std::vector<Post> posts_;
};

#pragma once

#include <kovra/KVRExport.h>

#include <any>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

struct KOVRA_API KVRNotification {
    std::string name;
    std::any object;
};

/// Broadcast notifications. Observers run on the posting thread, in the order
/// they were added.
class KOVRA_API KVRNotificationCenter {
public:
    using Observer = std::function<void(const KVRNotification&)>;
    using Token = std::uint64_t;

    static KVRNotificationCenter& defaultCenter();

    Token addObserver(const std::string& name, Observer observer);
    /// Once this returns the observer is not called again: a call running on
    /// another thread is waited for (one on the calling thread, i.e. an
    /// observer removing itself, is not). So an object may remove its
    /// observer in its destructor while other threads post.
    void removeObserver(Token token);
    void postNotification(const std::string& name, std::any object = {});

private:
    struct Entry {
        Token token;
        std::string name;
        std::shared_ptr<Observer> observer;
    };
    struct RunningCall {
        Token token;
        std::thread::id thread;
    };
    bool isRegistered(Token token) const;
    bool runsElsewhere(Token token) const;
    void callIfRegistered(Token token, const Observer& observer, const KVRNotification& notification);

    std::mutex mutex_;
    std::condition_variable callFinished_;
    std::vector<Entry> entries_;
    std::vector<RunningCall> running_;
    Token next_ = 1;
};

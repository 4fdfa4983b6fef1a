#pragma once

#include <any>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

struct KVRNotification {
    std::string name;
    std::any object;
};

/// Broadcast notifications. Observers run on the posting thread, in the order
/// they were added.
class KVRNotificationCenter {
public:
    using Observer = std::function<void(const KVRNotification&)>;
    using Token = std::uint64_t;

    static KVRNotificationCenter& defaultCenter();

    Token addObserver(const std::string& name, Observer observer);
    void removeObserver(Token token);
    void postNotification(const std::string& name, std::any object = {});

private:
    struct Entry {
        Token token;
        std::string name;
        std::shared_ptr<Observer> observer;
    };
    std::mutex mutex_;
    std::vector<Entry> entries_;
    Token next_ = 1;
};

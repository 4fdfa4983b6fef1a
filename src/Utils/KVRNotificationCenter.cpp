#include <kovra/KVRNotificationCenter.h>

#include <algorithm>

KVRNotificationCenter& KVRNotificationCenter::defaultCenter() {
    static auto* center = new KVRNotificationCenter();
    return *center;
}

KVRNotificationCenter::Token KVRNotificationCenter::addObserver(const std::string& name, Observer observer) {
    std::lock_guard lock(mutex_);
    Token token = next_++;
    entries_.push_back(Entry{token, name, std::make_shared<Observer>(std::move(observer))});
    return token;
}

void KVRNotificationCenter::removeObserver(Token token) {
    std::unique_lock lock(mutex_);
    entries_.erase(std::remove_if(entries_.begin(), entries_.end(), [token](const Entry& e) { return e.token == token; }),
                   entries_.end());
    callFinished_.wait(lock, [&] { return !runsElsewhere(token); });
}

void KVRNotificationCenter::postNotification(const std::string& name, std::any object) {
    std::vector<std::pair<Token, std::shared_ptr<Observer>>> observers;
    {
        std::lock_guard lock(mutex_);
        for (const Entry& e : entries_)
            if (e.name == name) observers.emplace_back(e.token, e.observer);
    }
    KVRNotification notification{name, std::move(object)};
    for (const auto& [token, observer] : observers) callIfRegistered(token, *observer, notification);
}

bool KVRNotificationCenter::isRegistered(Token token) const {
    return std::any_of(entries_.begin(), entries_.end(), [token](const Entry& e) { return e.token == token; });
}

bool KVRNotificationCenter::runsElsewhere(Token token) const {
    auto self = std::this_thread::get_id();
    return std::any_of(running_.begin(), running_.end(),
                       [&](const RunningCall& call) { return call.token == token && call.thread != self; });
}

// An observer removed since the post began (by an earlier observer, or by
// another thread) is skipped; a running call is registered so that its
// removal can wait for it.
void KVRNotificationCenter::callIfRegistered(Token token, const Observer& observer,
                                             const KVRNotification& notification) {
    auto self = std::this_thread::get_id();
    {
        std::lock_guard lock(mutex_);
        if (!isRegistered(token)) return;
        running_.push_back(RunningCall{token, self});
    }
    struct Finish {
        KVRNotificationCenter& center;
        Token token;
        std::thread::id thread;
        ~Finish() {
            std::lock_guard lock(center.mutex_);
            auto it = std::find_if(center.running_.begin(), center.running_.end(), [&](const RunningCall& call) {
                return call.token == token && call.thread == thread;
            });
            if (it != center.running_.end()) center.running_.erase(it);
            center.callFinished_.notify_all();
        }
    } finish{*this, token, self};
    observer(notification);
}

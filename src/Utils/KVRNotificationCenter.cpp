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
    std::lock_guard lock(mutex_);
    entries_.erase(std::remove_if(entries_.begin(), entries_.end(), [token](const Entry& e) { return e.token == token; }),
                   entries_.end());
}

void KVRNotificationCenter::postNotification(const std::string& name, std::any object) {
    std::vector<std::shared_ptr<Observer>> observers;
    {
        std::lock_guard lock(mutex_);
        for (const Entry& e : entries_)
            if (e.name == name) observers.push_back(e.observer);
    }
    KVRNotification notification{name, std::move(object)};
    for (const auto& observer : observers) (*observer)(notification);
}

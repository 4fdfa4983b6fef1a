#include "testing/KVRScriptedConnection.h"

#include "Pinpad/Commands/KVRBaseCommandRequest.h"
#include "Pinpad/KVRBluetoothConnection.h"
#include "Pinpad/KVRLinkException.h"
#include "Pinpad/KVRPinpadController.h"

#include <algorithm>

std::shared_ptr<KVRScriptedConnection> KVRScriptedConnection::install() {
    auto connection = std::make_shared<KVRScriptedConnection>();
    KVRPinpadController::sharedController().setConnection(connection);
    return connection;
}

void KVRScriptedConnection::answer(const std::string& prefix, std::vector<Answer> answers) {
    std::lock_guard lock(mutex_);
    table_[prefix] = Entry{std::move(answers), 0};
}

void KVRScriptedConnection::reply(const std::string& prefix, const std::vector<std::string>& replies) {
    std::vector<Answer> answers;
    for (const auto& text : replies) answers.push_back(text.empty() ? Answer{} : Answer{text});
    answer(prefix, std::move(answers));
}

void KVRScriptedConnection::setObserver(std::function<void(const std::string& request)> observer) {
    std::lock_guard lock(mutex_);
    observer_ = std::move(observer);
}

std::vector<std::string> KVRScriptedConnection::requests() const {
    std::lock_guard lock(mutex_);
    return requests_;
}

std::vector<std::string> KVRScriptedConnection::commands() const {
    std::vector<std::string> names;
    for (const auto& request : requests()) names.push_back(request.substr(0, 3));
    return names;
}

std::vector<std::string> KVRScriptedConnection::requestsOf(const std::string& prefix) const {
    std::vector<std::string> matching;
    for (const auto& request : requests())
        if (request.rfind(prefix, 0) == 0) matching.push_back(request);
    return matching;
}

void KVRScriptedConnection::sendRequest(KVRBaseCommandRequest& request) {
    char buffer[KVRCommandBufferSize];
    request.getCommand(buffer);
    std::string text(buffer);
    std::function<void(const std::string&)> observer;
    {
        std::lock_guard lock(mutex_);
        requests_.push_back(text);
        observer = observer_;
    }
    // Outside the lock: an observer may look at what was sent so far.
    if (observer) observer(text);
    std::lock_guard lock(mutex_);
    Entry* best = nullptr;
    size_t bestLength = 0;
    for (auto& [prefix, entry] : table_) {
        if (text.rfind(prefix, 0) == 0 && prefix.size() >= bestLength && !entry.answers.empty()) {
            best = &entry;
            bestLength = prefix.size();
        }
    }
    if (!best) {
        pending_ = {text.substr(0, 3) + "000"};
        return;
    }
    pending_ = best->answers[std::min(best->served++, best->answers.size() - 1)];
}

const char* KVRScriptedConnection::readMessage() {
    Answer answer;
    {
        std::lock_guard lock(mutex_);
        answer.swap(pending_);
    }
    if (answer.empty()) throw KVRLinkException::timedOut("No reply in time");
    for (size_t i = 0; i + 1 < answer.size(); ++i) KVRBluetoothConnection::postNotification(answer[i]);
    std::lock_guard lock(mutex_);
    reply_ = answer.back();
    return reply_.c_str();
}

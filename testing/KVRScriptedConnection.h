#pragma once

#include "Pinpad/KVRConnectionProtocol.h"

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

/// A PIN pad link without bytes, streams or threads, for command, sale and
/// table-load tests: each request, as its command prints it, is answered at
/// once from a table. Bytes, frames and waits are the real link's business
/// and are tested there, against KVRScriptedPinpad.
///
/// An answer is the texts the PIN pad sends back: notifications ("NTM...")
/// first, posted as "KVRPinpadNTMMessage" the way the link posts them, then
/// the reply. An empty answer is a silent PIN pad: the read fails with the
/// link's own time-out ("PinpadTimeout"). A request no entry matches is
/// answered with its name and return code 000.
class KVRScriptedConnection : public KVRConnectionProtocol {
public:
    using Answer = std::vector<std::string>;

    /// A fresh link, installed as the shared PIN pad controller's connection.
    static std::shared_ptr<KVRScriptedConnection> install();

    /// Answers requests that begin with `prefix` ("GCR", or "GCR0380802" for
    /// one application type; the longest matching prefix wins): each request
    /// takes the next answer, the last one repeats.
    void answer(const std::string& prefix, std::vector<Answer> answers);
    /// One reply text per request; "" leaves the PIN pad silent.
    void reply(const std::string& prefix, const std::vector<std::string>& replies);
    /// Called with each request before it is answered.
    void setObserver(std::function<void(const std::string& request)> observer);

    /// The request texts received so far, in order.
    std::vector<std::string> requests() const;
    /// Their command names.
    std::vector<std::string> commands() const;
    std::vector<std::string> requestsOf(const std::string& prefix) const;

    void sendRequest(KVRBaseCommandRequest& request) override;
    const char* readMessage() override;
    bool isDeviceConnected() override { return true; }

private:
    struct Entry {
        std::vector<Answer> answers;
        size_t served = 0;
    };

    mutable std::mutex mutex_;
    std::map<std::string, Entry> table_;
    std::function<void(const std::string&)> observer_;
    std::vector<std::string> requests_;
    Answer pending_;
    std::string reply_;
};

#pragma once

#include <kovra/KVRNotificationCenter.h>

#include <string>

class KovraOutput;

/// Prints the PIN pad's notification texts ("KVRPinpadNTMMessage") while it
/// lives.
class KovraPinpadMessages {
public:
    static constexpr const char* kNotification = "KVRPinpadNTMMessage";

    explicit KovraPinpadMessages(KovraOutput& output, std::string prefix = "pinpad: ");
    ~KovraPinpadMessages();
    KovraPinpadMessages(const KovraPinpadMessages&) = delete;
    KovraPinpadMessages& operator=(const KovraPinpadMessages&) = delete;

private:
    KVRNotificationCenter::Token token_;
};

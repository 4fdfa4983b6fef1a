#pragma once

#include <atomic>
#include <chrono>

/// Stream events, numbered as the link's log lines print them.
enum class KVRStreamEvent : unsigned long {
    None = 0,
    OpenCompleted = 1,
    HasBytesAvailable = 2,
    HasSpaceAvailable = 4,
    ErrorOccurred = 8,
    EndEncountered = 16,
};

enum class KVRStreamStatus { NotOpen, Open, AtEnd, Closed, Error };

/// One direction of an accessory session.
class KVRStream {
public:
    KVRStream();
    virtual ~KVRStream();
    KVRStream(const KVRStream&) = delete;
    KVRStream& operator=(const KVRStream&) = delete;

    virtual void open();
    virtual void close();
    KVRStreamStatus streamStatus() const { return status_.load(); }
    bool isOpen() const;
    /// A number that tells the streams of the process apart in log lines.
    unsigned long streamNumber() const { return number_; }

protected:
    void setStatus(KVRStreamStatus status) { status_.store(status); }
    /// Poll slice for the waits of subclasses: at most the remaining time.
    static int pollMilliseconds(std::chrono::milliseconds timeout);

private:
    std::atomic<KVRStreamStatus> status_{KVRStreamStatus::NotOpen};
    unsigned long number_;
};

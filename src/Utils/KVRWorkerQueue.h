#pragma once

#include <kovra/KVRQueues.h>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// A queue served by a fixed number of threads: one makes it serial, several
/// make it a concurrent pool. Threads are started on first use and live for
/// the process. An exception escaping an async task is logged, never fatal.
class KVRWorkerQueue : public KVRDispatchQueue {
public:
    KVRWorkerQueue(std::string name, unsigned threads);

    void async(Task task) override;
    void sync(Task task) override;
    /// True when the calling thread is one of this queue's threads.
    bool isCurrent() const;

private:
    void startLocked();
    void run();

    std::string name_;
    unsigned threadCount_;
    mutable std::mutex mutex_;
    std::condition_variable ready_;
    std::deque<Task> tasks_;
    std::vector<std::thread::id> ids_;
    bool started_ = false;
};

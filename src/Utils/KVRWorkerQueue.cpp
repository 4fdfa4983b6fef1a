#include "Utils/KVRWorkerQueue.h"

#include <kovra/KVRLoggingUtil.h>

#include <algorithm>
#include <exception>
#include <future>

KVRWorkerQueue::KVRWorkerQueue(std::string name, unsigned threads)
    : name_(std::move(name)), threadCount_(std::max(1u, threads)) {}

void KVRWorkerQueue::startLocked() {
    if (started_) return;
    started_ = true;
    for (unsigned i = 0; i < threadCount_; ++i) {
        std::thread worker([this] { run(); });
        ids_.push_back(worker.get_id());
        worker.detach();  // lives for the process, like the platform's queues
    }
}

void KVRWorkerQueue::async(Task task) {
    {
        std::lock_guard lock(mutex_);
        startLocked();
        tasks_.push_back(std::move(task));
    }
    ready_.notify_one();
}

void KVRWorkerQueue::sync(Task task) {
    if (isCurrent() && threadCount_ == 1) {
        task();  // already on the serial worker: waiting for ourselves would never end
        return;
    }
    auto done = std::make_shared<std::promise<void>>();
    auto finished = done->get_future();
    async([task = std::move(task), done] {
        try {
            task();
            done->set_value();
        } catch (...) {
            done->set_exception(std::current_exception());
        }
    });
    finished.get();
}

bool KVRWorkerQueue::isCurrent() const {
    std::lock_guard lock(mutex_);
    return std::find(ids_.begin(), ids_.end(), std::this_thread::get_id()) != ids_.end();
}

void KVRWorkerQueue::run() {
    for (;;) {
        Task task;
        {
            std::unique_lock lock(mutex_);
            ready_.wait(lock, [this] { return !tasks_.empty(); });
            task = std::move(tasks_.front());
            tasks_.pop_front();
        }
        try {
            task();
        } catch (const std::exception& e) {
            KVRLoggingUtil::console("Uncaught exception on queue " + name_ + ": " + e.what());
        } catch (...) {
            KVRLoggingUtil::console("Uncaught exception on queue " + name_);
        }
    }
}

#include <kovra/KVRQueues.h>

#include "Utils/KVRWorkerQueue.h"

#include <mutex>

namespace {

KVRWorkerQueue& mainWorker() {
    static auto* q = new KVRWorkerQueue("main", 1);
    return *q;
}

KVRWorkerQueue& pool(KVRQueuePriority priority) {
    static auto* high = new KVRWorkerQueue("global-high", 4);
    static auto* normal = new KVRWorkerQueue("global-default", 4);
    static auto* low = new KVRWorkerQueue("global-low", 2);
    static auto* background = new KVRWorkerQueue("global-background", 2);
    switch (priority) {
        case KVRQueuePriority::High: return *high;
        case KVRQueuePriority::Default: return *normal;
        case KVRQueuePriority::Low: return *low;
        case KVRQueuePriority::Background: break;
    }
    return *background;
}

std::mutex& executorMutex() {
    static std::mutex m;
    return m;
}
KVRQueues::Executor& executor() {
    static auto* e = new KVRQueues::Executor();
    return *e;
}

}  // namespace

KVRDispatchQueue& KVRQueues::main() { return mainWorker(); }

KVRDispatchQueue& KVRQueues::global(KVRQueuePriority priority) { return pool(priority); }

void KVRQueues::setMainExecutor(Executor e) {
    std::lock_guard lock(executorMutex());
    executor() = std::move(e);
}

void KVRQueues::deliverOnMain(std::function<void()> completion) {
    Executor e;
    {
        std::lock_guard lock(executorMutex());
        e = executor();
    }
    if (e) {
        e(std::move(completion));
    } else if (isMainWorker()) {
        completion();
    } else {
        mainWorker().async(std::move(completion));
    }
}

bool KVRQueues::isMainWorker() { return mainWorker().isCurrent(); }

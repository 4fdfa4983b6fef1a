#pragma once

#include <kovra/KVRExport.h>

#include <functional>

/// A queue of work items: serial (the main worker) or concurrent (the pools).
class KOVRA_API KVRDispatchQueue {
public:
    using Task = std::function<void()>;
    virtual ~KVRDispatchQueue() = default;
    /// Runs the task later and returns at once.
    virtual void async(Task task) = 0;
    /// Runs the task and waits for it; an exception it raises is rethrown here.
    /// On the serial worker's own thread the task runs inline (no deadlock).
    virtual void sync(Task task) = 0;
};

enum class KVRQueuePriority { High, Default, Low, Background };

/// The library's threads. `main()` is one serial worker owned by the library:
/// every PIN pad exchange, sale and table load runs there, one at a time.
/// `global()` are small pools for host exchanges. Completions that belong "on
/// the main queue" go through the application's executor when one is installed.
class KOVRA_API KVRQueues {
public:
    using Executor = std::function<void(std::function<void()>)>;

    KVRQueues() = delete;

    static KVRDispatchQueue& main();
    static KVRDispatchQueue& global(KVRQueuePriority priority);
    /// Installs the application's main executor (e.g. posting into its UI loop);
    /// an empty executor removes it.
    static void setMainExecutor(Executor executor);
    /// Delivers a completion on the application's main thread: through the
    /// executor when installed, else on the main worker (inline when already there).
    static void deliverOnMain(std::function<void()> completion);
    static bool isMainWorker();
};

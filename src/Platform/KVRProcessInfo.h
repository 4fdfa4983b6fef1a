#pragma once

/// The processes that may share the store: this one, and whether another is
/// still running (so that its unfinished exchanges are left to it).
class KVRProcessInfo {
public:
    KVRProcessInfo() = delete;

    static long long currentIdentifier();
    /// True while a process with the identifier exists (an identifier the
    /// system gave to a new process counts as running: its work waits).
    static bool isRunning(long long identifier);
};

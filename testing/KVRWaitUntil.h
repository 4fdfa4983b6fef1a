#pragma once

#include <chrono>
#include <functional>
#include <thread>

/// For work that runs on the library's pool and reports to nobody (a
/// completion that does nothing, a migration after enrolment): polls the
/// condition until it holds or the time is up; returns the last answer.
inline bool kvrWaitUntil(const std::function<bool()>& condition,
                         std::chrono::milliseconds timeout = std::chrono::seconds(20)) {
    auto deadline = std::chrono::steady_clock::now() + timeout;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

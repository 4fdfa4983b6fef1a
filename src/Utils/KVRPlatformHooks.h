#pragma once

#include <kovra/KVRError.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class KVRAccessory;

/// One HTTPS post as the library makes it: the transport sends exactly these
/// headers and gives up after `timeout` (zero: no time-out of its own).
struct KVRHttpRequest {
    std::string url;
    std::string body;
    /// "text/xml" or "application/json".
    std::string contentType;
    std::vector<std::string> headers;
    std::chrono::milliseconds timeout{0};
};

/// Where the library meets the machine: the clock, random identifiers, the
/// HTTPS transport, the network probe, the PIN pads on offer and the log
/// destination. An empty member means the machine's own (system clock, random
/// UUIDs, libcurl, the routing table, "Kovra Pinpad" or the serial ports, the
/// system log), so a default-constructed set is the production one.
///
/// The library reads these members only through installed(). One set is in
/// force for the whole process: install() replaces it and hands back the set it
/// replaced, and whoever installs puts that set back when done (so installs
/// nest like scopes; an application installs once at start and never restores).
struct KVRPlatformHooks {
    using TimePoint = std::chrono::system_clock::time_point;

    std::function<TimePoint()> now;
    /// "8-4-4-4-12" upper-case hexadecimal.
    std::function<std::string()> uuid;
    /// The reply body whatever the HTTP status, or nothing with `error` set to
    /// an NSURLErrorDomain failure.
    std::function<std::optional<std::string>(const KVRHttpRequest& request, std::optional<KVRError>& error)> exchange;
    /// The reachability flags every probe reports instead of the machine's
    /// (nothing: the flags cannot be read).
    std::function<std::optional<uint32_t>()> networkFlags;
    /// The PIN pads to offer, in order, instead of the machine's.
    std::function<std::vector<std::shared_ptr<KVRAccessory>>()> accessories;
    /// Every log line; `debug` tells debug lines from the always-printed ones.
    std::function<void(const std::string& line, bool debug)> logSink;

    /// The set in force (never null); installing another leaves this one as it is.
    static std::shared_ptr<const KVRPlatformHooks> installed();
    /// Puts `hooks` in force and returns the set it replaced. Running network
    /// notifiers read their flags again.
    static KVRPlatformHooks install(KVRPlatformHooks hooks);
    /// Changes members of the set in force and keeps the others, in one step
    /// that no other install or change can interleave with. `edit` runs under
    /// the hooks' lock: it must not read or install hooks itself.
    static void change(const std::function<void(KVRPlatformHooks& hooks)>& edit);
};

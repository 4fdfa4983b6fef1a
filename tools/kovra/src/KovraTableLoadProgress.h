#pragma once

#include <kovra/KVRNotificationCenter.h>

#include <atomic>
#include <optional>
#include <string>
#include <utility>

class KovraOutput;

/// Follows a table load ("KVRTableLoadProgress", object "n/total") while it
/// lives, and shows it on standard error: a bar that redraws itself (for a
/// terminal), one plain line per record, or nothing.
class KovraTableLoadProgress {
public:
    static constexpr const char* kNotification = "KVRTableLoadProgress";

    enum Mode { Bar, Lines, Quiet };

    /// Bar when standard error is a terminal, Lines otherwise.
    static Mode modeForStandardError();

    KovraTableLoadProgress(KovraOutput& output, Mode mode);
    ~KovraTableLoadProgress();
    KovraTableLoadProgress(const KovraTableLoadProgress&) = delete;
    KovraTableLoadProgress& operator=(const KovraTableLoadProgress&) = delete;

    /// Records announced so far and the total of the last announcement.
    int recordsLoaded() const { return loaded_; }
    int recordsTotal() const { return total_; }

    /// "n/total" as two numbers; nothing for any other text.
    static std::optional<std::pair<int, int>> parse(const std::string& text);
    /// "tables [#####.....]  5/10" with a bar of the given width.
    static std::string bar(int loaded, int total, int width);

private:
    void show(int loaded, int total);

    KovraOutput& output_;
    Mode mode_;
    std::atomic<int> loaded_{0};
    std::atomic<int> total_{0};
    std::atomic<bool> drawn_{false};
    KVRNotificationCenter::Token token_;
};

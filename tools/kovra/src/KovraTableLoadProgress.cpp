#include "KovraTableLoadProgress.h"

#include "KovraOutput.h"

#include <any>
#include <charconv>
#include <unistd.h>

namespace {
constexpr int kBarWidth = 30;
}

KovraTableLoadProgress::Mode KovraTableLoadProgress::modeForStandardError() {
    return isatty(STDERR_FILENO) == 1 ? Bar : Lines;
}

KovraTableLoadProgress::KovraTableLoadProgress(KovraOutput& output, Mode mode) : output_(output), mode_(mode) {
    token_ = KVRNotificationCenter::defaultCenter().addObserver(kNotification, [this](const KVRNotification& note) {
        const auto* text = std::any_cast<std::string>(&note.object);
        if (!text) return;
        if (auto progress = parse(*text)) show(progress->first, progress->second);
    });
}

KovraTableLoadProgress::~KovraTableLoadProgress() {
    KVRNotificationCenter::defaultCenter().removeObserver(token_);
    if (drawn_) output_.raw("\n");
}

std::optional<std::pair<int, int>> KovraTableLoadProgress::parse(const std::string& text) {
    size_t slash = text.find('/');
    if (slash == std::string::npos || slash == 0 || slash + 1 == text.size()) return std::nullopt;
    int loaded = 0;
    int total = 0;
    const char* begin = text.data();
    const char* end = begin + text.size();
    auto first = std::from_chars(begin, begin + slash, loaded);
    auto second = std::from_chars(begin + slash + 1, end, total);
    if (first.ptr != begin + slash || second.ptr != end || first.ec != std::errc() || second.ec != std::errc())
        return std::nullopt;
    if (loaded < 0 || total <= 0 || loaded > total) return std::nullopt;
    return std::make_pair(loaded, total);
}

std::string KovraTableLoadProgress::bar(int loaded, int total, int width) {
    int filled = total > 0 ? static_cast<int>(static_cast<long long>(loaded) * width / total) : 0;
    std::string counter = std::to_string(loaded) + "/" + std::to_string(total);
    std::string totalText = std::to_string(total);
    std::string pad(totalText.size() * 2 + 1 > counter.size() ? totalText.size() * 2 + 1 - counter.size() : 0, ' ');
    return "tables [" + std::string(filled, '#') + std::string(width - filled, '.') + "] " + pad + counter;
}

void KovraTableLoadProgress::show(int loaded, int total) {
    loaded_ = loaded;
    total_ = total;
    if (mode_ == Bar) {
        drawn_ = true;
        output_.raw("\r" + bar(loaded, total, kBarWidth));
    } else if (mode_ == Lines) {
        output_.note("tables: record " + std::to_string(loaded) + " of " + std::to_string(total) + " loaded");
    }
}

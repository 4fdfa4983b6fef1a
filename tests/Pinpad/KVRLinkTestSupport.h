#pragma once

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRLoggingUtil.h>

#include "Pinpad/KVRBluetoothConnection.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <mutex>
#include <string>
#include <vector>

/// Gives every link test a fresh shared link, its own log capture and the
/// settings it found.
class KVRLinkTest : public ::testing::Test {
protected:
    void SetUp() override {
        saved_ = KVRApplicationInfo::dictionary();
        KVRBluetoothConnection::resetSharedController();
        KVRLoggingUtil::setSink([this](const std::string& line) {
            std::lock_guard lock(logMutex_);
            log_.push_back(line);
        });
    }
    void TearDown() override {
        KVRBluetoothConnection::resetSharedController();
        KVRLoggingUtil::setSink({});
        KVRApplicationInfo::clear();
        for (auto& [k, v] : saved_) KVRApplicationInfo::setValue(k, v);
    }

    std::shared_ptr<KVRBluetoothConnection> link() { return KVRBluetoothConnection::sharedController(); }

    void clearLog() {
        std::lock_guard lock(logMutex_);
        log_.clear();
    }
    std::vector<std::string> logLines() {
        std::lock_guard lock(logMutex_);
        return log_;
    }
    std::vector<std::string> linesStartingWith(const std::string& prefix) {
        std::vector<std::string> out;
        for (const auto& line : logLines())
            if (line.rfind(prefix, 0) == 0) out.push_back(line);
        return out;
    }
    size_t countLinesContaining(const std::string& text) {
        auto lines = logLines();
        return static_cast<size_t>(std::count_if(lines.begin(), lines.end(),
                                                 [&](const std::string& l) { return l.find(text) != std::string::npos; }));
    }

private:
    KVRPropertyDictionary saved_;
    std::mutex logMutex_;
    std::vector<std::string> log_;
};

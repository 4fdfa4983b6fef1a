#pragma once

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRLoggingUtil.h>

#include "Pinpad/KVRBluetoothConnection.h"
#include "testing/KVRTestFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <mutex>
#include <string>
#include <vector>

/// Gives every link test its own log capture; the base fixture gives it a
/// fresh shared link and puts the settings back.
class KVRLinkTest : public KVRTestFixture {
protected:
    void SetUp() override {
        KVRLoggingUtil::setSink([this](const std::string& line) {
            std::lock_guard lock(logMutex_);
            log_.push_back(line);
        });
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
    std::mutex logMutex_;
    std::vector<std::string> log_;
};

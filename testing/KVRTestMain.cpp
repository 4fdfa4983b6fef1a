#include <gtest/gtest.h>

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRDirectories.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <unistd.h>

#include "Platform/KVRSettingsKeys.h"
#include "testing/KVRTestEnvironment.h"
#include "testing/KVRTestFixture.h"

namespace {
std::string testDataDirectory;
}

const std::string& kovraTestDataDirectory() { return testDataDirectory; }

namespace {
// Tests written without a fixture get the same restoration as those with one.
class GlobalStateRestorer : public ::testing::EmptyTestEventListener {
    void OnTestStart(const ::testing::TestInfo&) override { guard_ = std::make_unique<KVRGlobalStateGuard>(); }
    void OnTestEnd(const ::testing::TestInfo&) override { guard_.reset(); }
    std::unique_ptr<KVRGlobalStateGuard> guard_;
};
}  // namespace

// Every suite runs with its data directories under a fresh temporary folder
// and without the PIN pad write pause, so no test touches the user's files or
// waits on a sleep it does not test.
int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    std::string base = std::filesystem::temp_directory_path().string() + "/kovra-tests-" + std::to_string(getpid());
    testDataDirectory = base;
    KVRDirectories::setDataDirectory(base);
    KVRApplicationInfo::setValue(KVRSettingsKeys::kPinpadWritePause, 0.0);
    ::testing::UnitTest::GetInstance()->listeners().Append(new GlobalStateRestorer());
    int result = RUN_ALL_TESTS();
    std::error_code ec;
    std::filesystem::remove_all(base, ec);
    return result;
}

#include <gtest/gtest.h>

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRCardProvider.h>
#include <kovra/KVRDisplayProvider.h>
#include <kovra/KVRKovraCodeActivationProvider.h>
#include <kovra/KVRNotificationCenter.h>
#include <kovra/KVRPinPadConnectionProvider.h>
#include <kovra/KVRTableDownloaderProvider.h>
#include <kovra/KVRTableLoaderProvider.h>
#include <kovra/KVRTmsTableModel.h>

#include "Pinpad/KVRBluetoothConnection.h"
#include "Pinpad/KVRPinpadController.h"
#include "Platform/KVRAccessoryManager.h"
#include "testing/KVRCardPanRecorder.h"
#include "testing/KVRCompletionRecorder.h"
#include "testing/KVRLogCapture.h"
#include "testing/KVRProcess.h"
#include "testing/KVRTempDirectory.h"
#include "testing/KVRTemporaryStore.h"
#include "testing/KVRTestFixture.h"

#include <fstream>
#include <memory>
#include <mutex>

namespace {

using namespace std::chrono_literals;

const std::string kPinpadReady = "kovra-pinpad-sim ready on ";
const std::string kAcquirerReady = "kovra-acquirer-sim ready at https://";
// The emulator's "stripe-pin" card.
const std::string kCardPan = "5555555555554444";

/// The real PIN pad emulator on a pseudo-terminal (and, for the tests that
/// need it, the real acquirer emulator), driven through the public providers.
class PinpadFlowsIntegrationTest : public KVRTestFixture {
protected:
    void SetUp() override {
#ifndef KOVRA_PINPAD_SIM_BINARY
        GTEST_SKIP() << "kovra-pinpad-sim is not built";
#else
        pinpad_ = std::make_unique<KVRProcess>(
            KOVRA_PINPAD_SIM_BINARY, std::vector<std::string>{"--state", pinpadState_.path(), "--command-log",
                                                              commandLogPath(), "--card", "stripe-pin"});
        auto ready = pinpad_->waitForLine(kPinpadReady, 20s);
        ASSERT_TRUE(ready) << "the PIN pad emulator did not start";
        KVRApplicationInfo::setValue("Kovra Pinpad", ready->substr(kPinpadReady.size()));
        KVRApplicationInfo::setValue("Kovra Reachability Host", std::string("127.0.0.1"));
        KVRApplicationInfo::setValue("Kovra Debugginho Developer", true);
        // A request the emulator refuses gets no reply: fail the exchange rather than the whole run.
        KVRApplicationInfo::setValue("Kovra Pinpad Read Timeout", 20.0);
#endif
    }

    void TearDown() override {
        // The link lets go of the emulator's terminal before the emulator stops.
        KVRBluetoothConnection::resetSharedController();
        KVRPinpadController::sharedController().setConnection(nullptr);
        if (pinpad_) EXPECT_EQ(pinpad_->stop(), 0) << "the PIN pad emulator did not end cleanly";
        if (acquirer_) acquirer_->stop();
    }

    void startAcquirer() {
#ifndef KOVRA_ACQUIRER_SIM_BINARY
        GTEST_SKIP() << "kovra-acquirer-sim is not built";
#else
        acquirer_ = std::make_unique<KVRProcess>(
            KOVRA_ACQUIRER_SIM_BINARY, std::vector<std::string>{"--port", "0", "--state", acquirerState_.path()});
        auto ready = acquirer_->waitForLine(kAcquirerReady, 30s);
        ASSERT_TRUE(ready) << "the acquirer emulator did not start";
        auto ca = acquirer_->waitForLine("ca: ", 10s);
        ASSERT_TRUE(ca);
        std::string host = ready->substr(kAcquirerReady.size());
        for (const char* key : {"Kovra TMS Host", "Kovra Authorizer Host", "Kovra Mail Host"})
            KVRApplicationInfo::setValue(key, host);
        KVRApplicationInfo::setValue("Kovra CA File", ca->substr(4));
#endif
    }

    void connect() {
        KVRCompletionRecorder recorder;
        KVRPinPadConnectionProvider::connectToPinpad(recorder.block());
        ASSERT_EQ(recorder.count(), 1u);
        ASSERT_TRUE(recorder.calls()[0].success) << "could not connect to the emulator";
    }

    static KVRCompletionRecorder::Call completed(const std::function<void(KVRCompletion)>& operation) {
        KVRCompletionRecorder recorder;
        operation(recorder.block());
        EXPECT_TRUE(recorder.waitForCalls(1, 60s));
        return recorder.calls().empty() ? KVRCompletionRecorder::Call{} : recorder.calls().front();
    }

    static KVRCardPanRecorder::Call cardPan() {
        KVRCardPanRecorder recorder;
        KVRCardProvider::getCardPan(recorder.block());
        EXPECT_TRUE(recorder.waitForCalls(1, 60s));
        return recorder.calls().empty() ? KVRCardPanRecorder::Call{} : recorder.calls().front();
    }

    std::string acquirerLog() const {
        std::ifstream in(acquirerState_.file("requests.log"));
        return std::string(std::istreambuf_iterator<char>(in), {});
    }
    std::string commandLogPath() const { return logDirectory_.file("commands.log"); }
    std::vector<std::string> commandLog() const {
        std::vector<std::string> lines;
        std::ifstream in(commandLogPath());
        for (std::string line; std::getline(in, line);) lines.push_back(line);
        return lines;
    }
    std::vector<std::string> commandNames() const {
        std::vector<std::string> names;
        for (const auto& line : commandLog()) names.push_back(line.substr(0, 3));
        return names;
    }

    KVRTemporaryStore store_;
    KVRLogCapture log_;
    KVRTempDirectory pinpadState_;
    KVRTempDirectory acquirerState_;
    KVRTempDirectory logDirectory_;
    std::unique_ptr<KVRProcess> pinpad_;
    std::unique_ptr<KVRProcess> acquirer_;
};

TEST_F(PinpadFlowsIntegrationTest, ConnectsAndDisplays) {
    connect();
    auto shown = completed([](KVRCompletion block) { KVRDisplayProvider::displayMessage("OLA DA KOVRA    100%% SEGURO", block); });
    EXPECT_TRUE(shown.success);
    auto refused = completed([](KVRCompletion block) { KVRDisplayProvider::displayMessage(std::string(33, 'X'), block); });
    EXPECT_FALSE(refused.success);
    EXPECT_EQ(commandLog(), std::vector<std::string>{"DSP032OLA DA KOVRA    100% SEGURO     "});
}

TEST_F(PinpadFlowsIntegrationTest, LoadingWithoutTablesSendsNothing) {
    connect();
    auto loaded = completed(KVRTableLoaderProvider::loadTables);
    EXPECT_FALSE(loaded.success);
    ASSERT_TRUE(loaded.error);
    EXPECT_EQ(loaded.error->code(), 304);
    EXPECT_TRUE(commandLog().empty()) << "the PIN pad heard nothing";
}

TEST_F(PinpadFlowsIntegrationTest, EnrolDownloadAndLoadTurnTheCardReadFromTwentyToACard) {
    startAcquirer();
    connect();

    auto before = cardPan();
    EXPECT_FALSE(before.success);
    ASSERT_TRUE(before.error);
    EXPECT_EQ(before.error->code(), 304) << "the emulator's tables are not loaded yet";

    auto enrolled = completed([](KVRCompletion block) { KVRKovraCodeActivationProvider::activateKovraCode("KOVRA-0001", block); });
    ASSERT_TRUE(enrolled.success) << (enrolled.error ? enrolled.error->description() : "") << log_.text() << acquirerLog();
    auto downloaded = completed(KVRTableDownloaderProvider::downLoadTables);
    ASSERT_TRUE(downloaded.success) << (downloaded.error ? downloaded.error->description() : "");
    ASSERT_TRUE(KVRTmsTableModel::findFirst());

    std::mutex mutex;
    std::vector<std::string> progress;
    auto token = KVRNotificationCenter::defaultCenter().addObserver("KVRTableLoadProgress", [&](const KVRNotification& n) {
        std::lock_guard lock(mutex);
        progress.push_back(std::any_cast<std::string>(n.object));
    });
    auto loaded = completed(KVRTableLoaderProvider::loadTables);
    KVRNotificationCenter::defaultCenter().removeObserver(token);
    ASSERT_TRUE(loaded.success) << (loaded.error ? loaded.error->description() : "");

    auto names = commandNames();
    size_t records = static_cast<size_t>(std::count(names.begin(), names.end(), "TLR"));
    EXPECT_GT(records, 0u);
    ASSERT_EQ(progress.size(), records);
    EXPECT_EQ(progress.back(), std::to_string(records) + "/" + std::to_string(records));
    auto tli = std::find(names.begin(), names.end(), "TLI");
    ASSERT_NE(tli, names.end());
    EXPECT_EQ(std::vector<std::string>(tli + static_cast<std::ptrdiff_t>(records) + 1, names.end()),
              (std::vector<std::string>{"TLE", "DSP"}));

    auto after = cardPan();
    EXPECT_TRUE(after.success) << (after.error ? after.error->description() : "");
    EXPECT_EQ(after.digits, std::optional<std::string>(kCardPan.substr(12)));
    EXPECT_FALSE(log_.contains(kCardPan)) << "the card number stays out of the log";
}

}  // namespace

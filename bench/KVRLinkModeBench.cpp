// Chip sales through the public provider against kovra-pinpad-sim on a
// simulated 19 200 bit/s line and kovra-acquirer-sim on loopback HTTPS, in
// both link modes with their own pacing: the default link pauses 0.5 s after
// every write, the ABECS link waits for the PIN pad's ACK instead. Wall-clock
// time per sale; the report sets it against the line time of the sale's bytes
// counted by BM_Flow_SaleOnTheLine.

#include <benchmark/benchmark.h>

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRDirectories.h>
#include <kovra/KVRKovraCodeActivationProvider.h>
#include <kovra/KVRPinPadConnectionProvider.h>
#include <kovra/KVRTableDownloaderProvider.h>
#include <kovra/KVRTableLoaderProvider.h>
#include <kovra/KVRTransactionProvider.h>

#include "Persistence/KVRPersistenceController.h"
#include "Pinpad/KVRBluetoothConnection.h"
#include "Pinpad/KVRPinpadController.h"
#include "Platform/KVRAccessoryManager.h"
#include "testing/KVRCompletionRecorder.h"
#include "testing/KVREmulators.h"
#include "testing/KVRTempDirectory.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <string>

namespace {

using namespace std::chrono_literals;

constexpr int kLineBitsPerSecond = 19200;
constexpr auto kCompletionWait = 90s;

bool completed(const std::function<void(KVRCompletion)>& operation) {
    auto recorder = std::make_shared<KVRCompletionRecorder>();
    KVRCompletion block = recorder->block();
    operation([recorder, block](bool success, std::optional<KVRError> error) { block(success, std::move(error)); });
    return recorder->waitForCalls(1, kCompletionWait) && recorder->calls().front().success;
}

/// Both emulators, a fresh store, the PIN pad connected, the emulator's first
/// merchant enrolled and its tables downloaded and loaded into the PIN pad
/// (with no write pause, since the load is not what is measured).
class LinkWorld {
public:
    LinkWorld() {
        KVRPersistenceController::sharedController().closeStore();
        KVRDirectories::setDataDirectory(data_.path());
        KVREmulators::Options options;
        options.pinpadBinary = KOVRA_PINPAD_SIM_BINARY;
        options.acquirerBinary = KOVRA_ACQUIRER_SIM_BINARY;
        options.pinpadArguments = {"--bit-rate", std::to_string(kLineBitsPerSecond)};
        emulators_ = std::make_unique<KVREmulators>(options);
        if (!emulators_->ready()) {
            failure_ = emulators_->failure();
            return;
        }
        KVRApplicationInfo::setValue("Kovra Pinpad Read Timeout", 20.0);
        KVRApplicationInfo::setValue("CFBundleVersion", std::string("1.4.2"));
        if (!completed(KVRPinPadConnectionProvider::connectToPinpad)) {
            failure_ = "no PIN pad";
        } else if (!completed([](KVRCompletion b) { KVRKovraCodeActivationProvider::activateKovraCode("KOVRA-0001", b); })) {
            failure_ = "the enrolment failed";
        } else if (!completed(KVRTableDownloaderProvider::downLoadTables)) {
            failure_ = "the table download failed";
        } else if (!completed(KVRTableLoaderProvider::loadTables)) {
            // Otherwise the first sale would load them, on the clock.
            failure_ = "the table load to the PIN pad failed";
        }
    }
    ~LinkWorld() {
        KVRBluetoothConnection::resetSharedController();
        KVRPinpadController::sharedController().setConnection(nullptr);
        emulators_.reset();
        KVRPersistenceController::sharedController().closeStore();
    }
    LinkWorld(const LinkWorld&) = delete;
    LinkWorld& operator=(const LinkWorld&) = delete;

    const std::string& failure() const { return failure_; }
    /// Requests the PIN pad has received so far.
    size_t commandCount() const { return emulators_->commandLog().size(); }

private:
    KVRTempDirectory data_;
    std::unique_ptr<KVREmulators> emulators_;
    std::string failure_;
};

void BM_LinkMode_ChipSale(benchmark::State& state) {
    const bool abecs = state.range(0) == 1;
    LinkWorld world;
    if (!world.failure().empty()) {
        state.SkipWithError(world.failure().c_str());
        return;
    }
    KVRApplicationInfo::setValue("Kovra Pinpad Link", std::string(abecs ? "abecs" : "spec"));
    KVRApplicationInfo::removeValue("Kovra Pinpad Write Pause");  // each link's default
    size_t before = world.commandCount();
    for (auto _ : state) {
        bool approved = completed([](KVRCompletion block) {
            KVRTransactionProvider().sendTransactionWithValue(1500, 0, 0, "pedido-1", std::move(block));
        });
        if (!approved) {
            state.SkipWithError("the sale was not approved");
            break;
        }
    }
    state.counters["pinpad_commands"] =
        static_cast<double>(world.commandCount() - before) / static_cast<double>(std::max<int64_t>(state.iterations(), 1));
    KVRApplicationInfo::removeValue("Kovra Pinpad Link");
}
BENCHMARK(BM_LinkMode_ChipSale)->ArgName("abecs")->Arg(0)->Arg(1)->Iterations(3)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace

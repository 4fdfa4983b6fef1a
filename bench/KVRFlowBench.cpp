// Whole flows, as the library runs them: a chip sale (identity, card read,
// chip processing, authorisation, end of chip processing, messages) and a
// table load of 100 AIDs and 100 CAPKs, through the in-memory accessory with
// a PIN pad that answers each command from a thread of its own (the link
// drops input that comes before its command, so replies cannot be queued
// ahead), no pause after writes (but for the sale on a simulated line), and
// the acquirer in process. The CPU time of the benchmark's thread is the
// library's own; the bytes counted on the PIN pad's side are what the flow
// puts on the line.

#include <benchmark/benchmark.h>

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRPinpadModel.h>
#include <kovra/KVRTmsTableModel.h>
#include <kovra/KVRTransactionModel.h>
#include <kovra/KVRTransactionProvider.h>

#include "Host/KVRCommunicationController.h"
#include "Pinpad/KVRBluetoothConnection.h"
#include "Pinpad/KVRCommandController.h"
#include "Pinpad/KVRPinpadController.h"
#include "Tms/KVRTmsController.h"
#include "Transactions/KVRTransactionController.h"
#include "Utils/KVRPlatformHooks.h"
#include "Utils/KVRReachability.h"
#include "support/KVRBenchPinpad.h"
#include "support/KVRBenchSamples.h"
#include "testing/KVRPinpadReplies.h"

#include <future>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr int kApplications = 100;
constexpr int kKeys = 100;
constexpr long long kAmount = 1500;
constexpr int kApproved = 2;
constexpr auto kProviderWait = std::chrono::seconds(30);
constexpr int kLineBitsPerSecond = 19200;

/// What a sale and a load need: an enrolled merchant, the stored tables, the
/// memory PIN pad on the shared link, a network that counts as up and an
/// acquirer that approves.
class FlowWorld {
public:
    FlowWorld() {
        merchant_ = KVRMerchantModel::create();
        merchant_->setSaleAffiliationKey("1234-5678");
        merchant_->setMerchantName("Padaria Kovra");
        tables_ = KVRTmsTableModel::create();
        tables_->setAidTable(KVRBenchSamples::aidTable(kApplications));
        tables_->setCapkTable(KVRBenchSamples::capkTable(kKeys));
        tables_->save();
        connected_ = pinpad_.connectSharedLink();
        KVRPinpadController::sharedController().setConnection(KVRBluetoothConnection::sharedController());
        KVRCommandController::resetCardVariables();
        const std::string reply = KVRBenchSamples::authorisationResponse();
        KVRPlatformHooks hooks = *KVRPlatformHooks::installed();
        hooks.networkFlags = [] { return std::optional<uint32_t>(KVRReachability::kFlagReachable); };
        hooks.exchange = [reply](const KVRHttpRequest&, std::optional<KVRError>&) {
            return std::optional<std::string>(reply);
        };
        previousHooks_ = KVRPlatformHooks::install(std::move(hooks));
    }
    ~FlowWorld() {
        KVRPlatformHooks::install(previousHooks_);
        KVRPinpadController::sharedController().setConnection(nullptr);
        KVRCommandController::resetCardVariables();
        tables_->deleteRecord();
        merchant_->deleteRecord();
    }
    FlowWorld(const FlowWorld&) = delete;
    FlowWorld& operator=(const FlowWorld&) = delete;

    bool connected() const { return connected_; }
    KVRBenchPinpad& pinpad() { return pinpad_; }

private:
    KVRBenchPinpad pinpad_;
    bool connected_ = false;
    std::shared_ptr<KVRMerchantModel> merchant_;
    std::shared_ptr<KVRTmsTableModel> tables_;
    KVRPlatformHooks previousHooks_;
};

/// The PIN pad of an approved chip sale with on-line PIN; every other command
/// (messages, table load) is simply acknowledged.
std::vector<std::string> answer(const std::string& request) {
    using namespace KVRPinpadReplies;
    std::string command = request.substr(0, 3);
    if (command == "GIN") return {ginReply("KOVRA PINPAD", "KVR-P1", "SN 4400 0077")};
    if (command == "GCR") return {KVRBenchSamples::gcrChipReply()};
    if (command == "GOC") return {KVRBenchSamples::gocOnlineReply()};
    if (command == "FNC") return {fncReply(0, 0)};
    return {statusReply(request, 0)};
}

std::shared_ptr<KVRTransactionModel> newSale() {
    auto transaction = KVRTransactionModel::create();
    transaction->setAmount(KVRNumber(kAmount));
    transaction->setType(0);
    return transaction;
}

/// The sale's records go, so that every sale finds the store as the first did.
void forget(const std::shared_ptr<KVRTransactionModel>& transaction) {
    auto pinpad = transaction->pinpad();
    transaction->deleteRecord();
    if (pinpad) pinpad->deleteRecord();
}

/// Sales already kept in the store: a sale counts them for its key.
std::vector<std::shared_ptr<KVRTransactionModel>> storePastSales(int count) {
    std::vector<std::shared_ptr<KVRTransactionModel>> sales;
    for (int i = 0; i < count; ++i) {
        auto sale = newSale();
        sale->setStatus(kApproved);
        sales.push_back(sale);
    }
    if (!sales.empty()) sales.back()->save();
    return sales;
}

void setWireCounters(benchmark::State& state, const KVRBenchPinpad& pinpad, size_t commands) {
    double runs = static_cast<double>(state.iterations());
    double toPinpad = static_cast<double>(pinpad.bytesFromLibrary()) / runs;
    double fromPinpad = static_cast<double>(pinpad.bytesToLibrary()) / runs;
    state.counters["wire_bytes"] = toPinpad + fromPinpad;
    state.counters["wire_bytes_to_pinpad"] = toPinpad;
    state.counters["wire_bytes_from_pinpad"] = fromPinpad;
    state.counters["pinpad_commands"] = static_cast<double>(commands);
}

// The sale as the main worker runs it, on the benchmark's thread: the
// library's time for one sale, with `state.range(0)` past sales in the store.
void BM_Flow_Sale(benchmark::State& state) {
    FlowWorld world;
    if (!world.connected()) {
        state.SkipWithError("no session with the memory PIN pad");
        return;
    }
    auto past = storePastSales(static_cast<int>(state.range(0)));
    auto sell = [] {
        auto transaction = newSale();
        int result = KVRTransactionController().sendTransaction(transaction);
        return std::make_pair(transaction, result);
    };

    std::pair<std::shared_ptr<KVRTransactionModel>, int> learnt;
    auto script = world.pinpad().learn(answer, [&] { learnt = sell(); });
    forget(learnt.first);
    if (learnt.second != kApproved) {
        state.SkipWithError("the sale the script was learnt from was not approved");
        return;
    }
    world.pinpad().resetCounts();
    world.pinpad().startAnswering(answer);
    size_t answered = 0;
    for (auto _ : state) {
        auto [transaction, result] = sell();
        state.PauseTiming();
        size_t requests = world.pinpad().answeredRequests() - answered;
        answered += requests;
        forget(transaction);
        if (result != kApproved || requests != script.requests.size()) {
            state.SkipWithError("a sale did not run as the learnt one");
            break;
        }
        state.ResumeTiming();
    }
    world.pinpad().stopAnswering();
    setWireCounters(state, world.pinpad(), script.requests.size());
    for (auto& sale : past) sale->deleteRecord();
}
BENCHMARK(BM_Flow_Sale)->Arg(0)->Arg(1000)->Unit(benchmark::kMicrosecond);

// The same sale through the public entry: checks, the hand-over to the main
// worker and the completion on the main queue. Wall-clock time; the CPU
// time is the whole process's.
void BM_Flow_SaleThroughProvider(benchmark::State& state) {
    FlowWorld world;
    if (!world.connected()) {
        state.SkipWithError("no session with the memory PIN pad");
        return;
    }
    auto sell = [](const std::shared_ptr<KVRTransactionModel>& transaction) {
        auto done = std::make_shared<std::promise<bool>>();
        auto result = done->get_future();
        KVRTransactionProvider::sendTransaction(
            transaction, [done](bool success, std::optional<KVRError>) { done->set_value(success); });
        return result.wait_for(kProviderWait) == std::future_status::ready && result.get();
    };

    auto learnt = newSale();
    bool approved = false;
    auto script = world.pinpad().learn(answer, [&] { approved = sell(learnt); });
    forget(learnt);
    if (!approved) {
        state.SkipWithError("the sale the script was learnt from was not approved");
        return;
    }
    world.pinpad().resetCounts();
    world.pinpad().startAnswering(answer);
    size_t answered = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto transaction = newSale();
        state.ResumeTiming();
        approved = sell(transaction);
        state.PauseTiming();
        size_t requests = world.pinpad().answeredRequests() - answered;
        answered += requests;
        forget(transaction);
        if (!approved || requests != script.requests.size()) {
            state.SkipWithError("a sale did not run as the learnt one");
            break;
        }
        state.ResumeTiming();
    }
    world.pinpad().stopAnswering();
    setWireCounters(state, world.pinpad(), script.requests.size());
}
BENCHMARK(BM_Flow_SaleThroughProvider)->UseRealTime()->MeasureProcessCPUTime()->Unit(benchmark::kMicrosecond);

// A chip sale on a PIN pad line of 19 200 bit/s, with each link's own
// pacing: the default link pauses 0.5 s after every write, the ABECS link
// waits for the PIN pad's ACK instead. Wall-clock time per sale: the
// library's time plus the wire's.
void BM_Flow_SaleOnTheLine(benchmark::State& state) {
    const bool abecs = state.range(0) == 1;
    auto savedPause = KVRApplicationInfo::value("Kovra Pinpad Write Pause");
    KVRApplicationInfo::removeValue("Kovra Pinpad Write Pause");  // each link's default
    KVRApplicationInfo::setValue("Kovra Pinpad Link", abecs ? "abecs" : "spec");
    {
        FlowWorld world;
        KVRBenchLine line{kLineBitsPerSecond, abecs};
        size_t commands = 0;
        for (auto _ : state) {
            std::pair<std::shared_ptr<KVRTransactionModel>, int> sale;
            auto script = world.pinpad().learn(answer, [&] {
                auto transaction = newSale();
                sale = {transaction, KVRTransactionController().sendTransaction(transaction)};
            }, line);
            state.PauseTiming();
            forget(sale.first);
            commands = script.requests.size();
            if (sale.second != kApproved) {
                state.SkipWithError("the sale was not approved");
                break;
            }
            state.ResumeTiming();
        }
        setWireCounters(state, world.pinpad(), commands);
    }
    KVRApplicationInfo::removeValue("Kovra Pinpad Link");
    if (savedPause) KVRApplicationInfo::setValue("Kovra Pinpad Write Pause", *savedPause);
}
BENCHMARK(BM_Flow_SaleOnTheLine)->ArgName("abecs")->Arg(0)->Arg(1)->Iterations(3)->UseRealTime()->Unit(benchmark::kMillisecond);

// TLI, 100 AID and 100 CAPK records (one TLR each), TLE and the closing
// message, on the benchmark's thread.
void BM_Flow_TableLoad(benchmark::State& state) {
    FlowWorld world;
    if (!world.connected()) {
        state.SkipWithError("no session with the memory PIN pad");
        return;
    }
    auto load = [] {
        bool loaded = false;
        KVRTmsController().loadTmsTablesToPinpadWithBlock([&loaded](bool success, std::optional<KVRError>) {
            loaded = success;
        });
        return loaded;
    };

    bool loaded = false;
    auto script = world.pinpad().learn(answer, [&] { loaded = load(); });
    if (!loaded) {
        state.SkipWithError("the load the script was learnt from failed");
        return;
    }
    world.pinpad().resetCounts();
    world.pinpad().startAnswering(answer);
    size_t answered = 0;
    for (auto _ : state) {
        loaded = load();
        state.PauseTiming();
        size_t requests = world.pinpad().answeredRequests() - answered;
        answered += requests;
        if (!loaded || requests != script.requests.size()) {
            state.SkipWithError("a load did not run as the learnt one");
            break;
        }
        state.ResumeTiming();
    }
    world.pinpad().stopAnswering();
    setWireCounters(state, world.pinpad(), script.requests.size());
    state.counters["records"] = kApplications + kKeys;
}
BENCHMARK(BM_Flow_TableLoad)->Unit(benchmark::kMillisecond);

}  // namespace

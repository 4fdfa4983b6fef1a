#include <gtest/gtest.h>

#include <kovra/KVRCancellationProvider.h>
#include <kovra/KVRCardProvider.h>
#include <kovra/KVRDisplayProvider.h>
#include <kovra/KVRErrors.h>
#include <kovra/KVRJournalProvider.h>
#include <kovra/KVRKovraCodeActivationProvider.h>
#include <kovra/KVRMailProvider.h>
#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRPinPadConnectionProvider.h>
#include <kovra/KVRQueues.h>
#include <kovra/KVRTableDownloaderProvider.h>
#include <kovra/KVRTableLoaderProvider.h>
#include <kovra/KVRTransactionListProvider.h>
#include <kovra/KVRTransactionModel.h>
#include <kovra/KVRTransactionProvider.h>

#include "Pinpad/KVRBluetoothConnection.h"
#include "Pinpad/KVRPinpadController.h"
#include "Platform/KVRAccessoryManager.h"
#include "Utils/KVRReachability.h"
#include "testing/KVRCompletionRecorder.h"
#include "testing/KVRFakeExchange.h"
#include "testing/KVRScriptedPinpad.h"
#include "testing/KVRTemporaryStore.h"
#include "testing/KVRTestFixture.h"

#include <algorithm>
#include <functional>
#include <thread>

// Every provider call that completes through a block, as one table: the
// checks it makes before it starts, in the order it makes them, and where its
// completion runs once it has started. A failed check is reported before the
// call returns, on the caller's thread, and nothing reaches the PIN pad or
// the acquirer.

namespace {

enum class Check { Amount, ShortName, Text, Cancellable, Network, Enrolment, NewCode, Pinpad };
enum class Completes { OnTheCaller, OnTheMainQueue, OnAPool };

KVRError errorOf(Check check) {
    switch (check) {
        case Check::Amount: return KVRErrors::invalidAmount();
        case Check::ShortName: return KVRErrors::numberOfCharactersExceededForShortName();
        case Check::Text: return KVRErrors::numberOfCharactersExceeded();
        case Check::Cancellable: return KVRErrors::transactionAlreadyCancelled();
        case Check::Network: return KVRErrors::notConnectedToNetwork();
        case Check::Enrolment: return KVRErrors::missingKovracodeActivation();
        case Check::NewCode: return KVRErrors::kovracodeAlreadyActivated();
        case Check::Pinpad: return KVRErrors::pinpadConnectionNotFound();
    }
    return KVRErrors::genericError();
}

// The ways an argument can be refused; each is tried as the first failing check.
int waysToFail(Check check) { return check == Check::Amount || check == Check::Cancellable ? 4 : 1; }

/// Which checks fail, and how the first of them does.
struct World {
    std::vector<Check> failing;
    int way = 0;
    bool fails(Check check) const { return std::count(failing.begin(), failing.end(), check) > 0; }
    int wayOf(Check check) const { return !failing.empty() && failing.front() == check ? way : 0; }
};

std::string repeat(const std::string& piece, size_t count) {
    std::string out;
    for (size_t i = 0; i < count; ++i) out += piece;
    return out;
}

// 32 characters in 64 bytes: the display counts characters.
std::string displayText(const World& w) { return w.fails(Check::Text) ? repeat("A", 33) : repeat("ç", 32); }

long long amount(const World& w) {
    if (!w.fails(Check::Amount)) return 10;
    const long long refused[] = {9, 1000000000000LL, -1000, 0};
    return refused[w.wayOf(Check::Amount)];
}

std::shared_ptr<KVRTransactionModel> saleRecord(const World& w) {
    auto sale = KVRTransactionModel::create();
    sale->setAmount(KVRNumber(10LL));
    // 16 characters in 18 bytes pass; 17 do not.
    sale->setShortName(w.fails(Check::ShortName) ? "PADARIA DO BAIRRO" : "Padaria São João");
    if (!w.fails(Check::Amount)) return sale;
    switch (w.wayOf(Check::Amount)) {
        case 0: sale->setAmount(KVRNumber(9.99)); break;
        case 1: sale->setAmount(KVRNumber(1000000000000LL)); break;
        case 2: sale->setAmount(std::nullopt); break;
        default: return nullptr;
    }
    return sale;
}

std::shared_ptr<KVRTransactionModel> saleToCancel(const World& w) {
    auto sale = KVRTransactionModel::create();
    sale->setAmount(KVRNumber(1250LL));
    sale->setStatus(2);
    sale->setReference(std::string("REF-1"));
    sale->setMerchant(KVRMerchantModel::findFirst());
    if (w.fails(Check::Cancellable)) {
        switch (w.wayOf(Check::Cancellable)) {
            case 0: sale->setStatus(5); break;
            case 1: sale->setStatus(1); break;
            case 2:
                sale->save();
                sale->deleteRecord();
                return sale;
            default: return nullptr;
        }
    }
    sale->save();
    return sale;
}

using Call = std::function<void(const World&, KVRCompletion)>;

struct Contract {
    const char* name;
    std::vector<Check> checks;
    Completes completes;
    Call call;
};

void PrintTo(const Contract& contract, std::ostream* out) { *out << contract.name; }

std::vector<Contract> contracts() {
    using C = Check;
    using W = const World&;
    using Done = KVRCompletion;
    // Completions with a value: (success, value, error) and a sale's (success, error, record).
    auto two = [](Done done) { return [done](bool ok, auto, std::optional<KVRError> e) { done(ok, e); }; };
    auto sale = [](Done done) { return [done](bool ok, std::optional<KVRError> e, auto) { done(ok, e); }; };
    const std::vector<Check> byValue = {C::Amount, C::Network, C::Enrolment, C::Pinpad};
    const std::vector<Check> byRecord = {C::Amount, C::ShortName, C::Network, C::Enrolment, C::Pinpad};
    const auto main = Completes::OnTheMainQueue, pool = Completes::OnAPool;
    return {
        {"DisplayMessage", {C::Text, C::Pinpad}, main,
         [](W w, Done done) { KVRDisplayProvider::displayMessage(displayText(w), done); }},
        {"GetCardPan", {C::Pinpad}, main, [two](W, Done done) { KVRCardProvider::getCardPan(two(done)); }},
        {"ListTransactionsByPan", {C::Pinpad}, main,
         [two](W, Done done) { KVRTransactionListProvider::listTransactionsByPan(two(done)); }},
        {"LoadTables", {C::Pinpad}, main, [](W, Done done) { KVRTableLoaderProvider::loadTables(done); }},
        {"ConnectToPinpad", {C::Pinpad}, Completes::OnTheCaller,
         [](W, Done done) { KVRPinPadConnectionProvider::connectToPinpad(done); }},
        {"ActivateKovraCode", {C::Network, C::NewCode}, pool,
         [](W w, Done done) {
             KVRKovraCodeActivationProvider::activateKovraCode(w.fails(C::NewCode) ? "KOVRA-0001" : "KOVRA-0002", done);
         }},
        {"DownLoadTables", {C::Network, C::Enrolment}, pool,
         [](W, Done done) { KVRTableDownloaderProvider::downLoadTables(done); }},
        {"CancelTransaction", {C::Cancellable, C::Network, C::Enrolment}, pool,
         [](W w, Done done) { KVRCancellationProvider::cancelTransaction(saleToCancel(w), done); }},
        {"SendReceiptViaEmail", {C::Network}, main,
         [](W, Done done) {
             KVRMailProvider::sendReceiptViaEmail(1, KVRTransactionModel::create(), "a@b.c", true, done);
         }},
        {"SendEmailFeedback", {C::Network}, main, [](W, Done done) { KVRMailProvider::sendEmailFeedback("oi", done); }},
        {"SendTransactionWithValue", byValue, main,
         [](W w, Done done) { KVRTransactionProvider().sendTransactionWithValue(amount(w), 0, 0, "ORDER-1", done); }},
        {"SendTransactionWithValueOrderIdentification", byValue, main,
         [](W w, Done done) {
             KVRTransactionProvider().sendTransactionWithValueOrderIdentification(amount(w), 1, 2, "ORDER-1", done);
         }},
        {"SendTransactionWithValueReturningRecord", byValue, main,
         [sale](W w, Done done) {
             KVRTransactionProvider().sendTransactionWithValueReturningRecord(amount(w), 0, 12, "", sale(done));
         }},
        {"SendTransaction", byRecord, main,
         [](W w, Done done) { KVRTransactionProvider::sendTransaction(saleRecord(w), done); }},
        {"SendTransactionReturningRecord", byRecord, main,
         [sale](W w, Done done) { KVRTransactionProvider::sendTransactionReturningRecord(saleRecord(w), sale(done)); }},
        {"Recover", {}, pool,
         [](W, Done done) { KVRJournalProvider::recover([done](auto) { done(true, std::nullopt); }); }},
    };
}

// Set while the application's main-queue executor runs a completion.
thread_local bool insideTheApplicationsExecutor = false;

/// What a provider call may touch, set so that each check passes or fails as
/// the world says; the application has its own main-queue executor.
class Stage {
public:
    explicit Stage(const World& world) {
        KVRTestFixture::setNetworkFlags(world.fails(Check::Network) ? 0 : KVRReachability::kFlagReachable);
        if (!world.fails(Check::Enrolment)) {
            auto merchant = KVRMerchantModel::create();
            merchant->setKovracode(std::string("KOVRA-0001"));
            merchant->setSaleAffiliationKey(std::string("1234-5678"));
            merchant->save();
        }
        if (!world.fails(Check::Pinpad)) {
            KVRTestFixture::addAccessory(pinpad.accessory());
            KVRPinpadController::sharedController().connectWithPaired();
        }
        KVRQueues::setMainExecutor([](std::function<void()> completion) {
            insideTheApplicationsExecutor = true;
            completion();
            insideTheApplicationsExecutor = false;
        });
    }
    // The link lets go of the scripted PIN pad before it goes; the guard,
    // made first, puts the rest back last.
    ~Stage() {
        KVRBluetoothConnection::resetSharedController();
        KVRPinpadController::sharedController().setConnection(nullptr);
    }

    KVRGlobalStateGuard guard;
    KVRTemporaryStore store;
    KVRFakeExchange host;
    KVRScriptedPinpad pinpad;
};

std::thread::id mainWorkerThread() {
    std::thread::id id;
    KVRQueues::main().sync([&] { id = std::this_thread::get_id(); });
    return id;
}

class ProviderContractTest : public ::testing::TestWithParam<Contract> {};

TEST_P(ProviderContractTest, ChecksFailInOrderAtOnceThenTheCallCompletesWhereDocumented) {
    const Contract& contract = GetParam();
    for (size_t first = 0; first < contract.checks.size(); ++first) {
        for (int way = 0; way < waysToFail(contract.checks[first]); ++way) {
            // This check and every later one fail: only this one may be reported.
            World world{{contract.checks.begin() + static_cast<std::ptrdiff_t>(first), contract.checks.end()}, way};
            SCOPED_TRACE("check " + std::to_string(first) + ", way " + std::to_string(way));
            Stage stage(world);
            KVRCompletionRecorder recorder;
            contract.call(world, recorder.block());
            ASSERT_EQ(recorder.count(), 1u) << "reported before the call returned";
            auto call = recorder.calls()[0];
            KVRError expected = errorOf(contract.checks[first]);
            EXPECT_FALSE(call.success);
            ASSERT_TRUE(call.error);
            EXPECT_EQ(call.error->code(), expected.code());
            EXPECT_EQ(call.error->localizedDescription(), expected.localizedDescription());
            EXPECT_EQ(call.thread, std::this_thread::get_id());
            EXPECT_TRUE(stage.pinpad.requests().empty());
            EXPECT_EQ(stage.host.count(), 0u);
        }
    }

    Stage stage(World{});
    KVRCompletionRecorder recorder;
    bool throughTheExecutor = false;
    contract.call(World{}, [&throughTheExecutor, block = recorder.block()](bool success, std::optional<KVRError> e) {
        throughTheExecutor = insideTheApplicationsExecutor;
        block(success, std::move(e));
    });
    ASSERT_TRUE(recorder.waitForCalls(1, std::chrono::seconds(60)));
    auto thread = recorder.calls()[0].thread;
    EXPECT_EQ(throughTheExecutor, contract.completes == Completes::OnTheMainQueue);
    EXPECT_EQ(thread == std::this_thread::get_id(), contract.completes == Completes::OnTheCaller);
    if (contract.completes == Completes::OnAPool) EXPECT_NE(thread, mainWorkerThread());
}

INSTANTIATE_TEST_SUITE_P(Providers, ProviderContractTest, ::testing::ValuesIn(contracts()),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace

// A credit sale, single payment, and the record it leaves in the store.
//
//   kovra-example-sale [CENTS]          (default 1500, R$ 15,00)
//
// Exit code 0 when approved; 1 when declined or failed, with the error.
#include "KovraExample.h"

int main(int argc, char** argv) {
    long long amount = argc > 1 ? std::atoll(argv[1]) : 1500;
    if (!example::configure()) return 2;

    // No merchant enrolled, no PIN pad, no network: the error says which.
    if (auto error = example::wait([](KVRCompletion done) { KVRPinPadConnectionProvider::connectToPinpad(done); }))
        return example::report(*error);

    KVRTransactionProvider sale;
    std::shared_ptr<KVRTransactionModel> record;
    auto error = example::wait([&](KVRCompletion done) {
        sale.sendTransactionWithValueReturningRecord(
            amount, /*credit*/ 0, /*single payment*/ 0, "order-42",
            [&record, done](bool success, std::optional<KVRError> error, std::shared_ptr<KVRTransactionModel> kept) {
                record = kept;  // this sale's record; none when the sale left nothing stored
                done(success, error);
            });
    });
    // A declined sale keeps its record ("Transação Negada"); a failed, timed
    // out or aborted one leaves none.
    if (record) example::print(*record);
    return error ? example::report(*error) : 0;
}

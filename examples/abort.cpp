// A sale aborted from another thread, as a cashier's "Cancel" button would:
// the PIN pad stops waiting for the card (or the PIN) and the sale ends as
// cancelled by the user, with nothing sent to the acquirer and no record.
//
//   kovra-example-abort [SECONDS]      (default 5: how long the cashier waits)
//
// Exit code 0 when the sale ended as cancelled; 1 otherwise, with the error.
#include "KovraExample.h"

#include <chrono>
#include <thread>

int main(int argc, char** argv) {
    double seconds = argc > 1 ? std::atof(argv[1]) : 5;
    if (!example::configure()) return 2;
    if (auto error = example::wait([](KVRCompletion done) { KVRPinPadConnectionProvider::connectToPinpad(done); }))
        return example::report(*error);

    // The abort is thread-safe: here the main thread plays the cashier while
    // the library's worker runs the sale.
    std::thread cashier([seconds] {
        std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
        bool stopped = KVRPinPadConnectionProvider::abortCurrentCommand();
        std::printf("cashier pressed Cancel: %s\n", stopped ? "the PIN pad stopped" : "nothing was waiting");
    });

    KVRTransactionProvider sale;
    auto error = example::wait([&](KVRCompletion done) {
        sale.sendTransactionWithValue(1500, /*credit*/ 0, /*single payment*/ 0, "order-43", done);
    });
    cashier.join();
    if (error && error->code() == KVRErrors::operationCancelledByUser().code()) {
        std::printf("sale cancelled at the PIN pad\n");
        return 0;
    }
    if (error) return example::report(*error);
    std::printf("the sale ended before the cashier cancelled it\n");
    return 1;
}

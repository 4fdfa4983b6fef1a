// Cancellation of an approved sale and its cancellation receipt by e-mail.
//
//   kovra-example-cancellation REFERENCE [ADDRESS]   (default cliente@example.com)
#include "KovraExample.h"

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s REFERENCE [ADDRESS]\n", argv[0]);
        return 2;
    }
    std::string reference = argv[1];
    std::string address = argc > 2 ? argv[2] : "cliente@example.com";
    if (!example::configure()) return 2;

    std::shared_ptr<KVRTransactionModel> sale;
    for (const auto& record : KVRTransactionListProvider::listTransactions())
        if (record->reference() == reference) sale = record;
    if (!sale) {
        std::fprintf(stderr, "no stored transaction has the reference %s\n", reference.c_str());
        return 1;
    }

    // Only an approved sale can be cancelled (transactionAlreadyCancelled
    // otherwise); on approval the stored record becomes "Transação Cancelada".
    if (auto error = example::wait([&](KVRCompletion done) { KVRCancellationProvider::cancelTransaction(sale, done); }))
        return example::report(*error);
    example::print(*sale);

    auto error = example::wait([&](KVRCompletion done) {
        KVRMailProvider::sendReceiptViaEmail(KVRMailProvider::kReceiptCancellation, sale, address,
                                             /*displayCompanyInformation*/ true, done);
    });
    if (error) return example::report(*error);
    std::printf("cancellation receipt sent to %s\n", address.c_str());
    return 0;
}

// Enrolment of a merchant, its EMV tables downloaded and loaded into the PIN
// pad, with progress.
//
//   kovra-example-enrolment [KOVRACODE]   (default KOVRA-0001)
#include "KovraExample.h"

int main(int argc, char** argv) {
    std::string kovraCode = argc > 1 ? argv[1] : "KOVRA-0001";
    if (!example::configure()) return 2;

    auto error = example::wait([&](KVRCompletion done) { KVRKovraCodeActivationProvider::activateKovraCode(kovraCode, done); });
    // Enrolling twice is harmless: the merchant stays as it was.
    if (error && *error != KVRErrors::kovracodeAlreadyActivated()) return example::report(*error);
    for (const auto& merchant : KVRMerchantListProvider::listMerchants())
        std::printf("merchant %s: %s\n", merchant->kovracode().value_or("").c_str(),
                    merchant->merchantName().value_or("").c_str());

    // A failed download keeps the tables stored before.
    if (auto error = example::wait([](KVRCompletion done) { KVRTableDownloaderProvider::downLoadTables(done); }))
        return example::report(*error);
    std::printf("tables downloaded\n");

    if (auto error = example::wait([](KVRCompletion done) { KVRPinPadConnectionProvider::connectToPinpad(done); }))
        return example::report(*error);
    // "n/total" after each record, posted on the library's worker.
    auto& center = KVRNotificationCenter::defaultCenter();
    auto progress = center.addObserver("KVRTableLoadProgress", [](const KVRNotification& note) {
        if (auto* count = std::any_cast<std::string>(&note.object)) std::fprintf(stderr, "loading %s\n", count->c_str());
    });
    error = example::wait([](KVRCompletion done) { KVRTableLoaderProvider::loadTables(done); });
    center.removeObserver(progress);
    if (error) return example::report(*error);
    std::printf("tables loaded into the PIN pad\n");
    return 0;
}

// What the examples share: settings from the environment, waiting for a
// completion, printing an error. An application with a UI loop would not
// wait; it would act in the completion instead.
#pragma once

#include <kovra/Kovra.h>

#include <cstdio>
#include <cstdlib>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace example {

/// Loads the information dictionary ($KOVRA_INFO_PLIST, else ./Info.plist;
/// `kovra config init Info.plist` writes a template) and keeps the store in
/// $KOVRA_DATA_DIR when set (else the library's default directory).
inline bool configure() {
    const char* info = std::getenv("KOVRA_INFO_PLIST");
    std::string path = info && *info ? info : "Info.plist";
    if (!KVRApplicationInfo::loadFromPlistFile(path)) {
        std::fprintf(stderr, "cannot read the information dictionary %s\n", path.c_str());
        return false;
    }
    if (const char* data = std::getenv("KOVRA_DATA_DIR"); data && *data) KVRDirectories::setDataDirectory(data);
    return true;
}

/// Starts an operation and waits for its completion. Completions arrive on
/// the library's threads; some operations report twice (enrolment after a
/// transport error), so only the first report counts.
template <class Start>
std::optional<KVRError> wait(Start start) {
    auto done = std::make_shared<std::promise<std::optional<KVRError>>>();
    auto once = std::make_shared<std::once_flag>();
    start([done, once](bool, std::optional<KVRError> error) {
        std::call_once(*once, [&] { done->set_value(error); });
    });
    return done->get_future().get();
}

/// "error CODE: DESCRIPTION" on standard error; the exit code 1.
inline int report(const KVRError& error) {
    std::fprintf(stderr, "error %ld: %s\n", error.code(), error.localizedDescription().c_str());
    return 1;
}

/// The lines of a stored transaction.
inline void print(const KVRTransactionModel& record) {
    std::printf("reference           %s\n", record.reference().value_or("-").c_str());
    std::printf("authorisation code  %s\n", record.authorisationCode().value_or("-").c_str());
    std::printf("brand               %s\n", record.cardBrand().value_or("-").c_str());
    std::printf("card                **** %s\n", record.pan().value_or("----").c_str());
    long long cents = record.amount() ? record.amount()->longLongValue() : 0;
    std::printf("amount              R$ %lld,%02lld\n", cents / 100, cents % 100);
    std::printf("type                %s\n", record.typeString().c_str());
    std::printf("status              %s\n", record.statusString().c_str());
    std::printf("date                %s\n", record.dateString().c_str());
}

}  // namespace example

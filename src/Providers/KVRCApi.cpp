// The C interface: each function turns C arguments into a provider call and
// the provider's completion into a C callback. No exception leaves a function.
#include <kovra/kovra.h>

#include "Providers/KVRCApiRecords.h"

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRCancellationProvider.h>
#include <kovra/KVRDirectories.h>
#include <kovra/KVRErrors.h>
#include <kovra/KVRJournalProvider.h>
#include <kovra/KVRKovraCodeActivationProvider.h>
#include <kovra/KVRMailProvider.h>
#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRNotificationCenter.h>
#include <kovra/KVRPinPadConnectionProvider.h>
#include <kovra/KVRQueues.h>
#include <kovra/KVRTableDownloaderProvider.h>
#include <kovra/KVRTableLoaderProvider.h>
#include <kovra/KVRTransactionListProvider.h>
#include <kovra/KVRTransactionModel.h>
#include <kovra/KVRTransactionProvider.h>
#include <kovra/KVRVersion.h>

#include "Tms/KVRTmsController.h"

#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>

struct kovra_transaction {
    std::shared_ptr<KVRTransactionModel> model;
    // The texts the last kovra_record read points into.
    std::map<std::string, std::optional<std::string>> texts;
};

namespace {

// An error that owns its texts, so that it can outlive the provider's error.
struct OwnedError {
    std::string domain;
    int code = 0;
    std::string message;

    kovra_error view() const { return {domain.c_str(), code, message.c_str()}; }
};

OwnedError own(const KVRError& error) {
    return {error.domain(), static_cast<int>(error.code()), error.localizedDescription()};
}

OwnedError ownError(int code, std::string message) { return {KOVRA_C_DOMAIN, code, std::move(message)}; }

thread_local std::optional<OwnedError> lastError;
thread_local kovra_error lastErrorView;

int remember(std::optional<OwnedError> error) {
    lastError = std::move(error);
    return lastError ? lastError->code : KOVRA_OK;
}

// Runs body, which returns a code and may set lastError; turns an escaping
// exception into an internal error.
template <class Body>
int guarded(Body body) noexcept {
    try {
        lastError.reset();
        return body();
    } catch (const std::exception& exception) {
        return remember(ownError(KOVRA_ERROR_INTERNAL, exception.what()));
    } catch (...) {
        return remember(ownError(KOVRA_ERROR_INTERNAL, "unexpected failure"));
    }
}

int argumentError(const char* what) { return remember(ownError(KOVRA_ERROR_ARGUMENT, what)); }

void call(kovra_completion callback, void* user, const std::optional<OwnedError>& error) {
    if (!callback) return;
    if (!error) {
        callback(user, KOVRA_OK, nullptr);
        return;
    }
    kovra_error view = error->view();
    callback(user, error->code, &view);
}

std::optional<OwnedError> failure(bool success, const std::optional<KVRError>& error) {
    if (success) return std::nullopt;
    // A failure always carries an error; the generic one stands in should one come without.
    return own(error.value_or(KVRErrors::genericError()));
}

// The provider completion that reports to a C callback once: enrolment calls
// back a second time after a transport failure, which a C caller must not see.
KVRCompletion completionFor(kovra_completion callback, void* user) {
    auto called = std::make_shared<std::atomic<bool>>(false);
    return [callback, user, called](bool success, std::optional<KVRError> error) {
        if (called->exchange(true)) return;
        call(callback, user, failure(success, error));
    };
}

// Runs an async call and reports an exception it raises through its callback.
template <class Start>
void startGuarded(kovra_completion callback, void* user, Start start) noexcept {
    try {
        start();
    } catch (const std::exception& exception) {
        call(callback, user, ownError(KOVRA_ERROR_INTERNAL, exception.what()));
    } catch (...) {
        call(callback, user, ownError(KOVRA_ERROR_INTERNAL, "unexpected failure"));
    }
}

// What a blocking call waits for: the one completion of its async variant.
struct Waiter {
    std::mutex mutex;
    std::condition_variable done;
    bool finished = false;
    std::optional<OwnedError> error;
    kovra_transaction* record = nullptr;

    void finish(const kovra_error* result, kovra_transaction* transaction) {
        std::lock_guard lock(mutex);
        if (result) error = OwnedError{result->domain, result->code, result->message};
        record = transaction;
        finished = true;
        done.notify_all();
    }
    static void completion(void* user, int, const kovra_error* result) {
        static_cast<Waiter*>(user)->finish(result, nullptr);
    }
    static void saleCompletion(void* user, int, const kovra_error* result, kovra_transaction* transaction) {
        static_cast<Waiter*>(user)->finish(result, transaction);
    }
    int wait() {
        std::unique_lock lock(mutex);
        done.wait(lock, [this] { return finished; });
        return remember(error);
    }
};

template <class Start>
int blocking(Start start) {
    return guarded([&] {
        Waiter waiter;
        start(&Waiter::completion, &waiter);
        return waiter.wait();
    });
}

char* copyText(const std::string& text) {
    char* copy = static_cast<char*>(std::malloc(text.size() + 1));
    if (copy) std::memcpy(copy, text.c_str(), text.size() + 1);
    return copy;
}

int jsonResult(char** json, const std::string& text) {
    if (!json) return argumentError("no place for the JSON text");
    *json = copyText(text);
    return *json ? KOVRA_OK : remember(ownError(KOVRA_ERROR_INTERNAL, "out of memory"));
}

kovra_transaction* handleFor(std::shared_ptr<KVRTransactionModel> model) {
    return model ? new kovra_transaction{std::move(model), {}} : nullptr;
}

void runTask(void* argument) {
    std::unique_ptr<std::function<void()>> task(static_cast<std::function<void()>*>(argument));
    (*task)();
}

// Every catalogue error, for the text of a code.
std::vector<KVRError> catalogue() {
    return {KVRErrors::genericError(), KVRErrors::emailMessageError(), KVRErrors::numberOfCharactersExceeded(),
            KVRErrors::fncCommandError(), KVRErrors::missingKovracodeActivation(),
            KVRErrors::kovracodeAlreadyActivated(), KVRErrors::invalidAmount(), KVRErrors::transactionAutoCancel(),
            KVRErrors::invalidTransaction(), KVRErrors::transactionFailed(), KVRErrors::transactionTimeout(),
            KVRErrors::unknownKovracode(), KVRErrors::transactionAlreadyCancelled(),
            KVRErrors::transactionRejected(), KVRErrors::operationCancelledByUser(),
            KVRErrors::pinpadConnectionNotFound(), KVRErrors::tablesNotFound(), KVRErrors::loadingTablesError(),
            KVRErrors::nullResponse(), KVRErrors::notConnectedToNetwork()};
}

const char* text(const std::map<std::string, std::optional<std::string>>& texts, const char* key) {
    auto found = texts.find(key);
    return found != texts.end() && found->second ? found->second->c_str() : nullptr;
}

}  // namespace

// The functions keep the C linkage of their declarations in kovra.h.

const char* kovra_version(void) { return KovraSDKVersionString; }

const kovra_error* kovra_last_error(void) {
    if (!lastError) return nullptr;
    lastErrorView = lastError->view();
    return &lastErrorView;
}

const char* kovra_error_message(int code) {
    if (lastError && lastError->code == code) return lastError->message.c_str();
    thread_local std::string message;
    switch (code) {
        case KOVRA_ERROR_ARGUMENT: return "Invalid argument.";
        case KOVRA_ERROR_NOT_FOUND: return "Not found.";
        case KOVRA_ERROR_INTERNAL: return "Internal error.";
        default: break;
    }
    for (const KVRError& error : catalogue()) {
        if (error.code() == code) {
            message = error.localizedDescription();
            return message.c_str();
        }
    }
    return "Unknown error.";
}

void kovra_free(void* text) { std::free(text); }

void kovra_set_main_executor(kovra_executor executor, void* user) {
    if (!executor) {
        KVRQueues::setMainExecutor({});
        return;
    }
    KVRQueues::setMainExecutor([executor, user](std::function<void()> task) {
        executor(user, &runTask, new std::function<void()>(std::move(task)));
    });
}

int kovra_config_load(const char* plist_path) {
    return guarded([&] {
        if (!plist_path) return argumentError("no property-list path");
        if (!KVRApplicationInfo::loadFromPlistFile(plist_path))
            return remember(ownError(KOVRA_ERROR_NOT_FOUND, std::string("cannot read ") + plist_path));
        return KOVRA_OK;
    });
}

namespace {
template <class Value>
int setConfig(const char* key, Value value) {
    return guarded([&] {
        if (!key) return argumentError("no setting key");
        KVRApplicationInfo::setValue(key, KVRPropertyValue(value));
        return KOVRA_OK;
    });
}

template <class Setter>
int setDirectory(const char* path, Setter setter) {
    return guarded([&] {
        if (!path) return argumentError("no directory");
        setter(path);
        return KOVRA_OK;
    });
}
}  // namespace

int kovra_config_set_string(const char* key, const char* value) {
    if (!value) return guarded([] { return argumentError("no setting value"); });
    return setConfig(key, std::string(value));
}
int kovra_config_set_bool(const char* key, int value) { return setConfig(key, value != 0); }
int kovra_config_set_int(const char* key, long long value) { return setConfig(key, value); }
int kovra_config_set_real(const char* key, double value) { return setConfig(key, value); }

int kovra_config_remove(const char* key) {
    return guarded([&] {
        if (!key) return argumentError("no setting key");
        KVRApplicationInfo::removeValue(key);
        return KOVRA_OK;
    });
}

void kovra_config_clear(void) {
    guarded([] {
        KVRApplicationInfo::clear();
        return KOVRA_OK;
    });
}

int kovra_set_data_directory(const char* base) { return setDirectory(base, &KVRDirectories::setDataDirectory); }
int kovra_set_documents_directory(const char* path) {
    return setDirectory(path, &KVRDirectories::setDocumentsDirectory);
}
int kovra_set_library_directory(const char* path) { return setDirectory(path, &KVRDirectories::setLibraryDirectory); }
char* kovra_documents_directory(void) { return copyText(KVRDirectories::documentsDirectory()); }
char* kovra_library_directory(void) { return copyText(KVRDirectories::libraryDirectory()); }

void kovra_connect_async(kovra_completion callback, void* user) {
    startGuarded(callback, user, [&] { KVRPinPadConnectionProvider::connectToPinpad(completionFor(callback, user)); });
}
int kovra_connect(void) { return blocking([](kovra_completion c, void* u) { kovra_connect_async(c, u); }); }

int kovra_abort(void) {
    return guarded([] {
        if (KVRPinPadConnectionProvider::abortCurrentCommand()) return KOVRA_OK;
        return remember(ownError(KOVRA_ERROR_NOT_FOUND, "No PIN pad command is in flight."));
    });
}

void kovra_enrol_async(const char* kovra_code, kovra_completion callback, void* user) {
    if (!kovra_code) return call(callback, user, ownError(KOVRA_ERROR_ARGUMENT, "no KovraCode"));
    startGuarded(callback, user, [&] {
        KVRKovraCodeActivationProvider::activateKovraCode(kovra_code, completionFor(callback, user));
    });
}
int kovra_enrol(const char* kovra_code) {
    return blocking([&](kovra_completion c, void* u) { kovra_enrol_async(kovra_code, c, u); });
}

int kovra_deactivate(const char* kovra_code) {
    return guarded([&] {
        if (!kovra_code) return argumentError("no KovraCode");
        if (!KVRMerchantModel::findFirstByAttribute("kovracode", std::string(kovra_code)))
            return remember(ownError(KOVRA_ERROR_NOT_FOUND,
                                     std::string("No merchant is enrolled with the KovraCode ") + kovra_code + "."));
        KVRKovraCodeActivationProvider::deactivateMerchantWithKovraCode(kovra_code);
        return KOVRA_OK;
    });
}

void kovra_download_tables_async(kovra_completion callback, void* user) {
    startGuarded(callback, user, [&] { KVRTableDownloaderProvider::downLoadTables(completionFor(callback, user)); });
}
int kovra_download_tables(void) {
    return blocking([](kovra_completion c, void* u) { kovra_download_tables_async(c, u); });
}

namespace {
// The blocking variant waits with a user pointer of its own, so progress and
// completion take separate ones here.
void loadTables(kovra_progress progress, void* progressUser, kovra_completion callback, void* user) {
    startGuarded(callback, user, [&] {
        auto& center = KVRNotificationCenter::defaultCenter();
        auto token = std::make_shared<std::optional<KVRNotificationCenter::Token>>();
        if (progress) {
            // The loader posts "loaded/total" after each record, on the PIN pad worker.
            *token = center.addObserver(KVRTmsController::kTableLoadProgressNotification,
                                        [progress, progressUser](const KVRNotification& note) {
                                            const auto* text = std::any_cast<std::string>(&note.object);
                                            int loaded = 0, total = 0;
                                            if (text && std::sscanf(text->c_str(), "%d/%d", &loaded, &total) == 2)
                                                progress(progressUser, loaded, total);
                                        });
        }
        auto report = completionFor(callback, user);
        KVRTableLoaderProvider::loadTables([token, report](bool success, std::optional<KVRError> error) {
            if (*token) KVRNotificationCenter::defaultCenter().removeObserver(**token);
            report(success, std::move(error));
        });
    });
}
}  // namespace

void kovra_load_tables_async(kovra_progress progress, kovra_completion callback, void* user) {
    loadTables(progress, user, callback, user);
}
int kovra_load_tables(kovra_progress progress, void* user) {
    return blocking([&](kovra_completion c, void* u) { loadTables(progress, user, c, u); });
}

void kovra_sale_async(long long amount, int type, int instalments, kovra_sale_completion callback, void* user) {
    auto report = [callback, user](const std::optional<OwnedError>& error, kovra_transaction* record) {
        if (!callback) return kovra_transaction_release(record);
        if (!error) return callback(user, KOVRA_OK, nullptr, record);
        kovra_error view = error->view();
        callback(user, error->code, &view, record);
    };
    if (type < 0 || instalments < 0)
        return report(ownError(KOVRA_ERROR_ARGUMENT, "a negative type or instalment code"), nullptr);
    try {
        KVRTransactionProvider provider;
        provider.sendTransactionWithValueReturningRecord(
            amount, static_cast<unsigned>(type), static_cast<unsigned>(instalments), std::string(),
            [report](bool success, std::optional<KVRError> error, std::shared_ptr<KVRTransactionModel> record) {
                report(failure(success, error), handleFor(std::move(record)));
            });
    } catch (const std::exception& exception) {
        report(ownError(KOVRA_ERROR_INTERNAL, exception.what()), nullptr);
    }
}

int kovra_sale(long long amount, int type, int instalments, kovra_transaction** record) {
    return guarded([&] {
        if (record) *record = nullptr;
        Waiter waiter;
        kovra_sale_async(amount, type, instalments, &Waiter::saleCompletion, &waiter);
        int code = waiter.wait();
        if (record)
            *record = waiter.record;
        else
            kovra_transaction_release(waiter.record);
        return code;
    });
}

void kovra_cancel_async(kovra_transaction* transaction, kovra_completion callback, void* user) {
    if (!transaction) return call(callback, user, ownError(KOVRA_ERROR_ARGUMENT, "no transaction"));
    startGuarded(callback, user, [&] {
        KVRCancellationProvider::cancelTransaction(transaction->model, completionFor(callback, user));
    });
}
int kovra_cancel(kovra_transaction* transaction) {
    return blocking([&](kovra_completion c, void* u) { kovra_cancel_async(transaction, c, u); });
}

int kovra_transaction_find(const char* reference, kovra_transaction** transaction) {
    return guarded([&] {
        if (!reference || !transaction) return argumentError("no reference or no place for the transaction");
        *transaction = nullptr;
        for (const auto& model : KVRTransactionListProvider::listTransactions()) {
            if (model->reference() == std::string(reference)) {
                *transaction = handleFor(model);
                return KOVRA_OK;
            }
        }
        return remember(ownError(KOVRA_ERROR_NOT_FOUND,
                                 std::string("No stored transaction has the reference ") + reference + "."));
    });
}

int kovra_transaction_record(kovra_transaction* transaction, kovra_record* record) {
    return guarded([&] {
        if (!transaction || !record) return argumentError("no transaction or no record");
        auto fields = KVRCApiRecords::fields(transaction->model);
        transaction->texts = std::move(fields.texts);
        const auto& texts = transaction->texts;
        *record = kovra_record{text(texts, "reference"),
                               text(texts, "authorisationCode"),
                               text(texts, "brand"),
                               text(texts, "lastDigits"),
                               fields.status,
                               text(texts, "statusText"),
                               fields.amount,
                               fields.type,
                               fields.instalments,
                               fields.instalmentType,
                               text(texts, "date"),
                               text(texts, "aid"),
                               text(texts, "initiatorTransactionKey"),
                               text(texts, "receiptTransactionKey")};
        return KOVRA_OK;
    });
}

char* kovra_transaction_json(kovra_transaction* transaction) {
    char* json = nullptr;
    guarded([&] {
        if (!transaction) return argumentError("no transaction");
        return jsonResult(&json, KVRCApiRecords::transaction(transaction->model));
    });
    return json;
}

void kovra_transaction_release(kovra_transaction* transaction) { delete transaction; }

int kovra_transactions_json(char** json) {
    return guarded([&] { return jsonResult(json, KVRCApiRecords::transactions(KVRTransactionListProvider::listTransactions())); });
}

int kovra_last_transaction_json(char** json) {
    return guarded([&] { return jsonResult(json, KVRCApiRecords::journalEntry(KVRJournalProvider::lastTransaction())); });
}

int kovra_pending_reversals_json(char** json) {
    return guarded([&] { return jsonResult(json, KVRCApiRecords::journal(KVRJournalProvider::pendingReversals())); });
}

void kovra_send_receipt_async(kovra_transaction* transaction, int kind, const char* destination,
                              int company_information, kovra_completion callback, void* user) {
    if (!transaction || !destination)
        return call(callback, user, ownError(KOVRA_ERROR_ARGUMENT, "no transaction or no destination"));
    startGuarded(callback, user, [&] {
        KVRMailProvider::sendReceiptViaEmail(kind, transaction->model, destination, company_information != 0,
                                             completionFor(callback, user));
    });
}
int kovra_send_receipt(kovra_transaction* transaction, int kind, const char* destination, int company_information) {
    return blocking([&](kovra_completion c, void* u) {
        kovra_send_receipt_async(transaction, kind, destination, company_information, c, u);
    });
}

void kovra_send_feedback_async(const char* message, kovra_completion callback, void* user) {
    if (!message) return call(callback, user, ownError(KOVRA_ERROR_ARGUMENT, "no message"));
    startGuarded(callback, user, [&] { KVRMailProvider::sendEmailFeedback(message, completionFor(callback, user)); });
}
int kovra_send_feedback(const char* message) {
    return blocking([&](kovra_completion c, void* u) { kovra_send_feedback_async(message, c, u); });
}


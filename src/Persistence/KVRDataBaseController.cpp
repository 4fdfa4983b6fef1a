#include "Persistence/KVRDataBaseController.h"

#include <kovra/KVRDirectories.h>
#include <kovra/KVRLoggingUtil.h>
#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRTransactionModel.h>

#include "Persistence/KVRRegisterFile.h"
#include "Persistence/KVRSQLiteStatement.h"
#include "Persistence/KVRTransactionStatus.h"
#include "Utils/KVRDateUtil.h"
#include "Utils/KVRStringUtil.h"

#include <sqlite3.h>

#include <filesystem>
#include <optional>

namespace {

constexpr const char* kSelectRows =
    "SELECT KeyID,amount,date,status,type,instalments,idOrder,aid,arqc,Recipient,Reference,PAN,Flag,Chname,Acode "
    "FROM contacts ORDER BY KeyID";
constexpr const char* kDateFormat = "dd/MM/yyyy '-' HH:mm";
constexpr const char* kApprovedText = "Transação Aprovada";
constexpr const char* kDebitText = "Débito";
constexpr int kCreditType = 0;
constexpr int kDebitType = 1;

// Positions in kSelectRows.
enum Column { Amount = 1, Date, Status, Type, Instalments, IdOrder, Aid, Arqc, Recipient, Reference, Pan, Flag,
              Chname, Acode };

/// An open "trans.db", closed when it goes out of scope.
class LegacyFile {
public:
    LegacyFile(const std::string& path, int flags) {
        if (path.empty()) return;
        if (sqlite3_open_v2(path.c_str(), &db_, flags, nullptr) != SQLITE_OK) {
            KVRLoggingUtil::printLog(KVRStringUtil::format("Can't open %s: %s", path.c_str(),
                                                           db_ ? sqlite3_errmsg(db_) : "out of memory"));
            close();
        }
    }
    ~LegacyFile() { close(); }
    LegacyFile(const LegacyFile&) = delete;
    LegacyFile& operator=(const LegacyFile&) = delete;

    sqlite3* db() const { return db_; }

    bool exec(const char* sql) {
        char* message = nullptr;
        int code = sqlite3_exec(db_, sql, nullptr, nullptr, &message);
        if (code != SQLITE_OK) {
            KVRLoggingUtil::printLog(
                KVRStringUtil::format("trans.db: %s failed: %s", sql, message ? message : sqlite3_errstr(code)));
        }
        sqlite3_free(message);
        return code == SQLITE_OK;
    }

private:
    void close() {
        if (db_) sqlite3_close_v2(db_);
        db_ = nullptr;
    }
    sqlite3* db_ = nullptr;
};

std::optional<std::string> textAt(const KVRSQLiteStatement& row, int column) {
    if (row.columnIsNull(column)) return std::nullopt;
    return row.columnText(column);
}

std::string plainTextAt(const KVRSQLiteStatement& row, int column) { return textAt(row, column).value_or(""); }

void fillTransaction(KVRTransactionModel& transaction, const KVRSQLiteStatement& row) {
    transaction.setAmount(KVRNumber(KVRStringUtil::leadingInteger(plainTextAt(row, Amount))));
    transaction.setInstalmentAmount(static_cast<int>(KVRStringUtil::leadingInteger(plainTextAt(row, Instalments))));
    transaction.setInitiatorTransactionKey(textAt(row, IdOrder));
    transaction.setAid(textAt(row, Aid));
    transaction.setArqc(textAt(row, Arqc));
    transaction.setType(plainTextAt(row, Type) == kDebitText ? kDebitType : kCreditType);
    // Only approvals stay live; anything else can no longer be cancelled.
    transaction.setStatus(plainTextAt(row, Status) == kApprovedText ? KVRTransactionStatusApproved
                                                                    : KVRTransactionStatusCancelled);
    transaction.setDate(KVRDateUtil::buildDateWithString(plainTextAt(row, Date), kDateFormat));
    transaction.setReceiptTransactionKey(textAt(row, Recipient));
    transaction.setPan(textAt(row, Pan));
    transaction.setCardBrand(textAt(row, Flag));
    transaction.setCardHolderName(textAt(row, Chname));
    transaction.setAuthorisationCode(textAt(row, Acode));
}

}  // namespace

KVRDataBaseController& KVRDataBaseController::getsharedInstance() {
    static KVRDataBaseController* instance = new KVRDataBaseController();
    return *instance;
}

KVRDataBaseController::KVRDataBaseController() { createDB(); }

std::string KVRDataBaseController::databasePath() {
    std::string documents = KVRDirectories::documentsDirectory();
    return documents.empty() ? std::string() : documents + "/" + kFileName;
}

void KVRDataBaseController::createDB() {
    std::string path = databasePath();
    if (path.empty()) return;
    std::error_code ec;
    Founded = std::filesystem::exists(path, ec);
    LegacyFile file(path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX);
    if (file.db()) file.exec(kCreateStatement);
}

void KVRDataBaseController::create() { createDB(); }

void KVRDataBaseController::emptyTable() {
    LegacyFile file(databasePath(), SQLITE_OPEN_READWRITE | SQLITE_OPEN_FULLMUTEX);
    if (file.db()) file.exec("DELETE from contacts");
}

void KVRDataBaseController::migrateDatabase(const Enrolment& enrol) {
    if (KVRMerchantModel::findFirst()) {
        if (!KVRTransactionModel::findFirst()) migrateColumns();
        return;
    }
    auto code = KVRRegisterFile::kovraCode();
    if (!code || code->empty()) {
        KVRLoggingUtil::printLog("No merchant to carry the legacy transactions");
        return;
    }
    enrol(*code, [this](bool success, std::optional<KVRError> error) {
        if (!success) {
            KVRLoggingUtil::printLog("Legacy merchant not enrolled: " +
                                     (error ? error->localizedDescription() : std::string("no error")));
            return;
        }
        if (!KVRTransactionModel::findFirst()) migrateColumns();
    });
}

void KVRDataBaseController::migrateColumns() {
    std::lock_guard lock(migrationMutex_);
    LegacyFile file(databasePath(), SQLITE_OPEN_READONLY | SQLITE_OPEN_FULLMUTEX);
    if (file.db()) copyRows(file.db());
}

void KVRDataBaseController::copyRows(sqlite3* db) {
    KVRSQLiteStatement row(db, kSelectRows);
    if (!row.isValid()) {
        KVRLoggingUtil::printLog(KVRStringUtil::format("trans.db: can't read contacts: %s", sqlite3_errmsg(db)));
        return;
    }
    auto merchant = KVRMerchantModel::findFirst();
    int result;
    while ((result = row.step()) == SQLITE_ROW) {
        // A row without a reference is kept with an empty one, so that a
        // second run recognises it as well.
        std::string reference = plainTextAt(row, Reference);
        if (KVRTransactionModel::findFirstByAttribute("reference", reference)) continue;
        auto transaction = KVRTransactionModel::create();
        fillTransaction(*transaction, row);
        transaction->setReference(reference);
        transaction->setMerchant(merchant);
        transaction->save();
    }
    if (result != SQLITE_DONE) {
        KVRLoggingUtil::printLog(KVRStringUtil::format("trans.db: reading stopped: %s", sqlite3_errmsg(db)));
    }
}

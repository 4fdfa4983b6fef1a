#pragma once

#include <kovra/KVRCompletion.h>

#include <functional>
#include <mutex>
#include <string>

struct sqlite3;

/// The legacy flat transaction file "trans.db" in the Documents directory:
/// created when missing, emptied on request, and copied once into the object
/// store so an application that used it keeps its history.
class KVRDataBaseController {
public:
    static constexpr const char* kFileName = "trans.db";
    static constexpr const char* kCreateStatement =
        "create table if not exists contacts (KeyID integer primary key autoincrement, amount text, date datetime "
        "default current_timestamp, status text,type text,instalments text,idOrder text, aid text, arqc "
        "text,Recipient text,Reference text,PAN text,Flag text,Chname text,Acode text,Mail text)";

    static KVRDataBaseController& getsharedInstance();

    /// Opens (creating if needed) "trans.db" and runs the create statement.
    void createDB();
    void create();
    static void emptyTable();
    /// Enrols the merchant of a Kovra code and reports when done; handed in by
    /// the caller because enrolment is a provider's flow, above the store.
    using Enrolment = std::function<void(const std::string& kovraCode, KVRCompletion completion)>;

    /// Brings the object store up to date with the legacy file (enrolling the
    /// merchant of "register.plist" through `enrol` first when none is stored).
    void migrateDatabase(const Enrolment& enrol);
    /// Copies the rows not yet in the store.
    void migrateColumns();

    /// The path of "trans.db" in the current Documents directory; empty when
    /// there is no Documents directory.
    static std::string databasePath();

    /// Whether createDB found an existing "trans.db".
    bool Founded = false;

private:
    KVRDataBaseController();
    void copyRows(sqlite3* db);

    // Migrations may start from the pool (after an enrolment) and from the
    // caller at once; one at a time, so the reference check sees every copy.
    std::mutex migrationMutex_;
};

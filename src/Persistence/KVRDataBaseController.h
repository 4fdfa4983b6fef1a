#pragma once

#include <mutex>
#include <string>

struct sqlite3;

/// The legacy flat transaction file "trans.db" in the Documents directory:
/// created when missing, emptied on request, and copied once into the object
/// store so an application that used it keeps its history.
class KVRDataBaseController {
public:
    static KVRDataBaseController& getsharedInstance();

    /// Opens (creating if needed) "trans.db" and runs the create statement.
    void createDB();
    void create();
    static void emptyTable();
    /// Brings the object store up to date with the legacy file (enrolling the
    /// merchant of "register.plist" first when none is stored).
    void migrateDatabase();
    /// Copies the rows not yet in the store.
    void migrateColumns();

    bool Founded = false;

private:
    KVRDataBaseController();
};

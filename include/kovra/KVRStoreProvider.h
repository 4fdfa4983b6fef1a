#pragma once

#include <kovra/KVRExport.h>

#include <optional>
#include <string>
#include <vector>

/// The object store's health, and its closing.
class KOVRA_API KVRStoreProvider {
public:
    struct Health {
        /// The store file.
        std::string path;
        /// A store is open: records and the journal are kept.
        bool available = false;
        /// What went wrong when it was opened in this process: no store could
        /// be used, or an unreadable one was moved aside and a new one made.
        std::optional<std::string> problem;
        /// Unreadable stores moved aside beside it (their history is not
        /// read), oldest first.
        std::vector<std::string> setAsideFiles;
    };

    KVRStoreProvider() = delete;

    /// Opens the store if it is not open yet.
    static Health health();
    /// Writes everything into the store file and closes it; the next use opens
    /// it again. Runs by itself at a normal process exit; call it before
    /// leaving any other way (_exit, a signal).
    static void closeStore();
};

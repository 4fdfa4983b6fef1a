#pragma once

#include <kovra/KVRCompletion.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

class KVRAidTableCommand;
class KVRCapkTableCommand;
class KVRCommandController;

/// Downloads the merchant's EMV tables from the terminal-management host into
/// the one stored table record, and loads the stored tables into the PIN pad.
/// Both run on the caller's thread and call the completion there, once: the
/// download on a host pool, the load on the main worker (every PIN pad
/// exchange runs there).
class KVRTmsController {
public:
    /// Posted on the loading thread after each record sent; the object is a
    /// std::string "n/total" (records sent so far / records of the load).
    static constexpr const char* kTableLoadProgressNotification = "KVRTableLoadProgress";
    /// Shown on the PIN pad's two lines when a load has finished.
    static constexpr const char* kTablesUpdatedMessage = "TABELA          ATUALIZADA";

    /// Asks the host for the "AIDS", "CARDBRANDS", "CAPKS" and "BINS" data
    /// sets and keeps the reply's AID and CAPK table blocks. The stored record
    /// is replaced only when the reply holds both blocks.
    void downloadTablesWithSaleAffiliationKey(const std::optional<std::string>& saleAffiliationKey,
                                              KVRCompletion block);
    /// TLI, every AID record, every CAPK record, TLE, then "TABELA
    /// ATUALIZADA" on the display.
    void loadTmsTablesToPinpadWithBlock(KVRCompletion block);

    /// Lets the card reads of `commands` load the stored tables into the PIN
    /// pad when it reports them out of date (the outcome is not reported).
    static void installTableReload(KVRCommandController& commands);

private:
    struct Records {
        std::vector<std::shared_ptr<KVRAidTableCommand>> aids;
        std::vector<std::shared_ptr<KVRCapkTableCommand>> capks;
        size_t total() const { return aids.size() + capks.size(); }
    };

    static bool recordsFit(const Records& records);
    static void sendRecords(KVRCommandController& commands, const Records& records);
    static void postProgress(size_t sent, size_t total);
};

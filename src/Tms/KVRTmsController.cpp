#include "Tms/KVRTmsController.h"

#include <kovra/KVRErrors.h>
#include <kovra/KVRException.h>
#include <kovra/KVRLoggingUtil.h>
#include <kovra/KVRNotificationCenter.h>
#include <kovra/KVRTmsTableModel.h>

#include "Host/KVRCommunicationController.h"
#include "Host/KVRServiceEndpoint.h"
#include "Host/KVRXmlUtil.h"
#include "Pinpad/Commands/KVRTlrCommandRequest.h"
#include "Pinpad/KVRCommandController.h"
#include "Tms/KVRAcceptorConfigurationUpdate.h"
#include "Tms/KVRAidTable.h"
#include "Tms/KVRCapkTable.h"
#include "Tms/KVRStatusReportFactory.h"
#include "Utils/KVRStringUtil.h"

#include <array>

namespace {

// A table block cut from the reply, markers included; nothing when the reply
// does not hold it whole (a reply cut short has no closing marker).
std::optional<std::string> completeBlock(const std::string& reply, const std::string& start, const std::string& end) {
    auto block = KVRXmlUtil::getBlockFromXml(reply, start, end);
    if (!block || block->size() < start.size() + end.size() || !block->ends_with(end)) return std::nullopt;
    return block;
}

// Writes the record the way the table-load command will, into a scratch buffer.
template <class Record>
bool recordFits(const std::shared_ptr<Record>& record, std::shared_ptr<const KVRTableRecordCommand> KVRTlrCommandRequest::*slot) {
    KVRTlrCommandRequest request;
    request.*slot = record;
    std::array<char, KVRCommandBufferSize> scratch{};
    try {
        request.getCommand(scratch.data());
        return true;
    } catch (const KVRException& e) {
        KVRLoggingUtil::console(KVRStringUtil::format("Table record refused: %s", e.what()));
        return false;
    }
}

}  // namespace

// ---- Download ----

void KVRTmsController::downloadTablesWithSaleAffiliationKey(const std::optional<std::string>& saleAffiliationKey,
                                                           KVRCompletion block) {
    if (!saleAffiliationKey || saleAffiliationKey->empty()) {
        block(false, KVRErrors::missingKovracodeActivation());
        return;
    }
    std::string report = KVRStatusReportFactory::statusReportWithSaleAffiliationKey(*saleAffiliationKey)->write();
    KVRLoggingUtil::printLog(report);

    std::optional<KVRError> error;
    auto reply = KVRCommunicationController::postXml(report, KVRServiceEndpoint::tmsUrl(), &error);
    if (error) {
        block(false, error);
        return;
    }
    if (!reply || reply->empty()) {
        block(false, KVRErrors::nullResponse());
        return;
    }
    KVRAcceptorConfigurationUpdate update;
    update.read(*reply);
    KVRLoggingUtil::printLog(*reply);

    // Card brands and BIN ranges come in the reply too; only the EMV tables are kept.
    auto aidTable = completeBlock(*reply, "<AidTbl>", "</AidTbl>");
    auto capkTable = completeBlock(*reply, "<CapkTable>", "</CapkTable>");
    if (!aidTable || !capkTable) {
        block(false, KVRErrors::nullResponse());
        return;
    }
    auto tables = KVRTmsTableModel::findFirst();
    if (!tables) tables = KVRTmsTableModel::create();
    tables->setAidTable(*aidTable);
    tables->setCapkTable(*capkTable);
    tables->save();
    block(true, std::nullopt);
}

// ---- Load ----

void KVRTmsController::loadTmsTablesToPinpadWithBlock(KVRCompletion block) {
    auto tables = KVRTmsTableModel::findFirst();
    if (!tables) {
        block(false, KVRErrors::tablesNotFound());
        return;
    }
    KVRAidTable aidTable;
    KVRCapkTable capkTable;
    KVRCommandController commands;

    std::optional<KVRError> failure;
    try {
        commands.sendCommandTli();

        // One error for both tables: an AID table that does not parse is
        // reported even when the CAPK table does.
        std::optional<KVRError> error;
        auto aids = aidTable.readAidString(tables->aidTable().value_or(""), &error);
        auto capks = capkTable.readCapkString(tables->capkTable().value_or(""), &error);
        Records records;
        if (aids) records.aids = std::move(*aids);
        if (capks) records.capks = std::move(*capks);

        if (error) {
            // The PIN pad has had TLI and nothing else: its old tables are
            // invalid until a load completes.
            failure = error;
        } else if (!aids || !capks || !recordsFit(records)) {
            // As above: every record is checked before the first one is
            // sent, so a record that cannot be written leaves the PIN pad
            // after TLI, never in the middle of a load.
            failure = KVRErrors::loadingTablesError();
        } else {
            sendRecords(commands, records);
            commands.sendCommandTle();
            commands.sendCommandDspWithMessage(kTablesUpdatedMessage);
        }
    } catch (const std::exception& e) {
        // The link failed (a PIN pad that stopped answering, no link at all):
        // whatever was sent before stays sent, and TLE is missing.
        KVRLoggingUtil::console(KVRStringUtil::format("Table load stopped: %s", e.what()));
        failure = KVRErrors::loadingTablesError();
    }
    if (failure) {
        block(false, failure);
        return;
    }
    block(true, std::nullopt);
}

void KVRTmsController::installTableReload(KVRCommandController& commands) {
    commands.setTableReload(
        [] { KVRTmsController().loadTmsTablesToPinpadWithBlock([](bool, std::optional<KVRError>) {}); });
}

bool KVRTmsController::recordsFit(const Records& records) {
    for (const auto& aid : records.aids)
        if (!aid || !recordFits(aid, &KVRTlrCommandRequest::aidCommand)) return false;
    for (const auto& capk : records.capks)
        if (!capk || !recordFits(capk, &KVRTlrCommandRequest::capkCommand)) return false;
    return true;
}

// The PIN pad's answers to TLR are not examined: a record it refuses does not
// stop the others.
void KVRTmsController::sendRecords(KVRCommandController& commands, const Records& records) {
    size_t sent = 0;
    const size_t total = records.total();
    for (const auto& aid : records.aids) {
        commands.sendCommandTlrWithAid(aid);
        postProgress(++sent, total);
    }
    for (const auto& capk : records.capks) {
        commands.sendCommandTlrWithCapk(capk);
        postProgress(++sent, total);
    }
}

void KVRTmsController::postProgress(size_t sent, size_t total) {
    KVRNotificationCenter::defaultCenter().postNotification(kTableLoadProgressNotification,
                                                            KVRStringUtil::format("%zu/%zu", sent, total));
}

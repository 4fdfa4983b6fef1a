#include "Transactions/KVRInitiatorTransactionKey.h"

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRDirectories.h>
#include <kovra/KVRException.h>
#include <kovra/KVRLoggingUtil.h>
#include <kovra/KVRTransactionModel.h>

#include "Persistence/KVRJournal.h"
#include "Utils/KVRClock.h"
#include "Utils/KVRDateUtil.h"
#include "Utils/KVRStringUtil.h"

#include <algorithm>

std::optional<std::string> KVRInitiatorTransactionKey::generate(const std::string& serialNumber,
                                                                std::optional<long long>& keyCount) {
    try {
        auto now = KVRClock::now();
        // The ordinality of the day unit within the day unit: always 1, kept
        // because the host has always received it.
        long dayInDay = 1;
        long long counted = std::max(KVRTransactionModel::countAll(), KVRJournal::highestKeyCount().value_or(-1) + 1);
        keyCount = counted;
        std::string count = KVRStringUtil::format("%04lli", counted);
        std::string vendor = KVRDirectories::vendorIdentifier();
        if (vendor.size() < 28) throw KVRException("NSRangeException", "The vendor identifier is too short.");
        std::string version = KVRApplicationInfo::stringForKey("CFBundleVersion").value_or("");
        return KVRStringUtil::removeAll(serialNumber, ' ') + "-" + KVRDateUtil::dateStringWithFormat("yy", now) +
               KVRStringUtil::format("%ld", dayInDay) + count + vendor.substr(24, 4) +
               KVRStringUtil::removeAll(version, '.');
    } catch (const std::exception&) {
        KVRLoggingUtil::printLog("Occoreu algum erro na formaçao da string");
        return std::nullopt;
    }
}

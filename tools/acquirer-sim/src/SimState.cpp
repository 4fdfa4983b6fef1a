#include "SimState.h"

#include "SimTime.h"

#include <cstdio>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace acqsim {
namespace {

using nlohmann::json;

std::string withoutLeadingZeros(const std::string& digits) {
    size_t first = digits.find_first_not_of('0');
    return first == std::string::npos ? "0" : digits.substr(first);
}

json emptyState() {
    return json{{"nextReceipt", 1},
                {"outboxCounter", 0},
                {"merchantsSeen", json::object()},
                {"authorisations", json::object()}};
}

} // namespace

SimState::SimState(std::filesystem::path file) : file_(std::move(file)), data_(emptyState()) {
    std::ifstream in(file_, std::ios::binary);
    if (!in) {
        return;
    }
    std::ostringstream text;
    text << in.rdbuf();
    json loaded = json::parse(text.str(), nullptr, false);
    if (loaded.is_discarded() || !loaded.is_object()) {
        throw std::runtime_error(file_.string() + " is not a state file; move it away to start afresh");
    }
    data_.update(loaded);
}

void SimState::noteEnrolment(const std::string& kovraCode, const std::string& saleAffiliationKey) {
    std::lock_guard lock(mutex_);
    json& entry = merchantEntryLocked(kovraCode, saleAffiliationKey);
    entry["enrolments"] = entry.value("enrolments", 0) + 1;
    saveLocked();
}

void SimState::noteTableDownload(const std::string& kovraCode, const std::string& saleAffiliationKey) {
    std::lock_guard lock(mutex_);
    json& entry = merchantEntryLocked(kovraCode, saleAffiliationKey);
    entry["tableDownloads"] = entry.value("tableDownloads", 0) + 1;
    saveLocked();
}

std::string SimState::nextReceiptId() {
    std::lock_guard lock(mutex_);
    long long sequence = data_.value("nextReceipt", 1LL);
    data_["nextReceipt"] = sequence + 1;
    saveLocked();
    char digits[16];
    std::snprintf(digits, sizeof digits, "%010lld", sequence % 10000000000LL);
    return SimTime::localDateCompact() + digits;
}

void SimState::recordAuthorisation(const AuthorisationRecord& record) {
    std::lock_guard lock(mutex_);
    data_["authorisations"][record.receiptId] = json{{"initiatorId", record.initiatorId},
                                                     {"reference", record.reference},
                                                     {"merchantId", record.merchantId},
                                                     {"amount", record.amount},
                                                     {"response", record.response},
                                                     {"authorisationCode", record.authorisationCode},
                                                     {"time", record.time},
                                                     {"cancelled", false},
                                                     {"cancelledAt", nullptr}};
    saveLocked();
}

CancellationVerdict SimState::cancel(const std::string& receiptId, const std::string& initiatorId,
                                     const std::string& amount, const std::string& merchantId,
                                     const std::string& reference) {
    std::lock_guard lock(mutex_);
    json* found = findLocked(receiptId, initiatorId);
    if (found == nullptr) {
        return {false, receiptId.empty() ? "unknown InitrTxId" : "unknown RcptTxId"};
    }
    json& entry = *found;
    if (entry.value("initiatorId", "") != initiatorId) {
        return {false, "InitrTxId does not match the authorisation"};
    }
    if (entry.value("merchantId", "") != merchantId) {
        return {false, "merchant does not match the authorisation"};
    }
    if (entry.value("reference", "") != reference) {
        return {false, "TxRef does not match the authorisation"};
    }
    const std::string response = entry.value("response", "");
    if (response != "APPR" && response != "PART") {
        return {false, "authorisation was not approved (" + response + ")"};
    }
    if (withoutLeadingZeros(entry.value("amount", "")) != withoutLeadingZeros(amount)) {
        return {false, "amount does not match the authorisation"};
    }
    if (entry.value("cancelled", false)) {
        return {true, "repeated advice, already cancelled"};
    }
    entry["cancelled"] = true;
    entry["cancelledAt"] = SimTime::localDateTime();
    saveLocked();
    return {true, ""};
}

json* SimState::findLocked(const std::string& receiptId, const std::string& initiatorId) {
    json& authorisations = data_["authorisations"];
    if (!receiptId.empty()) {
        auto it = authorisations.find(receiptId);
        return it == authorisations.end() ? nullptr : &*it;
    }
    for (auto& [id, entry] : authorisations.items()) {
        if (entry.value("initiatorId", "") == initiatorId) {
            return &entry;
        }
    }
    return nullptr;
}

std::vector<std::string> SimState::approvedAmounts(const std::string& authorisationCode) {
    std::lock_guard lock(mutex_);
    std::vector<std::string> amounts;
    for (const auto& [id, entry] : data_["authorisations"].items()) {
        const std::string response = entry.value("response", "");
        if (!authorisationCode.empty() && entry.value("authorisationCode", "") == authorisationCode &&
            (response == "APPR" || response == "PART")) {
            amounts.push_back(withoutLeadingZeros(entry.value("amount", "")));
        }
    }
    return amounts;
}

int SimState::nextOutboxNumber() {
    std::lock_guard lock(mutex_);
    int number = data_.value("outboxCounter", 0) + 1;
    data_["outboxCounter"] = number;
    saveLocked();
    return number;
}

json& SimState::merchantEntryLocked(const std::string& kovraCode, const std::string& saleAffiliationKey) {
    json& entry = data_["merchantsSeen"][kovraCode];
    entry["saleAffiliationKey"] = saleAffiliationKey;
    entry["lastSeen"] = SimTime::localDateTime();
    return entry;
}

void SimState::saveLocked() {
    std::filesystem::path temporary = file_;
    temporary += ".tmp";
    {
        std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
        out << data_.dump(2) << '\n';
        if (!out) {
            throw std::runtime_error("cannot write " + temporary.string());
        }
    }
    std::filesystem::rename(temporary, file_);
}

} // namespace acqsim

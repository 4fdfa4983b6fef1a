#include "KVRSimCommandProcessor.h"

#include "KVRSimEmvData.h"
#include "KVRSimLayoutError.h"
#include "KVRSimTableRecord.h"

#include <chrono>
#include <cstdio>
#include <ctime>
#include <vector>

namespace {

std::string number(long long value, int width) {
    char text[32];
    std::snprintf(text, sizeof text, "%0*lld", width, value);
    return text;
}

std::string padded(const std::string& text, size_t width, char pad = ' ') {
    std::string result = text.substr(0, std::min(text.size(), width));
    result.resize(width, pad);
    return result;
}

/// A variable-length value in a fixed area: its length, then the value filled to the area.
std::string inArea(const std::string& value, int lengthDigits, size_t area) {
    return number(static_cast<long long>(value.size()), lengthDigits) + padded(value, area);
}

std::string today() {
    std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char text[7];
    std::strftime(text, sizeof text, "%y%m%d", &local);
    return text;
}

bool isBlank(const std::string& text) {
    return text.find_first_not_of(' ') == std::string::npos;
}

/// Commands whose requests carry card data (GPN carries the PAN).
bool carriesCardData(const std::string& command) {
    return command == "GPN";
}

/// Every character but blanks becomes '*'.
void maskWhole(std::string& text, size_t from, size_t to) {
    for (size_t i = from; i < std::min(to, text.size()); ++i) {
        if (text[i] != ' ') text[i] = '*';
    }
}

}  // namespace

KVRSimCommandProcessor::KVRSimCommandProcessor(KVRSimIdentity identity, std::string defaultCard,
                                               KVRSimScenario& scenario, KVRSimTableStore& tables,
                                               KVRSimDisplay& display, Settings settings)
    : identity_(std::move(identity)),
      defaultCard_(KVRSimCard::named(defaultCard).value()),
      scenario_(scenario),
      tables_(tables),
      display_(display),
      settings_(settings),
      random_(std::random_device{}()) {}

const std::map<std::string, KVRSimCommandProcessor::Handler>& KVRSimCommandProcessor::handlers() {
    static const std::map<std::string, Handler> table{
        {"OPN", &KVRSimCommandProcessor::opn}, {"CLO", &KVRSimCommandProcessor::clo},
        {"GIN", &KVRSimCommandProcessor::gin}, {"DSP", &KVRSimCommandProcessor::dsp},
        {"RMC", &KVRSimCommandProcessor::rmc}, {"PRT", &KVRSimCommandProcessor::prt},
        {"GPN", &KVRSimCommandProcessor::gpn}, {"GCR", &KVRSimCommandProcessor::gcr},
        {"GOC", &KVRSimCommandProcessor::goc}, {"FNC", &KVRSimCommandProcessor::fnc},
        {"TLI", &KVRSimCommandProcessor::tli}, {"TLR", &KVRSimCommandProcessor::tlr},
        {"TLE", &KVRSimCommandProcessor::tle},
    };
    return table;
}

KVRSimOutcome KVRSimCommandProcessor::process(const std::string& text) {
    panFields_.clear();
    auto outcome = processUnlogged(text);
    outcome.logged = loggableAfterParse(text);
    return outcome;
}

KVRSimOutcome KVRSimCommandProcessor::processUnlogged(const std::string& text) {
    if (text.size() < 3) {
        return KVRSimOutcome::refuse("packet shorter than a command name");
    }
    auto name = text.substr(0, 3);
    auto handler = handlers().find(name);
    if (handler == handlers().end()) {
        return KVRSimOutcome::answer("ERR010");
    }
    if (text == refusedCopy_) {
        refusedCopy_.clear();
    } else if (scenario_.refusesCopy(name)) {
        refusedCopy_ = text;
        return KVRSimOutcome::refuse("the scenario refuses this copy");
    }
    try {
        KVRSimFieldReader request(std::string_view(text).substr(3), name, 3);
        auto outcome = (this->*(handler->second))(request);
        const auto& how = outcome.delivery;
        if (!how.silence && how.hangUp != KVRSimDelivery::HangUp::InsteadOfReply) {
            for (const auto& message : how.notifications) {
                display_.showMessage(message);
            }
        }
        return outcome;
    } catch (const KVRSimLayoutError& error) {
        return KVRSimOutcome::refuse(error.what());
    }
}

std::string KVRSimCommandProcessor::loggable(const std::string& text) {
    panFields_.clear();
    return loggableAfterParse(text);
}

std::string KVRSimCommandProcessor::loggableAfterParse(const std::string& text) const {
    if (settings_.logCardData) {
        return text;
    }
    std::string logged = text;
    if (panFields_.empty() && carriesCardData(text.substr(0, 3))) {
        // The card data could not be told from the rest, so none of it is shown.
        maskWhole(logged, 3, logged.size());
    }
    for (const auto& field : panFields_) {
        auto first = logged.find_first_not_of(' ', field.offset);
        auto end = logged.find_last_not_of(' ', field.offset + field.width - 1);
        if (first == std::string::npos || end == std::string::npos || first > end) continue;
        size_t digits = end + 1 - first;
        // A short number shows only its last four; a PAN its first six as well.
        size_t keepFirst = digits > 10 ? 6 : 0;
        maskWhole(logged, first + keepFirst, end + 1 - std::min<size_t>(4, digits));
    }
    return logged;
}

void KVRSimCommandProcessor::kept(const std::string& what) const {
    if (settings_.strict) {
        throw KVRSimLayoutError(what + " is not ABECS (refused by --strict-abecs)");
    }
}

void KVRSimCommandProcessor::noData(KVRSimFieldReader& request, const char* command) {
    if (request.remaining() == 0) {
        return;
    }
    request.block("block").expectEnd();
    request.expectEnd();
    kept(std::string(command) + " with an empty block");
}

std::string KVRSimCommandProcessor::reply(const std::string& command, int status, const std::optional<std::string>& block) {
    std::string text = command + number(status, 3);
    if (block) {
        text += number(static_cast<long long>(block->size()), 3) + *block;
    }
    return text;
}

std::optional<KVRSimOutcome> KVRSimCommandProcessor::replaced(const std::string& command,
                                                              const KVRSimScenario::Effect& effect) {
    if (effect.status && *effect.status != kOk) {
        return KVRSimOutcome::answer(reply(command, *effect.status), effect.delivery);
    }
    return std::nullopt;
}

KVRSimOutcome KVRSimCommandProcessor::opn(KVRSimFieldReader& request) {
    noData(request, "OPN");
    auto effect = scenario_.match("OPN");
    if (auto other = replaced("OPN", effect)) return *other;
    return KVRSimOutcome::answer(reply("OPN", kOk), effect.delivery);
}

std::string KVRSimCommandProcessor::displayMessage(KVRSimFieldReader& request, bool emptyAllowed,
                                                  const std::string& context) {
    auto block = request.block("block");
    std::string message;
    if (emptyAllowed && block.remaining() == 0) {
        kept(context + " with an empty block");
    } else {
        message = block.display("message", 32);
    }
    block.expectEnd();
    request.expectEnd();
    return message;
}

KVRSimOutcome KVRSimCommandProcessor::clo(KVRSimFieldReader& request) {
    auto message = displayMessage(request, false, "CLO");
    auto effect = scenario_.match("CLO");
    if (auto other = replaced("CLO", effect)) return *other;
    display_.showMessage(message);
    card_.reset();
    return KVRSimOutcome::answer(reply("CLO", kOk), effect.delivery);
}

KVRSimOutcome KVRSimCommandProcessor::dsp(KVRSimFieldReader& request) {
    auto message = displayMessage(request, true, "DSP");
    auto effect = scenario_.match("DSP");
    if (auto other = replaced("DSP", effect)) return *other;
    display_.showMessage(message);
    return KVRSimOutcome::answer(reply("DSP", kOk), effect.delivery);
}

KVRSimOutcome KVRSimCommandProcessor::rmc(KVRSimFieldReader& request) {
    auto message = displayMessage(request, false, "RMC");
    auto effect = scenario_.match("RMC");
    if (auto other = replaced("RMC", effect)) return *other;
    display_.showMessage(message);
    return KVRSimOutcome::answer(reply("RMC", kOk), effect.delivery);
}

KVRSimOutcome KVRSimCommandProcessor::gin(KVRSimFieldReader& request) {
    auto block = request.block("block");
    block.number("acqidx", 2);
    block.expectEnd();
    request.expectEnd();
    auto effect = scenario_.match("GIN");
    if (auto other = replaced("GIN", effect)) return *other;
    std::string data = padded(identity_.name, KVRSimIdentity::kNameWidth) +
                       padded(identity_.model, KVRSimIdentity::kModelWidth) + padded(identity_.contactless, 1) +
                       padded(identity_.softwareVersion, KVRSimIdentity::kSoftwareVersionWidth) +
                       padded(identity_.specificationVersion, 4) +
                       padded(identity_.managerVersion, KVRSimIdentity::kManagerVersionWidth) +
                       padded(identity_.serialNumber, KVRSimIdentity::kSerialNumberWidth);
    return KVRSimOutcome::answer(reply("GIN", kOk, data), effect.delivery);
}

KVRSimOutcome KVRSimCommandProcessor::prt(KVRSimFieldReader& request) {
    auto block = request.block("block");
    auto action = block.number("action", 1);
    if (action == 0) {
        block.number("size", 1);
        block.number("alignment", 1);
        if (block.remaining() == 0) {
            throw KVRSimLayoutError("PRT block: field message is empty");
        }
        block.text("message", block.remaining());
    } else if (action == 1) {
        block.number("horizontal", 4);
    } else if (action == 2) {
        block.number("steps", 4);
    } else {
        throw KVRSimLayoutError("PRT block: field action must be 0, 1 or 2");
    }
    block.expectEnd();
    request.expectEnd();
    auto effect = scenario_.match("PRT");
    if (auto other = replaced("PRT", effect)) return *other;
    std::string data = action == 0 ? "0" + number(kOk, 3) : number(action, 1);
    return KVRSimOutcome::answer(reply("PRT", kOk, data), effect.delivery);
}

KVRSimOutcome KVRSimCommandProcessor::gpn(KVRSimFieldReader& request) {
    auto block = request.block("block");
    block.number("method", 1);
    block.number("keyidx", 2);
    // The library leaves the working key out (it uses DUKPT), which makes its block this long.
    constexpr size_t kKeptLength = 2 + 19 + 1 + 2 + 2 + 32;
    bool withKey = block.remaining() != kKeptLength;
    if (withKey) {
        block.hex("wkenc", 32);
    }
    auto panLength = static_cast<size_t>(block.number("panLength", 2));
    panFields_.push_back({block.offset(), 19});
    std::string message;
    if (!withKey) {
        // The library's own form: PAN right-aligned, its length and the entry count left at 0.
        kept("GPN without working key, PAN right-aligned");
        if (panLength != 0) {
            throw KVRSimLayoutError("GPN block: field panLength must be 00 without a working key");
        }
        block.rightAlignedDigits("pan", 19);
        if (block.number("entries", 1) != 0) {
            throw KVRSimLayoutError("GPN block: field entries must be 0 without a working key");
        }
        message = pinEntry(block);
    } else {
        if (panLength < 1 || panLength > 19) {
            throw KVRSimLayoutError("GPN block: field panLength must be 01 to 19");
        }
        auto pan = block.text("pan", 19);
        auto digits = std::min(pan.find_first_not_of("0123456789"), pan.size());
        if (digits != panLength || !isBlank(pan.substr(panLength))) {
            throw KVRSimLayoutError("GPN block: field pan must be panLength digits, left-aligned with blanks");
        }
        auto entries = block.number("entries", 1);
        if (entries < 1) {
            throw KVRSimLayoutError("GPN block: field entries must be at least 1");
        }
        for (long long entry = 0; entry < entries; ++entry) {
            auto prompt = pinEntry(block);
            if (entry == 0) message = prompt;  // the display shows the first entry's prompt
        }
    }
    block.expectEnd();
    request.expectEnd();
    auto effect = scenario_.match("GPN");
    if (auto other = replaced("GPN", effect)) return *other;
    if (!isBlank(message)) {
        display_.showMessage(message);
    }
    return KVRSimOutcome::answer(reply("GPN", kOk, randomHex(16) + nextKeySerialNumber()), effect.delivery);
}

std::string KVRSimCommandProcessor::pinEntry(KVRSimFieldReader& block) {
    auto minimum = block.number("minimum", 2);
    auto maximum = block.number("maximum", 2);
    if (minimum > maximum) {
        throw KVRSimLayoutError("GPN block: field minimum is larger than maximum");
    }
    return block.display("message", 32);
}

void KVRSimCommandProcessor::checkDateAndTime(const std::string& date, const std::string& time) {
    int month = std::stoi(date.substr(2, 2));
    int day = std::stoi(date.substr(4, 2));
    if (month < 1 || month > 12 || day < 1 || day > 31) {
        throw KVRSimLayoutError("GCR block: field date is not a yyMMdd date");
    }
    if (std::stoi(time.substr(0, 2)) > 23 || std::stoi(time.substr(2, 2)) > 59 || std::stoi(time.substr(4, 2)) > 59) {
        throw KVRSimLayoutError("GCR block: field time is not an hhmmss time");
    }
}

KVRSimOutcome KVRSimCommandProcessor::gcr(KVRSimFieldReader& request) {
    auto block = request.block("block");
    auto acquirer = static_cast<int>(block.number("acqidxreq", 2));
    auto applicationType = static_cast<int>(block.number("apptypreq", 2));
    block.number("amount", 12);
    auto date = number(block.number("date", 6), 6);
    auto time = number(block.number("time", 6), 6);
    auto stamp = block.text("tabver", 10);
    if (applicationType == 0) {
        if (block.remaining() == 0) {
            kept("GCR of application type 00 without its application list");
        } else {
            auto count = block.number("application count", 2);
            for (long long i = 0; i < count; ++i) {
                block.text("application reference", 4);
            }
        }
    }
    block.expectEnd();
    request.expectEnd();
    checkDateAndTime(date, time);
    // Tables are checked before any card is asked for, so no scenario rule sees this read.
    if (!tables_.isCurrent(stamp)) {
        return KVRSimOutcome::answer(reply("GCR", kTablesOutOfDate));
    }
    auto effect = scenario_.match("GCR");
    if (auto other = replaced("GCR", effect)) return *other;
    card_ = KVRSimCard::named(effect.card ? *effect.card : scenario_.nextCard(defaultCard_.name));
    auto body = gcrBody(*card_, applicationType == 0 ? 1 : applicationType, acquirer == 0 ? 8 : acquirer);
    return KVRSimOutcome::answer(reply("GCR", kOk, body), effect.delivery);
}

std::string KVRSimCommandProcessor::gcrBody(const KVRSimCard& card, int applicationType, int acquirer) const {
    std::string body = number(card.cardType, 2) + "0" + number(applicationType, 2) + number(acquirer, 2) +
                       number(card.recidx, 2);
    body += inArea(card.firstTrack(), 2, 76);
    body += inArea(card.secondTrack(), 2, 37);
    body += inArea("", 3, 104);
    body += inArea(card.pan, 2, 19);
    body += number(card.panSequenceNumber, 2);
    body += padded(card.applicationLabel, 16);
    body += card.serviceCode;
    body += padded(card.cardholderName, 26);
    body += card.expirationDate();
    body += std::string(29, '0');
    body += "076";
    // Acquirers 1 and 2 carry data of their own after the card data.
    std::string acquirerData;
    if (acquirer == 1) {
        acquirerData = number(static_cast<long long>(card.aid.size() / 2), 2) + padded(card.aid, 32) +
                       padded(card.applicationLabel, 16) + padded(card.applicationLabel, 16);
    } else if (acquirer == 2) {
        acquirerData = "FF00000000";
    }
    return body + number(static_cast<long long>(acquirerData.size()), 3) + acquirerData;
}

KVRSimOutcome KVRSimCommandProcessor::goc(KVRSimFieldReader& request) {
    auto block = request.block("block 1");
    auto amount = number(block.number("amount", 12), 12);
    block.number("cashback", 12);
    block.flag("exclist");
    block.flag("connect");
    block.number("ruf", 1);
    block.number("method", 1);
    block.number("keydix", 2);
    block.hex("wkenc", 32);
    block.number("riskman", 1);
    block.number("flrlimit", 8);
    block.number("tpbrs", 2);
    block.number("tvbrs", 8);
    block.number("mtpbrs", 2);
    auto acquirerDataLength = block.number("acqpr length", 3);
    block.text("acqpr", static_cast<size_t>(acquirerDataLength));
    block.expectEnd();
    auto tags = countedHexBlock(request, "block 2", "tags1");
    tags += countedHexBlock(request, "block 3", "tags2");
    request.expectEnd();
    KVRSimEmvData::parseTagList(tags);
    auto effect = scenario_.match("GOC");
    if (auto other = replaced("GOC", effect)) return *other;
    int decision = effect.decision.value_or(2);
    lastAmount_ = amount;
    bool online = decision == 2;
    std::string data = number(decision, 1) + "0000" + (online ? "1" : "0");
    data += online ? randomHex(16) + nextKeySerialNumber() : std::string(36, ' ');
    auto emv = emvData(tags, amount, online ? "80" : decision == 0 ? "40" : "00");
    data += number(static_cast<long long>(emv.size() / 2), 3) + emv + "000";
    return KVRSimOutcome::answer(reply("GOC", kOk, data), effect.delivery);
}

std::string KVRSimCommandProcessor::countedHexBlock(KVRSimFieldReader& request, const char* block, const char* field) {
    auto reader = request.block(block);
    auto hex = reader.countedHex(field);
    reader.expectEnd();
    return hex;
}

KVRSimOutcome KVRSimCommandProcessor::fnc(KVRSimFieldReader& request) {
    auto block = request.block("block 1");
    block.number("communicationStatus", 1);
    block.number("issuer mode", 1);
    auto actionCode = block.text("authorizationResponseCode", 2);
    block.countedHex("issuerDataEmv");
    auto acquirerDataLength = block.number("acquirer data length", 3);
    block.text("acquirer data", static_cast<size_t>(acquirerDataLength));
    block.expectEnd();
    auto tags = countedHexBlock(request, "block 2", "tags");
    request.expectEnd();
    KVRSimEmvData::parseTagList(tags);
    auto effect = scenario_.match("FNC");
    if (auto other = replaced("FNC", effect)) return *other;
    int decision = effect.decision.value_or(actionCode == "00" ? 0 : 2);
    auto emv = emvData(tags, lastAmount_, decision == 0 ? "40" : "00");
    std::string data = number(decision, 1) + number(static_cast<long long>(emv.size() / 2), 3) + emv + "00" + "000";
    return KVRSimOutcome::answer(reply("FNC", kOk, data), effect.delivery);
}

KVRSimOutcome KVRSimCommandProcessor::tli(KVRSimFieldReader& request) {
    auto block = request.block("block");
    auto acquirer = static_cast<int>(block.number("acqidxreq", 2));
    auto stamp = block.text("tabver", 10);
    block.expectEnd();
    request.expectEnd();
    auto effect = scenario_.match("TLI");
    if (auto other = replaced("TLI", effect)) return *other;
    tables_.begin(acquirer, stamp);
    return KVRSimOutcome::answer(reply("TLI", kOk), effect.delivery);
}

KVRSimOutcome KVRSimCommandProcessor::tlr(KVRSimFieldReader& request) {
    auto block = request.block("block");
    auto count = block.number("record count", 2);
    if (count < 1) {
        throw KVRSimLayoutError("TLR block: field record count must be at least 01");
    }
    std::vector<KVRSimTableRecord> records;
    for (long long i = 0; i < count; ++i) {
        auto declared = static_cast<size_t>(block.number("record length", 3));
        auto length = KVRSimTableRecord::lengthForType(block.peek());
        if (length == 0) {
            throw KVRSimLayoutError("TLR block: record " + std::to_string(i + 1) + " has an unknown table type");
        }
        // The length in front of a record counts its own three digits.
        if (declared != length + 3) {
            throw KVRSimLayoutError("TLR block: record " + std::to_string(i + 1) + " declares " +
                                    std::to_string(declared) + " characters for a record of " + std::to_string(length));
        }
        records.push_back(KVRSimTableRecord::parse(block.text("record", length)));
    }
    block.expectEnd();
    request.expectEnd();
    auto effect = scenario_.match("TLR");
    if (auto other = replaced("TLR", effect)) return *other;
    for (const auto& record : records) {
        if (!tables_.add(record)) {
            return KVRSimOutcome::answer(reply("TLR", kInvalidCall), effect.delivery);
        }
    }
    return KVRSimOutcome::answer(reply("TLR", kOk), effect.delivery);
}

KVRSimOutcome KVRSimCommandProcessor::tle(KVRSimFieldReader& request) {
    noData(request, "TLE");
    auto effect = scenario_.match("TLE");
    if (auto other = replaced("TLE", effect)) return *other;
    return KVRSimOutcome::answer(reply("TLE", tables_.commit() ? kOk : kInvalidCall), effect.delivery);
}

std::string KVRSimCommandProcessor::emvData(const std::string& tagList, const std::string& amount,
                                            const std::string& cryptogramInformation) {
    auto tags = KVRSimEmvData::parseTagList(tagList);
    KVRSimEmvData::Context context;
    context.card = presentedCard();
    context.amount = amount;
    context.cryptogramInformation = cryptogramInformation;
    context.cryptogram = randomHex(16);
    context.transactionCounter = ++transactionCounter_;
    context.unpredictableNumber = randomHex(8);
    context.date = today();
    const auto& serial = identity_.serialNumber;
    context.terminalSerial = padded(serial.size() > 8 ? serial.substr(serial.size() - 8) : serial, 8);
    return KVRSimEmvData::build(tags.empty() ? KVRSimEmvData::defaultTags() : tags, context);
}

std::string KVRSimCommandProcessor::randomHex(size_t digits) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    for (size_t i = 0; i < digits; ++i) {
        text.push_back(kDigits[random_() % 16]);
    }
    return text;
}

std::string KVRSimCommandProcessor::nextKeySerialNumber() {
    // Base key identifier, then the device's transaction counter.
    return "99990123456789" + number(++pinEntries_, 6);
}

const KVRSimCard& KVRSimCommandProcessor::presentedCard() const {
    return card_ ? *card_ : defaultCard_;
}

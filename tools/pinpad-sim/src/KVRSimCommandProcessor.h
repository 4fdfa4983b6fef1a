#pragma once

#include "KVRSimCard.h"
#include "KVRSimDisplay.h"
#include "KVRSimFieldReader.h"
#include "KVRSimIdentity.h"
#include "KVRSimOutcome.h"
#include "KVRSimScenario.h"
#include "KVRSimTableStore.h"

#include <cstdint>
#include <map>
#include <optional>
#include <random>
#include <string>

/// The emulated PIN pad's application: checks each request text against its
/// command's layout, keeps tables, display and card state, and writes the
/// response text. Transport and framing are someone else's.
class KVRSimCommandProcessor {
public:
    /// Return codes this PIN pad produces on its own.
    static constexpr int kOk = 0;
    static constexpr int kInvalidCall = 10;
    static constexpr int kTablesOutOfDate = 20;

    KVRSimCommandProcessor(KVRSimIdentity identity, std::string defaultCard, KVRSimScenario& scenario,
                           KVRSimTableStore& tables, KVRSimDisplay& display);

    KVRSimOutcome process(const std::string& text);

private:
    using Handler = KVRSimOutcome (KVRSimCommandProcessor::*)(KVRSimFieldReader&);
    static const std::map<std::string, Handler>& handlers();

    KVRSimOutcome opn(KVRSimFieldReader& request);
    KVRSimOutcome clo(KVRSimFieldReader& request);
    KVRSimOutcome gin(KVRSimFieldReader& request);
    KVRSimOutcome dsp(KVRSimFieldReader& request);
    KVRSimOutcome rmc(KVRSimFieldReader& request);
    KVRSimOutcome prt(KVRSimFieldReader& request);
    KVRSimOutcome gpn(KVRSimFieldReader& request);
    KVRSimOutcome gcr(KVRSimFieldReader& request);
    KVRSimOutcome goc(KVRSimFieldReader& request);
    KVRSimOutcome fnc(KVRSimFieldReader& request);
    KVRSimOutcome tli(KVRSimFieldReader& request);
    KVRSimOutcome tlr(KVRSimFieldReader& request);
    KVRSimOutcome tle(KVRSimFieldReader& request);

    /// Name, return code and, when `block` is given, its length and text.
    static std::string reply(const std::string& command, int status, const std::optional<std::string>& block = {});
    /// A reply replaced by the scenario's return code, if it asks for one.
    static std::optional<KVRSimOutcome> replaced(const std::string& command, const KVRSimScenario::Effect& effect);
    /// Parses a block holding one 32-character display message.
    static std::string displayMessage(KVRSimFieldReader& request, bool emptyAllowed);
    static void checkDateAndTime(const std::string& date, const std::string& time);

    std::string gcrBody(const KVRSimCard& card, int applicationType, int acquirer) const;
    std::string emvData(const std::string& tagList, const std::string& amount, const std::string& cryptogramInformation);
    std::string randomHex(size_t digits);
    std::string nextKeySerialNumber();
    const KVRSimCard& presentedCard() const;

    KVRSimIdentity identity_;
    KVRSimCard defaultCard_;
    KVRSimScenario& scenario_;
    KVRSimTableStore& tables_;
    KVRSimDisplay& display_;
    std::optional<KVRSimCard> card_;
    std::string lastAmount_ = "000000000000";
    uint16_t transactionCounter_ = 0x0017;
    unsigned pinEntries_ = 0;
    std::mt19937_64 random_;
};

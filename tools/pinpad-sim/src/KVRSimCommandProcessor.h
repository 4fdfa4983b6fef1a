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
#include <vector>

/// The emulated PIN pad's application: checks each request text against its
/// command's ABECS layout, keeps tables, display and card state, and writes
/// the response text. It also takes the few layouts the Kovra library keeps
/// on purpose (an empty block for OPN and TLE, GCR of application type 00
/// without its list, the library's GPN), unless it is strict. Transport and
/// framing are someone else's.
class KVRSimCommandProcessor {
public:
    /// Return codes this PIN pad produces on its own.
    static constexpr int kOk = 0;
    static constexpr int kInvalidCall = 10;
    static constexpr int kTablesOutOfDate = 20;

    struct Settings {
        /// Refuse the kept non-ABECS layouts as a strict ABECS 2.12 PIN pad would.
        bool strict = false;
        /// Write card data to the command log in clear.
        bool logCardData = false;
    };

    KVRSimCommandProcessor(KVRSimIdentity identity, std::string defaultCard, KVRSimScenario& scenario,
                           KVRSimTableStore& tables, KVRSimDisplay& display, Settings settings);

    /// The outcome's `logged` holds the request as the command log may show it.
    KVRSimOutcome process(const std::string& text);
    /// A request that was not parsed, as the command log may show it: the
    /// data of a command that carries card data is withheld whole.
    std::string loggable(const std::string& text);

private:
    KVRSimOutcome processUnlogged(const std::string& text);
    std::string loggableAfterParse(const std::string& text) const;

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
    std::string displayMessage(KVRSimFieldReader& request, bool emptyAllowed, const std::string& context);
    /// Minimum and maximum PIN length and the prompt of one GPN entry.
    static std::string pinEntry(KVRSimFieldReader& block);
    /// A block holding a three-digit byte count and twice as many hex digits.
    static std::string countedHexBlock(KVRSimFieldReader& request, const char* block, const char* field);
    /// A command without data: nothing at all, or the kept empty block.
    void noData(KVRSimFieldReader& request, const char* command);
    /// A layout ABECS does not define but the library sends on purpose.
    void kept(const std::string& what) const;
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
    Settings settings_;
    /// Where the request being processed carries a PAN: the command log shows
    /// only its first six and last four digits.
    struct PanField {
        size_t offset;
        size_t width;
    };
    std::vector<PanField> panFields_;
    /// The text of the request a "nak" rule refused last: its resent copy is answered.
    std::string refusedCopy_;
    std::optional<KVRSimCard> card_;
    std::string lastAmount_ = "000000000000";
    uint16_t transactionCounter_ = 0x0017;
    unsigned pinEntries_ = 0;
    std::mt19937_64 random_;
};

#pragma once

#include <kovra/KVRNumber.h>

#include "Pinpad/Commands/KVRCloCommandResponse.h"
#include "Pinpad/Commands/KVRFncCommandResponse.h"
#include "Pinpad/Commands/KVRGcrCommandResponse.h"
#include "Pinpad/Commands/KVRGinCommandResponse.h"
#include "Pinpad/Commands/KVRGocCommandResponse.h"
#include "Pinpad/Commands/KVRGpnCommandRequest.h"
#include "Pinpad/Commands/KVRGpnCommandResponse.h"
#include "Pinpad/Commands/KVROpnCommandResponse.h"
#include "Pinpad/Commands/KVRPrtCommandResponse.h"
#include "Pinpad/Commands/KVRTableRecordCommand.h"
#include "Pinpad/Commands/KVRTleCommandResponse.h"
#include "Pinpad/Commands/KVRTliCommandResponse.h"
#include "Pinpad/Commands/KVRTlrCommandResponse.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class KVRBaseCommandRequest;
class KVRConnectionProtocol;
class KVRPinpadController;

/// Speaks to the PIN pad one command at a time, with the values this library
/// always sends. Every method sends its request on the shared link, blocks
/// until the PIN pad answers and returns the decoded reply. Call it from the
/// main worker (KVRQueues::main()), where every PIN pad exchange runs.
/// Without a link every command raises "PinpadNotConnected"; a link failure
/// ("PinpadTimeout" when a read time-out is set) passes through.
class KVRCommandController {
public:
    /// Acquirer index of this library's tables in the PIN pad (card read and chip processing).
    static constexpr int32_t kAcquirerIndex = 8;
    /// Acquirer index on a table-load start: all acquirers.
    static constexpr int32_t kTableLoadAcquirerIndex = 0;
    /// Stamp sent with every card read and table load, so the loaded tables always carry it.
    static constexpr const char* kTableVersion = "2014053065";
    static constexpr int32_t kPinMethod = 3;
    static constexpr int32_t kPinKeyIndex = 16;
    /// No working key is sent.
    static constexpr const char* kWorkingKey = "00000000000000000000000000000000";
    static constexpr int32_t kPinMinimumLength = 4;
    static constexpr int32_t kPinMaximumLength = 12;
    /// 5F2A 82 95 9A 9C 9F02 9F10 9F1A 9F1E 9F26 9F33 9F36 9F37 9F27 9F34.
    static constexpr const char* kEmvTags = "5F2A82959A9C9F029F109F1A9F1E9F269F339F369F379F279F34";
    static constexpr const char* kWaitMessage = "Aguarde...";
    /// Width the amount is right-aligned in on the PIN entry prompt.
    static constexpr int kAmountWidth = 10;
    static constexpr int kDisplayLineWidth = 16;

    /// Uses the shared PIN pad controller's link.
    KVRCommandController();

    std::shared_ptr<KVROpnCommandResponse> sendCommandOpn();
    /// Shows the text (see KVRDisplayText::literalFromFormat for "%"); the reply is read and dropped.
    void sendCommandDspWithMessage(const std::string& message);
    /// Two 16-character lines shown after a transaction; shorter lines are
    /// space-filled, longer ones cut. The reply is read and dropped.
    void sendCommandRmcWithFirstLine(const char* firstLine, const char* secondLine);
    /// Closes the PIN pad leaving two 16-character idle lines. The reply is read and dropped.
    void sendCommandCloWithFirstLine(const char* firstLine, const char* secondLine);
    /// Also kept in ginResponse().
    std::shared_ptr<KVRGinCommandResponse> sendCommandGin();
    /// Reads a card trying the application types of the account type: 2 tries
    /// 2 then 4, 3 tries 1 then 3, 7 tries 0 to 4; other types send nothing
    /// and give null. Replies 0 and 13 are final. A reply 20 on the first
    /// choice of 2 or 3 reloads the tables and reads again, for as long as
    /// the PIN pad answers 20. The last reply is kept in gcrResponse().
    std::shared_ptr<KVRGcrCommandResponse> sendCommandGcrWithTransactionType(int32_t type);
    /// PIN entry for the card of gcrResponse(); amount in cents. Throws
    /// "String doesn't fit" when the amount has more than 10 characters.
    std::shared_ptr<KVRGpnCommandResponse> sendCommandGpnWithAmount(const KVRNumber& amount);
    /// Chip processing with on-line PIN; amount in cents.
    std::shared_ptr<KVRGocCommandResponse> sendCommandGocWithAmount(const KVRNumber& amount);
    /// Ends chip processing with the host's response code and issuer data.
    std::shared_ptr<KVRFncCommandResponse> sendCommandFncWithActionCode(const std::string& actionCode,
                                                                       const std::optional<std::string>& emv);
    std::shared_ptr<KVRTliCommandResponse> sendCommandTli();
    std::shared_ptr<KVRTlrCommandResponse> sendCommandTlrWithAid(std::shared_ptr<const KVRTableRecordCommand> aid);
    std::shared_ptr<KVRTlrCommandResponse> sendCommandTlrWithCapk(std::shared_ptr<const KVRTableRecordCommand> capk);
    std::shared_ptr<KVRTleCommandResponse> sendCommandTle();

    /// Loads the stored tables into the PIN pad. The tables belong to the
    /// terminal-management layer, which installs this (KVRTmsController::installTableReload).
    using TableReload = std::function<void()>;
    void setTableReload(TableReload reload) { tableReload_ = std::move(reload); }

    /// True for return code 20 (the PIN pad's tables are out of date), after
    /// running the table reload when one is installed (without waiting for
    /// the outcome to be reported anywhere).
    bool checkTableError(const KVRBaseCommandResponse& response);
    /// The text right-aligned in 10 characters. Throws "String doesn't fit"
    /// when it is longer.
    std::string appendStringPaddingLeft(const std::string& text);
    /// A first service-code digit 2 or 6: the card has a chip.
    static bool checkisEMV(const std::optional<std::string>& digit);
    /// A third service-code digit 0, 3, 5, 6 or 7 (or none): the card asks for a PIN.
    static bool checkisPINMandatory(const std::optional<std::string>& digit);

    const std::shared_ptr<KVRGpnCommandRequest>& gpnRequest() const { return gpnRequest_; }
    void setGpnRequest(std::shared_ptr<KVRGpnCommandRequest> value) { gpnRequest_ = std::move(value); }
    /// Declared for callers; never set here.
    const std::shared_ptr<KVRCloCommandResponse>& cloResponse() const { return cloResponse_; }
    void setCloResponse(std::shared_ptr<KVRCloCommandResponse> value) { cloResponse_ = std::move(value); }
    const std::shared_ptr<KVRGcrCommandResponse>& gcrResponse() const { return gcrResponse_; }
    void setGcrResponse(std::shared_ptr<KVRGcrCommandResponse> value) { gcrResponse_ = std::move(value); }
    const std::shared_ptr<KVRGinCommandResponse>& ginResponse() const { return ginResponse_; }
    void setGinResponse(std::shared_ptr<KVRGinCommandResponse> value) { ginResponse_ = std::move(value); }
    /// Declared for callers; never set here.
    const std::shared_ptr<KVRPrtCommandResponse>& prtResponse() const { return prtResponse_; }
    void setPrtResponse(std::shared_ptr<KVRPrtCommandResponse> value) { prtResponse_ = std::move(value); }
    KVRPinpadController* pinpadController() const { return pinpadController_; }
    void setPinpadController(KVRPinpadController* value) { pinpadController_ = value; }

    // The last card seen by a PIN entry, shared by every controller of the
    // process (a PIN entry without a new card read uses the previous card's).
    // Touched only on the main worker.
    /// Track 2 of the last card.
    static inline std::optional<std::string> pan;
    /// Track 2 split at "=": the PAN, then expiry, service code and the rest.
    static inline std::vector<std::string> blockPan;
    /// "YYMM".
    static inline std::optional<std::string> cardExpiration;
    static inline std::optional<std::string> serviceCode;
    /// First service-code digit (chip or not).
    static inline std::optional<std::string> scDigit6;
    /// Third service-code digit (PIN or not).
    static inline std::optional<std::string> scDigit2;
    /// cardExpiration as a date, or the moment it failed to parse.
    static inline std::optional<std::chrono::system_clock::time_point> dateString;
    /// Forgets the last card (tests, and a new process's start state).
    static void resetCardVariables();

private:
    std::shared_ptr<KVRConnectionProtocol> link() const;
    template <class Response>
    std::shared_ptr<Response> exchange(KVRBaseCommandRequest& request);
    std::shared_ptr<KVRGcrCommandResponse> readCard(int32_t applicationType);
    std::shared_ptr<KVRGcrCommandResponse> readCardWithChoices(int32_t first, int32_t second);
    std::shared_ptr<KVRGcrCommandResponse> readCardSweepingApplicationTypes();
    void sendTwoLines(KVRBaseCommandRequest& request, std::string& message, const char* firstLine,
                      const char* secondLine);
    static void takeCardVariables(const KVRGcrCommandResponse& card);
    std::string pinEntryMessage(const KVRNumber& amount);

    std::shared_ptr<KVRGpnCommandRequest> gpnRequest_;
    std::shared_ptr<KVRCloCommandResponse> cloResponse_;
    std::shared_ptr<KVRGcrCommandResponse> gcrResponse_;
    std::shared_ptr<KVRGinCommandResponse> ginResponse_;
    std::shared_ptr<KVRPrtCommandResponse> prtResponse_;
    KVRPinpadController* pinpadController_;
    TableReload tableReload_;
};

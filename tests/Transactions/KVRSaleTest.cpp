#include <gtest/gtest.h>

#include <kovra/KVRErrors.h>
#include <kovra/KVRPinpadModel.h>

#include "testing/KVRStoreFileInspector.h"
#include "testing/KVRSaleBench.h"
#include "testing/KVRLogCapture.h"
#include "testing/KVRPinpadReplies.h"
#include "testing/KVRTestFixture.h"

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRMerchantModel.h>

#include "Utils/KVRClock.h"

#include <functional>

// Every way a sale can end, driven through the sale entry with a scripted PIN
// pad and a fake acquirer: the PIN pad commands and display texts, what went
// to the acquirer, the result the application hears and what the store keeps.

namespace {

using KVRPinpadReplies::CardRead;
using KVRPinpadReplies::fncReply;
using KVRPinpadReplies::gcrReply;
using KVRPinpadReplies::gocReply;
using KVRPinpadReplies::gpnReply;
using Bench = KVRSaleBench;

const char* const kProcessing = "DSP Processando...|";

CardRead stripeCard(const std::string& serviceCode) {
    CardRead card;
    card.cardType = 0;
    card.applicationType = 0;
    card.recidx = 4;
    card.secondTrack = "5555555555554444=2812" + serviceCode + "1234567890";
    card.pan = "5555555555554444";
    card.serviceCode = serviceCode;
    return card;
}

CardRead chipCard(int cardType, int applicationType = 1) {
    CardRead card;
    card.cardType = cardType;
    card.applicationType = applicationType;
    return card;
}

// What the application hears for each result, and whether the record stays.
struct Outcome {
    bool success;
    std::optional<KVRError> error;
    bool kept;
};

Outcome outcomeOf(int result) {
    switch (result) {
        case 0: return {false, KVRErrors::genericError(), true};
        case 1: return {false, KVRErrors::transactionRejected(), true};
        case 2: return {true, std::nullopt, true};
        case 3: return {false, KVRErrors::transactionRejected(), true};
        case 4: return {false, KVRErrors::transactionRejected(), true};
        case 5: return {false, KVRErrors::transactionAutoCancel(), true};
        case 6: return {false, KVRErrors::invalidTransaction(), false};
        case 7: return {false, KVRErrors::transactionTimeout(), false};
        case 8: return {false, KVRErrors::transactionFailed(), false};
        case 9: return {false, KVRErrors::operationCancelledByUser(), false};
    }
    ADD_FAILURE() << "no result " << result;
    return {};
}

struct SaleRow {
    const char* name;
    std::function<void(Bench&)> arrange;
    int result;
    std::vector<std::string> displays;
    /// The FNC action code sent; none when no FNC is expected.
    std::optional<std::string> actionCode = std::nullopt;
    size_t authorisations = 1;
    /// Cancellation advices: the one the sale always sends after an exception on line, and
    /// the reversal of anything the host approved, or may have approved, that
    /// does not end stored as approved.
    size_t cancellations = 0;
    long long amount = 1000;
    bool issuerDataToCard = true;
};

std::string replaced(std::string text, const std::string& what, const std::string& with) {
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size()))
        text.replace(at, what.size(), with);
    return text;
}

using Arrange = std::function<void(Bench&)>;

// The PIN pad answers `command` with `reply` ("" for silence).
Arrange pinpadSays(const std::string& command, const std::string& reply, const Arrange& also = {}) {
    return [=](Bench& b) {
        b.pinpad().reply(command, {reply});
        if (also) also(b);
    };
}
Arrange hostSays(const Bench::HostReply& reply, const Arrange& also = {}) {
    return [=](Bench& b) {
        b.setAuthorisationReply(reply);
        if (also) also(b);
    };
}
Bench::HostReply hostCode(const std::string& code) { return Bench::body(Bench::authorisationReply(code)); }
// The host's answer, and the card declining when told of a decline.
Arrange hostDeclines(const std::string& code, const std::string& authorisation = "") {
    return hostSays(authorisation.empty() ? hostCode(code) : Bench::body(authorisation), pinpadSays("FNC", fncReply(0, 2)));
}
Arrange swipe(const std::string& serviceCode, const Arrange& also = {}) {
    return pinpadSays("GCR", gcrReply(0, stripeCard(serviceCode)), also);
}
const Arrange kChipException = pinpadSays("GCR", gcrReply(0, chipCard(3, 9)));

const char* const kApproved = "RMC TRANSACAO|APROVADA";
const char* const kByNetwork = "RMC TRANSACAO NEGADA|PELA REDE";
const char* const kFailed = "RMC TRANSACAO|FALHOU";

std::vector<SaleRow> chipRows() {
    const std::string oddIssuerData = "0</ICCRltdData>";
    return {
        {"chip approved", {}, 2, {kProcessing, kApproved}, "00"},
        {"chip approved, amount of 11 digits", {}, 2, {kProcessing, kApproved}, "00", 1, 0, 12345678901LL},
        {"contactless chip approved", pinpadSays("GCR", gcrReply(0, chipCard(6))), 2, {kProcessing, kApproved}, "00"},
        {"card refuses the host's approval: still approved", pinpadSays("FNC", fncReply(0, 1)), 2,
         {kProcessing, "RMC TRANSACAO NEGADA|PELO CARTAO"}, "00"},
        {"declined by the host", hostDeclines("DECL"), 1, {kProcessing, kByNetwork}, "10"},
        {"unknown host code reads as a decline", hostDeclines("WHAT"), 1, {kProcessing, kByNetwork}, "10"},
        {"partly approved", hostDeclines("PART"), 3, {kProcessing, kByNetwork}, "10", 1, 1},
        {"technical error at the host", hostDeclines("TECH"), 4, {kProcessing, kByNetwork}, "05"},
        {"FNC fails after an approval", pinpadSays("FNC", fncReply(31, 0)), 1, {kProcessing}, "00", 1, 1},
        {"FNC decision nobody defined", pinpadSays("FNC", fncReply(0, 7)), 0, {kProcessing}, "00", 1, 1},
        {"card approves off line", pinpadSays("GOC", gocReply(0, 0, "", "", "9F2608AA")), 0, {}, std::nullopt, 0},
        {"card declines off line", pinpadSays("GOC", gocReply(0, 1, "", "", "9F2608AA")), 1, {"RMC TRANSACAO|NEGADA"},
         std::nullopt, 0},
        {"user cancels on the chip", pinpadSays("GOC", "GOC013"), 9, {"RMC TRANSACAO|CANCELADA"}, std::nullopt, 0},
        {"chip processing times out", pinpadSays("GOC", "GOC012"), 7, {"RMC TEMPO|EXPIROU"}, std::nullopt, 0},
        {"user cancels the card read", pinpadSays("GCR", "GCR013"), 9, {}, std::nullopt, 0},
        {"invalid card", pinpadSays("GCR", "GCR070"), 6, {"RMC TRANSACAO|INVALIDA"}, std::nullopt, 0},
        {"card read fails", pinpadSays("GCR", "GCR005"), 8, {kFailed}, std::nullopt, 0},
        {"contactless stripe data", pinpadSays("GCR", gcrReply(0, chipCard(5))), 0, {}, std::nullopt, 0},
        // A host that never saw the request owes nothing; any other failure on
        // line may hide an approval, which is undone.
        {"host unreachable", hostSays(Bench::failure(-1004)), 8, {kProcessing, kFailed}},
        {"host times out", hostSays(Bench::failure(-1001)), 8, {kProcessing, kFailed}, std::nullopt, 1, 1},
        {"connection lost after sending", hostSays(Bench::failure(-1005)), 8, {kProcessing, kFailed}, std::nullopt, 1, 1},
        {"empty host reply", hostSays(Bench::body("")), 8, {kProcessing, kFailed}, std::nullopt, 1, 1},
        {"reply without AuthstnRslt", hostSays(Bench::body(Bench::authorisationReply("APPR", false))), 8,
         {kProcessing, kFailed}, std::nullopt, 1, 1},
        {"approval without RcptTxId",
         hostSays(Bench::body(replaced(Bench::authorisationReply("APPR"), "RcptTxId", "Other"))), 8,
         {kProcessing, kFailed}, std::nullopt, 1, 1},
        {"approval with odd-length issuer data",
         hostSays(Bench::body(replaced(Bench::authorisationReply("APPR"), "</ICCRltdData>", oddIssuerData))), 8,
         {kProcessing, kFailed}, std::nullopt, 1, 1},
        {"decline with odd-length issuer data: the card hears it without",
         hostDeclines("DECL", replaced(Bench::authorisationReply("DECL"), "</ICCRltdData>", oddIssuerData)), 1,
         {kProcessing, kByNetwork}, "10", 1, 0, 1000, false},
        // A PIN pad that falls silent: before the request went out nothing is
        // kept; after it the acquirer is told to cancel.
        {"silent at the card read", pinpadSays("GCR", ""), 7, {}, std::nullopt, 0},
        {"silent before the request", pinpadSays("DSP", ""), 7, {kProcessing}, std::nullopt, 0},
        {"silent at the end of chip processing", pinpadSays("FNC", ""), 5, {kProcessing}, "00", 1, 1},
        {"exception on line, cancellation approved", kChipException, 5, {kProcessing, "RMC TRANSACAO|CANCELADA"},
         std::nullopt, 0, 1},
        {"exception on line, cancellation declined",
         [](Bench& b) {
             kChipException(b);
             b.setCancellationReply(Bench::body(Bench::cancellationReply("DECL")));
         },
         0, {kProcessing, kFailed}, std::nullopt, 0, 1},
        {"exception on line, no cancellation reply",
         [](Bench& b) {
             kChipException(b);
             b.setCancellationReply(Bench::failure(-1004));
         },
         0, {kProcessing, kFailed}, std::nullopt, 0, 1},
    };
}

std::vector<SaleRow> stripeRows() {
    const char* approved = "DSP TRANSACAO|APROVADA";
    const char* declined = "DSP TRANSACAO|NEGADA";
    const char* failed = "DSP TRANSACAO|FALHOU";
    const char* wait = "DSP Aguarde...|";
    return {
        {"stripe approved", swipe("101"), 2, {kProcessing, approved}},
        {"stripe partly approved: approved", swipe("101", hostSays(hostCode("PART"))), 2, {kProcessing, approved}},
        {"stripe declined", swipe("101", hostSays(hostCode("DECL"))), 1, {kProcessing, declined}},
        {"stripe technical error: declined", swipe("101", hostSays(hostCode("TECH"))), 1, {kProcessing, declined}},
        {"stripe host times out", swipe("101", hostSays(Bench::failure(-1001))), 7, {kProcessing, "DSP TEMPO|EXPIROU"},
         std::nullopt, 1, 1},
        {"stripe host unreachable", swipe("101", hostSays(Bench::failure(-1004))), 8, {kProcessing, failed}},
        {"stripe empty reply", swipe("101", hostSays(Bench::body(""))), 8, {kProcessing, failed}, std::nullopt, 1, 1},
        {"stripe with PIN approved", swipe("120"), 2, {kProcessing, wait, approved}},
        {"stripe PIN entry cancelled", swipe("120", pinpadSays("GPN", "GPN013")), 9,
         {kProcessing, wait, "DSP TRANSACAO|CANCELADA"}, std::nullopt, 0},
        {"stripe silent at the PIN entry", swipe("120", pinpadSays("GPN", "")), 7, {kProcessing, wait}, std::nullopt, 0},
        {"stripe amount too long for the PIN prompt", swipe("120"), 5, {kProcessing, "DSP TRANSACAO|CANCELADA"},
         std::nullopt, 0, 1, 12345678901LL},
        {"chip card swiped", swipe("201"), 6, {"DSP Cartao de Chip|"}, std::nullopt, 0},
        {"chip card swiped (service code 6xx)", swipe("601"), 6, {"DSP Cartao de Chip|"}, std::nullopt, 0},
    };
}

class SaleTest : public KVRTestFixture, public ::testing::WithParamInterface<SaleRow> {};

TEST_P(SaleTest, EndsWithItsResultMessagesAndRecord) {
    const SaleRow& row = GetParam();
    Bench bench;
    if (row.arrange) row.arrange(bench);
    auto sale = Bench::newSale(row.amount);
    auto call = bench.sell(sale);

    Outcome expected = outcomeOf(row.result);
    EXPECT_EQ(call.success, expected.success);
    EXPECT_EQ(call.error, expected.error) << (call.error ? call.error->description() : "no error");
    EXPECT_EQ(bench.displays(), row.displays);

    auto fnc = bench.pinpad().requestsOf("FNC");
    if (row.actionCode) {
        ASSERT_EQ(fnc.size(), 1u);
        EXPECT_EQ(fnc[0].substr(8, 2), *row.actionCode);
        EXPECT_EQ(fnc[0].find(Bench::hostIccData()) != std::string::npos, row.issuerDataToCard)
            << "the issuer data goes back to the card when it can";
    } else {
        EXPECT_TRUE(fnc.empty());
    }
    EXPECT_EQ(bench.hostRequests("/Authorize").size(), row.authorisations);
    EXPECT_EQ(bench.hostRequests("/CancellationAdvice").size(), row.cancellations);
    // The reversal of an authorisation that went out keeps an interrupted
    // tool waiting until its answer is written down.
    if (row.authorisations > 0) EXPECT_EQ(bench.advicesNobodyWaitsFor(), 0);

    KVRStoreFileInspector file(bench.store().storePath());
    EXPECT_EQ(file.count("KVRJournal"), row.authorisations);
    EXPECT_EQ(file.number("SELECT count(*) FROM KVRJournal WHERE state NOT IN ('settled', 'reversed')"), 0)
        << "an acquirer that answers leaves nothing owed";
    if (expected.kept) {
        EXPECT_EQ(file.count("KVRTransactionModel"), 1);
        EXPECT_EQ(file.number("SELECT rawStatus FROM KVRTransactionModel"), row.result);
        EXPECT_EQ(file.count("KVRPinpadModel"), 1);
    } else {
        EXPECT_EQ(file.count("KVRTransactionModel"), 0) << "result " << row.result << " leaves no record";
        EXPECT_EQ(file.count("KVRPinpadModel"), 0);
    }
}

std::string rowName(const ::testing::TestParamInfo<SaleRow>& info) {
    std::string name;
    for (char c : std::string(info.param.name)) name += std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
    return name;
}

std::string padded(const std::string& text, size_t width) {
    std::string out = text;
    out.resize(width, ' ');
    return out;
}

class SaleFlowTest : public KVRTestFixture {
protected:
    Bench bench_;
};

TEST_F(SaleFlowTest, AnApprovedChipSaleIsStoredWithTheHostsKeysBeforeTheCardIsTold) {
    auto now = std::chrono::system_clock::from_time_t(1718000000);
    KVRTestFixture::setClock([now] { return now; });
    std::optional<std::string> storedCodeAtFnc;
    bench_.pinpad().setObserver([&](const std::string& request) {
        if (request.rfind("FNC", 0) != 0) return;
        KVRStoreFileInspector file(bench_.store().storePath());
        storedCodeAtFnc = file.text("SELECT authorisationCode FROM KVRTransactionModel");
    });
    auto sale = Bench::newSale(1000);
    auto call = bench_.sell(sale);
    ASSERT_TRUE(call.success);
    EXPECT_EQ(storedCodeAtFnc, Bench::kAuthorisationCode) << "the approval must be on disk before FNC";

    EXPECT_EQ(sale->cardBrand(), "Visa");
    EXPECT_EQ(sale->aid(), "A0000000031010") << "the stored table's AID for record 1";
    EXPECT_EQ(sale->arqc(), Bench::kHostArqc) << "tag 9F26 of the issuer data";
    EXPECT_EQ(sale->authorisationCode(), Bench::kAuthorisationCode);
    EXPECT_EQ(sale->receiptTransactionKey(), Bench::kReceiptKey);
    EXPECT_EQ(sale->reference(), Bench::kReference);
    EXPECT_EQ(sale->pan(), "0010") << "only the last four digits are kept";
    EXPECT_EQ(sale->cardHolderName(), padded("MARIA DA SILVA", 26));
    EXPECT_EQ(sale->date(), now);
    EXPECT_EQ(sale->merchant(), KVRMerchantModel::findFirst());
    ASSERT_TRUE(sale->pinpad());
    EXPECT_EQ(sale->pinpad()->serialNumber(), padded("SN 4400 0077", 20));
    ASSERT_TRUE(sale->initiatorTransactionKey());
    EXPECT_EQ(sale->initiatorTransactionKey()->rfind("SN44000077-", 0), 0u) << *sale->initiatorTransactionKey();

    auto requests = bench_.hostRequests("/Authorize");
    ASSERT_EQ(requests.size(), 1u);
    for (const std::string& part : {std::string("<NcrptdData>1A2B3C4D5E6F7081</NcrptdData>"),
                                    std::string("<ICCRltdData>9F26081122334455667788</ICCRltdData>"),
                                    "<InitrTxId>" + *sale->initiatorTransactionKey() + "</InitrTxId>"}) {
        EXPECT_NE(requests[0].body.find(part), std::string::npos) << part;
    }
    EXPECT_EQ(bench_.pinpad().commands(), (std::vector<std::string>{"GIN", "GCR", "GOC", "DSP", "FNC", "RMC"}));
}

TEST_F(SaleFlowTest, TheDebugLogShowsTheRequestWithoutTheCardNumber) {
    KVRLogCapture log;
    KVRApplicationInfo::setValue("Kovra Debugginho Developer", true);
    ASSERT_TRUE(bench_.sell(Bench::newSale(1000)).success);
    EXPECT_TRUE(log.contains("<AccptrAuthstnReq>")) << "the request is logged";
    EXPECT_TRUE(log.contains("0010"));
    EXPECT_FALSE(log.contains("4761739001010010")) << log.text();
}

INSTANTIATE_TEST_SUITE_P(Chip, SaleTest, ::testing::ValuesIn(chipRows()), rowName);
INSTANTIATE_TEST_SUITE_P(Stripe, SaleTest, ::testing::ValuesIn(stripeRows()), rowName);

}  // namespace

#include <gtest/gtest.h>

#include <kovra/KVRErrors.h>
#include <kovra/KVRPinpadModel.h>

#include "Persistence/KVRStoreFileInspector.h"
#include "Transactions/KVRSaleBench.h"
#include "testing/KVRLogCapture.h"
#include "testing/KVRPinpadReplies.h"
#include "testing/KVRTestFixture.h"

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRDirectories.h>
#include <kovra/KVRMerchantModel.h>

#include "Utils/KVRClock.h"

#include <algorithm>
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

void hostAnswers(Bench& bench, const std::string& code) { bench.setAuthorisationReply(Bench::body(Bench::authorisationReply(code))); }

std::vector<SaleRow> chipRows() {
    return {
        {"chip approved", [](Bench&) {}, 2, {kProcessing, "RMC TRANSACAO|APROVADA"}, "00"},
        {"chip approved, amount of 10", [](Bench&) {}, 2, {kProcessing, "RMC TRANSACAO|APROVADA"}, "00", 1, 0, 10},
        {"chip approved, amount of 11 digits", [](Bench&) {}, 2, {kProcessing, "RMC TRANSACAO|APROVADA"}, "00", 1, 0,
         12345678901LL},
        {"contactless chip approved", [](Bench& b) { b.answer("GCR", {gcrReply(0, chipCard(6))}); }, 2,
         {kProcessing, "RMC TRANSACAO|APROVADA"}, "00"},
        {"card refuses the host's approval: still approved",
         [](Bench& b) { b.answer("FNC", {fncReply(0, 1)}); }, 2, {kProcessing, "RMC TRANSACAO NEGADA|PELO CARTAO"},
         "00"},
        {"declined by the host",
         [](Bench& b) {
             hostAnswers(b, "DECL");
             b.answer("FNC", {fncReply(0, 2)});
         },
         1, {kProcessing, "RMC TRANSACAO NEGADA|PELA REDE"}, "10"},
        {"unknown host code reads as a decline",
         [](Bench& b) {
             hostAnswers(b, "WHAT");
             b.answer("FNC", {fncReply(0, 2)});
         },
         1, {kProcessing, "RMC TRANSACAO NEGADA|PELA REDE"}, "10"},
        {"partly approved",
         [](Bench& b) {
             hostAnswers(b, "PART");
             b.answer("FNC", {fncReply(0, 2)});
         },
         3, {kProcessing, "RMC TRANSACAO NEGADA|PELA REDE"}, "10", 1, 1},
        {"technical error at the host",
         [](Bench& b) {
             hostAnswers(b, "TECH");
             b.answer("FNC", {fncReply(0, 2)});
         },
         4, {kProcessing, "RMC TRANSACAO NEGADA|PELA REDE"}, "05"},
        {"FNC fails after an approval", [](Bench& b) { b.answer("FNC", {fncReply(31, 0)}); }, 1, {kProcessing}, "00", 1,
         1},
        {"FNC decision nobody defined", [](Bench& b) { b.answer("FNC", {fncReply(0, 7)}); }, 0, {kProcessing}, "00", 1,
         1},
        {"card approves off line", [](Bench& b) { b.answer("GOC", {gocReply(0, 0, "", "", "9F2608AA")}); }, 0, {},
         std::nullopt, 0},
        {"card declines off line", [](Bench& b) { b.answer("GOC", {gocReply(0, 1, "", "", "9F2608AA")}); }, 1,
         {"RMC TRANSACAO|NEGADA"}, std::nullopt, 0},
        {"user cancels on the chip", [](Bench& b) { b.answer("GOC", {"GOC013"}); }, 9, {"RMC TRANSACAO|CANCELADA"},
         std::nullopt, 0},
        {"chip processing times out", [](Bench& b) { b.answer("GOC", {"GOC012"}); }, 7, {"RMC TEMPO|EXPIROU"},
         std::nullopt, 0},
        {"user cancels the card read", [](Bench& b) { b.answer("GCR", {"GCR013"}); }, 9, {}, std::nullopt, 0},
        {"invalid card", [](Bench& b) { b.answer("GCR", {"GCR070"}); }, 6, {"RMC TRANSACAO|INVALIDA"}, std::nullopt, 0},
        {"card read fails", [](Bench& b) { b.answer("GCR", {"GCR005"}); }, 8, {"RMC TRANSACAO|FALHOU"}, std::nullopt,
         0},
        {"contactless stripe data", [](Bench& b) { b.answer("GCR", {gcrReply(0, chipCard(5))}); }, 0, {},
         std::nullopt, 0},
        {"host unreachable", [](Bench& b) { b.setAuthorisationReply(Bench::failure(-1004)); }, 8,
         {kProcessing, "RMC TRANSACAO|FALHOU"}},
        {"host times out: a failure on the chip", [](Bench& b) { b.setAuthorisationReply(Bench::failure(-1001)); }, 8,
         {kProcessing, "RMC TRANSACAO|FALHOU"}, std::nullopt, 1, 1},
        {"connection lost after sending", [](Bench& b) { b.setAuthorisationReply(Bench::failure(-1005)); }, 8,
         {kProcessing, "RMC TRANSACAO|FALHOU"}, std::nullopt, 1, 1},
        {"empty host reply", [](Bench& b) { b.setAuthorisationReply(Bench::body("")); }, 8,
         {kProcessing, "RMC TRANSACAO|FALHOU"}, std::nullopt, 1, 1},
        {"HTML error page", [](Bench& b) { b.setAuthorisationReply(Bench::body("<html><body>502</body></html>")); }, 8,
         {kProcessing, "RMC TRANSACAO|FALHOU"}, std::nullopt, 1, 1},
        {"reply without AuthstnRslt",
         [](Bench& b) { b.setAuthorisationReply(Bench::body(Bench::authorisationReply("APPR", false))); }, 8,
         {kProcessing, "RMC TRANSACAO|FALHOU"}, std::nullopt, 1, 1},
        {"approval without RcptTxId",
         [](Bench& b) {
             b.setAuthorisationReply(Bench::body(replaced(Bench::authorisationReply("APPR"), "RcptTxId", "Other")));
         },
         8, {kProcessing, "RMC TRANSACAO|FALHOU"}, std::nullopt, 1, 1},
        {"approval with odd-length issuer data",
         [](Bench& b) {
             b.setAuthorisationReply(
                 Bench::body(replaced(Bench::authorisationReply("APPR"), "</ICCRltdData>", "0</ICCRltdData>")));
         },
         8, {kProcessing, "RMC TRANSACAO|FALHOU"}, std::nullopt, 1, 1},
        {"decline with odd-length issuer data: the card hears it without",
         [](Bench& b) {
             b.setAuthorisationReply(
                 Bench::body(replaced(Bench::authorisationReply("DECL"), "</ICCRltdData>", "0</ICCRltdData>")));
             b.answer("FNC", {fncReply(0, 2)});
         },
         1, {kProcessing, "RMC TRANSACAO NEGADA|PELA REDE"}, "10", 1, 0, 1000, false},
        {"exception on line, cancellation approved",
         [](Bench& b) { b.answer("GCR", {gcrReply(0, chipCard(3, 9))}); }, 5, {kProcessing, "RMC TRANSACAO|CANCELADA"},
         std::nullopt, 0, 1},
        {"exception on line, cancellation declined",
         [](Bench& b) {
             b.answer("GCR", {gcrReply(0, chipCard(3, 9))});
             b.setCancellationReply(Bench::body(Bench::cancellationReply("DECL")));
         },
         0, {kProcessing, "RMC TRANSACAO|FALHOU"}, std::nullopt, 0, 1},
        {"exception on line, no cancellation reply",
         [](Bench& b) {
             b.answer("GCR", {gcrReply(0, chipCard(3, 9))});
             b.setCancellationReply(Bench::failure(-1004));
         },
         0, {kProcessing, "RMC TRANSACAO|FALHOU"}, std::nullopt, 0, 1},
    };
}

std::vector<SaleRow> stripeRows() {
    auto swipe = [](const std::string& serviceCode) {
        return [serviceCode](Bench& b) { b.answer("GCR", {gcrReply(0, stripeCard(serviceCode))}); };
    };
    auto swipeAndHost = [](const std::string& serviceCode, Bench::HostReply reply) {
        return [serviceCode, reply](Bench& b) {
            b.answer("GCR", {gcrReply(0, stripeCard(serviceCode))});
            b.setAuthorisationReply(reply);
        };
    };
    return {
        {"stripe approved", swipe("101"), 2, {kProcessing, "DSP TRANSACAO|APROVADA"}},
        {"stripe partly approved: approved", swipeAndHost("101", Bench::body(Bench::authorisationReply("PART"))), 2,
         {kProcessing, "DSP TRANSACAO|APROVADA"}},
        {"stripe declined", swipeAndHost("101", Bench::body(Bench::authorisationReply("DECL"))), 1,
         {kProcessing, "DSP TRANSACAO|NEGADA"}},
        {"stripe technical error: declined", swipeAndHost("101", Bench::body(Bench::authorisationReply("TECH"))), 1,
         {kProcessing, "DSP TRANSACAO|NEGADA"}},
        {"stripe host times out", swipeAndHost("101", Bench::failure(-1001)), 7, {kProcessing, "DSP TEMPO|EXPIROU"},
         std::nullopt, 1, 1},
        {"stripe host unreachable", swipeAndHost("101", Bench::failure(-1004)), 8, {kProcessing, "DSP TRANSACAO|FALHOU"}},
        {"stripe empty reply", swipeAndHost("101", Bench::body("")), 8, {kProcessing, "DSP TRANSACAO|FALHOU"},
         std::nullopt, 1, 1},
        {"stripe HTML page", swipeAndHost("101", Bench::body("<html>oops</html>")), 8,
         {kProcessing, "DSP TRANSACAO|FALHOU"}, std::nullopt, 1, 1},
        {"stripe with PIN approved", swipe("120"), 2, {kProcessing, "DSP Aguarde...|", "DSP TRANSACAO|APROVADA"}},
        {"stripe PIN entry cancelled",
         [](Bench& b) {
             b.answer("GCR", {gcrReply(0, stripeCard("120"))});
             b.answer("GPN", {"GPN013"});
         },
         9, {kProcessing, "DSP Aguarde...|", "DSP TRANSACAO|CANCELADA"}, std::nullopt, 0},
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
    row.arrange(bench);
    auto sale = Bench::newSale(row.amount);
    auto call = bench.sell(sale);

    Outcome expected = outcomeOf(row.result);
    EXPECT_EQ(call.success, expected.success);
    EXPECT_EQ(call.error, expected.error) << (call.error ? call.error->description() : "no error");
    EXPECT_EQ(bench.displays(), row.displays);

    auto fnc = bench.requestsOf("FNC");
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

size_t countOf(const std::vector<std::string>& items, const std::string& item) {
    return static_cast<size_t>(std::count(items.begin(), items.end(), item));
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
    bench_.setObserver([&](const std::string& request) {
        if (request.rfind("FNC", 0) != 0) return;
        KVRStoreFileInspector file(bench_.store().storePath());
        storedCodeAtFnc = file.text("SELECT authorisationCode FROM KVRTransactionModel");
    });
    auto sale = Bench::newSale(1000);
    auto call = bench_.sell(sale);
    ASSERT_TRUE(call.success);
    EXPECT_EQ(storedCodeAtFnc, Bench::kAuthorisationCode) << "the approval must be on disk before FNC";

    EXPECT_EQ(sale->status(), 2);
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
    EXPECT_EQ(sale->pinpad()->name(), padded("KOVRA PINPAD", 20));
    EXPECT_EQ(sale->pinpad()->model(), padded("KVR-P1", 19));
    EXPECT_EQ(sale->pinpad()->serialNumber(), padded("SN 4400 0077", 20));
    ASSERT_TRUE(sale->initiatorTransactionKey());
    EXPECT_EQ(sale->initiatorTransactionKey()->rfind("SN44000077-", 0), 0u) << *sale->initiatorTransactionKey();

    auto requests = bench_.hostRequests("/Authorize");
    ASSERT_EQ(requests.size(), 1u);
    const std::string& xml = requests[0].body;
    for (const std::string& part :
         {std::string("<TtlAmt>1000</TtlAmt>"), std::string("<PAN>4761739001010010</PAN>"),
          std::string("<CardDataNtryMd>CICC</CardDataNtryMd>"), std::string("<NcrptdData>1A2B3C4D5E6F7081</NcrptdData>"),
          std::string("<ICCRltdData>9F26081122334455667788</ICCRltdData>"),
          "<InitrTxId>" + *sale->initiatorTransactionKey() + "</InitrTxId>"}) {
        EXPECT_NE(xml.find(part), std::string::npos) << part;
    }
    EXPECT_EQ(bench_.commands(), (std::vector<std::string>{"GIN", "GCR", "GOC", "DSP", "FNC", "RMC"}));
}

TEST_F(SaleFlowTest, TheDebugLogShowsTheRequestWithoutTheCardNumber) {
    KVRLogCapture log;
    KVRApplicationInfo::setValue("Kovra Debugginho Developer", true);
    bench_.answer("FNC", {fncReply(0, 0)});
    ASSERT_TRUE(bench_.sell(Bench::newSale(1000)).success);
    EXPECT_TRUE(log.contains("<AccptrAuthstnReq>")) << "the request is logged";
    EXPECT_TRUE(log.contains(std::string("-----> ") + Bench::kReceiptKey));
    EXPECT_TRUE(log.contains("0010"));
    EXPECT_FALSE(log.contains("4761739001010010")) << log.text();
}

TEST_F(SaleFlowTest, APinpadWithoutTablesGetsThemAndTheSaleStartsAgain) {
    // The first card read's table error is mended by the card read itself; a
    // second one, on the other application type, sends the sale back to the start.
    bench_.answer("GCR", {"GCR020", "GCR005", "GCR020", gcrReply(0, CardRead{})});
    auto sale = Bench::newSale(1000);
    auto call = bench_.sell(sale);
    EXPECT_TRUE(call.success);
    auto commands = bench_.commands();
    EXPECT_EQ(countOf(commands, "GIN"), 2u) << "a fresh identity on the restart";
    EXPECT_EQ(countOf(commands, "TLI"), 2u);
    EXPECT_EQ(countOf(commands, "TLE"), 2u);
    EXPECT_EQ(countOf(commands, "GCR"), 4u);
    EXPECT_EQ(countOf(bench_.displays(), "DSP TABELA|ATUALIZADA"), 2u);
    EXPECT_EQ(bench_.displays().back(), "RMC TRANSACAO|APROVADA");
    KVRStoreFileInspector file(bench_.store().storePath());
    EXPECT_EQ(file.count("KVRPinpadModel"), 1) << "the record of the first pass is replaced, not left behind";
    EXPECT_EQ(file.count("KVRTransactionModel"), 1);
}

TEST_F(SaleFlowTest, AStripeCardThatAsksForAPinSendsTheEnteredPin) {
    bench_.answer("GCR", {gcrReply(0, stripeCard("120"))});
    ASSERT_TRUE(bench_.sell(Bench::newSale(2500)).success);
    auto requests = bench_.hostRequests("/Authorize");
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_NE(requests[0].body.find("<NcrptdData>0F1E2D3C4B5A6978</NcrptdData>"), std::string::npos);
    EXPECT_NE(requests[0].body.find("<AuthntcnMtd>NPIN</AuthntcnMtd>"), std::string::npos);
    EXPECT_NE(requests[0].body.find("<CardDataNtryMd>MGST</CardDataNtryMd>"), std::string::npos);
    EXPECT_EQ(bench_.requestsOf("FNC").size(), 0u);
    ASSERT_EQ(bench_.requestsOf("GPN").size(), 1u);
    EXPECT_NE(bench_.requestsOf("GPN")[0].find("VALOR:      2500SENHA:"), std::string::npos);
}

TEST_F(SaleFlowTest, WithoutAReadTimeOutTheSaleWaitsForThePinpad) {
    bench_.answer("GOC", {""});  // the cardholder takes their time
    auto recorder = bench_.start(Bench::newSale(1000));
    ASSERT_TRUE(bench_.pinpad().waitForRequests(3));
    EXPECT_EQ(bench_.commands().back(), "GOC");
    EXPECT_EQ(recorder->count(), 0u);
    bench_.pinpad().send({gocReply(0, 2, "1A2B3C4D5E6F7081", "FFFF9876543210E00001", "9F26081122334455667788")});
    ASSERT_TRUE(recorder->waitForCalls(1));
    EXPECT_TRUE(recorder->calls()[0].success);
}

// With a read time-out, a PIN pad that stops answering ends the sale. Before
// the request went out nothing is kept; after it the acquirer is told to
// cancel, and the sale is kept as cancelled.
TEST(SaleTimeoutTest, APinpadThatFallsSilentEndsTheSale) {
    struct Row {
        const char* silent;
        bool stripe;
        int result;
        size_t authorisations;
        size_t cancellations;
    } rows[] = {
        {"GIN", false, 7, 0, 0}, {"GCR", false, 7, 0, 0}, {"GOC", false, 7, 0, 0},
        {"DSP", false, 7, 0, 0},  // "Processando..." before the request
        {"GPN", true, 7, 0, 0},  {"FNC", false, 5, 1, 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.silent);
        Bench bench;
        KVRApplicationInfo::setValue("Kovra Pinpad Read Timeout", 0.3);
        if (row.stripe) bench.answer("GCR", {gcrReply(0, stripeCard("120"))});
        bench.answer(row.silent, {""});
        auto call = bench.sell(Bench::newSale(1000));
        Outcome expected = outcomeOf(row.result);
        EXPECT_EQ(call.error, expected.error);
        EXPECT_EQ(bench.commands().back(), row.silent) << "nothing is sent to a silent PIN pad";
        EXPECT_EQ(bench.hostRequests("/Authorize").size(), row.authorisations);
        EXPECT_EQ(bench.hostRequests("/CancellationAdvice").size(), row.cancellations);
        KVRStoreFileInspector file(bench.store().storePath());
        EXPECT_EQ(file.count("KVRTransactionModel"), expected.kept ? 1 : 0);
        if (expected.kept) EXPECT_EQ(file.number("SELECT rawStatus FROM KVRTransactionModel"), row.result);
    }
}

INSTANTIATE_TEST_SUITE_P(Chip, SaleTest, ::testing::ValuesIn(chipRows()), rowName);
INSTANTIATE_TEST_SUITE_P(Stripe, SaleTest, ::testing::ValuesIn(stripeRows()), rowName);

}  // namespace

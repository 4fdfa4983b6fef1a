#include <gtest/gtest.h>

#include <kovra/KVRException.h>
#include <kovra/KVRTmsTableModel.h>

#include "Pinpad/KVRBluetoothConnection.h"
#include "Pinpad/KVRCommandController.h"
#include "Pinpad/KVRPinpadController.h"
#include "Tms/KVRTmsController.h"
#include "Utils/KVRClock.h"
#include "testing/KVREmvTableSamples.h"
#include "testing/KVRLocalTime.h"
#include "testing/KVRLogCapture.h"
#include "testing/KVRPinpadReplies.h"
#include "testing/KVRScriptedPinpad.h"
#include "testing/KVRTemporaryStore.h"
#include "testing/KVRTestFixture.h"

#include <map>

namespace {

using KVRPinpadReplies::gcrApplicationType;
using KVRPinpadReplies::gcrReply;
using KVRPinpadReplies::statusReply;

const std::string kTags = "5F2A82959A9C9F029F109F1A9F1E9F269F339F369F379F279F34";

std::string spaces(size_t count) { return std::string(count, ' '); }

std::vector<std::string> names(const std::vector<std::string>& requests) {
    std::vector<std::string> out;
    for (const auto& r : requests) out.push_back(r.substr(0, 3));
    return out;
}

class CommandControllerTest : public KVRTestFixture {
protected:
    void SetUp() override {
        KVRCommandController::resetCardVariables();
        ASSERT_TRUE(pinpad_.connectSharedLink());
        KVRPinpadController::sharedController().setConnection(KVRBluetoothConnection::sharedController());
    }

    /// Answers GCR with the status given for its application type (default 1) and everything else with 000.
    void answerCardReads(std::map<int, int> statusByType, int otherwise = 1) {
        pinpad_.setHandler([statusByType, otherwise](const std::string& request) -> std::vector<std::string> {
            if (request.rfind("GCR", 0) != 0) return {statusReply(request, 0)};
            auto it = statusByType.find(gcrApplicationType(request));
            return {statusReply(request, it == statusByType.end() ? otherwise : it->second)};
        });
    }
    void answerCardReadWithTrack(const std::string& track) {
        pinpad_.setHandler([track](const std::string& request) -> std::vector<std::string> {
            if (request.rfind("GCR", 0) == 0) return {gcrReply(0, track, track.substr(0, track.find('=')))};
            return {statusReply(request, 0)};
        });
    }
    std::vector<int> cardReadTypes() const {
        std::vector<int> types;
        for (const auto& r : pinpad_.requests())
            if (r.rfind("GCR", 0) == 0) types.push_back(gcrApplicationType(r));
        return types;
    }

    KVRTemporaryStore store_;
    KVRLogCapture log_;
    KVRScriptedPinpad pinpad_;
};

TEST_F(CommandControllerTest, FixedRequestsCarryTheLibrarysValues) {
    KVRCommandController commands;
    commands.sendCommandOpn();
    auto information = commands.sendCommandGin();
    commands.sendCommandTli();
    commands.sendCommandTle();
    commands.sendCommandGocWithAmount(KVRNumber(1000));
    commands.sendCommandFncWithActionCode("00", std::nullopt);
    commands.sendCommandFncWithActionCode("05", std::string("910A0102030405060708090A"));

    std::string gocBlock = "000000001000" "000000000000" "0" "1" "0" "3" "16" + std::string(32, '0') +
                           "0" "00000000" "00" "00000000" "00" "000";
    std::vector<std::string> expected = {
        "OPN000",
        "GIN00200",
        "TLI012" "00" "2014053065",
        "TLE000",
        "GOC086" + gocBlock + "055" "026" + kTags + "003" "000",
        "FNC010" "0" "0" "00" "000" "000" "055" "026" + kTags,
        "FNC034" "0" "0" "05" "012" "910A0102030405060708090A" "000" "055" "026" + kTags,
    };
    EXPECT_EQ(pinpad_.requests(), expected);
    EXPECT_EQ(commands.ginResponse(), information);
    EXPECT_TRUE(log_.contains("Return GIN000")) << log_.text();
}

// A reply left over from a killed run comes before the identity: the lines
// that show it name it by its own name and show no card data.
TEST_F(CommandControllerTest, AStaleCardReadBeforeTheIdentityIsLoggedMasked) {
    KVRPinpadReplies::CardRead card;
    pinpad_.setHandler([&](const std::string&) -> std::vector<std::string> {
        return {gcrReply(0, card), KVRPinpadReplies::ginReply("KOVRA", "SIM", "SN1")};
    });
    KVRCommandController().sendCommandGin();
    EXPECT_TRUE(log_.contains("GCR000")) << log_.text();
    EXPECT_TRUE(log_.contains("Return GIN000")) << log_.text();
    for (const auto& secret : {card.pan, card.secondTrack, card.cardHolderName})
        EXPECT_FALSE(log_.contains(secret)) << log_.text();
}

TEST_F(CommandControllerTest, CardReadSendsStampAcquirerAndTheClockOfTheRequest) {
    auto moment = kvrtest::localTime(2015, 3, 3, 14, 30, 5);
    KVRTestFixture::setClock([moment] { return moment; });
    answerCardReads({}, 0);

    KVRCommandController commands;
    commands.sendCommandGcrWithTransactionType(2);
    EXPECT_EQ(pinpad_.requests(), std::vector<std::string>{"GCR038" "08" "02" "000000000000" "150303" "023005" "2014053065"});
}

TEST_F(CommandControllerTest, CardReadTriesTheApplicationTypesOfEachAccountType) {
    struct Row {
        const char* what;
        int32_t accountType;
        std::map<int, int> statusByType;
        int otherwise;
        std::vector<int> typesSent;
        int finalStatus;
    } rows[] = {
        {"sweep against a PIN pad that always answers 1", 7, {}, 1, {0, 1, 2, 3, 4}, 1},
        {"sweep stops at the first card", 7, {{2, 0}}, 1, {0, 1, 2}, 0},
        {"sweep stops when the user cancels", 7, {{1, 13}}, 1, {0, 1}, 13},
        {"debit: a card at once", 2, {}, 0, {2}, 0},
        {"debit: a cancel is final", 2, {}, 13, {2}, 13},
        {"debit: second choice whatever it answers", 2, {{2, 5}}, 70, {2, 4}, 70},
        {"credit: 1 then 3", 3, {{1, 5}}, 0, {1, 3}, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        size_t before = pinpad_.requests().size();
        answerCardReads(row.statusByType, row.otherwise);
        KVRCommandController commands;
        auto reply = commands.sendCommandGcrWithTransactionType(row.accountType);
        ASSERT_TRUE(reply);
        EXPECT_EQ(reply->status, row.finalStatus);
        EXPECT_EQ(commands.gcrResponse(), reply);
        std::vector<int> types = cardReadTypes();
        EXPECT_EQ(std::vector<int>(types.begin() + static_cast<std::ptrdiff_t>(before), types.end()), row.typesSent);
    }
}

TEST_F(CommandControllerTest, OtherAccountTypesSendNothing) {
    KVRCommandController commands;
    for (int32_t type : {0, 1, 4, 5, 6, 8, -1}) EXPECT_EQ(commands.sendCommandGcrWithTransactionType(type), nullptr);
    EXPECT_TRUE(pinpad_.requests().empty());
    EXPECT_EQ(commands.gcrResponse(), nullptr);
}

TEST_F(CommandControllerTest, TablesOutOfDateAreReloadedBeforeEveryNewRead) {
    auto tables = KVRTmsTableModel::create();
    tables->setAidTable(KVREmvTableSamples::defaultAidTable());
    tables->setCapkTable(KVREmvTableSamples::defaultCapkTable());
    tables->save();
    int cardReads = 0;
    pinpad_.setHandler([&](const std::string& request) -> std::vector<std::string> {
        if (request.rfind("GCR", 0) != 0) return {statusReply(request, 0)};
        return {statusReply(request, ++cardReads <= 3 ? 20 : 0)};
    });

    KVRCommandController commands;
    KVRTmsController::installTableReload(commands);
    auto reply = commands.sendCommandGcrWithTransactionType(2);
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->status, 0);
    std::vector<std::string> load = {"TLI", "TLR", "TLR", "TLR", "TLR", "TLE", "DSP"};
    std::vector<std::string> expected;
    for (int i = 0; i < 3; ++i) {
        expected.push_back("GCR");
        expected.insert(expected.end(), load.begin(), load.end());
    }
    expected.push_back("GCR");
    EXPECT_EQ(names(pinpad_.requests()), expected);
    EXPECT_EQ(cardReadTypes(), (std::vector<int>{2, 2, 2, 2})) << "the same choice is read again, never the second";
}

TEST_F(CommandControllerTest, TableErrorWithoutStoredTablesReadsAgainWithoutLoading) {
    int cardReads = 0;
    pinpad_.setHandler([&](const std::string& request) -> std::vector<std::string> {
        return {statusReply(request, ++cardReads <= 2 ? 20 : 5)};
    });
    KVRCommandController commands;
    KVRTmsController::installTableReload(commands);
    auto reply = commands.sendCommandGcrWithTransactionType(3);
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->status, 5);
    EXPECT_EQ(cardReadTypes(), (std::vector<int>{1, 1, 1, 3}));
    EXPECT_EQ(pinpad_.requests().size(), 4u) << "nothing but card reads without stored tables";
}

// ---- PIN entry ----

struct PinEntryRow {
    const char* track;
    const char* serviceCode;
    bool messageShown;
};

class PinEntryTest : public CommandControllerTest, public ::testing::WithParamInterface<PinEntryRow> {};

TEST_P(PinEntryTest, ServiceCodeDecidesWhetherThePromptIsShown) {
    const auto& row = GetParam();
    answerCardReadWithTrack(row.track);
    KVRCommandController commands;
    commands.sendCommandGcrWithTransactionType(7);
    commands.sendCommandGpnWithAmount(KVRNumber(1000));

    auto requests = pinpad_.requests();
    ASSERT_EQ(requests.size(), 3u);
    EXPECT_EQ(requests[1], "DSP032Aguarde..." + spaces(22));
    std::string pan = std::string(row.track).substr(0, std::string(row.track).find('='));
    std::string message = row.messageShown ? "VALOR:      1000SENHA:" + spaces(10) : spaces(32);
    EXPECT_EQ(requests[2], "GPN061" "3" "16" "00" + spaces(19 - pan.size()) + pan + "0" "04" "12" + message);
    EXPECT_EQ(KVRCommandController::cardExpiration, std::optional<std::string>("2512"));
    EXPECT_EQ(KVRCommandController::serviceCode, std::optional<std::string>(row.serviceCode));
    EXPECT_EQ(KVRCommandController::pan, std::optional<std::string>(row.track));
    ASSERT_TRUE(commands.gpnRequest());
    EXPECT_EQ(commands.gpnRequest()->pan, pan);
}

INSTANTIATE_TEST_SUITE_P(ServiceCodes, PinEntryTest,
                         ::testing::Values(PinEntryRow{"4111111111111111=2512101123", "101", false},
                                           PinEntryRow{"4012001037141112=2512201", "201", false},
                                           PinEntryRow{"5555555555554444=2512120000", "120", true},
                                           PinEntryRow{"6011000990139424=2512606", "606", false},
                                           PinEntryRow{"30569309025904=2512105", "105", true}));

TEST_F(CommandControllerTest, PinEntryWithoutACardReadUsesTheLastCardOfTheProcess) {
    KVRCommandController bare;
    bare.sendCommandGpnWithAmount(KVRNumber(50));
    auto requests = pinpad_.requests();
    ASSERT_EQ(requests.size(), 1u) << "no card ever read: no wait message";
    EXPECT_EQ(requests[0], "GPN093" "0" "00" + spaces(32) + "00" + spaces(19) + "0" "00" "00" + spaces(32));

    answerCardReadWithTrack("5555555555554444=2512120000");
    KVRCommandController reader;
    reader.sendCommandGcrWithTransactionType(7);
    reader.sendCommandGpnWithAmount(KVRNumber(1));

    KVRCommandController later;  // a new controller, no card read of its own
    later.sendCommandGpnWithAmount(KVRNumber(250));
    requests = pinpad_.requests();
    ASSERT_EQ(requests.size(), 6u);
    EXPECT_EQ(requests[4], "DSP032Aguarde..." + spaces(22));
    EXPECT_EQ(requests[5].substr(0, 30), "GPN061" "3" "16" "00" "   5555555555554444");
    EXPECT_EQ(requests[5].substr(35), "VALOR:       250SENHA:" + spaces(10));
}

TEST_F(CommandControllerTest, TrackWithoutSeparatorLeavesExpiryAndServiceCodeUnknown) {
    answerCardReadWithTrack("4111111111111111");
    KVRCommandController commands;
    commands.sendCommandGcrWithTransactionType(7);
    commands.sendCommandGpnWithAmount(KVRNumber(1000));
    EXPECT_FALSE(KVRCommandController::cardExpiration);
    EXPECT_FALSE(KVRCommandController::serviceCode);
    auto requests = pinpad_.requests();
    ASSERT_EQ(requests.size(), 3u);
    // No service code reads as "PIN wanted", not as a chip card.
    EXPECT_EQ(requests[2].substr(35), "VALOR:      1000SENHA:" + spaces(10));
}

TEST_F(CommandControllerTest, AmountWiderThanTenCharactersRaisesBeforeAnythingIsSent) {
    answerCardReadWithTrack("5555555555554444=2512120000");
    KVRCommandController commands;
    commands.sendCommandGcrWithTransactionType(7);
    size_t sent = pinpad_.requests().size();
    try {
        commands.sendCommandGpnWithAmount(KVRNumber(12345678901LL));
        FAIL() << "no exception";
    } catch (const KVRException& e) {
        EXPECT_EQ(e.name(), "String doesn't fit");
        EXPECT_EQ(e.reason(), "String has a length of  while the limit is");
    }
    EXPECT_EQ(pinpad_.requests().size(), sent);
    EXPECT_EQ(commands.appendStringPaddingLeft("10.5"), "      10.5");
    EXPECT_NO_THROW(commands.sendCommandGpnWithAmount(KVRNumber(1234567890LL)));
    EXPECT_EQ(pinpad_.requests().back().substr(35), "VALOR:1234567890SENHA:" + spaces(10));
}

TEST_F(CommandControllerTest, ServiceCodeDigitTests) {
    std::string chip, pin;
    for (int digit = 0; digit <= 9; ++digit) {
        chip += KVRCommandController::checkisEMV(std::to_string(digit)) ? 'Y' : '.';
        pin += KVRCommandController::checkisPINMandatory(std::to_string(digit)) ? 'Y' : '.';
    }
    EXPECT_EQ(chip, "..Y...Y...");
    EXPECT_EQ(pin, "Y..Y.YYY..");
    EXPECT_FALSE(KVRCommandController::checkisEMV(std::nullopt));
    EXPECT_TRUE(KVRCommandController::checkisPINMandatory(std::nullopt));
    EXPECT_TRUE(KVRCommandController::checkisPINMandatory(std::string("x"))) << "no digits reads as 0";
}

// ---- Display ----

TEST_F(CommandControllerTest, DisplayTextsAreSentLiterallyInLatin1) {
    struct Row {
        std::string text;
        std::string shown;
    } rows[] = {
        {"Aguarde...", "Aguarde..."},
        {"100%% APROVADO", "100% APROVADO"},
        {"%s%n%d %x %", "%s%n%d %x %"},
        {"50%", "50%"},
        {"%%%", "%%"},
        // Latin-1 on the wire; the limit counts characters, not UTF-8 bytes.
        {"    OPERAÇÃO       FINALIZADA   ", "    OPERA\xC7\xC3O       FINALIZADA   "},
        {"ÁÉÍÓÚ àâêô ÇÑ nº", "\xC1\xC9\xCD\xD3\xDA \xE0\xE2\xEA\xF4 \xC7\xD1 n\xBA"},
        {"tab\there €5", "tab here ?5"},
        {"", ""},
    };
    KVRCommandController commands;
    for (const auto& row : rows) commands.sendCommandDspWithMessage(row.text);
    auto requests = pinpad_.requests();
    ASSERT_EQ(requests.size(), std::size(rows));
    for (size_t i = 0; i < std::size(rows); ++i)
        EXPECT_EQ(requests[i], "DSP032" + rows[i].shown + spaces(32 - rows[i].shown.size())) << rows[i].text;
}

TEST_F(CommandControllerTest, TwoLineCommandsFillAndCutEachLineAtSixteen) {
    KVRCommandController commands;
    commands.sendCommandRmcWithFirstLine("APROVADA", "");
    commands.sendCommandRmcWithFirstLine("A LINE LONGER THAN SIXTEEN", "SECOND LINE TOO LONG");
    commands.sendCommandCloWithFirstLine("KOVRA", nullptr);
    commands.sendCommandCloWithFirstLine("EXACTLY 16 CHARS", "0123456789ABCDEF");
    std::vector<std::string> expected = {
        "RMC032APROVADA" + spaces(8) + spaces(16),
        "RMC032A LINE LONGER THSECOND LINE TOO ",
        "CLO032KOVRA" + spaces(11) + spaces(16),
        "CLO032EXACTLY 16 CHARS0123456789ABCDEF",
    };
    EXPECT_EQ(pinpad_.requests(), expected);
}

TEST_F(CommandControllerTest, NoLinkRaisesInsteadOfWaitingForever) {
    KVRPinpadController::sharedController().setConnection(nullptr);
    KVRCommandController commands;
    EXPECT_THROW(commands.sendCommandOpn(), KVRException);
    EXPECT_THROW(commands.sendCommandGin(), KVRException);
    EXPECT_TRUE(pinpad_.requests().empty());
}

}  // namespace

#include <gtest/gtest.h>

#include <kovra/KVRException.h>
#include <kovra/KVRTmsTableModel.h>

#include "Pinpad/KVRCommandController.h"
#include "Pinpad/KVRPinpadController.h"
#include "Tms/KVRTmsController.h"
#include "Utils/KVRClock.h"
#include "testing/KVREmvTableSamples.h"
#include "testing/KVRLocalTime.h"
#include "testing/KVRLogCapture.h"
#include "testing/KVRPinpadReplies.h"
#include "testing/KVRScriptedConnection.h"
#include "testing/KVRTemporaryStore.h"
#include "testing/KVRTestFixture.h"

#include <map>

namespace {

using KVRPinpadReplies::gcrApplicationType;
using KVRPinpadReplies::gcrReply;
using KVRPinpadReplies::statusReply;

const std::string kTags = "5F2A82959A9C9F029F109F1A9F1E9F269F339F369F379F279F34";

std::string spaces(size_t count) { return std::string(count, ' '); }

// Requests are answered at once by a scripted link; every request text the
// library builds is asserted here, with the values the controller sends.
class CommandControllerTest : public KVRTestFixture {
protected:
    /// GCR for application type `type` (two digits) answers `replies` in turn.
    void answerCardRead(int type, const std::vector<std::string>& replies) {
        char prefix[16];
        std::snprintf(prefix, sizeof prefix, "GCR03808%02d", type);
        pinpad_->reply(prefix, replies);
    }
    void answerCardReadWithTrack(const std::string& track) {
        pinpad_->reply("GCR", {gcrReply(0, track, track.substr(0, track.find('=')))});
    }
    std::vector<int> cardReadTypes() const {
        std::vector<int> types;
        for (const auto& r : pinpad_->requestsOf("GCR")) types.push_back(gcrApplicationType(r));
        return types;
    }

    KVRTemporaryStore store_;
    KVRLogCapture log_;
    std::shared_ptr<KVRScriptedConnection> pinpad_ = KVRScriptedConnection::install();
};

TEST_F(CommandControllerTest, RequestsCarryTheLibrarysValues) {
    auto moment = kvrtest::localTime(2015, 3, 3, 14, 30, 5);
    KVRTestFixture::setClock([moment] { return moment; });
    KVRCommandController commands;
    commands.sendCommandOpn();
    auto information = commands.sendCommandGin();
    commands.sendCommandTli();
    commands.sendCommandTle();
    commands.sendCommandGcrWithTransactionType(2);
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
        // The time on the 12-hour clock.
        "GCR038" "08" "02" "000000000000" "150303" "023005" "2014053065",
        "GOC086" + gocBlock + "055" "026" + kTags + "003" "000",
        "FNC010" "0" "0" "00" "000" "000" "055" "026" + kTags,
        "FNC034" "0" "0" "05" "012" "910A0102030405060708090A" "000" "055" "026" + kTags,
    };
    EXPECT_EQ(pinpad_->requests(), expected);
    EXPECT_EQ(commands.ginResponse(), information);
    EXPECT_TRUE(log_.contains("Return GIN000")) << log_.text();
}

TEST_F(CommandControllerTest, CardReadTriesTheApplicationTypesOfEachAccountType) {
    struct Row {
        const char* what;
        int32_t accountType;
        std::map<int, int> statusByType;
        std::vector<int> typesSent;
        int finalStatus;
    } rows[] = {
        {"sweep against a PIN pad that always answers 1", 7, {}, {0, 1, 2, 3, 4}, 1},
        {"sweep stops at the first card", 7, {{2, 0}}, {0, 1, 2}, 0},
        {"sweep stops when the user cancels", 7, {{1, 13}}, {0, 1}, 13},
        {"debit: a card at once", 2, {{2, 0}}, {2}, 0},
        {"debit: a cancel is final", 2, {{2, 13}}, {2}, 13},
        {"debit: second choice whatever it answers", 2, {{2, 5}, {4, 70}}, {2, 4}, 70},
        {"credit: 1 then 3", 3, {{1, 5}, {3, 0}}, {1, 3}, 0},
        {"other account types send nothing", 4, {}, {}, -1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        pinpad_ = KVRScriptedConnection::install();
        pinpad_->reply("GCR", {"GCR001"});
        for (auto [type, status] : row.statusByType) answerCardRead(type, {statusReply("GCR", status)});
        KVRCommandController commands;
        auto reply = commands.sendCommandGcrWithTransactionType(row.accountType);
        EXPECT_EQ(reply ? reply->status : -1, row.finalStatus);
        EXPECT_EQ(commands.gcrResponse(), reply);
        EXPECT_EQ(cardReadTypes(), row.typesSent);
    }
}

// The same choice is read again after each reload, never the second; without
// stored tables nothing is loaded, and the card is read again all the same.
TEST_F(CommandControllerTest, TablesOutOfDateAreReloadedBeforeEveryNewRead) {
    for (bool stored : {false, true}) {
        SCOPED_TRACE(stored ? "tables stored" : "no tables");
        if (stored) {
            auto tables = KVRTmsTableModel::create();
            tables->setAidTable(KVREmvTableSamples::defaultAidTable());
            tables->setCapkTable(KVREmvTableSamples::defaultCapkTable());
            tables->save();
        }
        pinpad_ = KVRScriptedConnection::install();
        pinpad_->reply("GCR", {"GCR020", "GCR020", "GCR000"});
        KVRCommandController commands;
        KVRTmsController::installTableReload(commands);
        auto reply = commands.sendCommandGcrWithTransactionType(2);
        ASSERT_TRUE(reply);
        EXPECT_EQ(reply->status, 0);
        EXPECT_EQ(cardReadTypes(), (std::vector<int>{2, 2, 2}));
        std::vector<std::string> load = {"TLI", "TLR", "TLR", "TLR", "TLR", "TLE", "DSP"};
        std::vector<std::string> expected;
        for (int i = 0; i < 2; ++i) {
            expected.push_back("GCR");
            if (stored) expected.insert(expected.end(), load.begin(), load.end());
        }
        expected.push_back("GCR");
        EXPECT_EQ(pinpad_->commands(), expected);
    }
}

// ---- PIN entry ----

TEST_F(CommandControllerTest, ServiceCodeDecidesWhetherThePromptIsShown) {
    struct Row {
        const char* track;
        std::optional<std::string> serviceCode;
        bool messageShown;
    } rows[] = {
        {"4111111111111111=2512101123", "101", false},
        {"4012001037141112=2512201", "201", false},
        {"5555555555554444=2512120000", "120", true},
        {"6011000990139424=2512606", "606", false},
        {"30569309025904=2512105", "105", true},
        // No service code reads as "PIN wanted", not as a chip card.
        {"4111111111111111", std::nullopt, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.track);
        pinpad_ = KVRScriptedConnection::install();
        answerCardReadWithTrack(row.track);
        KVRCommandController commands;
        commands.sendCommandGcrWithTransactionType(7);
        commands.sendCommandGpnWithAmount(KVRNumber(1000));

        auto requests = pinpad_->requests();
        ASSERT_EQ(requests.size(), 3u);
        EXPECT_EQ(requests[1], "DSP032Aguarde..." + spaces(22));
        std::string track = row.track;
        std::string pan = track.substr(0, track.find('='));
        std::string message = row.messageShown ? "VALOR:      1000SENHA:" + spaces(10) : spaces(32);
        EXPECT_EQ(requests[2], "GPN061" "3" "16" "00" + spaces(19 - pan.size()) + pan + "0" "04" "12" + message);
        EXPECT_EQ(KVRCommandController::serviceCode, row.serviceCode);
        EXPECT_EQ(KVRCommandController::cardExpiration,
                  row.serviceCode ? std::optional<std::string>("2512") : std::nullopt);
    }
}

TEST_F(CommandControllerTest, PinEntryWithoutACardReadUsesTheLastCardOfTheProcess) {
    KVRCommandController().sendCommandGpnWithAmount(KVRNumber(50));
    auto requests = pinpad_->requests();
    ASSERT_EQ(requests.size(), 1u) << "no card ever read: no wait message";
    EXPECT_EQ(requests[0], "GPN093" "0" "00" + spaces(32) + "00" + spaces(19) + "0" "00" "00" + spaces(32));

    answerCardReadWithTrack("5555555555554444=2512120000");
    KVRCommandController reader;
    reader.sendCommandGcrWithTransactionType(7);
    reader.sendCommandGpnWithAmount(KVRNumber(1));

    KVRCommandController().sendCommandGpnWithAmount(KVRNumber(250));  // no card read of its own
    requests = pinpad_->requests();
    ASSERT_EQ(requests.size(), 6u);
    EXPECT_EQ(requests[4], "DSP032Aguarde..." + spaces(22));
    EXPECT_EQ(requests[5].substr(0, 30), "GPN061" "3" "16" "00" "   5555555555554444");
    EXPECT_EQ(requests[5].substr(35), "VALOR:       250SENHA:" + spaces(10));
}

TEST_F(CommandControllerTest, AmountWiderThanTenCharactersRaisesBeforeAnythingIsSent) {
    answerCardReadWithTrack("5555555555554444=2512120000");
    KVRCommandController commands;
    commands.sendCommandGcrWithTransactionType(7);
    size_t sent = pinpad_->requests().size();
    EXPECT_THROW(commands.sendCommandGpnWithAmount(KVRNumber(12345678901LL)), KVRException);
    EXPECT_EQ(pinpad_->requests().size(), sent);
    EXPECT_NO_THROW(commands.sendCommandGpnWithAmount(KVRNumber(1234567890LL)));
    EXPECT_EQ(pinpad_->requests().back().substr(35), "VALOR:1234567890SENHA:" + spaces(10));
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
}

// ---- Display ----

TEST_F(CommandControllerTest, DisplayTextsAreSentLiterallyInLatin1) {
    struct Row {
        std::string text;
        std::string shown;
    } rows[] = {
        {"100%% APROVADO", "100% APROVADO"},
        {"%s%n%d %x %", "%s%n%d %x %"},
        {"%%%", "%%"},
        // Latin-1 on the wire; the limit counts characters, not UTF-8 bytes.
        {"    OPERAÇÃO       FINALIZADA   ", "    OPERA\xC7\xC3O       FINALIZADA   "},
        {"tab\there €5", "tab here ?5"},
    };
    KVRCommandController commands;
    for (const auto& row : rows) commands.sendCommandDspWithMessage(row.text);
    commands.sendCommandRmcWithFirstLine("APROVADA", "");
    commands.sendCommandCloWithFirstLine("A LINE LONGER THAN SIXTEEN", nullptr);
    commands.sendCommandCloWithFirstLine("EXACTLY 16 CHARS", "0123456789ABCDEF");
    auto requests = pinpad_->requests();
    ASSERT_EQ(requests.size(), std::size(rows) + 3);
    for (size_t i = 0; i < std::size(rows); ++i)
        EXPECT_EQ(requests[i], "DSP032" + rows[i].shown + spaces(32 - rows[i].shown.size())) << rows[i].text;
    // Two-line commands fill and cut each line at sixteen.
    EXPECT_EQ(requests[std::size(rows)], "RMC032APROVADA" + spaces(24));
    EXPECT_EQ(requests[std::size(rows) + 1], "CLO032A LINE LONGER TH" + spaces(16));
    EXPECT_EQ(requests[std::size(rows) + 2], "CLO032EXACTLY 16 CHARS0123456789ABCDEF");
}

TEST_F(CommandControllerTest, NoLinkRaisesInsteadOfWaitingForever) {
    KVRPinpadController::sharedController().setConnection(nullptr);
    EXPECT_THROW(KVRCommandController().sendCommandOpn(), KVRException);
    EXPECT_TRUE(pinpad_->requests().empty());
}

}  // namespace

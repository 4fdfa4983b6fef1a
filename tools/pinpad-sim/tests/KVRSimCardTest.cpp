#include "KVRSimTestBench.h"
#include "KVRSimTestRequests.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <map>

namespace {

using R = KVRSimTestRequests;

/// The GCR reply fields a sale uses, cut at their documented offsets.
struct CardRead {
    std::string cardType, appType, acquirer, recidx, firstTrack, secondTrack, pan, serviceCode, holder, expiry, tail;

    explicit CardRead(const std::string& reply) {
        auto field = [&](size_t at, size_t width) { return reply.substr(9 + at, width); };
        auto counted = [&](size_t at, size_t digits) {
            return reply.substr(9 + at + digits, std::stoul(field(at, digits)));
        };
        cardType = field(0, 2);
        appType = field(3, 2);
        acquirer = field(5, 2);
        recidx = field(7, 2);
        firstTrack = counted(9, 2);
        secondTrack = counted(87, 2);
        pan = counted(233, 2);
        serviceCode = field(272, 3);
        holder = field(275, 26);
        expiry = field(301, 6);
        tail = reply.substr(9 + 336);
    }
};

std::map<std::string, std::string> tlv(const std::string& hex) {
    std::map<std::string, std::string> tags;
    size_t at = 0;
    auto byte = [&](size_t i) { return std::stoul(hex.substr(i, 2), nullptr, 16); };
    while (at < hex.size()) {
        size_t tagLength = (byte(at) & 0x1F) == 0x1F ? 4 : 2;
        auto tag = hex.substr(at, tagLength);
        at += tagLength;
        size_t length = byte(at);
        at += 2;
        if (length == 0x81) {
            length = byte(at);
            at += 2;
        }
        tags[tag] = hex.substr(at, length * 2);
        at += length * 2;
    }
    return tags;
}

std::string today() {
    std::time_t now = std::time(nullptr);
    char text[7];
    std::strftime(text, sizeof text, "%y%m%d", std::localtime(&now));
    return text;
}

struct Card {
    const char* name;
    const char* type;
    const char* recidx;
    const char* pan;
    const char* serviceCode;
    const char* holder;
};

class KVRSimCardTest : public ::testing::TestWithParam<Card> {};

TEST_P(KVRSimCardTest, CardReadCarriesConsistentTracksInTheirAreas) {
    const auto& card = GetParam();
    KVRSimTestBench bench({"--card", card.name});
    bench.loadTables();
    auto reply = bench.client().exchange(R::gcr(R::kStamp, 3));
    ASSERT_EQ(reply.size(), 9u + 342u);
    CardRead read(reply);
    EXPECT_EQ(read.cardType, card.type);
    EXPECT_EQ(read.appType, "03");
    EXPECT_EQ(read.acquirer, "08");
    EXPECT_EQ(read.recidx, card.recidx);
    EXPECT_EQ(read.pan, card.pan);
    EXPECT_EQ(read.serviceCode, card.serviceCode);
    EXPECT_EQ(read.holder, R::left(card.holder, 26));
    EXPECT_EQ(read.expiry, "281231");
    EXPECT_EQ(read.secondTrack.size(), 37u);
    EXPECT_EQ(read.secondTrack.substr(0, 29 - 5), std::string(card.pan) + "=2812" + card.serviceCode);
    EXPECT_EQ(read.firstTrack.rfind(std::string("B") + card.pan + "^" + card.holder + "^2812" + card.serviceCode, 0), 0u);
    EXPECT_LE(read.firstTrack.size(), 76u);
    EXPECT_EQ(read.tail, "076000") << "issuer country, then no acquirer data for acquirer 8";
}

INSTANTIATE_TEST_SUITE_P(
    Catalogue, KVRSimCardTest,
    ::testing::Values(Card{"chip-visa", "03", "03", "4761739001010010", "201", "CARDHOLDER/VISA"},
                      Card{"chip-master", "03", "04", "5413330089600010", "201", "CARDHOLDER/MASTERCARD"},
                      Card{"stripe", "00", "03", "4111111111111111", "101", "CARDHOLDER/STRIPE"},
                      Card{"stripe-pin", "00", "04", "5555555555554444", "120", "CARDHOLDER/STRIPE PIN"},
                      Card{"stripe-chip", "00", "03", "4012001037141112", "201", "CARDHOLDER/CHIP SWIPED"}),
    [](const auto& info) {
        std::string name = info.param.name;
        name.erase(std::remove(name.begin(), name.end(), '-'), name.end());
        return name;
    });

TEST(KVRSimChip, GoOnlineWithPinBlockKeySerialAndTheRequestedChipData) {
    KVRSimTestBench bench({"--card", "chip-master"});
    bench.loadTables();
    auto& host = bench.client();
    host.exchange(R::gcr());
    auto reply = host.exchange(R::goc(123456));
    ASSERT_GE(reply.size(), 9u + 48u);
    EXPECT_EQ(reply.substr(0, 6), "GOC000");
    EXPECT_EQ(std::stoul(reply.substr(6, 3)), reply.size() - 9);
    EXPECT_EQ(reply.substr(9, 6), "200001") << "decision 2, PIN verified on-line";
    EXPECT_EQ(reply.substr(15, 16).find_first_not_of("0123456789ABCDEF"), std::string::npos);
    EXPECT_EQ(reply.substr(31, 20).find_first_not_of("0123456789"), std::string::npos);
    size_t emvLength = std::stoul(reply.substr(51, 3)) * 2;
    auto emv = tlv(reply.substr(54, emvLength));
    EXPECT_EQ(reply.substr(54 + emvLength), "000");
    for (const char* tag : {"5F2A", "82", "95", "9A", "9C", "9F02", "9F10", "9F1A", "9F1E", "9F26", "9F33", "9F36",
                            "9F37", "9F27", "9F34"}) {
        EXPECT_TRUE(emv.count(tag)) << tag;
    }
    EXPECT_EQ(emv["9F26"].size(), 16u);
    EXPECT_EQ(emv["9F27"], "80");
    EXPECT_EQ(emv["9F02"], "000000123456");
    EXPECT_EQ(emv["5F2A"], "0986");
    EXPECT_EQ(emv["9A"], today());
    EXPECT_EQ(emv["9C"], "00");
}

TEST(KVRSimChip, FinishApprovesOnlyTheApprovalCode) {
    KVRSimTestBench bench;
    bench.loadTables();
    auto& host = bench.client();
    host.exchange(R::gcr());
    host.exchange(R::goc(1000));
    for (auto [code, decision, cryptogramInformation] : {std::tuple{"00", "0", "40"}, std::tuple{"05", "2", "00"},
                                                         std::tuple{"10", "2", "00"}}) {
        SCOPED_TRACE(code);
        auto reply = host.exchange(R::fnc(code, "910A1122334455667788990030"));
        EXPECT_EQ(reply.substr(0, 6), "FNC000");
        EXPECT_EQ(reply.substr(9, 1), decision);
        size_t emvLength = std::stoul(reply.substr(10, 3)) * 2;
        EXPECT_EQ(tlv(reply.substr(13, emvLength))["9F27"], cryptogramInformation);
        EXPECT_EQ(reply.substr(13 + emvLength), "00000") << "no issuer script results, no acquirer data";
    }
}

TEST(KVRSimCards, ScenarioListGivesOneCardPerSuccessfulReadAndRepeatsTheLast) {
    auto bench = std::make_unique<KVRSimTestBench>(std::vector<std::string>{}, KVRSimTestBench::Endpoint::Tcp, R"({"cards": ["chip-visa", "chip-master", "stripe-pin"],
        "faults": [{"command": "GCR", "nth": 2, "status": 13}, {"command": "GCR", "nth": 4, "card": "stripe"}]})");
    bench->loadTables();
    std::vector<std::string> pans;
    for (int read = 0; read < 6; ++read) {
        auto reply = bench->client().exchange(R::gcr());
        pans.push_back(reply.substr(0, 6) == "GCR000" ? CardRead(reply).pan : reply);
    }
    EXPECT_EQ(pans, (std::vector<std::string>{"4761739001010010", "GCR013", "5413330089600010", "4111111111111111",
                                              "5555555555554444", "5555555555554444"}));
}

}  // namespace

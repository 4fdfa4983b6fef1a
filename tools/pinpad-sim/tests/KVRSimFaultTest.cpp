#include "KVRSimTestBench.h"
#include "KVRSimTestRequests.h"
#include "testing/KVRAbecsWire.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

using R = KVRSimTestRequests;
using Wire = KVRAbecsWire;

std::unique_ptr<KVRSimTestBench> scenario(const std::string& text) {
    return std::make_unique<KVRSimTestBench>(std::vector<std::string>{}, KVRSimTestBench::Endpoint::Tcp, text);
}

TEST(KVRSimFaults, ReturnCodesAndDecisionsReplaceTheNormalReplies) {
    auto bench = scenario(R"({"faults": [
        {"command": "GCR", "nth": 1, "status": 13},
        {"command": "GOC", "nth": 1, "status": 12},
        {"command": "GOC", "nth": 2, "decision": 1},
        {"command": "FNC", "decision": 1},
        {"command": "OPN", "status": 15, "times": 2}]})");
    auto& host = bench->client();
    EXPECT_EQ(host.exchange(R::gcr()), "GCR020") << "tables come before rules, and this read is not counted";
    bench->loadTables();
    EXPECT_EQ(host.exchange(R::gcr()), "GCR013") << "user cancel";
    EXPECT_EQ(host.exchange(R::gcr()).substr(0, 6), "GCR000");
    EXPECT_EQ(host.exchange(R::goc(1000)), "GOC012") << "time-out";
    auto declined = host.exchange(R::goc(1000));
    EXPECT_EQ(declined.substr(9, 6), "100000") << "declined off-line, no PIN";
    EXPECT_EQ(declined.substr(15, 36), std::string(36, ' '));
    EXPECT_NE(declined.find("9F270100"), std::string::npos) << "the card answers with an AAC";
    EXPECT_EQ(host.exchange(R::goc(1000)).substr(9, 1), "2") << "rules with nth are used up";
    EXPECT_EQ(host.exchange(R::fnc("00")).substr(9, 1), "1") << "the card refuses the approval";
    EXPECT_EQ(host.exchange("OPN000"), "OPN015");
    EXPECT_EQ(host.exchange("OPN000"), "OPN015");
    EXPECT_EQ(host.exchange("OPN000"), "OPN000") << "times 2 is spent";
}

TEST(KVRSimFaults, NotificationsFollowTheOneAckInLatin1) {
    KVRTempDirectory logs;
    auto bench = std::make_unique<KVRSimTestBench>(
        std::vector<std::string>{"--display-log", logs.file("display.log")}, KVRSimTestBench::Endpoint::Tcp,
        R"({"faults": [{"command": "GCR", "ntm": ["SELECIONADO:    CREDITO         ", "INSIRA O CARTÃO"]}]})");
    bench->loadTables();
    auto& host = bench->client();
    host.send(Wire::frame(R::gcr()));
    // A real PIN pad: ACK, the notifications and the response, nothing in between.
    EXPECT_EQ(host.readByte(), Wire::kAck);
    EXPECT_EQ(Wire::hexDump(host.readFrame().raw),
              "16 4E 54 4D 30 30 30 30 33 32 53 45 4C 45 43 49 4F 4E 41 44 4F 3A 20 20 20 20 43 52 45 44 49 54 4F 20 "
              "20 20 20 20 20 20 20 20 17 FE DC ");
    EXPECT_EQ(host.readFrame().raw, Wire::frame("NTM000015INSIRA O CART\xC3O"));
    EXPECT_EQ(host.readFrame().text.substr(0, 6), "GCR000");
    EXPECT_EQ(logs.read("display.log"),
              "SELECIONADO:    |CREDITO         \nINSIRA O CARTÃO |                \n");
}

TEST(KVRSimFaults, SplitReplyArrivesInTheAskedPieces) {
    auto bench = scenario(
        R"({"faults": [{"command": "GIN", "split": [1, 4], "split_delay_ms": 300},
                       {"command": "OPN", "split": 2, "split_delay_ms": 1}]})");
    auto& host = bench->client();
    host.send(Wire::frame("GIN00200"));
    EXPECT_EQ(host.readByte(), Wire::kAck);
    std::vector<size_t> pieces;
    std::string frame;
    while (frame.size() < 1 + 109 + 3) {
        auto chunk = host.readChunk();
        ASSERT_FALSE(chunk.empty());
        pieces.push_back(chunk.size());
        frame += chunk;
    }
    EXPECT_EQ(pieces, (std::vector<size_t>{1, 4, 108}));
    EXPECT_EQ(frame.substr(1, 9), "GIN000100");
    EXPECT_EQ(host.exchange("OPN000"), "OPN000") << "pieces of two bytes reassemble";
}

TEST(KVRSimFaults, DamagedFramesCarryTheDamageAskedAndANakGetsThemIntact) {
    auto bench = scenario(R"({"faults": [
        {"command": "OPN", "nth": 1, "stray_syn": 3},
        {"command": "OPN", "nth": 2, "bad_crc": true},
        {"command": "GIN", "nak": true, "times": 1}]})");
    auto& host = bench->client();
    host.send(Wire::frame("OPN000"));
    EXPECT_EQ(host.readByte(), Wire::kAck);
    auto stray = host.readFrame();
    EXPECT_EQ(Wire::hexDump(stray.raw), "16 4F 50 4E 16 30 30 30 17 77 5E ") << "CRC of the text without the stray SYN";
    host.send(Wire::frame("OPN000"));
    EXPECT_EQ(host.readByte(), Wire::kAck);
    auto wrong = host.readFrame();
    EXPECT_EQ(wrong.text, "OPN000");
    EXPECT_FALSE(wrong.crcMatches);
    host.send(std::string(1, Wire::kNak));
    EXPECT_EQ(host.readFrame().raw, Wire::frame("OPN000")) << "the host's NAK gets the response again, intact";

    host.send(Wire::frame("GIN00200"));
    EXPECT_EQ(host.readByte(), Wire::kNak) << "the first copy is refused";
    EXPECT_EQ(host.exchange("GIN00200").substr(0, 9), "GIN000100") << "the copy sent again is answered";
    EXPECT_EQ(host.exchange("GIN00200").substr(0, 9), "GIN000100") << "times 1 is spent";
}

TEST(KVRSimFaults, SilenceSendsNothingOrOnlyTheAck) {
    auto bench = scenario(R"({"faults": [
        {"command": "GIN", "nth": 1, "silence": true},
        {"command": "GIN", "nth": 2, "silence": true, "ack": true}]})");
    auto& host = bench->client();
    // Replies keep request order, so the byte after a silenced request belongs to the next one.
    host.send(Wire::frame("GIN00200") + Wire::frame("OPN000"));
    EXPECT_EQ(host.readByte(), Wire::kAck);
    EXPECT_EQ(host.readFrame().text, "OPN000");
    host.send(Wire::frame("GIN00200") + Wire::frame("OPN000"));
    EXPECT_EQ(host.readByte(), Wire::kAck);
    EXPECT_EQ(host.readByte(), Wire::kAck);
    EXPECT_EQ(host.readFrame().text, "OPN000");
}

TEST(KVRSimFaults, HangUpOnTcpClosesTheConnectionAndTheNextHostIsServed) {
    auto bench = scenario(R"({"faults": [
        {"command": "GIN", "nth": 1, "hangup": true},
        {"command": "GIN", "nth": 2, "hangup": "after"}]})");
    {
        auto host = bench->connect();
        host->send(Wire::frame("GIN00200"));
        EXPECT_TRUE(host->seesHangUp());
    }
    {
        auto host = bench->connect();
        EXPECT_EQ(host->exchange("GIN00200").substr(0, 6), "GIN000");
        EXPECT_TRUE(host->seesHangUp());
    }
    EXPECT_EQ(bench->connect()->exchange("OPN000"), "OPN000");
}

// The link names the terminal until the emulator stops, across a hang-up.
TEST(KVRSimFaults, HangUpOnATerminalOpensANewOneAndMovesTheLink) {
    KVRTempDirectory place;
    auto link = place.file("pinpad");
    KVRSimTestBench bench({"--pty", "--link", link, "--fault", R"({"command":"GIN","hangup":true,"ack":true,"nth":1})"},
                          KVRSimTestBench::Endpoint::Pty);
    EXPECT_EQ(bench.endpoint().rfind("/dev/pts/", 0), 0u) << "the ready line names the device, not the link";
    EXPECT_EQ(std::filesystem::read_symlink(link).string(), bench.endpoint());
    EXPECT_NE(bench.errors().find(link), std::string::npos) << "the link is reported";
    auto& host = bench.client();
    host.send(Wire::frame("GIN00200"));
    EXPECT_EQ(host.readByte(), Wire::kAck);
    EXPECT_TRUE(host.seesHangUp());
    bench.reopen();
    EXPECT_EQ(std::filesystem::read_symlink(link).string(), bench.endpoint());
    EXPECT_EQ(KVRSimTestClient(link).exchange("GIN00200").substr(0, 6), "GIN000");
    EXPECT_EQ(bench.process().stop(), 0);
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::symlink_status(link)));
}

}  // namespace

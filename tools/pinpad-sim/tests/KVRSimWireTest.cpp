#include "KVRSimTestBench.h"
#include "KVRSimTestRequests.h"
#include "testing/KVRAbecsWire.h"

#include <gtest/gtest.h>

#include <chrono>

namespace {

using Wire = KVRAbecsWire;

class KVRSimWireTest : public ::testing::TestWithParam<KVRSimTestBench::Endpoint> {
protected:
    KVRSimTestBench bench{{}, GetParam()};
};

TEST_P(KVRSimWireTest, AnswersTheAbecsVectors) {
    auto& host = bench.client();
    host.send(Wire::bytes({0x16, 0x4F, 0x50, 0x4E, 0x30, 0x30, 0x30, 0x17, 0x77, 0x5E}));
    EXPECT_EQ(host.readByte(), Wire::kAck);
    // "OPN000" comes back, so the frame is byte for byte the request's.
    EXPECT_EQ(Wire::hexDump(host.readFrame().raw), "16 4F 50 4E 30 30 30 17 77 5E ");
    host.send(Wire::bytes({0x16, 0x4F, 0x50, 0x4E, 0x17, 0x00, 0x00}));
    EXPECT_EQ(host.readByte(), Wire::kNak) << "bad-CRC OPN";
    EXPECT_NE(bench.errors().find("NAK OPN: bad CRC"), std::string::npos) << bench.errors();
    host.send(Wire::bytes({0x16, 0x4F, 0x50, 0x4E, 0x17, 0xA8, 0xA9}));
    EXPECT_EQ(host.readByte(), Wire::kAck) << "OPN without block";
    EXPECT_EQ(Wire::hexDump(host.readFrame().raw), "16 4F 50 4E 30 30 30 17 77 5E ");
    host.send(Wire::bytes({0x16, 0x44, 0x53, 0x50, 0x30, 0x33, 0x32, 0x20, 0x20, 0x20, 0x20, 0x4F, 0x50, 0x45, 0x52,
                           0x41, 0xC7, 0xC3, 0x4F, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x46, 0x49, 0x4E, 0x41,
                           0x4C, 0x49, 0x5A, 0x41, 0x44, 0x41, 0x20, 0x20, 0x20, 0x17, 0x52, 0x13}));
    EXPECT_EQ(host.readByte(), Wire::kAck) << "DSP in Latin-1, a CRC byte equal to DC3 left as it is";
    EXPECT_EQ(Wire::hexDump(host.readFrame().raw), "16 44 53 50 30 30 30 17 39 63 ");

    // An ETB inside the data travels as DC3 37; the CRC covers the ETB itself.
    auto stuffed = Wire::frame("DSP032" + std::string(31, 'A') + "\x17");
    stuffed.replace(1 + 6 + 31, 1, "\x13\x37");
    host.send(stuffed);
    EXPECT_EQ(host.readByte(), Wire::kNak);
    EXPECT_NE(bench.errors().rfind("display text"), std::string::npos) << "unstuffed, the CRC held" << bench.errors();
    auto broken = Wire::frame("OPN");
    broken.insert(2, "\x13\x41");
    host.send(broken);
    EXPECT_EQ(host.readByte(), Wire::kNak);
    EXPECT_NE(bench.errors().find("DC3 followed by 0x41"), std::string::npos) << bench.errors();
}

TEST_P(KVRSimWireTest, CanIsAnsweredEotAndAbandonsACardReadWaitingForTheCard) {
    auto& host = bench.client();
    host.send(std::string(1, Wire::kCan));
    EXPECT_EQ(host.readByte(), Wire::kEot) << "idle";
    // GCR answers 020 at once without tables; with them, the scenario keeps it waiting for the card.
    KVRSimTestBench waiting({"--fault", R"({"command":"GCR","delay_ms":500})"}, GetParam());
    waiting.loadTables();
    auto& cardholder = waiting.client();
    cardholder.send(Wire::frame(KVRSimTestRequests::gcr()));
    EXPECT_EQ(cardholder.readByte(), Wire::kAck);
    cardholder.send(std::string(1, Wire::kCan));
    EXPECT_EQ(cardholder.readByte(), Wire::kEot);
    EXPECT_EQ(cardholder.readByte(std::chrono::milliseconds(1000)), std::nullopt) << "the card read was abandoned";
    EXPECT_EQ(cardholder.exchange("OPN000"), "OPN000");
}

// A SYN inside a request starts the frame again, and a request trickled
// byte by byte is answered.
TEST_P(KVRSimWireTest, RestartedOrTrickledRequestsAreServed) {
    auto& host = bench.client();
    host.send(Wire::bytes({0x16, 'G', 'I'}) + Wire::frame("OPN000"));
    EXPECT_EQ(host.readByte(), Wire::kAck);
    EXPECT_EQ(host.readFrame().text, "OPN000");

    for (char byte : Wire::frame("GIN00200")) host.send(std::string(1, byte));
    EXPECT_EQ(host.readByte(), Wire::kAck);
    EXPECT_EQ(host.readFrame().text.substr(0, 9), "GIN000100");
}

TEST(KVRSimBitRate, ExchangeTakesTheLineTimeOfItsBytes) {
    // At 1000 bit/s a byte takes 10 ms: the GIN request (12 bytes), the ACK
    // and the 113-byte reply make 1.26 s of line.
    KVRSimTestBench paced({"--bit-rate", "1000"});
    auto started = std::chrono::steady_clock::now();
    EXPECT_EQ(paced.client().exchange("GIN00200").substr(0, 9), "GIN000100");
    EXPECT_GE(std::chrono::steady_clock::now() - started, std::chrono::milliseconds(1260));
}

INSTANTIATE_TEST_SUITE_P(Endpoints, KVRSimWireTest,
                         ::testing::Values(KVRSimTestBench::Endpoint::Tcp, KVRSimTestBench::Endpoint::Pty),
                         [](const auto& info) { return info.param == KVRSimTestBench::Endpoint::Tcp ? "Tcp" : "Pty"; });

}  // namespace

#include "KVRLinkTestSupport.h"

#include <kovra/KVRException.h>
#include <kovra/KVRNotificationCenter.h>

#include "Pinpad/Commands/KVRGinCommandRequest.h"
#include "Pinpad/Commands/KVRGpnCommandRequest.h"
#include "Pinpad/Commands/KVROpnCommandRequest.h"
#include "support/KVRScriptedPinpad.h"

#include <any>
#include <future>
#include <regex>

namespace {

using namespace std::chrono_literals;
using Bytes = std::vector<uint8_t>;
using Texts = std::vector<std::string>;

class KVRBluetoothConnectionTest : public KVRLinkTest {};

// Records the NTM notifications posted while it lives.
class NotificationRecorder {
public:
    NotificationRecorder() {
        token_ = KVRNotificationCenter::defaultCenter().addObserver("KVRPinpadNTMMessage", [this](const KVRNotification& n) {
            texts.push_back(std::any_cast<std::string>(n.object));
        });
    }
    ~NotificationRecorder() { KVRNotificationCenter::defaultCenter().removeObserver(token_); }
    Texts texts;

private:
    KVRNotificationCenter::Token token_;
};

std::string exchange(KVRBluetoothConnection& link, KVRBaseCommandRequest& request) {
    link.sendRequest(request);
    return link.readMessage();
}

template <typename F>
std::optional<KVRException> raised(F&& f) {
    try {
        f();
    } catch (const KVRException& e) {
        return e;
    }
    return std::nullopt;
}

TEST_F(KVRBluetoothConnectionTest, CrcIsXmodem) {
    const std::string check = "123456789";
    EXPECT_EQ(KVRBluetoothConnection::calculateCrc(reinterpret_cast<const uint8_t*>(check.data()), 9), 0x31C3);
    EXPECT_EQ(KVRBluetoothConnection::calculateCrc(nullptr, 0), 0);
    // Against the scripted PIN pad's own implementation, over every byte value.
    Bytes all(256);
    for (int i = 0; i < 256; ++i) all[static_cast<size_t>(i)] = static_cast<uint8_t>(i);
    for (uint32_t n = 1; n <= all.size(); n += 51)
        EXPECT_EQ(KVRBluetoothConnection::calculateCrc(all.data(), n), KVRScriptedPinpad::crc16(all.data(), n));
}

TEST_F(KVRBluetoothConnectionTest, RequestsGoOutAsFrames) {
    KVRScriptedPinpad pinpad;
    ASSERT_TRUE(pinpad.connectSharedLink());
    KVROpnCommandRequest opn;
    EXPECT_EQ(exchange(*link(), opn), "OPN000");
    EXPECT_EQ(pinpad.receivedBytes(), (Bytes{0x16, 0x4F, 0x50, 0x4E, 0x30, 0x30, 0x30, 0x17, 0x77, 0x5E}));

    KVRGinCommandRequest gin;
    EXPECT_EQ(exchange(*link(), gin), "GIN000");
    Bytes bytes = pinpad.receivedBytes();
    ASSERT_EQ(bytes.size(), 10u + 12u);
    EXPECT_EQ(Bytes(bytes.end() - 3, bytes.end()), (Bytes{0x17, 0xEE, 0xCA}));
    EXPECT_EQ(pinpad.requests(), (Texts{"OPN000", "GIN00200"}));
    EXPECT_EQ(pinpad.badCrcCount(), 0u);
    EXPECT_EQ(linesStartingWith("+++++++++ "), (Texts{"+++++++++ OPN000", "+++++++++ GIN00200"}));
    EXPECT_EQ(linesStartingWith("--------- "), (Texts{"--------- OPN000", "--------- GIN000"}));
}

TEST_F(KVRBluetoothConnectionTest, NotificationsAreDivertedUntilTheReply) {
    KVRScriptedPinpad pinpad([](const std::string&) {
        return Texts{"NTM000013INSIRA CARTAO  ", "NTM000016  PROCESSANDO   ", "GCR010"};
    });
    ASSERT_TRUE(pinpad.connectSharedLink());
    NotificationRecorder notes;
    KVROpnCommandRequest request;
    EXPECT_EQ(exchange(*link(), request), "GCR010");
    EXPECT_EQ(notes.texts, (Texts{"INSIRA CARTAO", "  PROCESSANDO"}));
    EXPECT_EQ(linesStartingWith("--------- "),
              (Texts{"--------- NTM000013INSIRA CARTAO  ", "--------- NTM000016  PROCESSANDO   ", "--------- GCR010"}));
}

TEST_F(KVRBluetoothConnectionTest, TolerantOfHowThePinpadWrites) {
    struct Case {
        const char* name;
        KVRScriptedPinpadOptions options;
    };
    KVRScriptedPinpadOptions stray, split, wrongCrc, nak;
    stray.straySyn = true;
    split.splitWrites = true;
    wrongCrc.wrongCrc = true;
    nak.acknowledgement = 0x15;
    const Case cases[] = {{"stray SYN", stray}, {"split writes", split}, {"wrong CRC", wrongCrc}, {"NAK", nak}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        KVRBluetoothConnection::resetSharedController();
        KVRScriptedPinpad pinpad(
            [](const std::string& r) { return Texts{"NTM000004ABCD", r.substr(0, 3) + "000" + "REPLY"}; }, c.options);
        ASSERT_TRUE(pinpad.connectSharedLink());
        NotificationRecorder notes;
        KVROpnCommandRequest opn;
        KVRGinCommandRequest gin;
        EXPECT_EQ(exchange(*link(), opn), "OPN000REPLY");
        EXPECT_EQ(exchange(*link(), gin), "GIN000REPLY");
        EXPECT_EQ(notes.texts, (Texts{"ABCD", "ABCD"}));
    }
}

TEST_F(KVRBluetoothConnectionTest, FramesOfOneReadAreKeptForTheNextRead) {
    KVRApplicationInfo::setValue("Kovra Pinpad Read Timeout", 2.0);
    KVRScriptedPinpadOptions together;
    together.oneWritePerAnswer = true;
    KVRScriptedPinpad pinpad([](const std::string&) { return Texts{"OPN000", "NTM000002HI", "DSP000"}; }, together);
    ASSERT_TRUE(pinpad.connectSharedLink());
    NotificationRecorder notes;
    KVROpnCommandRequest opn;
    EXPECT_EQ(exchange(*link(), opn), "OPN000");
    // With the PIN pad gone, only bytes already read can make the next reply.
    pinpad.accessory()->disconnect();
    EXPECT_EQ(std::string(link()->readMessage()), "DSP000");
    EXPECT_EQ(notes.texts, (Texts{"HI"}));
}

TEST_F(KVRBluetoothConnectionTest, OverlongRepliesAreCutAtTheBufferAndTheNextFrameStillReads) {
    KVRScriptedPinpad pinpad([](const std::string& r) {
        if (r.rfind("OPN", 0) == 0) return Texts{"OPN000" + std::string(5000, 'x')};
        return Texts{"GIN000"};
    });
    ASSERT_TRUE(pinpad.connectSharedLink());
    KVROpnCommandRequest opn;
    std::string reply = exchange(*link(), opn);
    EXPECT_EQ(reply.size(), 1023u);
    EXPECT_EQ(reply.substr(0, 9), "OPN000xxx");
    EXPECT_EQ(link()->readBytesAvailable(), 1024u);  // what was kept, and the ETB
    KVRGinCommandRequest gin;
    EXPECT_EQ(exchange(*link(), gin), "GIN000");
}

TEST_F(KVRBluetoothConnectionTest, PartialWritesAreCompletedWhileWaitingForTheReply) {
    KVRScriptedPinpad pinpad;
    pinpad.accessory()->setLibraryWriteCapacity(3);
    ASSERT_TRUE(pinpad.connectSharedLink());
    KVRGinCommandRequest gin;
    EXPECT_EQ(exchange(*link(), gin), "GIN000");
    EXPECT_EQ(pinpad.requests(), (Texts{"GIN00200"}));
    EXPECT_EQ(pinpad.badCrcCount(), 0u);
}

TEST_F(KVRBluetoothConnectionTest, WritePauseIsHonouredAndSkippedAtZero) {
    KVRScriptedPinpad pinpad;
    ASSERT_TRUE(pinpad.connectSharedLink());
    KVROpnCommandRequest opn;

    KVRApplicationInfo::setValue("Kovra Pinpad Write Pause", 0.05);
    auto start = std::chrono::steady_clock::now();
    link()->sendRequest(opn);
    EXPECT_GE(std::chrono::steady_clock::now() - start, 50ms);
    link()->readMessage();

    KVRApplicationInfo::setValue("Kovra Pinpad Write Pause", 0.0);
    start = std::chrono::steady_clock::now();
    for (int i = 0; i < 5; ++i) link()->sendRequest(opn);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 50ms);
    for (int i = 0; i < 5; ++i) EXPECT_EQ(std::string(link()->readMessage()), "OPN000");
}

TEST_F(KVRBluetoothConnectionTest, SilentPinpadTimesOutAndItsLateReplyIsDropped) {
    KVRApplicationInfo::setValue("Kovra Pinpad Read Timeout", 0.2);
    KVRScriptedPinpad pinpad([](const std::string&) { return Texts{}; });
    ASSERT_TRUE(pinpad.connectSharedLink());
    KVROpnCommandRequest opn;
    link()->sendRequest(opn);
    auto start = std::chrono::steady_clock::now();
    auto e = raised([&] { link()->readMessage(); });
    auto waited = std::chrono::steady_clock::now() - start;
    ASSERT_TRUE(e.has_value());
    EXPECT_EQ(e->name(), "PinpadTimeout");
    EXPECT_GE(waited, 200ms);
    EXPECT_LT(waited, 2s);

    pinpad.send({"OPN000"});  // the answer to the request that timed out
    pinpad.setHandler(KVRScriptedPinpad::okHandler());
    KVRGinCommandRequest gin;
    EXPECT_EQ(exchange(*link(), gin), "GIN000");
}

TEST_F(KVRBluetoothConnectionTest, VanishedPinpadIsLoggedOnceAndWaitedForUntilATimeoutIsSet) {
    KVRApplicationInfo::setValue("Kovra Debugginho Developer", true);
    KVRScriptedPinpad pinpad([](const std::string&) { return Texts{}; });
    ASSERT_TRUE(pinpad.connectSharedLink());
    KVROpnCommandRequest opn;
    link()->sendRequest(opn);
    auto reading = std::async(std::launch::async, [&] { link()->readMessage(); });
    pinpad.accessory()->disconnect();
    ASSERT_TRUE(waitForLogLine("event end encountered"));
    EXPECT_EQ(reading.wait_for(300ms), std::future_status::timeout);
    std::vector<std::string> ends;
    for (const auto& line : logLines())
        if (line.find("end encountered") != std::string::npos) ends.push_back(line);
    ASSERT_EQ(ends.size(), 1u);
    EXPECT_TRUE(std::regex_match(ends[0], std::regex("stream [0-9]+ event end encountered")));

    KVRApplicationInfo::setValue("Kovra Pinpad Read Timeout", 0.01);
    ASSERT_EQ(reading.wait_for(5s), std::future_status::ready);
    auto e = raised([&] { reading.get(); });
    ASSERT_TRUE(e.has_value());
    EXPECT_EQ(e->name(), "PinpadTimeout");
}

TEST_F(KVRBluetoothConnectionTest, SessionLifecycle) {
    KVRApplicationInfo::setValue("Kovra Debugginho Developer", true);
    EXPECT_FALSE(link()->openSession());
    EXPECT_FALSE(link()->isDeviceConnected());
    EXPECT_EQ(countLinesContaining("creating session failed"), 1u);

    KVRScriptedPinpad pinpad;
    link()->setupControllerForAccessory(pinpad.accessory(), "abecs-9600");  // not one it declares
    EXPECT_FALSE(link()->openSession());
    pinpad.accessory()->setRefusesSessions(true);
    link()->setupControllerForAccessory(pinpad.accessory(), "abecs");
    EXPECT_FALSE(link()->openSession());
    pinpad.accessory()->setRefusesSessions(false);
    EXPECT_TRUE(link()->openSession());
    EXPECT_TRUE(link()->openSession());  // keeps the session it has
    EXPECT_EQ(link()->protocol(), "abecs");

    KVROpnCommandRequest opn;
    EXPECT_EQ(exchange(*link(), opn), "OPN000");
    link()->closeSession();
    EXPECT_FALSE(link()->isDeviceConnected());
    EXPECT_TRUE(link()->openSession());
    EXPECT_EQ(exchange(*link(), opn), "OPN000");
}

TEST_F(KVRBluetoothConnectionTest, SharedLinkIsOnePerProcessUntilReset) {
    auto first = KVRBluetoothConnection::sharedController();
    EXPECT_EQ(first, KVRBluetoothConnection::sharedController());
    KVRScriptedPinpad pinpad;
    ASSERT_TRUE(pinpad.connectSharedLink());
    KVRBluetoothConnection::resetSharedController();
    EXPECT_FALSE(first->isDeviceConnected());
    EXPECT_EQ(first->accessory(), nullptr);
    EXPECT_NE(first, KVRBluetoothConnection::sharedController());
}

TEST_F(KVRBluetoothConnectionTest, RawReadsForDiagnostics) {
    KVRScriptedPinpad pinpad;
    ASSERT_TRUE(pinpad.connectSharedLink());
    pinpad.sendRaw({1, 2, 3, 4, 5});
    ASSERT_TRUE(pinpad.accessory()->deviceOutputStream()->isOpen());
    auto until = std::chrono::steady_clock::now() + 2s;
    while (link()->readBytesAvailable() < 5 && std::chrono::steady_clock::now() < until) link()->readData();
    EXPECT_FALSE(link()->readDataWithBytes(6).has_value());
    EXPECT_EQ(link()->readDataWithBytes(2), (Bytes{1, 2}));
    EXPECT_EQ(link()->readDataWithBytes(3), (Bytes{3, 4, 5}));
    EXPECT_EQ(link()->readBytesAvailable(), 0u);
}

// A card-read reply: tracks, PAN and name at their places in the layout.
std::string cardReadReply() {
    std::string track1 = "B4111111111111111^CLIENTE/TESTE^25121010000000000000";
    std::string track2 = "4111111111111111=25121011234567890";
    auto area = [](std::string s, size_t w) { s.resize(w, ' '); return s; };
    std::string body = "00" "0" "00" "08" "01" + std::to_string(track1.size()) + area(track1, 76) +
                       std::to_string(track2.size()) + area(track2, 37) + "000" + area("", 104) + "16" +
                       area("4111111111111111", 19) + "00" + area("CREDITO", 16) + "101" + area("CLIENTE TESTE", 26) +
                       "251231" + std::string(29, '0') + "076" + "000";
    return "GCR000" + std::to_string(body.size()) + body;
}

TEST_F(KVRBluetoothConnectionTest, CardDataIsMaskedInTheTrafficLinesUnlessAllowed) {
    std::string gcr = cardReadReply();
    std::string goc = "GOC000080" "000001" "0123456789ABCDEF" "FFFF9876543210E00001" "000" "000";
    KVRScriptedPinpad pinpad([&](const std::string& r) { return Texts{r.rfind("GPN", 0) == 0 ? goc : gcr}; });
    ASSERT_TRUE(pinpad.connectSharedLink());
    KVRGpnCommandRequest gpn;
    gpn.method = 3;
    gpn.pan = "4111111111111111";
    gpn.message = "SENHA:";

    for (bool allowed : {false, true}) {
        SCOPED_TRACE(allowed ? "allowed" : "masked");
        KVRApplicationInfo::setValue("Kovra Log Card Data", allowed);
        KVROpnCommandRequest opn;
        EXPECT_EQ(exchange(*link(), opn), gcr);  // the reply itself is never masked
        EXPECT_EQ(exchange(*link(), gpn), goc);
        auto sent = linesStartingWith("+++++++++ ");
        auto received = linesStartingWith("--------- ");
        std::string all;
        for (const auto& line : sent) all += line + "\n";
        for (const auto& line : received) all += line + "\n";
        bool leaks = all.find("411111111111") != std::string::npos || all.find("CLIENTE") != std::string::npos ||
                     all.find("0123456789ABCDEF") != std::string::npos || all.find("FFFF9876543210E00001") != std::string::npos;
        EXPECT_EQ(leaks, allowed) << all;
        EXPECT_EQ(received.back().size(), goc.size() + 10);
        EXPECT_NE(all.find("1111"), std::string::npos);
        if (!allowed) EXPECT_NE(received.back().find("****************"), std::string::npos);
        clearLog();
    }
}

}  // namespace

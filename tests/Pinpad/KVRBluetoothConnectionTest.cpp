#include "testing/KVRLinkTest.h"

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRException.h>
#include <kovra/KVRNotificationCenter.h>

#include <kovra/KVRPinPadConnectionProvider.h>

#include "Pinpad/Commands/KVRGcrCommandRequest.h"
#include "Pinpad/Commands/KVRGinCommandRequest.h"
#include "Pinpad/Commands/KVRGpnCommandRequest.h"
#include "Pinpad/Commands/KVROpnCommandRequest.h"
#include "Pinpad/KVRAbecsFrameCodec.h"
#include "Pinpad/KVRPinpadController.h"
#include "testing/KVRPinpadReplies.h"
#include "testing/KVRScriptedPinpad.h"

#include <any>
#include <atomic>
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

// Whole packets as they travel, some captured from a real PIN pad.
TEST(KVRAbecsFrameCodec, PacketsEncodeAndDecodeByteForByte) {
    struct Vector {
        std::string text;
        Bytes packet;
    };
    const Vector vectors[] = {
        {"OPN", {0x16, 0x4F, 0x50, 0x4E, 0x17, 0xA8, 0xA9}},
        {"OPN000", {0x16, 0x4F, 0x50, 0x4E, 0x30, 0x30, 0x30, 0x17, 0x77, 0x5E}},
        {"DSP000", {0x16, 0x44, 0x53, 0x50, 0x30, 0x30, 0x30, 0x17, 0x39, 0x63}},
        {"DSP032    OPERA\xC7\xC3O       FINALIZADA   ",
         {0x16, 0x44, 0x53, 0x50, 0x30, 0x33, 0x32, 0x20, 0x20, 0x20, 0x20, 0x4F, 0x50, 0x45, 0x52, 0x41, 0xC7,
          0xC3, 0x4F, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x46, 0x49, 0x4E, 0x41, 0x4C, 0x49, 0x5A, 0x41,
          0x44, 0x41, 0x20, 0x20, 0x20, 0x17, 0x52, 0x13}},
        {"NTM000032SELECIONADO:    CREDITO         ",
         {0x16, 0x4E, 0x54, 0x4D, 0x30, 0x30, 0x30, 0x30, 0x33, 0x32, 0x53, 0x45, 0x4C, 0x45, 0x43, 0x49, 0x4F,
          0x4E, 0x41, 0x44, 0x4F, 0x3A, 0x20, 0x20, 0x20, 0x20, 0x43, 0x52, 0x45, 0x44, 0x49, 0x54, 0x4F, 0x20,
          0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x20, 0x17, 0xFE, 0xDC}},
    };
    for (bool stuffing : {false, true}) {
        for (const auto& v : vectors) {
            SCOPED_TRACE(v.text + (stuffing ? " stuffed" : ""));
            // None of these texts holds a byte that needs stuffing.
            EXPECT_EQ(KVRAbecsFrameCodec::encode(v.text, stuffing), v.packet);
            KVRAbecsFrameCodec decoder(stuffing);
            std::vector<KVRAbecsFrameCodec::Event> events;
            for (uint8_t byte : Bytes{0x06}) events.push_back(decoder.feed(byte));  // the ACK ahead of it
            for (uint8_t byte : v.packet) events.push_back(decoder.feed(byte));
            EXPECT_EQ(events.front().kind, KVRAbecsFrameCodec::Event::Kind::Byte);
            ASSERT_EQ(events.back().kind, KVRAbecsFrameCodec::Event::Kind::Frame);
            EXPECT_EQ(events.back().text, v.text);
            EXPECT_TRUE(events.back().crcMatches);
        }
    }
    KVRAbecsFrameCodec decoder;
    KVRAbecsFrameCodec::Event last;
    for (uint8_t byte : Bytes{0x16, 0x4F, 0x50, 0x4E, 0x17, 0x00, 0x00}) last = decoder.feed(byte);
    EXPECT_EQ(last.text, "OPN");
    EXPECT_FALSE(last.crcMatches);
}

TEST(KVRAbecsFrameCodec, StuffingAndLengthLimit) {
    const std::string text = "ABC\x13\x16\x17Z";
    Bytes stuffed = KVRAbecsFrameCodec::encode(text, true);
    Bytes plain = KVRAbecsFrameCodec::encode(text, false);
    EXPECT_EQ(Bytes(stuffed.begin() + 4, stuffed.end() - 3), (Bytes{0x13, 0x33, 0x13, 0x36, 0x13, 0x37, 'Z'}));
    EXPECT_EQ(Bytes(stuffed.end() - 2, stuffed.end()), Bytes(plain.end() - 2, plain.end()));  // CRC of the original bytes
    KVRAbecsFrameCodec decoder(true);
    KVRAbecsFrameCodec::Event last;
    for (uint8_t byte : stuffed) last = decoder.feed(byte);
    EXPECT_EQ(last.text, text);
    EXPECT_TRUE(last.crcMatches);

    for (size_t length : {size_t{1024}, size_t{1025}}) {
        for (uint8_t byte : KVRAbecsFrameCodec::encode(std::string(length, 'x'), true)) last = decoder.feed(byte);
        EXPECT_EQ(last.kind, length <= 1024 ? KVRAbecsFrameCodec::Event::Kind::Frame
                                            : KVRAbecsFrameCodec::Event::Kind::Overlong);
    }
}

// Written a few bytes at a time, as a slow line accepts them (the packet's
// bytes are the codec's); a reply over 1024 bytes is dropped and the next
// frame still reads.
TEST_F(KVRBluetoothConnectionTest, RequestsGoOutAsFramesAndOverlongRepliesAreDropped) {
    KVRScriptedPinpad pinpad([](const std::string& r) {
        return r == "OPN000" ? Texts{"OPN000" + std::string(5000, 'x'), "OPN000"} : Texts{r.substr(0, 3) + "000"};
    });
    pinpad.accessory()->setLibraryWriteCapacity(3);
    ASSERT_TRUE(pinpad.connectSharedLink());
    KVROpnCommandRequest opn;
    EXPECT_EQ(exchange(*link(), opn), "OPN000");
    EXPECT_EQ(pinpad.receivedBytes(), KVRAbecsFrameCodec::encode("OPN000", false));
    EXPECT_EQ(log_.count("dropped a frame longer than 1024 bytes"), 1u);
    KVRGinCommandRequest gin;
    EXPECT_EQ(exchange(*link(), gin), "GIN000");
    EXPECT_EQ(pinpad.badCrcCount(), 0u);
}

// The byte order of a real PIN pad (one ACK, notifications, the reply),
// with a stale reply of another command ahead of them, on both links.
TEST_F(KVRBluetoothConnectionTest, NotificationsAndStaleRepliesAreSetAsideUntilTheReply) {
    KVRScriptedPinpadOptions plain, abecs;
    plain.acknowledgeOnce = true;
    abecs.abecs = true;
    for (const auto& options : {plain, abecs}) {
        SCOPED_TRACE(options.abecs ? "abecs" : "default link");
        KVRBluetoothConnection::resetSharedController();
        KVRApplicationInfo::setValue("Kovra Pinpad Link", options.abecs ? "abecs" : "spec");
        KVRScriptedPinpad pinpad(
            [](const std::string&) {
                return Texts{"GIN000", "NTM000032SELECIONADO:    CREDITO         ", "NTM000016    OPERA\xC7\xC3O    ",
                             "GCR010"};
            },
            options);
        ASSERT_TRUE(pinpad.connectSharedLink());
        log_.clear();
        NotificationRecorder notes;
        KVRGcrCommandRequest request;
        request.tabver = "1";
        EXPECT_EQ(exchange(*link(), request), "GCR010");
        EXPECT_EQ(notes.texts, (Texts{"SELECIONADO:    CREDITO", "    OPERAÇÃO"}));
        EXPECT_EQ(log_.startingWith("--------- "),
                  (Texts{"--------- dropped GIN000 while waiting for GCR",
                         "--------- NTM000032SELECIONADO:    CREDITO         ",
                         "--------- NTM000016    OPERAÇÃO    ", "--------- GCR010"}));
        // A late frame sent between commands is not the next reply.
        pinpad.setHandler(KVRScriptedPinpad::okHandler());
        pinpad.send({"DSP000"});
        std::this_thread::sleep_for(20ms);
        KVRGinCommandRequest gin;
        EXPECT_EQ(exchange(*link(), gin), "GIN000");
    }
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

TEST_F(KVRBluetoothConnectionTest, WritePauseIsHonouredAndSkippedAtZero) {
    KVRScriptedPinpad pinpad;
    ASSERT_TRUE(pinpad.connectSharedLink());
    KVROpnCommandRequest opn;
    for (double pause : {0.05, 0.0}) {
        KVRApplicationInfo::setValue("Kovra Pinpad Write Pause", pause);
        auto start = std::chrono::steady_clock::now();
        link()->sendRequest(opn);
        auto sending = std::chrono::steady_clock::now() - start;
        EXPECT_EQ(std::string(link()->readMessage()), "OPN000");
        if (pause > 0) EXPECT_GE(sending, 50ms);
        else EXPECT_LT(sending, 50ms);
    }
}

TEST_F(KVRBluetoothConnectionTest, AbecsLinkResendsOnNakAndNaksDamagedReplies) {
    KVRApplicationInfo::setValue("Kovra Pinpad Link", "abecs");
    struct Case {
        const char* name;
        int nakFirstCopies;
        int damagedReplies;
        bool succeeds;
        size_t copiesSent;
        size_t naksSent;
    };
    const Case cases[] = {
        {"clean", 0, 0, true, 1, 0},
        {"two NAKs", 2, 0, true, 3, 0},
        {"three NAKs", 3, 0, false, 3, 0},
        {"three damaged replies", 0, 3, true, 1, 3},
        {"four damaged replies", 0, 4, false, 1, 3},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        KVRBluetoothConnection::resetSharedController();
        KVRScriptedPinpadOptions options;
        options.abecs = true;
        options.nakFirstCopies = c.nakFirstCopies;
        options.damagedReplies = c.damagedReplies;
        // Bytes that must be stuffed, in the reply.
        KVRScriptedPinpad pinpad([](const std::string& r) { return Texts{r.substr(0, 3) + "000\x13\x16\x17"}; }, options);
        ASSERT_TRUE(pinpad.connectSharedLink());
        KVROpnCommandRequest opn;
        auto e = raised([&] { EXPECT_EQ(exchange(*link(), opn), "OPN000\x13\x16\x17"); });
        EXPECT_EQ(e.has_value(), !c.succeeds);
        if (e) EXPECT_EQ(e->name(), "PinpadTimeout");
        EXPECT_EQ(pinpad.requests(), Texts(c.copiesSent, "OPN000"));
        Bytes received = pinpad.receivedBytes();
        ASSERT_FALSE(received.empty());
        EXPECT_EQ(received.front(), 0x18) << "a session starts with CAN";
        EXPECT_EQ(static_cast<size_t>(std::count(received.begin(), received.end(), 0x15)), c.naksSent);
    }
}

TEST_F(KVRBluetoothConnectionTest, AbortEndsTheCommandAsCancelledOnBothLinks) {
    EXPECT_FALSE(KVRPinPadConnectionProvider::abortCurrentCommand()) << "nothing in flight";
    for (bool abecs : {false, true}) {
        SCOPED_TRACE(abecs ? "abecs" : "default link");
        KVRBluetoothConnection::resetSharedController();
        KVRApplicationInfo::setValue("Kovra Pinpad Link", abecs ? "abecs" : "spec");
        KVRScriptedPinpadOptions options;
        options.abecs = abecs;
        // The card read waits for a card that never comes.
        KVRScriptedPinpad pinpad([](const std::string& r) { return r.rfind("GCR", 0) == 0 ? Texts{} : Texts{"GIN000"}; },
                                 options);
        ASSERT_TRUE(pinpad.connectSharedLink());
        KVRPinpadController::sharedController().setConnection(link());
        KVRGcrCommandRequest gcr;
        gcr.tabver = "1";
        auto reading = std::async(std::launch::async, [&] { return exchange(*link(), gcr); });
        ASSERT_TRUE(pinpad.waitForRequests(1));
        EXPECT_TRUE(KVRPinPadConnectionProvider::abortCurrentCommand());
        EXPECT_EQ(reading.get(), "GCR013");
        Bytes received = pinpad.receivedBytes();
        EXPECT_EQ(received.back(), 0x18);
        KVRGinCommandRequest gin;
        EXPECT_EQ(exchange(*link(), gin), "GIN000") << "the link goes on after an abort";
        KVRPinpadController::sharedController().setConnection(nullptr);
    }
}

// (Its late reply is set aside as any stale reply is.)
TEST_F(KVRBluetoothConnectionTest, SilentPinpadTimesOut) {
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
}

TEST_F(KVRBluetoothConnectionTest, SessionLifecycle) {
    KVRApplicationInfo::setValue("Kovra Debugginho Developer", true);
    EXPECT_FALSE(link()->openSession());
    EXPECT_FALSE(link()->isDeviceConnected());
    EXPECT_EQ(log_.count("creating session failed"), 1u);

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

TEST_F(KVRBluetoothConnectionTest, CardDataIsMaskedInTheTrafficLinesUnlessAllowed) {
    KVRPinpadReplies::CardRead card;
    card.firstTrack = "B4111111111111111^CLIENTE/TESTE^25121010000000000000";
    card.secondTrack = "4111111111111111=25121011234567890";
    card.pan = "4111111111111111";
    card.cardHolderName = "CLIENTE TESTE";
    std::string gcr = KVRPinpadReplies::gcrReply(0, card);
    std::string pin = "GPN000036" "0123456789ABCDEF" "FFFF9876543210E00001";
    KVRScriptedPinpad pinpad([&](const std::string& r) { return Texts{r.rfind("GPN", 0) == 0 ? pin : gcr}; });
    ASSERT_TRUE(pinpad.connectSharedLink());
    KVRGpnCommandRequest gpn;
    gpn.method = 3;
    gpn.pan = "4111111111111111";
    gpn.message = "SENHA:";

    for (bool allowed : {false, true}) {
        SCOPED_TRACE(allowed ? "allowed" : "masked");
        KVRApplicationInfo::setValue("Kovra Log Card Data", allowed);
        KVRGcrCommandRequest read;
        read.tabver = "1";
        EXPECT_EQ(exchange(*link(), read), gcr);  // the reply itself is never masked
        EXPECT_EQ(exchange(*link(), gpn), pin);
        auto sent = log_.startingWith("+++++++++ ");
        auto received = log_.startingWith("--------- ");
        std::string all;
        for (const auto& line : sent) all += line + "\n";
        for (const auto& line : received) all += line + "\n";
        bool leaks = all.find("411111111111") != std::string::npos || all.find("CLIENTE") != std::string::npos ||
                     all.find("0123456789ABCDEF") != std::string::npos || all.find("FFFF9876543210E00001") != std::string::npos;
        EXPECT_EQ(leaks, allowed) << all;
        EXPECT_EQ(received.back().size(), pin.size() + 10);
        EXPECT_NE(all.find("1111"), std::string::npos);
        if (!allowed) EXPECT_NE(received.back().find("****************"), std::string::npos);
        log_.clear();
    }
}

}  // namespace

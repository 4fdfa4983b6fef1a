#include "testing/KVRLinkTest.h"

#include <kovra/KVRException.h>
#include <kovra/KVRNotificationCenter.h>

#include "Pinpad/Commands/KVRGinCommandRequest.h"
#include "Pinpad/Commands/KVROpnCommandRequest.h"
#include "Platform/KVRSerialAccessory.h"
#include "testing/KVRPseudoTerminal.h"
#include "testing/KVRScriptedPinpad.h"

#include <any>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;
using Texts = std::vector<std::string>;

// The link over a real serial line: a pseudo-terminal, as the emulator offers it.
class KVRBluetoothConnectionPtyTest : public KVRLinkTest {
protected:
    void SetUp() override {
        KVRLinkTest::SetUp();
        KVRApplicationInfo::setValue("Kovra Pinpad Read Timeout", 5.0);
    }
    bool connect(const KVRPseudoTerminal& pty) {
        link()->setupControllerForAccessory(std::make_shared<KVRSerialAccessory>(pty.slavePath()), "abecs-19200");
        return link()->openSession();
    }
    std::string exchange(KVRBaseCommandRequest& request) {
        link()->sendRequest(request);
        return link()->readMessage();
    }
};

TEST_F(KVRBluetoothConnectionPtyTest, ExchangesSurviveHowThePinpadWrites) {
    struct Case {
        const char* name;
        KVRScriptedPinpadOptions options;
    };
    KVRScriptedPinpadOptions together, split;
    together.oneWritePerAnswer = true;
    split.splitWrites = true;
    const Case cases[] = {{"frames in one write", together}, {"split writes", split}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        KVRBluetoothConnection::resetSharedController();
        KVRPseudoTerminal pty;
        Texts notes;
        auto token = KVRNotificationCenter::defaultCenter().addObserver(
            "KVRPinpadNTMMessage", [&](const KVRNotification& n) { notes.push_back(std::any_cast<std::string>(n.object)); });
        {
            KVRScriptedPinpad pinpad(pty.input(), pty.output(),
                                     [](const std::string& r) {
                                         return Texts{"NTM000010\r\nAGUARDE\r\n", r.substr(0, 3) + "000\x03\x11\x13"};
                                     },
                                     c.options);
            ASSERT_TRUE(connect(pty));
            KVROpnCommandRequest opn;
            KVRGinCommandRequest gin;
            EXPECT_EQ(exchange(opn), "OPN000\x03\x11\x13");
            EXPECT_EQ(exchange(gin), "GIN000\x03\x11\x13");
            EXPECT_EQ(pinpad.requests(), (Texts{"OPN000", "GIN00200"}));
            EXPECT_EQ(pinpad.badCrcCount(), 0u);
        }
        KVRNotificationCenter::defaultCenter().removeObserver(token);
        // CR and LF inside the text survive the line: both sides are raw.
        EXPECT_EQ(notes, (Texts{"\r\nAGUARDE", "\r\nAGUARDE"}));
    }
}

// One process per PIN pad: a second opener is refused and told who holds it,
// and the device is free again once the holder closes it.
TEST_F(KVRBluetoothConnectionPtyTest, TheDeviceIsLockedWhileOpen) {
    KVRPseudoTerminal pty;
    ASSERT_TRUE(connect(pty));
    KVRSerialAccessory second(pty.slavePath());
    EXPECT_EQ(second.openSession("abecs-19200"), nullptr);
    EXPECT_EQ(countLinesContaining("is in use by process " + std::to_string(getpid())), 1u);
    link()->closeSession();
    EXPECT_NE(second.openSession("abecs-19200"), nullptr);
}

TEST_F(KVRBluetoothConnectionPtyTest, HangUpIsAnEndOfStream) {
    KVRApplicationInfo::setValue("Kovra Debugginho Developer", true);
    KVRApplicationInfo::setValue("Kovra Pinpad Read Timeout", 0.3);
    KVRPseudoTerminal pty;
    ASSERT_TRUE(connect(pty));
    KVROpnCommandRequest opn;
    link()->sendRequest(opn);
    pty.hangUp();
    try {
        link()->readMessage();
        FAIL() << "a vanished PIN pad must time out";
    } catch (const KVRException& e) {
        EXPECT_EQ(e.name(), "PinpadTimeout");
    }
    EXPECT_EQ(countLinesContaining("event end encountered"), 1u);
}

}  // namespace

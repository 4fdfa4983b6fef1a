#include "testing/KVRLinkTest.h"

#include "Platform/KVRSerialAccessory.h"
#include "testing/KVRPseudoTerminal.h"

#include <unistd.h>

namespace {

// One process per PIN pad: a second opener of the serial line is refused and
// told who holds it, and the device is free again once the holder closes it.
// (Exchanges over a real serial line, and a PIN pad that hangs up, are run
// against the PIN pad emulator by the integration suite.)
class KVRBluetoothConnectionPtyTest : public KVRLinkTest {};

TEST_F(KVRBluetoothConnectionPtyTest, TheDeviceIsLockedWhileOpen) {
    KVRPseudoTerminal pty;
    link()->setupControllerForAccessory(std::make_shared<KVRSerialAccessory>(pty.slavePath()), "abecs-19200");
    ASSERT_TRUE(link()->openSession());
    KVRSerialAccessory second(pty.slavePath());
    EXPECT_EQ(second.openSession("abecs-19200"), nullptr);
    EXPECT_EQ(log_.count("is in use by process " + std::to_string(getpid())), 1u);
    link()->closeSession();
    EXPECT_NE(second.openSession("abecs-19200"), nullptr);
}

}  // namespace

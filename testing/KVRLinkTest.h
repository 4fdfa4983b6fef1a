#pragma once

#include "Pinpad/KVRBluetoothConnection.h"
#include "testing/KVRLogCapture.h"
#include "testing/KVRTestFixture.h"

#include <memory>

/// Gives every link test its own log capture; the base fixture gives it a
/// fresh shared link and puts the settings back.
class KVRLinkTest : public KVRTestFixture {
protected:
    std::shared_ptr<KVRBluetoothConnection> link() { return KVRBluetoothConnection::sharedController(); }

    KVRLogCapture log_;
};

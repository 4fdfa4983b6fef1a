// Feeds arbitrary bytes to the PIN pad reply classes (first byte below 0x80)
// or, as raw link input, to the frame reader (first byte 0x80 and above).
// Besides the sanitizers, it traps when a field outgrows its layout.

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRException.h>
#include <kovra/KVRLoggingUtil.h>

#include "Pinpad/Commands/KVRCloCommandResponse.h"
#include "Pinpad/Commands/KVRDspCommandResponse.h"
#include "Pinpad/Commands/KVRFncCommandResponse.h"
#include "Pinpad/Commands/KVRGcrCommandResponse.h"
#include "Pinpad/Commands/KVRGinCommandResponse.h"
#include "Pinpad/Commands/KVRGocCommandResponse.h"
#include "Pinpad/Commands/KVRGpnCommandResponse.h"
#include "Pinpad/Commands/KVROpnCommandResponse.h"
#include "Pinpad/Commands/KVRPrtCommandResponse.h"
#include "Pinpad/Commands/KVRRmcCommandResponse.h"
#include "Pinpad/Commands/KVRTleCommandResponse.h"
#include "Pinpad/Commands/KVRTliCommandResponse.h"
#include "Pinpad/Commands/KVRTlrCommandResponse.h"
#include "Pinpad/KVRBluetoothConnection.h"
#include "KVRFuzzCheck.h"
#include "testing/KVRMemoryAccessory.h"
#include "Utils/KVRCardDataMasking.h"

#include <cstring>
#include <string>

namespace {

void parseReplies(const std::string& text) {
    KVRGcrCommandResponse gcr(text.c_str());
    check(gcr.responseId.size() <= 3 && gcr.firstTrack.size() <= 76 && gcr.secondTrack.size() <= 37 &&
          gcr.thirdTrack.size() <= 104 && gcr.pan.size() <= 19 && gcr.cardHolderName.size() <= 26);
    KVRGocCommandResponse goc(text.c_str());
    check(goc.emvData.size() <= KVRGocCommandResponse::kEmvDataCapacity && goc.pinBlock.size() <= 16);
    KVRFncCommandResponse fnc(text.c_str());
    check(fnc.emvData.size() <= KVRFncCommandResponse::kEmvDataCapacity &&
          fnc.issuerScriptResult.size() <= KVRFncCommandResponse::kIssuerScriptResultCapacity);
    KVRGinCommandResponse gin(text.c_str());
    check(gin.serialNumber.size() <= 20);
    KVRGpnCommandResponse gpn(text.c_str());
    check(gpn.keySerialNumber.size() <= 20);
    KVRCloCommandResponse clo(text.c_str());
    KVROpnCommandResponse opn(text.c_str());
    KVRDspCommandResponse dsp(text.c_str());
    KVRRmcCommandResponse rmc(text.c_str());
    KVRTliCommandResponse tli(text.c_str());
    KVRTlrCommandResponse tlr(text.c_str());
    KVRTleCommandResponse tle(text.c_str());
    try {
        KVRPrtCommandResponse prt(text.c_str());
    } catch (const KVRException&) {
    }
    std::string plain(text.c_str());
    check(KVRCardDataMasking::maskPinpadReply(plain).size() == plain.size());
    check(KVRCardDataMasking::maskPinpadRequest(plain).size() == plain.size());
}

void readFrames(const uint8_t* data, size_t size) {
    static bool configured = [] {
        KVRLoggingUtil::setSink([](const std::string&) {});
        KVRApplicationInfo::setValue("Kovra Pinpad Write Pause", 0.0);
        KVRApplicationInfo::setValue("Kovra Pinpad Read Timeout", 0.001);
        return true;
    }();
    (void)configured;
    KVRBluetoothConnection::resetSharedController();
    auto accessory = std::make_shared<KVRMemoryAccessory>();
    auto link = KVRBluetoothConnection::sharedController();
    link->setupControllerForAccessory(accessory, "abecs");
    check(link->openSession());
    if (size > 0) accessory->deviceOutputStream()->write(data, size);
    accessory->disconnect();
    // Every reply costs at least four bytes, so this ends; the time-out ends the last one.
    for (size_t replies = 0; replies <= size; ++replies) {
        try {
            const char* reply = link->readMessage();
            check(std::strlen(reply) < KVRBluetoothConnection::kMessageBufferSize);
            parseReplies(reply);
        } catch (const KVRException&) {
            break;
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    if (data[0] < 0x80) parseReplies(std::string(reinterpret_cast<const char*>(data + 1), size - 1));
    else readFrames(data + 1, size - 1);
    return 0;
}

#include <gtest/gtest.h>

#include <kovra/KVRException.h>

#include "Pinpad/Commands/KVRPrtCommandRequest.h"
#include "Pinpad/Commands/KVRCloCommandRequest.h"
#include "Pinpad/Commands/KVRDspCommandRequest.h"
#include "Pinpad/Commands/KVRFncCommandRequest.h"
#include "Pinpad/Commands/KVRGocCommandRequest.h"
#include "Pinpad/Commands/KVRTlrCommandRequest.h"

#include <memory>
#include <string>

namespace {

const std::string kTags = "5F2A82959A9C9F029F109F1A9F1E9F269F339F369F379F279F34";
const std::string kNoKey(32, '0');

std::string textOf(KVRBaseCommandRequest& request) {
    char buffer[KVRCommandBufferSize];
    request.getCommand(buffer);
    return buffer;
}

// A record builder as the AID and CAPK tables provide them.
class FixedRecord : public KVRTableRecordCommand {
public:
    explicit FixedRecord(std::string text) : text_(std::move(text)) {}
    void getCommand(KVRCommandRequestBuilder& builder) const override {
        builder.appendString(text_, static_cast<int>(text_.size()));
    }

private:
    std::string text_;
};

TEST(KVRCommandRequest, DisplayTextsLongerThanTwoLinesAreRefused) {
    KVRDspCommandRequest dsp;
    dsp.message = std::string(33, 'x');
    EXPECT_THROW(textOf(dsp), KVRException);
    KVRCloCommandRequest clo;
    clo.message = std::string(31, 'x');  // the close text must fill both lines exactly
    EXPECT_THROW(textOf(clo), KVRException);
}

// One record at a time is what the table load sends (asserted with it); both
// or none are counted the same way.
TEST(KVRCommandRequest, TableLoadCountsTheRecordsItCarries) {
    KVRTlrCommandRequest both;
    both.aidCommand = std::make_shared<FixedRecord>("AIDRECORD");
    both.capkCommand = std::make_shared<FixedRecord>("CAPK");
    EXPECT_EQ(textOf(both), "TLR01502AIDRECORDCAPK");
    KVRTlrCommandRequest none;
    EXPECT_EQ(textOf(none), "TLR00200");
}

TEST(KVRCommandRequest, ChipProcessingCarriesAcquirerDataByIndex) {
    KVRGocCommandRequest goc;
    goc.wkenc = kNoKey;
    goc.acqidx = 1;
    goc.acqpr = "ABC";
    goc.acrprTransactionType = 7;
    goc.acqprBool = true;
    goc.tags2 = kTags;  // a tag list counts its bytes, not its hex digits
    std::string text = textOf(goc);
    EXPECT_EQ(text.substr(3, 3), "089");
    EXPECT_EQ(text.substr(6 + 83, 6), "003ABC");
    EXPECT_EQ(text.substr(text.size() - 67), "003000" "055" "026" + kTags + "071");

    goc.acqidx = 2;
    goc.acqpr = std::string(26, 'P');
    goc.acqprPin = std::string(32, 'K');
    text = textOf(goc);
    EXPECT_EQ(text.substr(3, 3), "112");
    EXPECT_EQ(text.substr(text.size() - 84), kTags + std::string(32, 'K'));

    goc.acqidx = 8;  // this library's index carries no acquirer data
    EXPECT_THROW(textOf(goc), KVRException);
    goc.wkenc = "0";
    goc.acqpr.clear();
    EXPECT_THROW(textOf(goc), KVRException);
}

TEST(KVRCommandRequest, FinishCarriesTheHostAnswer) {
    KVRFncCommandRequest fnc;
    fnc.tags = kTags;
    fnc.communicationStatus = 1;
    fnc.authorizationResponseCode = "05";
    fnc.issuerDataEmv = "910A1122334455667788990012";  // 13 bytes
    EXPECT_EQ(textOf(fnc), "FNC036" "1005013910A1122334455667788990012000" "055" "026" + kTags);

    // The longest issuer data allowed still makes a whole frame; a byte more does not.
    fnc.issuerDataEmv = std::string(KVRFncCommandRequest::kMaximumIssuerDataLength, 'A');
    EXPECT_EQ(textOf(fnc).size(), 1022u);
    fnc.issuerDataEmv += "AA";
    EXPECT_THROW(textOf(fnc), KVRException);

    fnc.authorizationResponseCode = "5";
    EXPECT_THROW(textOf(fnc), KVRException);
}

// The library never prints, but the command must still be right if it does.
TEST(KVRCommandRequest, PrintLayoutFollowsTheAction) {
    KVRPrtCommandRequest prt;
    prt.size = 1;
    prt.alignment = 2;
    prt.message = "ABCDEF";
    EXPECT_EQ(textOf(prt), "PRT006012ABC");
    prt.printAction = 1;
    prt.horizontal = 12;
    EXPECT_EQ(textOf(prt), "PRT00510012");
    prt.printAction = 2;
    prt.steps = 3;
    EXPECT_EQ(textOf(prt), "PRT00520003");
    prt.printAction = 9;
    try {
        textOf(prt);
        FAIL() << "an unknown action must raise";
    } catch (const KVRException& e) {
        EXPECT_EQ(e.name(), "Erro !!");
        EXPECT_EQ(e.reason(), "Erro na implementação !!!");
    }
}

}  // namespace

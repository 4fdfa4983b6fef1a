#include <gtest/gtest.h>

#include <kovra/KVRException.h>

#include "Pinpad/Commands/KVRCloCommandRequest.h"
#include "Pinpad/Commands/KVRDspCommandRequest.h"
#include "Pinpad/Commands/KVRFncCommandRequest.h"
#include "Pinpad/Commands/KVRGcrCommandRequest.h"
#include "Pinpad/Commands/KVRGinCommandRequest.h"
#include "Pinpad/Commands/KVRGocCommandRequest.h"
#include "Pinpad/Commands/KVRGpnCommandRequest.h"
#include "Pinpad/Commands/KVROpnCommandRequest.h"
#include "Pinpad/Commands/KVRPrtCommandRequest.h"
#include "Pinpad/Commands/KVRRmcCommandRequest.h"
#include "Pinpad/Commands/KVRTleCommandRequest.h"
#include "Pinpad/Commands/KVRTliCommandRequest.h"
#include "Pinpad/Commands/KVRTlrCommandRequest.h"
#include "Utils/KVRClock.h"

#include <ctime>
#include <memory>
#include <string>
#include "testing/KVRLocalTime.h"
#include "testing/KVRTestFixture.h"

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

TEST(KVRCommandRequest, SimpleCommandsHaveTheirExactTexts) {
    KVROpnCommandRequest opn;
    KVRTleCommandRequest tle;
    KVRGinCommandRequest gin;
    KVRDspCommandRequest dsp;
    dsp.message = "Aguarde...";
    KVRRmcCommandRequest rmc;
    rmc.message = "APROVADA";
    KVRCloCommandRequest clo;
    clo.message = "KOVRA           PRONTO          ";
    KVRTliCommandRequest tli;
    tli.tabver = "2014053065";

    EXPECT_EQ(textOf(opn), "OPN000");
    EXPECT_EQ(textOf(tle), "TLE000");
    EXPECT_EQ(textOf(gin), "GIN00200");
    EXPECT_EQ(textOf(dsp), "DSP032Aguarde..." + std::string(22, ' '));
    EXPECT_EQ(textOf(rmc), "RMC032APROVADA" + std::string(24, ' '));
    EXPECT_EQ(textOf(clo), "CLO032KOVRA           PRONTO          ");
    EXPECT_EQ(textOf(tli), "TLI012002014053065");
    tli.tabver = "123";
    EXPECT_EQ(textOf(tli), "TLI01200       123");
}

TEST(KVRCommandRequest, DisplayTextsLongerThanTwoLinesAreRefused) {
    KVRDspCommandRequest dsp;
    dsp.message = std::string(33, 'x');
    EXPECT_THROW(textOf(dsp), KVRException);
    KVRCloCommandRequest clo;
    clo.message = std::string(31, 'x');  // the close text must fill both lines exactly
    EXPECT_THROW(textOf(clo), KVRException);
}

TEST(KVRCommandRequest, TableLoadCountsTheRecordsItCarries) {
    auto aid = std::make_shared<FixedRecord>("AIDRECORD");
    auto capk = std::make_shared<FixedRecord>("CAPK");
    KVRTlrCommandRequest onlyAid;
    onlyAid.aidCommand = aid;
    KVRTlrCommandRequest onlyCapk;
    onlyCapk.capkCommand = capk;
    KVRTlrCommandRequest both;
    both.aidCommand = aid;
    both.capkCommand = capk;
    KVRTlrCommandRequest none;

    EXPECT_EQ(textOf(onlyAid), "TLR01101AIDRECORD");
    EXPECT_EQ(textOf(onlyCapk), "TLR00601CAPK");
    EXPECT_EQ(textOf(both), "TLR01502AIDRECORDCAPK");
    EXPECT_EQ(textOf(none), "TLR00200");
}

TEST(KVRCommandRequest, CardReadCarriesTheClockOnTheTwelveHourDial) {
    auto at = kvrtest::localTime(2015, 3, 3, 14, 30, 5);
    KVRTestFixture::setClock([at] { return at; });
    KVRGcrCommandRequest gcr;
    KVRTestFixture::setClock({});
    gcr.acqidxreq = 8;
    gcr.apptypreq = 2;
    gcr.amount = 0;
    gcr.tabver = "2014053065";
    EXPECT_EQ(textOf(gcr), "GCR038" "08" "02" "000000000000" "150303" "023005" "2014053065");
    EXPECT_TRUE(gcr.idappList.empty());

    gcr.amount = 1234567890123LL;  // 13 digits do not fit the 12-digit amount
    EXPECT_THROW(textOf(gcr), KVRException);
}

TEST(KVRCommandRequest, ChipProcessingWithTheControllersValues) {
    KVRGocCommandRequest goc;
    goc.amount = 1000;
    goc.acqidx = 8;
    goc.connect = true;
    goc.keydix = 16;
    goc.method = 3;
    goc.wkenc = kNoKey;
    goc.tags1 = kTags;
    std::string block1 = "000000001000" "000000000000" "0" "1" "0" "3" "16" + kNoKey + "0" "00000000" "00" "00000000" "00" "000";
    ASSERT_EQ(block1.size(), 86u);
    EXPECT_EQ(textOf(goc), "GOC086" + block1 + "055" "026" + kTags + "003" "000");
}

TEST(KVRCommandRequest, ChipProcessingCarriesAcquirerDataByIndex) {
    KVRGocCommandRequest goc;
    goc.wkenc = kNoKey;
    goc.acqidx = 1;
    goc.acqpr = "ABC";
    goc.acrprTransactionType = 7;
    goc.acqprBool = true;
    std::string text = textOf(goc);
    EXPECT_EQ(text.substr(3, 3), "089");
    EXPECT_EQ(text.substr(6 + 83, 6), "003ABC");
    EXPECT_EQ(text.substr(text.size() - 15), "003000003000071");

    goc.acqidx = 2;
    goc.acqpr = std::string(26, 'P');
    goc.acqprPin = std::string(32, 'K');
    text = textOf(goc);
    EXPECT_EQ(text.substr(3, 3), "112");
    EXPECT_EQ(text.substr(text.size() - 44), "003000003000" + std::string(32, 'K'));

    goc.acqidx = 8;  // this library's index carries no acquirer data
    EXPECT_THROW(textOf(goc), KVRException);
    goc.wkenc = "0";
    goc.acqpr.clear();
    EXPECT_THROW(textOf(goc), KVRException);
}

TEST(KVRCommandRequest, FinishCarriesTheHostAnswer) {
    KVRFncCommandRequest fnc;
    fnc.authorizationResponseCode = "00";
    fnc.tags = kTags;
    EXPECT_EQ(textOf(fnc), "FNC010" "0000000000" "055" "026" + kTags);

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

TEST(KVRCommandRequest, PinEntryLeavesTheWorkingKeyOutUnlessMethodZero) {
    KVRGpnCommandRequest gpn;
    gpn.method = 3;
    gpn.keydix = 16;
    gpn.wkenc = kNoKey;
    gpn.pan = "4111111111111111";
    gpn.minimum = 4;
    gpn.maximum = 12;
    gpn.message = "VALOR:      1000SENHA:";
    EXPECT_EQ(textOf(gpn), "GPN061" "3" "16" "00" "   4111111111111111" "0" "04" "12" "VALOR:      1000SENHA:          ");
    gpn.method = 0;
    EXPECT_EQ(textOf(gpn).substr(0, 41), "GPN093" "0" "16" + kNoKey);
}

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

TEST(KVRCommandRequest, TheBaseRequestIsNotACommand) {
    KVRBaseCommandRequest base;
    try {
        textOf(base);
        FAIL() << "the base request must raise";
    } catch (const KVRException& e) {
        EXPECT_EQ(e.name(), "Não foi implementado !");
        EXPECT_EQ(e.reason(), "Não foi implementado");
    }
}

}  // namespace

#include <gtest/gtest.h>

#include <kovra/KVRException.h>

#include "Pinpad/Commands/KVRCloCommandResponse.h"
#include "Pinpad/Commands/KVRCommandResponseReader.h"
#include "Pinpad/Commands/KVRDspCommandResponse.h"
#include "Pinpad/Commands/KVRFncCommandResponse.h"
#include "Pinpad/Commands/KVRGcrCommandResponse.h"
#include "Pinpad/Commands/KVRGinCommandResponse.h"
#include "Pinpad/Commands/KVRGocCommandResponse.h"
#include "Pinpad/Commands/KVRGpnCommandResponse.h"
#include "Pinpad/Commands/KVROpnCommandResponse.h"
#include "Pinpad/Commands/KVRPrtCommandResponse.h"
#include "Pinpad/Commands/KVRTleCommandResponse.h"
#include "Pinpad/Commands/KVRTliCommandResponse.h"
#include "Pinpad/Commands/KVRTlrCommandResponse.h"
#include "Utils/KVRDateUtil.h"

#include <ctime>
#include <string>

namespace {

std::string pad(const std::string& text, size_t width) {
    std::string out = text.substr(0, width);
    out.resize(width, ' ');
    return out;
}

std::string num(long long value, int width) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%0*lld", width, value);
    return buffer;
}

std::string yearMonth(const std::optional<std::chrono::system_clock::time_point>& date) {
    return date ? KVRDateUtil::dateStringWithFormat("yyyy-MM-dd", *date) : "none";
}

// A card-read reply laid out field by field, independently of the reader.
struct GcrReply {
    int status = 0;
    int cardType = 3;
    int acqidx = 8;
    std::string track1, track2, track3, pan;
    int track1Length = -1;  // -1: the track's own length
    std::string expiration = "271231";
    std::string acquirerData;

    std::string text() const {
        std::string body = num(cardType, 2) + "1" + "02" + num(acqidx, 2) + "05";
        body += num(track1Length < 0 ? static_cast<long long>(track1.size()) : track1Length, 2) + pad(track1, 76);
        body += num(static_cast<long long>(track2.size()), 2) + pad(track2, 37);
        body += num(static_cast<long long>(track3.size()), 3) + pad(track3, 104);
        body += num(static_cast<long long>(pan.size()), 2) + pad(pan, 19);
        body += "01" + pad("CREDITO", 16) + "201" + pad("FULANO DE TAL", 26) + expiration + std::string(29, '0') + "076" + "000";
        body += acquirerData;
        return "GCR" + num(status, 3) + num(static_cast<long long>(body.size()), 3) + body;
    }
};

TEST(KVRCommandResponseReader, ReadsStopAtTheEndOfTheReply) {
    KVRCommandResponseReader reader("ABC12 x");
    EXPECT_EQ(reader.readString(3), "ABC");
    EXPECT_EQ(reader.readInt(2), 12);
    EXPECT_EQ(reader.readInt(1), 0);  // a space
    EXPECT_EQ(reader.readString(5), "x");
    EXPECT_EQ(reader.readString(5), "");
    EXPECT_EQ(reader.readInt(3), 0);
    EXPECT_FALSE(reader.readBool());
    EXPECT_FALSE(reader.readDate().has_value());
}

TEST(KVRCommandResponseReader, NumbersAndDatesAreLenient) {
    struct Case {
        const char* text;
        int width;
        int32_t value;
    };
    const Case cases[] = {{"020", 3, 20}, {"   ", 3, 0}, {"abc", 3, 0}, {"7ab", 3, 7}, {"-12", 3, -12}, {"999", 3, 999}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        KVRCommandResponseReader reader(c.text);
        EXPECT_EQ(reader.readInt(c.width), c.value);
    }
    KVRCommandResponseReader dates("150303991399");
    EXPECT_EQ(yearMonth(dates.readDate()), "2015-03-03");
    EXPECT_FALSE(dates.readDate().has_value());  // month 13
}

TEST(KVRCommandResponseReader, NegativeCountsNeitherReadNorMoveBack) {
    KVRCommandResponseReader reader("ABCDEF");
    reader.skip(2);
    EXPECT_EQ(reader.readString(-4), "");
    reader.skip(-2);
    EXPECT_EQ(reader.readString(2), "CD");
    reader.skip(1000);
    EXPECT_EQ(reader.position(), 6);
    KVRCommandResponseReader empty(static_cast<const char*>(nullptr));
    EXPECT_EQ(empty.readString(3), "");
}

TEST(KVRCommandResponse, CommonPartCarriesNameAndReturnCode) {
    EXPECT_EQ(KVROpnCommandResponse("OPN000").responseId, "OPN");
    EXPECT_EQ(KVROpnCommandResponse("OPN000").status, 0);
    EXPECT_EQ(KVRTliCommandResponse("TLI020").status, 20);
    EXPECT_EQ(KVRTlrCommandResponse("TLR013").status, 13);
    EXPECT_EQ(KVRTleCommandResponse("TLE").responseId, "TLE");
    EXPECT_EQ(KVRTleCommandResponse("TLE").status, 0);
    EXPECT_EQ(KVRDspCommandResponse("").responseId, "");
    EXPECT_EQ(KVRDspCommandResponse(nullptr).status, 0);
}

TEST(KVRCommandResponse, CloseStatusIsTheDigitsAfterTheReturnCode) {
    EXPECT_EQ(KVRCloCommandResponse("CLO000032").status, 32);
    EXPECT_EQ(KVRCloCommandResponse("CLO015").status, 0);
}

TEST(KVRCommandResponse, InformationFieldsKeepTheirWidths) {
    std::string body = pad("GERTEC", 20) + pad("PPC930", 19) + "1" + pad("1.08.00", 20) + "1.08" + pad("MANUF 2", 16) +
                       pad("5123456789", 20);
    ASSERT_EQ(body.size(), 100u);
    KVRGinCommandResponse gin(("GIN000100" + body).c_str());
    EXPECT_EQ(gin.commandLength, 100);
    EXPECT_EQ(gin.name, pad("GERTEC", 20));
    EXPECT_EQ(gin.model, pad("PPC930", 19));
    EXPECT_EQ(gin.ctlssup, "1");
    EXPECT_EQ(gin.sover, pad("1.08.00", 20));
    EXPECT_EQ(gin.specver, "1.08");
    EXPECT_EQ(gin.manver, pad("MANUF 2", 16));
    EXPECT_EQ(gin.serialNumber, pad("5123456789", 20));

    KVRGinCommandResponse cut(("GIN000100" + body.substr(0, 45)).c_str());
    EXPECT_EQ(cut.sover, "1.08.");
    EXPECT_EQ(cut.specver, "");
    EXPECT_EQ(cut.serialNumber, "");
}

TEST(KVRCommandResponse, PinEntryFields) {
    KVRGpnCommandResponse gpn("GPN000036" "0123456789ABCDEF" "FFFF9876543210E00001");
    EXPECT_EQ(gpn.pinBlock, "0123456789ABCDEF");
    EXPECT_EQ(gpn.keySerialNumber, "FFFF9876543210E00001");
    KVRGpnCommandResponse cancelled("GPN013");
    EXPECT_EQ(cancelled.status, 13);
    EXPECT_EQ(cancelled.pinBlock, "");
}

TEST(KVRCommandResponse, PrintRepliesAlwaysRaise) {
    const std::pair<const char*, const char*> cases[] = {
        {"PRT000001" "0", "Esperado 1."}, {"PRT000004" "0000", "Esperado 4."}, {"PRT", "Esperado 0."}};
    for (const auto& [reply, reason] : cases) {
        SCOPED_TRACE(reply);
        try {
            KVRPrtCommandResponse prt(reply);
            FAIL() << "a print reply must raise";
        } catch (const KVRException& e) {
            EXPECT_EQ(e.reason(), reason);
        }
    }
}

TEST(KVRCommandResponse, ChipCardReadFillsEveryField) {
    GcrReply reply;
    reply.track2 = "5555666677778888=27122011234500000";
    reply.pan = "5555666677778888";
    reply.acqidx = 1;
    reply.acquirerData = "14" + pad("A0000000041010", 32) + pad("MASTERCARD", 16) + pad("MASTER CREDITO", 16);
    KVRGcrCommandResponse gcr(reply.text().c_str());
    EXPECT_EQ(gcr.responseId, "GCR");
    EXPECT_EQ(gcr.status, 0);
    EXPECT_EQ(gcr.commandLength, static_cast<int32_t>(reply.text().size() - 9));
    EXPECT_EQ(gcr.cardType, 3);
    EXPECT_EQ(gcr.statusChip, 1);
    EXPECT_EQ(gcr.appType, 2);
    EXPECT_EQ(gcr.acqidx, 1);
    EXPECT_EQ(gcr.recidx, 5);
    EXPECT_EQ(gcr.firstTrack, "");
    EXPECT_EQ(gcr.secondTrackLength, 34);
    EXPECT_EQ(gcr.secondTrack, reply.track2);
    EXPECT_EQ(gcr.thirdTrack, "");
    EXPECT_EQ(gcr.pan, "5555666677778888");
    EXPECT_EQ(gcr.panSequenceNumber, 1);
    EXPECT_EQ(gcr.applicationLabel, pad("CREDITO", 16));
    EXPECT_EQ(gcr.serviceCode, 201);
    EXPECT_EQ(gcr.cardHolderName, pad("FULANO DE TAL", 26));
    EXPECT_EQ(yearMonth(gcr.expirationDate), "2027-12-31");  // a chip card keeps the reply's date
    EXPECT_EQ(gcr.ruf, std::string(29, '0'));
    EXPECT_EQ(gcr.issuerCountryCode, 76);
    EXPECT_EQ(gcr.credentialNetworkLength, 0);
    EXPECT_EQ(gcr.applicationIdentifierLength, 14);
    EXPECT_EQ(gcr.applicationIdentifier, pad("A0000000041010", 32));
    EXPECT_EQ(gcr.applicationLabelCredential, pad("MASTERCARD", 16));
    EXPECT_EQ(gcr.applicationPreferredName, pad("MASTER CREDITO", 16));
    EXPECT_EQ(gcr.applicationUsageControl, "");

    reply.acqidx = 2;
    reply.acquirerData = "FF00AB0000";
    KVRGcrCommandResponse second(reply.text().c_str());
    EXPECT_EQ(second.applicationUsageControl, "FF00AB0000");
    EXPECT_EQ(second.applicationIdentifier, "");
}

TEST(KVRCommandResponse, TrackAreasAreSkippedToTheirFullWidth) {
    GcrReply reply;
    reply.track2 = std::string("4111111111111111=2512101") + std::string(13, '9');
    ASSERT_EQ(reply.track2.size(), 37u);
    reply.pan = "4111111111111111";
    KVRGcrCommandResponse gcr(reply.text().c_str());
    EXPECT_EQ(gcr.secondTrack, reply.track2);
    EXPECT_EQ(gcr.pan, "4111111111111111");
    EXPECT_EQ(gcr.panSequenceNumber, 1);
    EXPECT_EQ(gcr.serviceCode, 201);
}

TEST(KVRCommandResponse, DamagedTrackLengthsStayInsideTheirAreas) {
    GcrReply reply;
    reply.track1 = "B4111111111111111^CLIENTE/TESTE^25121010000000000000";
    reply.track1Length = 99;  // longer than the 76-character area
    reply.pan = "4111111111111111";
    KVRGcrCommandResponse gcr(reply.text().c_str());
    EXPECT_EQ(gcr.firstTrack, pad(reply.track1, 76));
    EXPECT_EQ(gcr.pan, "4111111111111111");
    EXPECT_EQ(gcr.serviceCode, 201);

    std::string text = reply.text();
    text.replace(9 + 9, 2, "-5");
    KVRGcrCommandResponse negative(text.c_str());
    EXPECT_EQ(negative.firstTrack, "");
    EXPECT_EQ(negative.pan, "4111111111111111");
}

TEST(KVRCommandResponse, StripeExpirationComesFromTheTracks) {
    struct Case {
        const char* name;
        std::string track1, track2, expected;
    };
    const Case cases[] = {
        {"second track", "B4111^X^2001", "4111111111111111=2512101", "2025-12-01"},
        {"first track when the second has no separator", "B4111111111111111^CLIENTE/TESTE^2406101", "", "2024-06-01"},
        {"field when neither track splits", "", "", "2027-12-31"},
        {"unparsable track date", "", "4111111111111111=AB12", "none"},
        {"short track date", "", "4111111111111111=25", "none"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        GcrReply reply;
        reply.cardType = 0;
        reply.track1 = c.track1;
        reply.track2 = c.track2;
        KVRGcrCommandResponse gcr(reply.text().c_str());
        EXPECT_EQ(yearMonth(gcr.expirationDate), c.expected);
    }
}

TEST(KVRCommandResponse, ShortCardReadLeavesFieldsEmpty) {
    KVRGcrCommandResponse gcr("GCR013");
    EXPECT_EQ(gcr.status, 13);
    EXPECT_EQ(gcr.secondTrack, "");
    EXPECT_EQ(gcr.pan, "");
    EXPECT_EQ(gcr.cardType, 0);
    EXPECT_FALSE(gcr.expirationDate.has_value());

    GcrReply reply;
    reply.track2 = "4111111111111111=2512101";
    std::string text = reply.text().substr(0, 118);  // the second track's area starts at 98
    KVRGcrCommandResponse cut(text.c_str());
    EXPECT_EQ(cut.secondTrack, "4111111111111111=251");
    EXPECT_EQ(cut.thirdTrack, "");
    EXPECT_EQ(cut.pan, "");
}

TEST(KVRCommandResponse, ChipProcessingFields) {
    std::string emv = "5F2A020986" "820258009F2701800";
    std::string body = "1" "0" "1" "2" "0" "1" "0123456789ABCDEF" "FFFF9876543210E00001" "010" + emv.substr(0, 20) + "000";
    KVRGocCommandResponse goc(("GOC000" + num(static_cast<long long>(body.size()), 3) + body).c_str());
    EXPECT_EQ(goc.decision, 1);
    EXPECT_FALSE(goc.signature);
    EXPECT_TRUE(goc.pinOffline);
    EXPECT_EQ(goc.errorsPinOffline, 2);
    EXPECT_FALSE(goc.pinBlocked);
    EXPECT_TRUE(goc.pinOnline);
    EXPECT_EQ(goc.pinBlock, "0123456789ABCDEF");
    EXPECT_EQ(goc.keySerialNumber, "FFFF9876543210E00001");
    EXPECT_EQ(goc.emvDataLength, 20);
    EXPECT_EQ(goc.emvData, emv.substr(0, 20));
    EXPECT_EQ(goc.acquirerLength, 0);
}

TEST(KVRCommandResponse, FinishFieldsAreBoundedByTheirAnnouncedLengths) {
    std::string emv(20, 'A');
    KVRFncCommandResponse fnc(("FNC000030" "0" "010" + emv + "02" "9F01" "004").c_str());
    EXPECT_EQ(fnc.decision, 0);
    EXPECT_EQ(fnc.emvDataLength, 20);
    EXPECT_EQ(fnc.emvData, emv);
    EXPECT_EQ(fnc.issuerScriptResultLength, 4);
    EXPECT_EQ(fnc.issuerScriptResult, "9F01");
    EXPECT_EQ(fnc.acquirerLength, 4);

    KVRFncCommandResponse overlong("FNC000030" "0" "999" "ABCD");
    EXPECT_EQ(overlong.emvDataLength, 1998);
    EXPECT_EQ(overlong.emvData, "ABCD");
    EXPECT_EQ(overlong.issuerScriptResult, "");

    KVRFncCommandResponse negative("FNC000030" "0" "-99" "-9" "005");
    EXPECT_EQ(negative.emvData, "");
    EXPECT_EQ(negative.issuerScriptResult, "");
    EXPECT_EQ(negative.acquirerLength, 5);
}

}  // namespace

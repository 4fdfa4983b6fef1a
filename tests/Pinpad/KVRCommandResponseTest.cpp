#include <gtest/gtest.h>

#include "Pinpad/Commands/KVRCloCommandResponse.h"
#include "Pinpad/Commands/KVRCommandResponseReader.h"
#include "Pinpad/Commands/KVRFncCommandResponse.h"
#include "Pinpad/Commands/KVRGcrCommandResponse.h"
#include "Pinpad/Commands/KVRGinCommandResponse.h"
#include "Pinpad/Commands/KVRGocCommandResponse.h"
#include "Pinpad/Commands/KVRGpnCommandResponse.h"
#include "Pinpad/Commands/KVRTleCommandResponse.h"
#include "Pinpad/Commands/KVRTliCommandResponse.h"
#include "Utils/KVRDateUtil.h"
#include "testing/KVRPinpadReplies.h"

#include <string>

namespace {

using KVRPinpadReplies::CardRead;
using KVRPinpadReplies::gcrReply;

std::string pad(const std::string& text, size_t width) {
    std::string out = text.substr(0, width);
    out.resize(width, ' ');
    return out;
}

std::string day(const std::optional<std::chrono::system_clock::time_point>& date) {
    return date ? KVRDateUtil::dateStringWithFormat("yyyy-MM-dd", *date) : "none";
}

TEST(KVRCommandResponseReader, ReadsAreLenientAndStopAtTheEnd) {
    KVRCommandResponseReader reader("ABC12 x");
    EXPECT_EQ(reader.readString(3), "ABC");
    EXPECT_EQ(reader.readInt(2), 12);
    EXPECT_EQ(reader.readInt(1), 0);  // a space
    EXPECT_EQ(reader.readString(-4), "");
    reader.skip(-2);
    EXPECT_EQ(reader.readString(5), "x");
    EXPECT_EQ(reader.readInt(3), 0);
    EXPECT_FALSE(reader.readBool());
    EXPECT_FALSE(reader.readDate().has_value());
    for (auto [text, value] : {std::pair{"020", 20}, {"abc", 0}, {"7ab", 7}, {"-12", -12}})
        EXPECT_EQ(KVRCommandResponseReader(text).readInt(3), value) << text;
    KVRCommandResponseReader dates("150303991399");
    EXPECT_EQ(day(dates.readDate()), "2015-03-03");
    EXPECT_FALSE(dates.readDate().has_value());  // month 13
    EXPECT_EQ(KVRCommandResponseReader(static_cast<const char*>(nullptr)).readString(3), "");
}

TEST(KVRCommandResponse, NameReturnCodeAndFixedFields) {
    EXPECT_EQ(KVRTliCommandResponse("TLI020").status, 20);
    EXPECT_EQ(KVRTleCommandResponse("TLE").responseId, "TLE");
    EXPECT_EQ(KVRCloCommandResponse("CLO000032").status, 32);  // the digits after the return code

    std::string body = pad("KOVRA", 20) + pad("PPC930", 19) + "1" + pad("1.08.00", 20) + "1.08" + pad("MANUF 2", 16) +
                       pad("5123456789", 20);
    KVRGinCommandResponse gin(("GIN000100" + body).c_str());
    EXPECT_EQ(gin.model, pad("PPC930", 19));
    EXPECT_EQ(gin.specver, "1.08");
    EXPECT_EQ(gin.serialNumber, pad("5123456789", 20));

    KVRGpnCommandResponse gpn("GPN000036" "0123456789ABCDEF" "FFFF9876543210E00001");
    EXPECT_EQ(gpn.pinBlock, "0123456789ABCDEF");
    EXPECT_EQ(gpn.keySerialNumber, "FFFF9876543210E00001");
    EXPECT_EQ(KVRGpnCommandResponse("GPN013").pinBlock, "");
}

TEST(KVRCommandResponse, CardReadFillsEveryField) {
    CardRead card;
    card.applicationType = 2;
    card.acquirer = 1;
    card.recidx = 5;
    card.secondTrack = "5555666677778888=27122011234500000";
    card.pan = "5555666677778888";
    card.expiration = "271231";
    card.acquirerData = "14" + pad("A0000000041010", 32) + pad("MASTERCARD", 16) + pad("MASTER CREDITO", 16);
    std::string text = gcrReply(0, card);
    KVRGcrCommandResponse gcr(text.c_str());
    EXPECT_EQ(gcr.commandLength, static_cast<int32_t>(text.size() - 9));
    EXPECT_EQ(gcr.cardType, 3);
    EXPECT_EQ(gcr.appType, 2);
    EXPECT_EQ(gcr.acqidx, 1);
    EXPECT_EQ(gcr.recidx, 5);
    EXPECT_EQ(gcr.secondTrackLength, 34);
    EXPECT_EQ(gcr.secondTrack, card.secondTrack);
    EXPECT_EQ(gcr.pan, card.pan);
    EXPECT_EQ(gcr.applicationLabel, pad("VISA CREDITO", 16));
    EXPECT_EQ(gcr.serviceCode, 201);
    EXPECT_EQ(gcr.cardHolderName, pad("MARIA DA SILVA", 26));
    EXPECT_EQ(day(gcr.expirationDate), "2027-12-31");  // a chip card keeps the reply's date
    EXPECT_EQ(gcr.issuerCountryCode, 76);
    EXPECT_EQ(gcr.applicationIdentifierLength, 14);
    EXPECT_EQ(gcr.applicationIdentifier, pad("A0000000041010", 32));
    EXPECT_EQ(gcr.applicationPreferredName, pad("MASTER CREDITO", 16));

    card.acquirer = 2;
    card.acquirerData = "FF00AB0000";
    KVRGcrCommandResponse second(gcrReply(0, card).c_str());
    EXPECT_EQ(second.applicationUsageControl, "FF00AB0000");
    EXPECT_EQ(second.applicationIdentifier, "");
}

// A track that fills its area, or a length that does not match it, leaves
// every later field in place.
TEST(KVRCommandResponse, TrackAreasKeepTheirWidthWhateverTheLengths) {
    CardRead card;
    card.firstTrack = "B4111111111111111^CLIENTE/TESTE^25121010000000000000";
    card.secondTrack = std::string("4111111111111111=2512101") + std::string(13, '9');
    card.pan = "4111111111111111";
    std::string text = gcrReply(0, card);
    const std::pair<std::string, std::string> lengths[] = {
        {std::to_string(card.firstTrack.size()), card.firstTrack}, {"99", pad(card.firstTrack, 76)}, {"-5", ""}};
    for (const auto& [length, firstTrack] : lengths) {
        SCOPED_TRACE(length);
        text.replace(9 + 9, 2, length);
        KVRGcrCommandResponse gcr(text.c_str());
        EXPECT_EQ(gcr.firstTrack, firstTrack);
        EXPECT_EQ(gcr.secondTrack, card.secondTrack);
        EXPECT_EQ(gcr.pan, card.pan);
        EXPECT_EQ(gcr.serviceCode, 201);
    }
}

TEST(KVRCommandResponse, StripeExpirationComesFromTheTracks) {
    struct Case {
        const char* name;
        std::string track1, track2, expected;
    } cases[] = {
        {"second track", "B4111^X^2001", "4111111111111111=2512101", "2025-12-01"},
        {"first track when the second has no separator", "B4111111111111111^CLIENTE/TESTE^2406101", "", "2024-06-01"},
        {"field when neither track splits", "", "", "2028-12-31"},
        {"unparsable track date", "", "4111111111111111=AB12", "none"},
        {"short track date", "", "4111111111111111=25", "none"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        CardRead card;
        card.cardType = 0;
        card.firstTrack = c.track1;
        card.secondTrack = c.track2;
        EXPECT_EQ(day(KVRGcrCommandResponse(gcrReply(0, card).c_str()).expirationDate), c.expected);
    }
}

TEST(KVRCommandResponse, ShortCardReadLeavesFieldsEmpty) {
    KVRGcrCommandResponse gcr("GCR013");
    EXPECT_EQ(gcr.status, 13);
    EXPECT_EQ(gcr.pan, "");
    EXPECT_FALSE(gcr.expirationDate.has_value());

    CardRead card;
    card.secondTrack = "4111111111111111=2512101";
    KVRGcrCommandResponse cut(gcrReply(0, card).substr(0, 118).c_str());  // the second track's area starts at 98
    EXPECT_EQ(cut.secondTrack, "4111111111111111=251");
    EXPECT_EQ(cut.pan, "");
}

TEST(KVRCommandResponse, ChipProcessingFields) {
    std::string body = "1" "0" "1" "2" "0" "1" "0123456789ABCDEF" "FFFF9876543210E00001" "010" "5F2A0209868202580099"
                       "000";
    KVRGocCommandResponse goc(("GOC000068" + body).c_str());
    EXPECT_EQ(goc.decision, 1);
    EXPECT_EQ(goc.errorsPinOffline, 2);
    EXPECT_TRUE(goc.pinOnline);
    EXPECT_EQ(goc.pinBlock, "0123456789ABCDEF");
    EXPECT_EQ(goc.keySerialNumber, "FFFF9876543210E00001");
    EXPECT_EQ(goc.emvData, "5F2A0209868202580099");
    EXPECT_EQ(goc.acquirerLength, 0);
}

TEST(KVRCommandResponse, FinishFieldsAreBoundedByTheirAnnouncedLengths) {
    std::string emv(20, 'A');
    KVRFncCommandResponse fnc(("FNC000030" "0" "010" + emv + "02" "9F01" "004").c_str());
    EXPECT_EQ(fnc.emvData, emv);
    EXPECT_EQ(fnc.issuerScriptResult, "9F01");
    EXPECT_EQ(fnc.acquirerLength, 4);

    KVRFncCommandResponse overlong("FNC000030" "0" "999" "ABCD");
    EXPECT_EQ(overlong.emvData, "ABCD");
    EXPECT_EQ(overlong.issuerScriptResult, "");

    KVRFncCommandResponse negative("FNC000030" "0" "-99" "-9" "005");
    EXPECT_EQ(negative.emvData, "");
    EXPECT_EQ(negative.issuerScriptResult, "");
    EXPECT_EQ(negative.acquirerLength, 5);
}

}  // namespace

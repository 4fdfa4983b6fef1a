#include <gtest/gtest.h>

#include <kovra/KVRApplicationInfo.h>

#include "Utils/KVRCardDataMasking.h"
#include "testing/KVRPinpadReplies.h"
#include "testing/KVRFiles.h"

#include <vector>

namespace {

using Masker = std::string (*)(std::string_view);

struct Case {
    const char* what;
    Masker mask;
    std::string text;
    std::vector<std::string> hidden;
    std::vector<std::string> shown;
};

std::vector<Case> cases() {
    KVRPinpadReplies::CardRead card;
    card.firstTrack = "B4761739001010010^DA SILVA/MARIA^2812201";
    card.secondTrack = "4761739001010010=281220112345678901234";  // the area's full 37 characters
    const std::string pinBlock = "0123456789ABCDEF", keySerial = "FFFF9876543210E00001";
    const std::string emv = "9F26081122334455667788";
    const std::string gpnRequest = "GPN045" "3" "16" "00" "   4761739001010010" "04" "12" "000";
    return {
        {"card read", KVRCardDataMasking::maskPinpadReply, KVRPinpadReplies::gcrReply(0, card),
         {"4761739001010010", "28122011234567890123", "MARIA", "SILVA", "* *"}, {"GCR000", "476173******0010", "VISA CREDITO", "37" + std::string(37, '*')}},
        {"chip processing", KVRCardDataMasking::maskPinpadReply, KVRPinpadReplies::gocReply(0, 2, pinBlock, keySerial, emv),
         {pinBlock, "9876543210E"}, {"GOC000", emv, std::string(36, '*')}},
        {"PIN entry", KVRCardDataMasking::maskPinpadReply, KVRPinpadReplies::gpnReply(0, pinBlock, keySerial),
         {pinBlock, "9876543210E"}, {"GPN000", std::string(36, '*')}},
        {"unknown reply", KVRCardDataMasking::maskPinpadReply, "XYZ000015B4761739001010010", {"4761739001010010"}, {"XYZ000"}},
        {"notification", KVRCardDataMasking::maskPinpadReply, "NTM000011RETIRE 12345", {}, {"NTM000011RETIRE 12345"}},
        {"PIN entry request", KVRCardDataMasking::maskPinpadRequest, gpnRequest, {"4761739001010010"},
         {"GPN0453", "476173******0010"}},
        {"identity request", KVRCardDataMasking::maskPinpadRequest, "GIN00200", {}, {"GIN00200"}},
        {"authorisation request", KVRCardDataMasking::maskXml, KVRFiles::testData("authorisation-request-chip-online-pin.xml"),
         {"4761739001010119", "8A3C1F0B9D2E4F67", "3210E00001", "FFFF987654", "27122011143804489"},
         {"<PAN>476173******0119</PAN>", "<TxRef>1B4E28BA2FA111D2883F0016D3CCA427</TxRef>", "<TrckNb>2</TrckNb>"}},
        {"prefixes, attributes, empty and short values", KVRCardDataMasking::maskXml,
         "<a:PAN x='1'>12345678</a:PAN><TrckVal/><NcrptdData></NcrptdData><Id>4761739001010010</Id>",
         {"12345678"}, {"<a:PAN x='1'>********</a:PAN><TrckVal/><NcrptdData></NcrptdData><Id>4761739001010010</Id>"}},
    };
}

TEST(KVRCardDataMasking, CardDataFieldsAreHiddenByWhatTheyAre) {
    for (const Case& c : cases()) {
        SCOPED_TRACE(c.what);
        std::string masked = c.mask(c.text);
        EXPECT_EQ(masked.size(), c.text.size()) << masked;
        for (const auto& secret : c.hidden) EXPECT_EQ(masked.find(secret), std::string::npos) << secret << " in " << masked;
        for (const auto& kept : c.shown) EXPECT_NE(masked.find(kept), std::string::npos) << kept << " not in " << masked;
    }
}

TEST(KVRCardDataMasking, TheApplicationMayAskForCardDataInClear) {
    const std::string xml = "<PAN>4761739001010010</PAN>";
    const std::string reply = KVRPinpadReplies::gpnReply(0, "0123456789ABCDEF", "FFFF9876543210E00001");
    for (bool clear : {false, true}) {
        KVRApplicationInfo::setValue("Kovra Log Card Data", clear);
        EXPECT_EQ(KVRCardDataMasking::xmlForLog(xml) == xml, clear);
        EXPECT_EQ(KVRCardDataMasking::pinpadReplyForLog(reply) == reply, clear);
        EXPECT_EQ(KVRCardDataMasking::pinpadRequestForLog("GPN045" "3" "16" "00" "   4761739001010010" "04" "12" "000")
                      .find("4761739001010010") != std::string::npos, clear);
    }
    KVRApplicationInfo::setValue("Kovra Log Card Data", false);
}

}  // namespace

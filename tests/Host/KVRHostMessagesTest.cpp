#include <gtest/gtest.h>

#include "Host/TBXML.h"
#include "Host/XMLWriter.h"
#include "Host/Messages/KVRHeader.h"
#include "Host/Messages/KVRHostAddress.h"
#include "Host/Messages/KVRText.h"

#include <memory>
#include <string>
#include <utility>

namespace {

TEST(KVRHeader, FullHeaderWritesEveryChildInOrderAndReadsBack) {
    KVRHeader header;
    header.messageFunction = KVRMessageFunctionCCAV;
    header.protocolVersion = "2.0";
    header.exchangeIdentification = "";
    header.creationDateTime = "2024-05-01T10:00:00";
    header.initiatingParty.emplace();
    header.initiatingParty->identification = "12345678";
    header.initiatingParty->initiatingPartyIssuer = KVRInitiatingPartyMERC;
    header.initiatingParty->shortName = "Loja";
    header.recipientParty.emplace();
    header.trace.emplace();
    header.trace->relayIdentification.emplace();
    header.trace->relayIdentification->initiatingPartyType = KVRInitiatingPartyACQR;
    header.trace->traceDateTimeOut = "T2";

    XMLWriter w;
    header.write(w);
    EXPECT_EQ(w.toString(),
              "\n<Hdr>"
              "\n\t<MsgFctn>CCAV</MsgFctn>"
              "\n\t<PrtcolVrsn>2.0</PrtcolVrsn>"
              "\n\t<XchgId></XchgId>"
              "\n\t<CreDtTm>2024-05-01T10:00:00</CreDtTm>"
              "\n\t<InitgPty>\n\t\t<Id>12345678</Id>\n\t\t<Tp>OPOI</Tp>\n\t\t<Issr>MERC</Issr>\n\t\t<ShrtNm>Loja</ShrtNm>\n\t</InitgPty>"
              "\n\t<RcptPty>\n\t\t<Tp>OPOI</Tp>\n\t\t<Issr>OPOI</Issr>\n\t</RcptPty>"
              "\n\t<Tracblt>\n\t\t<RlayId>\n\t\t\t<Tp>ACQR</Tp>\n\t\t\t<Issr>OPOI</Issr>\n\t\t</RlayId>"
              "\n\t\t<TracDtTmOut>T2</TracDtTmOut>\n\t</Tracblt>"
              "\n</Hdr>");

    // What is read back writes the same text again.
    TBXML xml(w.toString());
    KVRHeader read;
    read.read(xml.rootXMLElement()->firstChild);
    XMLWriter again;
    read.write(again);
    EXPECT_EQ(again.toString(), w.toString());
}

TEST(KVRHostAddress, WritesInsideAnUnnamedElementAndReadsTheTextsButNotThePorts) {
    KVRHostAddress written;
    written.primaryAddress = "10.0.0.1";
    written.primaryPortNumber = 443;
    written.userName = "u";
    XMLWriter w;
    written.write(w);
    EXPECT_EQ(w.toString(), "\n<>\n\t<PmryAdr>10.0.0.1</PmryAdr>\n\t<PmryPortNb>443</PmryPortNb>\n\t<UsrNm>u</UsrNm>\n</>");

    TBXML xml("<Adr><PmryAdr>10.0.0.1</PmryAdr><PmryPortNb>443</PmryPortNb><ScndryAdr>10.0.0.2</ScndryAdr>"
              "<ScndryPortNb>8443</ScndryPortNb><UsrNm>user</UsrNm><AccsCd>code</AccsCd><Other>x</Other></Adr>");
    KVRHostAddress address;
    address.read(xml.rootXMLElement()->firstChild);
    EXPECT_EQ(address.primaryAddress, "10.0.0.1");
    EXPECT_EQ(address.secundaryAddress, "10.0.0.2");
    EXPECT_EQ(address.userName, "user");
    EXPECT_EQ(address.accesCode, "code");
    EXPECT_EQ(address.primaryPortNumber, 0);
    EXPECT_EQ(address.secundaryPortNumber, 0);
}

// Every length from empty to twice the inline room: the edges of each width
// of overlapping moves, and the step to the heap. The source is allocated to
// its exact length, so that a sanitized run catches a read past it, and its
// bytes change with the length, so that a byte a copy missed cannot match by
// being left over from the length before.
TEST(KVRText, KeepsEveryLengthWholeThroughCopiesAndMoves) {
    for (size_t size = 0; size <= 2 * KVRText::kInline; ++size) {
        SCOPED_TRACE(size);
        std::unique_ptr<char[]> exact(new char[size]);
        for (size_t i = 0; i < size; ++i) exact[i] = static_cast<char>(' ' + (7 * i + size) % 95);
        const std::string expected(exact.get(), size);

        KVRText text(std::string_view(exact.get(), size));
        EXPECT_EQ(text.view(), expected);

        KVRText copied(text);
        KVRText moved(std::move(copied));
        EXPECT_EQ(moved.view(), expected);
        EXPECT_TRUE(copied.empty());  // NOLINT(bugprone-use-after-move): a moved-from text is empty

        KVRText assigned("earlier");
        assigned = moved;
        EXPECT_EQ(assigned.view(), expected);
        assigned = KVRText("later");
        EXPECT_EQ(assigned.view(), "later");
        EXPECT_EQ(moved.view(), expected);
    }
}

}  // namespace

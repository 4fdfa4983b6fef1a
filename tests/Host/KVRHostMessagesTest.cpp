#include <gtest/gtest.h>

#include "Host/TBXML.h"
#include "Host/XMLWriter.h"
#include "Host/Messages/KVRHeader.h"
#include "Host/Messages/KVRHostAddress.h"

#include <kovra/KVRException.h>

namespace {

std::string headerAtLevelTwo(const KVRHeader& header) {
    XMLWriter w;
    w.writeStartElement("Document");
    w.writeStartElement("AccptrAuthstnReq");
    size_t before = w.toString().size() + 1;  // the start tag left open is closed first
    header.write(w);
    EXPECT_EQ(w.toString()[before - 1], '>');
    return w.toString().substr(before);
}

TEST(KVRHeader, MinimalHeaderAtLevelTwoIsFourLines) {
    KVRHeader header;
    header.messageFunction = KVRMessageFunctionAUTQ;
    header.protocolVersion = "2.0";
    EXPECT_EQ(headerAtLevelTwo(header),
              "\n\t\t<Hdr>\n"
              "\t\t\t<MsgFctn>AUTQ</MsgFctn>\n"
              "\t\t\t<PrtcolVrsn>2.0</PrtcolVrsn>\n"
              "\t\t</Hdr>");
}

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

    TBXML xml(w.toString());
    KVRHeader read;
    read.read(xml.rootXMLElement()->firstChild);
    EXPECT_EQ(read.messageFunction, KVRMessageFunctionCCAV);
    EXPECT_EQ(read.protocolVersion, "2.0");
    EXPECT_EQ(read.exchangeIdentification, "");
    EXPECT_EQ(read.creationDateTime, "2024-05-01T10:00:00");
    ASSERT_TRUE(read.initiatingParty);
    EXPECT_EQ(read.initiatingParty->identification, "12345678");
    EXPECT_EQ(read.initiatingParty->initiatingPartyIssuer, KVRInitiatingPartyMERC);
    EXPECT_EQ(read.initiatingParty->shortName, "Loja");
    ASSERT_TRUE(read.recipientParty);
    EXPECT_EQ(read.recipientParty->identification, std::nullopt);
    ASSERT_TRUE(read.trace && read.trace->relayIdentification);
    EXPECT_EQ(read.trace->relayIdentification->initiatingPartyType, KVRInitiatingPartyACQR);
    EXPECT_EQ(read.trace->traceDateTimeIn, std::nullopt);
    EXPECT_EQ(read.trace->traceDateTimeOut, "T2");
}

TEST(KVRHeader, ReadingIsLenient) {
    TBXML xml("<Hdr><Unknown>1</Unknown><msgfctn>CCAV</msgfctn><MsgFctn>RJCT</MsgFctn>"
              "<InitgPty><Tp>acqr</Tp><Issr>ITAG</Issr></InitgPty></Hdr>");
    KVRHeader header;
    header.messageFunction = KVRMessageFunctionCCAK;
    header.read(xml.rootXMLElement()->firstChild);
    EXPECT_EQ(header.messageFunction, KVRMessageFunctionAUTQ);
    EXPECT_EQ(header.protocolVersion, std::nullopt);
    EXPECT_FALSE(header.recipientParty);
    ASSERT_TRUE(header.initiatingParty);
    EXPECT_EQ(header.initiatingParty->initiatingPartyType, KVRInitiatingPartyOPOI);
    EXPECT_EQ(header.initiatingParty->initiatingPartyIssuer, KVRInitiatingPartyITAG);

    KVRHeader untouched;
    untouched.read(nullptr);
    EXPECT_FALSE(untouched.initiatingParty);
}

TEST(KVRHeader, OutOfRangeCodeAbandonsTheMessage) {
    KVRHeader header;
    header.messageFunction = static_cast<KVRMessageFunction>(21);
    XMLWriter w;
    EXPECT_THROW(header.write(w), KVRException);
}

TEST(KVRHostAddress, WritesInsideAnUnnamedElement) {
    KVRHostAddress address;
    address.primaryAddress = "10.0.0.1";
    address.primaryPortNumber = 443;
    address.userName = "u";
    XMLWriter w;
    address.write(w);
    EXPECT_EQ(w.toString(), "\n<>\n\t<PmryAdr>10.0.0.1</PmryAdr>\n\t<PmryPortNb>443</PmryPortNb>\n\t<UsrNm>u</UsrNm>\n</>");
}

TEST(KVRHostAddress, ReadTakesTheTextsButNotThePorts) {
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

}  // namespace

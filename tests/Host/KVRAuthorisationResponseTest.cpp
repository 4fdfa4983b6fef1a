#include <gtest/gtest.h>

#include "Host/Messages/KVRAcceptorAuthorisationResponse.h"
#include "Host/Messages/KVRAcceptorCancellationAdviceResponse.h"
#include "Host/Messages/KVRElementReading.h"

#include <memory>
#include <optional>
#include <string>
#include <thread>

namespace {

const char* kHeader =
    "<Hdr><MsgFctn>AUTP</MsgFctn><PrtcolVrsn>2.0</PrtcolVrsn><XchgId>77</XchgId>"
    "<InitgPty><Id>ACQ1</Id><Tp>ACQR</Tp></InitgPty></Hdr>";

const char* kEnvironment =
    "<Envt><MrchntId><Id>12345678</Id><Tp>OPOI</Tp><Issr>MERC</Issr></MrchntId>"
    "<POIId><Id>POI-7</Id></POIId></Envt>";

const char* kTransaction =
    "<Tx><TxId><TxDtTm>2024-05-17T14:32:05</TxDtTm><TxRef>1B4E28BA2FA111D2883F0016D3CCA427</TxRef></TxId>"
    "<RcptTxId>000123456789</RcptTxId>"
    "<TxDtls><Ccy>986</Ccy><TtlAmt>1500</TtlAmt><AcctTp>CRDT</AcctTp><VldtyDt>2024-05-18</VldtyDt>"
    "<DtldAmt><AmtTp>FEES</AmtTp><Val>12</Val><Labl>Tarifa</Labl></DtldAmt>"
    "<ICCRltdData>910A1122334455667788990A8A023030</ICCRltdData></TxDtls></Tx>";

const char* kTransactionResponse =
    "<TxRspn><AuthstnRslt><RspnToAuthstn><Rspn>APPR</Rspn><RspnRsn>00</RspnRsn></RspnToAuthstn>"
    "<AuthstnCd>123456</AuthstnCd><CmpltnReqrd>false</CmpltnReqrd></AuthstnRslt>"
    "<Actn><ActnTp>DISP</ActnTp><MsgToPres><MsgDstn>MDSP</MsgDstn><MsgCntt>Aprovada &amp; ok</MsgCntt></MsgToPres>"
    "</Actn></TxRspn>";

std::string document(const std::string& message) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Document xmlns=\"urn:AcceptorAuthorisationResponseV02.1\">" +
           message + "</Document>";
}

KVRAcceptorAuthorisationResponse read(const std::string& body) {
    KVRAcceptorAuthorisationResponse response;
    response.read(body);
    return response;
}

// What the sale takes from an approval.
void expectApproved(const KVRAcceptorAuthorisationResponse& response) {
    ASSERT_TRUE(response.data && response.data->header && response.data->header->initiatingParty);
    EXPECT_EQ(response.data->header->messageFunction, KVRMessageFunctionAUTP);
    EXPECT_EQ(response.data->header->initiatingParty->initiatingPartyType, KVRInitiatingPartyACQR);
    const auto& authorisation = response.data->authorisationResponse;
    ASSERT_TRUE(authorisation && authorisation->environment && authorisation->environment->merchantIdentification);
    EXPECT_EQ(authorisation->environment->merchantIdentification->identification, "12345678");
    ASSERT_TRUE(authorisation->transaction && authorisation->transaction->transactionId &&
                authorisation->transaction->transactionDetails);
    const auto& tx = *authorisation->transaction;
    EXPECT_EQ(tx.recipientTransactionId, "000123456789");
    EXPECT_EQ(tx.transactionId->transactionReference, "1B4E28BA2FA111D2883F0016D3CCA427");
    EXPECT_EQ(tx.transactionDetails->iccRelatedData, "910A1122334455667788990A8A023030");
    EXPECT_EQ(tx.transactionDetails->accountType, KVRAccountTypeCRDT);
    ASSERT_TRUE(tx.transactionDetails->detailedAmount);
    EXPECT_EQ(tx.transactionDetails->detailedAmount->amountType, KVRAmountTypeFEES);
    ASSERT_TRUE(authorisation->transactionResponse && authorisation->transactionResponse->authorisationResult);
    const auto& result = *authorisation->transactionResponse->authorisationResult;
    EXPECT_EQ(result.authorisationCode, "123456");
    ASSERT_TRUE(result.responseToAuthorisation);
    EXPECT_EQ(result.responseToAuthorisation->responseCode, KVRResponseCodeAPPR);
    const auto& action = authorisation->transactionResponse->action;
    ASSERT_TRUE(action && action->messageToPresent);
    EXPECT_EQ(action->actionType, KVRActionTypeDISP);
    EXPECT_EQ(action->messageToPresent->messageContent, "Aprovada &amp; ok") << "texts are taken undecoded";
}

TEST(KVRAcceptorAuthorisationResponse, ApprovalIsReadWhateverTheOrderOfTheChildren) {
    const std::string body = std::string("<AuthstnRspn>") + kEnvironment + kTransaction + kTransactionResponse +
                             "</AuthstnRspn>";
    const std::string shuffledBody = std::string("<AuthstnRspn>") + kTransactionResponse + "<Unknown><Rspn>DECL</Rspn></Unknown>" +
                                     kTransaction + kEnvironment + "</AuthstnRspn>";
    const std::pair<const char*, std::string> cases[] = {
        {"header after the body", document("<AccptrAuthstnRspn>" + body + kHeader + "</AccptrAuthstnRspn>")},
        {"header before the body", document(std::string("<AccptrAuthstnRspn>") + kHeader + body + "</AccptrAuthstnRspn>")},
        {"shuffled children, unknown ones", document("<AccptrAuthstnRspn>" + shuffledBody + kHeader + "</AccptrAuthstnRspn>")},
        {"indented with comments", document("\n\t<!-- reply -->\n\t<AccptrAuthstnRspn>\n\t\t" + body + "\n\t\t" + kHeader +
                                            "\n\t</AccptrAuthstnRspn>\n")},
        {"malformed before the result, end cut off", std::string("<Document><AccptrAuthstnRspn>") + kHeader +
                                                         "<AuthstnRspn>" + kEnvironment + kTransaction +
                                                         "<Note lang=pt>x</Nt>" + kTransactionResponse},
    };
    for (const auto& [name, text] : cases) {
        SCOPED_TRACE(name);
        expectApproved(read(text));
    }
}

TEST(KVRAcceptorAuthorisationResponse, MissingElementsLeaveTheirFieldsEmpty) {
    auto response = read(document(
        "<AccptrAuthstnRspn><AuthstnRspn><Tx><TxDtls><Ccy>986</Ccy></TxDtls></Tx>"
        "<TxRspn><AuthstnRslt><AuthstnCd></AuthstnCd></AuthstnRslt></TxRspn></AuthstnRspn></AccptrAuthstnRspn>"));
    ASSERT_TRUE(response.data && response.data->authorisationResponse);
    const auto& authorisation = *response.data->authorisationResponse;
    EXPECT_FALSE(response.data->header || authorisation.environment);
    ASSERT_TRUE(authorisation.transaction && authorisation.transaction->transactionDetails);
    EXPECT_FALSE(authorisation.transaction->recipientTransactionId || authorisation.transaction->transactionId);
    EXPECT_EQ(authorisation.transaction->transactionDetails->iccRelatedData, std::nullopt);
    EXPECT_EQ(authorisation.transaction->transactionDetails->accountType, KVRAccountTypeDFLT);
    ASSERT_TRUE(authorisation.transactionResponse && authorisation.transactionResponse->authorisationResult);
    EXPECT_EQ(authorisation.transactionResponse->authorisationResult->authorisationCode, "");
    EXPECT_FALSE(authorisation.transactionResponse->authorisationResult->responseToAuthorisation);
}

// Reading again replaces the previous reply, so a foreign body leaves no
// stale approval behind.
TEST(KVRAcceptorAuthorisationResponse, AnythingButAnAuthorisationResponseGivesNoData) {
    const std::pair<const char*, std::string> cases[] = {
        {"rejection", document("<AccptrRjctn><Hdr><MsgFctn>RJCT</MsgFctn></Hdr><Rjct><RjctRsn>UNPR</RjctRsn>"
                               "<AddtlInf>AccptrAuthstnRspn</AddtlInf></Rjct></AccptrRjctn>")},
        {"cancellation response", document("<AccptrCxlAdvcRspn><CxlAdvcRspn/></AccptrCxlAdvcRspn>")},
        {"empty", ""},
        {"wrong case", document("<accptrAuthstnRspn><AuthstnRspn/></accptrAuthstnRspn>")},
    };
    for (const auto& [name, text] : cases) {
        SCOPED_TRACE(name);
        KVRAcceptorAuthorisationResponse response;
        response.read(document("<AccptrAuthstnRspn><AuthstnRspn/></AccptrAuthstnRspn>"));
        ASSERT_TRUE(response.data);
        response.read(text);
        EXPECT_FALSE(response.data);
    }
}

// Element objects made while a reply is read (those held by shared_ptr, as
// the configuration update's are) share their memory: a part kept alone
// must outlive the rest of its reply, whichever thread drops the last of it.
struct Part {
    std::optional<std::string> text;
    std::shared_ptr<Part> child;
    void read(const TBXMLElement* firstChild) {
        for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
            if (KVRElementReading::named(e, "T")) text = KVRElementReading::text(e);
            else if (KVRElementReading::named(e, "C")) child = KVRElementReading::nested<Part>(e);
        }
    }
};

TEST(KVRReadingArena, APartOfAReplyOutlivesTheRest) {
    auto whole = KVRElementReading::descendTo<Part>("<R><T>top</T><C><T>kept</T><C><T>dropped</T></C></C></R>", "R");
    ASSERT_TRUE(whole && whole->child && whole->child->child);
    auto kept = whole->child;
    auto dropped = kept->child;
    whole.reset();
    std::thread([&dropped] { dropped.reset(); }).join();
    EXPECT_EQ(kept->text, "kept");
    EXPECT_FALSE(dropped);
}

KVRAcceptorCancellationAdviceResponse readCancellation(const std::string& body) {
    KVRAcceptorCancellationAdviceResponse response;
    response.read(body);
    return response;
}

TEST(KVRAcceptorCancellationAdviceResponse, ReadsTheOutcomeAndAMissingOneIsADecline) {
    auto response = readCancellation(
        "<?xml version=\"1.0\"?><Document xmlns=\"urn:AcceptorCancellationAdviceResponseV02.1\"><AccptrCxlAdvcRspn>"
        "<Hdr><MsgFctn>CCAK</MsgFctn><PrtcolVrsn>2.0</PrtcolVrsn></Hdr>"
        "<CxlAdvcRspn><Envt><Mrchnt><Id>12345678</Id><Tp>MERC</Tp></Mrchnt></Envt>"
        "<Tx><TxId><TxRef>REF1</TxRef><TxDtTm>2024-05-17T14:40:00</TxDtTm></TxId><Rspn>APPR</Rspn></Tx>"
        "</CxlAdvcRspn></AccptrCxlAdvcRspn></Document>");
    ASSERT_TRUE(response.data && response.data->header);
    EXPECT_EQ(response.data->header->messageFunction, KVRMessageFunctionCCAK);
    const auto& body = response.data->cancellationAdviceResponse;
    ASSERT_TRUE(body && body->enviroment && body->enviroment->merchant);
    EXPECT_EQ(body->enviroment->merchant->identification, "12345678");
    EXPECT_EQ(body->enviroment->merchant->initiatingPartyType, KVRInitiatingPartyMERC);
    ASSERT_TRUE(body->transaction && body->transaction->transactionId);
    EXPECT_EQ(body->transaction->cancellationResponse, KVRResponseCodeAPPR);
    EXPECT_EQ(body->transaction->transactionId->transactionReference, "REF1");
    EXPECT_EQ(body->transaction->transactionId->transactionDateTime, "2024-05-17T14:40:00");

    auto noCode = readCancellation("<Document><AccptrCxlAdvcRspn><CxlAdvcRspn><Tx/></CxlAdvcRspn></AccptrCxlAdvcRspn></Document>");
    ASSERT_TRUE(noCode.data && noCode.data->cancellationAdviceResponse &&
                noCode.data->cancellationAdviceResponse->transaction);
    EXPECT_EQ(noCode.data->cancellationAdviceResponse->transaction->cancellationResponse, KVRResponseCodeDECL);
    EXPECT_FALSE(noCode.data->cancellationAdviceResponse->transaction->transactionId);
    EXPECT_FALSE(noCode.data->header);

    for (const char* foreign : {"", "<Document><AccptrAuthstnRspn/></Document>"}) {
        SCOPED_TRACE(foreign);
        EXPECT_FALSE(readCancellation(foreign).data);
    }
}

}  // namespace

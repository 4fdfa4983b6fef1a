#include <gtest/gtest.h>

#include "Host/Messages/KVRAcceptorAuthorisationResponse.h"
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

void expectApproved(const KVRAcceptorAuthorisationResponse& response) {
    ASSERT_TRUE(response.data);
    ASSERT_TRUE(response.data->header);
    EXPECT_EQ(response.data->header->messageFunction, KVRMessageFunctionAUTP);
    EXPECT_EQ(response.data->header->exchangeIdentification, "77");
    ASSERT_TRUE(response.data->header->initiatingParty);
    EXPECT_EQ(response.data->header->initiatingParty->initiatingPartyType, KVRInitiatingPartyACQR);

    const auto& authorisation = response.data->authorisationResponse;
    ASSERT_TRUE(authorisation);
    ASSERT_TRUE(authorisation->environment && authorisation->environment->merchantIdentification &&
                authorisation->environment->poiIdentification);
    EXPECT_EQ(authorisation->environment->merchantIdentification->identification, "12345678");
    EXPECT_EQ(authorisation->environment->merchantIdentification->initiatingPartyIssuer, KVRInitiatingPartyMERC);
    EXPECT_EQ(authorisation->environment->poiIdentification->identification, "POI-7");

    ASSERT_TRUE(authorisation->transaction);
    const auto& tx = *authorisation->transaction;
    EXPECT_EQ(tx.recipientTransactionId, "000123456789");
    ASSERT_TRUE(tx.transactionId);
    EXPECT_EQ(tx.transactionId->transactionReference, "1B4E28BA2FA111D2883F0016D3CCA427");
    EXPECT_EQ(tx.transactionId->transactionDateTime, "2024-05-17T14:32:05");
    ASSERT_TRUE(tx.transactionDetails);
    EXPECT_EQ(tx.transactionDetails->iccRelatedData, "910A1122334455667788990A8A023030");
    EXPECT_EQ(tx.transactionDetails->accountType, KVRAccountTypeCRDT);
    EXPECT_EQ(tx.transactionDetails->currency, "986");
    EXPECT_EQ(tx.transactionDetails->totalAmount, "1500");
    EXPECT_EQ(tx.transactionDetails->validityDate, "2024-05-18");
    ASSERT_TRUE(tx.transactionDetails->detailedAmount);
    EXPECT_EQ(tx.transactionDetails->detailedAmount->amountType, KVRAmountTypeFEES);
    EXPECT_EQ(tx.transactionDetails->detailedAmount->value, "12");
    EXPECT_EQ(tx.transactionDetails->detailedAmount->label, "Tarifa");

    ASSERT_TRUE(authorisation->transactionResponse && authorisation->transactionResponse->authorisationResult);
    const auto& result = *authorisation->transactionResponse->authorisationResult;
    EXPECT_EQ(result.authorisationCode, "123456");
    EXPECT_EQ(result.completionRequired, "false");
    ASSERT_TRUE(result.responseToAuthorisation);
    EXPECT_EQ(result.responseToAuthorisation->responseCode, KVRResponseCodeAPPR);
    EXPECT_EQ(result.responseToAuthorisation->responseReason, "00");
    const auto& action = authorisation->transactionResponse->action;
    ASSERT_TRUE(action && action->messageToPresent);
    EXPECT_EQ(action->actionType, KVRActionTypeDISP);
    EXPECT_EQ(action->messageToPresent->messageDestination, KVRUserInterfaceMDSP);
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

TEST(KVRAcceptorAuthorisationResponse, ResponseCodesAndUnknownCodesAsDecline) {
    const std::pair<const char*, KVRResponseCode> rows[] = {{"DECL", KVRResponseCodeDECL}, {"APPR", KVRResponseCodeAPPR},
                                                            {"PART", KVRResponseCodePART}, {"TECH", KVRResponseCodeTECH},
                                                            {"appr", KVRResponseCodeDECL}, {"OK", KVRResponseCodeDECL},
                                                            {"APP", KVRResponseCodeDECL}, {"APPROVED", KVRResponseCodeDECL},
                                                            {"", KVRResponseCodeDECL}};
    for (const auto& [code, value] : rows) {
        SCOPED_TRACE(code);
        auto response = read(document(std::string("<AccptrAuthstnRspn><AuthstnRspn><TxRspn><AuthstnRslt><RspnToAuthstn><Rspn>") +
                                      code + "</Rspn></RspnToAuthstn></AuthstnRslt></TxRspn></AuthstnRspn></AccptrAuthstnRspn>"));
        ASSERT_TRUE(response.data && response.data->authorisationResponse &&
                    response.data->authorisationResponse->transactionResponse &&
                    response.data->authorisationResponse->transactionResponse->authorisationResult &&
                    response.data->authorisationResponse->transactionResponse->authorisationResult->responseToAuthorisation);
        EXPECT_EQ(response.data->authorisationResponse->transactionResponse->authorisationResult->responseToAuthorisation
                      ->responseCode,
                  value);
    }
}

TEST(KVRAcceptorAuthorisationResponse, MissingElementsLeaveTheirFieldsEmpty) {
    auto response = read(document(
        "<AccptrAuthstnRspn><AuthstnRspn><Tx><TxDtls><Ccy>986</Ccy></TxDtls></Tx>"
        "<TxRspn><AuthstnRslt><AuthstnCd></AuthstnCd></AuthstnRslt></TxRspn></AuthstnRspn></AccptrAuthstnRspn>"));
    ASSERT_TRUE(response.data);
    EXPECT_FALSE(response.data->header);
    const auto& authorisation = response.data->authorisationResponse;
    ASSERT_TRUE(authorisation);
    EXPECT_FALSE(authorisation->environment);
    ASSERT_TRUE(authorisation->transaction);
    EXPECT_EQ(authorisation->transaction->recipientTransactionId, std::nullopt);
    EXPECT_FALSE(authorisation->transaction->transactionId);
    ASSERT_TRUE(authorisation->transaction->transactionDetails);
    EXPECT_EQ(authorisation->transaction->transactionDetails->iccRelatedData, std::nullopt);
    EXPECT_EQ(authorisation->transaction->transactionDetails->accountType, KVRAccountTypeDFLT);
    EXPECT_FALSE(authorisation->transaction->transactionDetails->detailedAmount);
    ASSERT_TRUE(authorisation->transactionResponse && authorisation->transactionResponse->authorisationResult);
    EXPECT_FALSE(authorisation->transactionResponse->action);
    EXPECT_EQ(authorisation->transactionResponse->authorisationResult->authorisationCode, "");
    EXPECT_FALSE(authorisation->transactionResponse->authorisationResult->responseToAuthorisation);
}

TEST(KVRAcceptorAuthorisationResponse, AnythingButAnAuthorisationResponseGivesNoData) {
    const std::pair<const char*, std::string> cases[] = {
        {"rejection", document("<AccptrRjctn><Hdr><MsgFctn>RJCT</MsgFctn></Hdr><Rjct><RjctRsn>UNPR</RjctRsn>"
                               "<AddtlInf>AccptrAuthstnRspn</AddtlInf></Rjct></AccptrRjctn>")},
        {"cancellation response", document("<AccptrCxlAdvcRspn><CxlAdvcRspn/></AccptrCxlAdvcRspn>")},
        {"HTML error page", "<html><head><title>502 Bad Gateway</title></head><body><h1>Bad Gateway</h1></body></html>"},
        {"plain text", "Service Unavailable"},
        {"empty", ""},
        {"wrong case", document("<accptrAuthstnRspn><AuthstnRspn/></accptrAuthstnRspn>")},
    };
    for (const auto& [name, text] : cases) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(read(text).data);
    }
}

TEST(KVRAcceptorAuthorisationResponse, ReadingAgainReplacesThePreviousReply) {
    KVRAcceptorAuthorisationResponse response;
    response.read(document("<AccptrAuthstnRspn><AuthstnRspn/></AccptrAuthstnRspn>"));
    ASSERT_TRUE(response.data);
    EXPECT_FALSE(response.data->authorisationResponse->transaction);
    response.read("<html/>");
    EXPECT_FALSE(response.data);
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

}  // namespace

#include <gtest/gtest.h>

#include "Host/KVRHostMessageFixtures.h"
#include "Host/Messages/KVRAcceptorCancellationAdviceBuilder.h"
#include "Host/Messages/KVRAcceptorCancellationAdviceResponse.h"
#include "testing/KVRTemporaryStore.h"
#include "testing/KVRTestFixture.h"

#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRTransactionModel.h>

#include <string>

namespace {

class KVRCancellationAdviceTest : public KVRTestFixture {
protected:
    KVRTemporaryStore store;
    kvrtest::FixedClockAndUuid fixed;
    KVRMerchantModel::Pointer merchant = KVRMerchantModel::create();
    KVRTransactionModel::Pointer transaction = KVRTransactionModel::create();

    void SetUp() override {
        merchant->setSaleAffiliationKey("1234-5678");
        transaction->setMerchant(merchant);
        transaction->setAmount(KVRNumber(1500));
        transaction->setReceiptTransactionKey("000123456789");
        transaction->setInitiatorTransactionKey("5123456789-24100007A1B2108");
        transaction->setReference("1B4E28BA2FA111D2883F0016D3CCA427");
        transaction->setStatus(2);
    }

    std::string write() const {
        return KVRAcceptorCancellationAdviceBuilder::createCancellationFactoryWithTransaction(*transaction)->write();
    }
};

TEST_F(KVRCancellationAdviceTest, AdviceForAnApprovedSaleIsTheExpectedDocument) {
    EXPECT_EQ(write(), kvrtest::testData("cancellation-advice.xml"));
}

TEST_F(KVRCancellationAdviceTest, FractionalAmountAndMissingReceiptKey) {
    transaction->setAmount(KVRNumber(10.5));
    transaction->setReceiptTransactionKey(std::nullopt);
    transaction->setInitiatorTransactionKey("I1");
    transaction->setReference("R&1");
    std::string xml = write();
    EXPECT_NE(xml.find("<TtlAmt>10.5</TtlAmt>"), std::string::npos) << xml;
    EXPECT_NE(xml.find("<OrgnlTx>\n\t\t\t\t\t<InitrTxId>I1</InitrTxId>\n\t\t\t\t</OrgnlTx>"), std::string::npos) << xml;
    EXPECT_EQ(xml.find("RcptTxId"), std::string::npos);
    EXPECT_NE(xml.find("<TxRef>R&amp;1</TxRef>"), std::string::npos) << xml;
}

TEST_F(KVRCancellationAdviceTest, MerchantKeyIsEscapedAndWithoutDashes) {
    merchant->setSaleAffiliationKey("-9-8<7>&\"É\"");
    std::string xml = write();
    EXPECT_NE(xml.find("<Id>98&lt;7&gt;&amp;&quot;É&quot;</Id>"), std::string::npos) << xml;
}

KVRAcceptorCancellationAdviceResponse read(const std::string& body) {
    KVRAcceptorCancellationAdviceResponse response;
    response.read(body);
    return response;
}

std::string reply(const std::string& code) {
    return "<?xml version=\"1.0\"?><Document xmlns=\"urn:AcceptorCancellationAdviceResponseV02.1\"><AccptrCxlAdvcRspn>"
           "<Hdr><MsgFctn>CCAK</MsgFctn><PrtcolVrsn>2.0</PrtcolVrsn></Hdr>"
           "<CxlAdvcRspn><Envt><Mrchnt><Id>12345678</Id><Tp>MERC</Tp></Mrchnt></Envt>"
           "<Tx><TxId><TxRef>REF1</TxRef><TxDtTm>2024-05-17T14:40:00</TxDtTm></TxId><Rspn>" +
           code + "</Rspn></Tx></CxlAdvcRspn></AccptrCxlAdvcRspn></Document>";
}

TEST(KVRAcceptorCancellationAdviceResponse, OutcomeCodes) {
    const std::pair<const char*, KVRResponseCode> rows[] = {{"APPR", KVRResponseCodeAPPR}, {"DECL", KVRResponseCodeDECL},
                                                            {"PART", KVRResponseCodePART}, {"TECH", KVRResponseCodeTECH},
                                                            {"VOID", KVRResponseCodeDECL}, {"Appr", KVRResponseCodeDECL}};
    for (const auto& [code, value] : rows) {
        SCOPED_TRACE(code);
        auto response = read(reply(code));
        ASSERT_TRUE(response.data && response.data->cancellationAdviceResponse &&
                    response.data->cancellationAdviceResponse->transaction);
        EXPECT_EQ(response.data->cancellationAdviceResponse->transaction->cancellationResponse, value);
    }
}

TEST(KVRAcceptorCancellationAdviceResponse, ReadsHeaderMerchantAndIdentification) {
    auto response = read(reply("APPR"));
    ASSERT_TRUE(response.data && response.data->header);
    EXPECT_EQ(response.data->header->messageFunction, KVRMessageFunctionCCAK);
    const auto& body = response.data->cancellationAdviceResponse;
    ASSERT_TRUE(body && body->enviroment && body->enviroment->merchant);
    EXPECT_EQ(body->enviroment->merchant->identification, "12345678");
    EXPECT_EQ(body->enviroment->merchant->initiatingPartyType, KVRInitiatingPartyMERC);
    ASSERT_TRUE(body->transaction && body->transaction->transactionId);
    EXPECT_EQ(body->transaction->transactionId->transactionReference, "REF1");
    EXPECT_EQ(body->transaction->transactionId->transactionDateTime, "2024-05-17T14:40:00");
}

TEST(KVRAcceptorCancellationAdviceResponse, MissingOutcomeIsADeclineAndForeignBodiesGiveNoData) {
    auto noCode = read("<Document><AccptrCxlAdvcRspn><CxlAdvcRspn><Tx/></CxlAdvcRspn></AccptrCxlAdvcRspn></Document>");
    ASSERT_TRUE(noCode.data && noCode.data->cancellationAdviceResponse &&
                noCode.data->cancellationAdviceResponse->transaction);
    EXPECT_EQ(noCode.data->cancellationAdviceResponse->transaction->cancellationResponse, KVRResponseCodeDECL);
    EXPECT_FALSE(noCode.data->cancellationAdviceResponse->transaction->transactionId);
    EXPECT_FALSE(noCode.data->header);

    for (const char* body : {"<html><body>500 Internal Server Error</body></html>", "", "not xml at all",
                             "<Document><AccptrAuthstnRspn/></Document>"}) {
        SCOPED_TRACE(body);
        EXPECT_FALSE(read(body).data);
    }
}

}  // namespace

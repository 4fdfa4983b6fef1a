#include <gtest/gtest.h>

#include "Host/Messages/KVRAuthorisationRequestData.h"
#include "Host/Messages/KVRAcceptorCancellationAdviceBuilder.h"
#include "Host/Messages/KVRAuthorisationRequestFactory.h"
#include "Host/XMLWriter.h"
#include "Host/KVRHostMessageFixtures.h"
#include "Pinpad/Commands/KVRGcrCommandResponse.h"
#include "Pinpad/Commands/KVRGocCommandResponse.h"
#include "Pinpad/Commands/KVRGpnCommandResponse.h"
#include "testing/KVRPinpadReplies.h"
#include "testing/KVRTemporaryStore.h"
#include "testing/KVRTestFixture.h"

#include <kovra/KVRException.h>
#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRTransactionModel.h>

#include <functional>
#include <optional>
#include <string>

namespace {

using Card = KVRPinpadReplies::CardRead;

const std::string kEmv = "9F260811223344556677889F2701809F360200129505000000800082025800";

std::string between(const std::string& text, const std::string& open, const std::string& close = "</") {
    size_t start = text.find(open);
    if (start == std::string::npos) return "<absent>";
    start += open.size();
    return text.substr(start, text.find(close, start) - start);
}

std::string reasonOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const KVRException& e) {
        return e.reason();
    }
    return "<no exception>";
}

// The requests to the acquirer, built from a sale and the PIN pad's replies.
class KVRHostRequestTest : public KVRTestFixture {
protected:
    KVRTemporaryStore store;
    kvrtest::FixedClockAndUuid fixed;
    KVRMerchantModel::Pointer merchant = KVRMerchantModel::create();
    KVRTransactionModel::Pointer transaction = KVRTransactionModel::create();

    void SetUp() override {
        merchant->setSaleAffiliationKey("1234-5678");
        merchant->setMerchantName("Padaria Kovra Ltda");
        transaction->setMerchant(merchant);
        transaction->setAmount(KVRNumber(1500));
        transaction->setInitiatorTransactionKey("5123456789-24100007A1B2108");
    }

    static Card chipCard(int appType = 1) {
        Card card;
        card.applicationType = appType;
        card.secondTrack = "4761739001010119=27122011143804489";
        card.expiration = "271231";
        return card;
    }

    std::string write(const Card& card, const std::optional<std::string>& gocText = std::nullopt,
                      const std::optional<std::string>& gpnText = std::nullopt) {
        KVRGcrCommandResponse gcr(KVRPinpadReplies::gcrReply(0, card).c_str());
        std::optional<KVRGocCommandResponse> goc;
        std::optional<KVRGpnCommandResponse> gpn;
        if (gocText) goc.emplace(gocText->c_str());
        if (gpnText) gpn.emplace(gpnText->c_str());
        return KVRAuthorisationRequestFactory::createAcceptorAutorisationrequestWithTrasansaction(
                   *transaction, gcr, goc ? &*goc : nullptr, gpn ? &*gpn : nullptr)
            ->write();
    }

    std::string cancellation() const {
        return KVRAcceptorCancellationAdviceBuilder::createCancellationFactoryWithTransaction(*transaction)->write();
    }
};

TEST_F(KVRHostRequestTest, ChipSaleWithOnLinePinIsTheExpectedDocument) {
    transaction->setShortName("Padaria Kovra");
    transaction->setInstalmentAmount(3);
    transaction->setInstalmentType(1);
    std::string xml = write(chipCard(), KVRPinpadReplies::gocReply(0, 2, "8A3C1F0B9D2E4F67", "FFFF9876543210E00001", kEmv));
    EXPECT_EQ(xml, KVRFiles::testData("authorisation-request-chip-online-pin.xml"));
}

TEST_F(KVRHostRequestTest, StripeSaleWithAllZeroPinIsTheExpectedDocument) {
    merchant->setSaleAffiliationKey("0987-6543-21");
    transaction->setType(1);
    transaction->setCapture(1);
    transaction->setAmount(KVRNumber(2599));
    transaction->setInitiatorTransactionKey("5123456789-24100008A1B2108");
    Card card;
    card.cardType = 0;
    card.applicationType = 0;
    card.firstTrack = "B5162920000000010^SILVA/MARIA^25122011000000000000";
    card.secondTrack = "5162920000000010=2512201100000000";
    card.expiration = "000000";
    std::string xml = write(card, std::nullopt, KVRPinpadReplies::gpnReply(0, std::string(16, '0'), std::string(20, '0')));
    EXPECT_EQ(xml, KVRFiles::testData("authorisation-request-stripe-offline-pin.xml"));
}

TEST_F(KVRHostRequestTest, CancellationOfAnApprovedSaleIsTheExpectedDocument) {
    transaction->setReceiptTransactionKey("000123456789");
    transaction->setReference("1B4E28BA2FA111D2883F0016D3CCA427");
    transaction->setStatus(2);
    EXPECT_EQ(cancellation(), KVRFiles::testData("cancellation-advice.xml"));

    // Without the acquirer's key only ours identifies the sale.
    transaction->setAmount(KVRNumber(10.5));
    transaction->setReceiptTransactionKey(std::nullopt);
    std::string xml = cancellation();
    EXPECT_EQ(between(xml, "<TtlAmt>"), "10.5");
    EXPECT_EQ(between(xml, "<OrgnlTx>", "</OrgnlTx>"),
              "\n\t\t\t\t\t<InitrTxId>5123456789-24100007A1B2108</InitrTxId>\n\t\t\t\t");
}

TEST_F(KVRHostRequestTest, PinEntryRepliesWinOverChipProcessing) {
    std::string goc = KVRPinpadReplies::gocReply(0, 2, "1111222233334444", "FFFF9876543210E00001", kEmv);

    std::string both = write(chipCard(), goc, KVRPinpadReplies::gpnReply(0, "AAAABBBBCCCCDDDD", "EEEE0123456789A00002"));
    EXPECT_EQ(between(both, "<NcrptdData>"), "AAAABBBBCCCCDDDD");
    EXPECT_EQ(between(both, "<DerivtnId>"), "EEEE012345");
    EXPECT_EQ(between(both, "<NcrptdKey>"), "6789A00002");
    EXPECT_EQ(between(both, "<ICCRltdData>"), kEmv) << "the chip data still comes from the chip processing";

    // An all-zero PIN entry replaces the chip processing's PIN too.
    std::string zeros = write(chipCard(), goc, KVRPinpadReplies::gpnReply(0, std::string(16, '0'), std::string(20, '0')));
    EXPECT_EQ(between(zeros, "<AuthntcnMtd>"), "FPIN");
    EXPECT_EQ(zeros.find("CrdhldrOnLinePIN"), std::string::npos);

    std::string none = write(chipCard());
    EXPECT_EQ(between(none, "<AuthntcnMtd>"), "FPIN");
    EXPECT_EQ(none.find("<ICCRltdData>"), std::string::npos);
}

TEST_F(KVRHostRequestTest, OnlyNonEmptyTracksAreSentNumberedByOrigin) {
    Card card = chipCard();
    card.firstTrack = "B4761739001010119^CLIENTE/TESTE^27122011000000000000";
    card.secondTrack = "";
    card.thirdTrack = "0147617390010101190=000000000000000000000027120000000000000";
    std::string xml = write(card);
    EXPECT_NE(xml.find("<TrckNb>1</TrckNb>\n\t\t\t\t\t\t\t<TrckVal>" + card.firstTrack + "</TrckVal>"), std::string::npos);
    EXPECT_NE(xml.find("<TrckNb>3</TrckNb>\n\t\t\t\t\t\t\t<TrckVal>" + card.thirdTrack + "</TrckVal>"), std::string::npos);
    EXPECT_EQ(xml.find("<TrckNb>2</TrckNb>"), std::string::npos);
    EXPECT_EQ(between(xml, "<PAN>"), "") << "no second track, no PAN";
}

TEST_F(KVRHostRequestTest, AccountTypeFollowsTheCardApplicationOrElseTheSaleTypeAndCaptureZeroCaptures) {
    struct Row {
        int appType, saleType, capture;
        const char *account, *captured;
    };
    const Row rows[] = {{0, 0, 0, "CRDT", "true"}, {0, 1, 1, "CHCK", "false"}, {1, 1, 0, "CRDT", "true"},
                        {3, 1, 0, "CRDT", "true"}, {2, 0, 0, "CHCK", "true"},  {4, 0, 0, "CHCK", "true"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << "appType " << row.appType << ", sale type " << row.saleType);
        transaction->setType(row.saleType);
        transaction->setCapture(row.capture);
        std::string xml = write(chipCard(row.appType));
        EXPECT_EQ(between(xml, "<AcctTp>"), row.account);
        EXPECT_EQ(between(xml, "<TxCaptr>"), row.captured);
    }
}

TEST_F(KVRHostRequestTest, SaleWithoutMerchantOrAmountOmitsThoseTexts) {
    transaction->setMerchant(nullptr);
    transaction->setAmount(std::nullopt);
    transaction->setInitiatorTransactionKey(std::nullopt);
    std::string xml = write(chipCard());
    EXPECT_NE(xml.find("<Mrchnt>\n\t\t\t\t\t<Id>\n\t\t\t\t\t\t<Tp>OPOI</Tp>"), std::string::npos) << xml;
    EXPECT_EQ(xml.find("<TtlAmt>"), std::string::npos);
    EXPECT_EQ(xml.find("<InitrTxId>"), std::string::npos);
    EXPECT_NE(xml.find("<SaleId></SaleId>"), std::string::npos);

    transaction->setInstalmentType(3);
    EXPECT_EQ(reasonOf([&] { write(chipCard()); }), "Unexpected InstalmentType.");
}

TEST(KVRAuthorisationRequestFactory, CardTypesToEntryModesAndUnknownTypesRaise) {
    const std::pair<int, KVRPoiCardDataReading> rows[] = {{0, KVRPoiCardDataReadingMGST},
                                                          {3, KVRPoiCardDataReadingCICC},
                                                          {5, KVRPoiCardDataReadingCTLS},
                                                          {6, KVRPoiCardDataReadingECTL}};
    for (const auto& [cardType, mode] : rows) EXPECT_EQ(KVRAuthorisationRequestFactory::getCardType(cardType), mode);
    for (int cardType : {-1, 1, 2, 4, 7}) {
        EXPECT_EQ(reasonOf([&] { KVRAuthorisationRequestFactory::getCardType(cardType); }),
                  "CardType desconhecido " + std::to_string(cardType) + ".");
    }
    for (int appType : {0, 5, -2}) {
        EXPECT_EQ(reasonOf([&] { KVRAuthorisationRequestFactory::getAccountType(appType); }),
                  "AccountType desconhecido. " + std::to_string(appType));
    }
}

std::string written(const std::function<void(XMLWriter&)>& write) {
    XMLWriter writer;
    write(writer);
    return writer.toString();
}

TEST(KVRAuthorisationRequestFactory, PinIsOnLineWhenBlockOrKeySerialHoldsMoreThanZeros) {
    struct Row {
        std::optional<std::string> pinBlock, keySerialNumber;
        KVRAuthenticationMethod method;
    };
    const Row rows[] = {{"0000000000000000", "00000000000000000000", KVRAuthenticationMethodFPIN},
                        {"", "", KVRAuthenticationMethodFPIN},
                        {std::nullopt, std::nullopt, KVRAuthenticationMethodFPIN},
                        {"0000000000000001", "00000000000000000000", KVRAuthenticationMethodNPIN},
                        {"0000000000000000", "00000000000000000010", KVRAuthenticationMethodNPIN},
                        {std::nullopt, "FFFF9876543210E00001", KVRAuthenticationMethodNPIN}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.pinBlock.value_or("<null>") + " / " + row.keySerialNumber.value_or("<null>"));
        auto data = KVRAuthorisationRequestFactory::createCardholderIdentificationData(row.pinBlock, row.keySerialNumber);
        ASSERT_TRUE(data->authentication);
        EXPECT_EQ(data->authentication->authenticationMethod, row.method);
        EXPECT_EQ(data->authentication->cardholderOnLinePin != nullptr, row.method == KVRAuthenticationMethodNPIN);
        EXPECT_EQ(written([&](XMLWriter& w) { data->write(w); }).find("<CrdhldrIdVal>"), std::string::npos);
    }
    // Without a key serial number the key identification stays empty.
    auto block = KVRAuthorisationRequestFactory::createEncryptedPinBlockData("8A3C1F0B9D2E4F67", std::nullopt);
    std::string xml = written([&](XMLWriter& w) { block->write(w); });
    EXPECT_EQ(xml.find("<NcrptdKey>"), std::string::npos);
    EXPECT_NE(xml.find("<KEKId />"), std::string::npos);
}

// Children the factory never fills are still written, each in its place.
TEST(KVRAuthorisationRequestElements, ChildrenTheFactoryLeavesOutAreWrittenInTheirPlaces) {
    KVRCardholderIdentificationData cardholder;
    cardholder.cardholderIdentification = "12345678900";
    cardholder.cardholderIdentificationType = KVRCardholderIdentificationDRLC;
    KVRPlainCardData card;
    card.cardSequenceNumber = "01";
    card.cardSecurityCode = std::make_shared<KVRCardSecurityCodeData>();
    card.cardSecurityCode->cardSecurityCodeValue = "123";
    KVRTransactionDetailsData details;
    details.currency = 986;
    details.product = std::make_shared<KVRProductData>();
    details.product->productCode = "P1";
    details.product->productQuantity = 2;
    KVRTransactionDataRequest tx;
    tx.merchantCategoryCode = "5812";
    tx.additionalTransactionData = "";
    KVRContextData context;
    context.saleContext = std::make_shared<KVRSaleContextData>();
    context.saleContext->saleReferenceNumber = "R9";
    EXPECT_EQ(written([&](XMLWriter& w) {
                  cardholder.write(w);
                  card.write(w);
                  details.write(w);
                  tx.write(w);
                  context.write(w);
              }),
              "\n<Crdhldr>\n\t<CrdhldrIdVal>12345678900</CrdhldrIdVal>\n\t<CrdhldrIdTp>DRLC</CrdhldrIdTp>\n</Crdhldr>"
              "\n<PlainCardData>\n\t<CardSeqNb>01</CardSeqNb>\n\t<CardSctyCd>\n\t\t<CSCVal>123</CSCVal>\n\t</CardSctyCd>"
              "\n</PlainCardData>"
              "\n<TxDtls>\n\t<Ccy>986</Ccy>\n\t<AcctTp>DFLT</AcctTp>\n\t<Pdct>\n\t\t<PdctCd>P1</PdctCd>"
              "\n\t\t<PdctQty>2</PdctQty>\n\t\t<UnitPric>0</UnitPric>\n\t\t<PdctAmt>0</PdctAmt>\n\t</Pdct>\n</TxDtls>"
              "\n<Tx>\n\t<TxCaptr>false</TxCaptr>\n\t<MrchntCtgyCd>5812</MrchntCtgyCd>\n\t<AddtlTxData></AddtlTxData>\n</Tx>"
              "\n<Cntxt>\n\t<SaleRefNb>R9</SaleRefNb>\n</Cntxt>");
}

}  // namespace

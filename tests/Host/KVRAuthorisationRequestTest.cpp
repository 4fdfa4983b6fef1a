#include <gtest/gtest.h>

#include "Host/KVREnumParser.h"
#include "Host/Messages/KVRAuthorisationRequestFactory.h"
#include "Host/XMLWriter.h"
#include "Host/KVRHostMessageFixtures.h"
#include "Pinpad/Commands/KVRGcrCommandResponse.h"
#include "Pinpad/Commands/KVRGocCommandResponse.h"
#include "Pinpad/Commands/KVRGpnCommandResponse.h"
#include "testing/KVRTemporaryStore.h"
#include "testing/KVRTestFixture.h"

#include <kovra/KVRException.h>
#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRTransactionModel.h>

#include <functional>
#include <optional>
#include <string>

namespace {

using kvrtest::GcrReply;

const std::string kChipTrack2 = "4761739001010119=27122011143804489";
const std::string kEmv = "9F260811223344556677889F2701809F360200129505000000800082025800";

std::string between(const std::string& text, const std::string& open, const std::string& close) {
    size_t start = text.find(open);
    if (start == std::string::npos) return "<absent>";
    start += open.size();
    return text.substr(start, text.find(close, start) - start);
}

size_t occurrences(const std::string& text, const std::string& needle) {
    size_t count = 0;
    for (size_t at = text.find(needle); at != std::string::npos; at = text.find(needle, at + 1)) ++count;
    return count;
}

std::string reasonOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const KVRException& e) {
        return e.reason();
    }
    return "<no exception>";
}

class KVRAuthorisationRequestTest : public KVRTestFixture {
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

    static GcrReply chipCard() {
        GcrReply card;
        card.track2 = kChipTrack2;
        return card;
    }

    std::string write(const GcrReply& card, const std::optional<std::string>& gocText = std::nullopt,
                      const std::optional<std::string>& gpnText = std::nullopt) {
        KVRGcrCommandResponse gcr(card.text().c_str());
        std::optional<KVRGocCommandResponse> goc;
        std::optional<KVRGpnCommandResponse> gpn;
        if (gocText) goc.emplace(gocText->c_str());
        if (gpnText) gpn.emplace(gpnText->c_str());
        auto request = KVRAuthorisationRequestFactory::createAcceptorAutorisationrequestWithTrasansaction(
            *transaction, gcr, goc ? &*goc : nullptr, gpn ? &*gpn : nullptr);
        return request->write();
    }
};

TEST_F(KVRAuthorisationRequestTest, ChipSaleWithOnLinePinIsTheExpectedDocument) {
    transaction->setShortName("Padaria Kovra");
    transaction->setInstalmentAmount(3);
    transaction->setInstalmentType(1);
    std::string xml = write(chipCard(), kvrtest::gocReply("8A3C1F0B9D2E4F67", "FFFF9876543210E00001", kEmv));
    EXPECT_EQ(xml, kvrtest::testData("authorisation-request-chip-online-pin.xml"));
}

TEST_F(KVRAuthorisationRequestTest, StripeSaleWithAllZeroPinIsTheExpectedDocument) {
    merchant->setSaleAffiliationKey("0987-6543-21");
    transaction->setType(1);
    transaction->setCapture(1);
    transaction->setAmount(KVRNumber(2599));
    transaction->setInitiatorTransactionKey("5123456789-24100008A1B2108");
    GcrReply card;
    card.cardType = 0;
    card.appType = 0;
    card.track1 = "B5162920000000010^SILVA/MARIA^25122011000000000000";
    card.track2 = "5162920000000010=2512201100000000";
    card.expiration = "000000";
    std::string xml = write(card, std::nullopt, kvrtest::gpnReply(std::string(16, '0'), std::string(20, '0')));
    EXPECT_EQ(xml, kvrtest::testData("authorisation-request-stripe-offline-pin.xml"));
}

TEST_F(KVRAuthorisationRequestTest, PinEntryRepliesWinOverChipProcessing) {
    std::string goc = kvrtest::gocReply("1111222233334444", "FFFF9876543210E00001", kEmv);

    std::string both = write(chipCard(), goc, kvrtest::gpnReply("AAAABBBBCCCCDDDD", "EEEE0123456789A00002"));
    EXPECT_EQ(between(both, "<NcrptdData>", "</"), "AAAABBBBCCCCDDDD");
    EXPECT_EQ(between(both, "<DerivtnId>", "</"), "EEEE012345");
    EXPECT_EQ(between(both, "<NcrptdKey>", "</"), "6789A00002");
    EXPECT_EQ(between(both, "<ICCRltdData>", "</"), kEmv) << "the chip data still comes from the chip processing";

    // An all-zero PIN entry replaces the chip processing's PIN too.
    std::string zeros = write(chipCard(), goc, kvrtest::gpnReply(std::string(16, '0'), std::string(20, '0')));
    EXPECT_EQ(between(zeros, "<AuthntcnMtd>", "</"), "FPIN");
    EXPECT_EQ(occurrences(zeros, "CrdhldrOnLinePIN"), 0u);

    std::string none = write(chipCard());
    EXPECT_EQ(between(none, "<AuthntcnMtd>", "</"), "FPIN");
    EXPECT_EQ(occurrences(none, "<ICCRltdData>"), 0u);
}

TEST_F(KVRAuthorisationRequestTest, OnlyNonEmptyTracksAreSentNumberedByOrigin) {
    GcrReply card = chipCard();
    card.track1 = "B4761739001010119^CLIENTE/TESTE^27122011000000000000";
    card.track2 = "";
    card.track3 = "0147617390010101190=000000000000000000000027120000000000000";
    std::string xml = write(card);
    EXPECT_EQ(occurrences(xml, "<TrckData>"), 2u);
    EXPECT_NE(xml.find("<TrckNb>1</TrckNb>\n\t\t\t\t\t\t\t<TrckVal>" + card.track1 + "</TrckVal>"), std::string::npos);
    EXPECT_NE(xml.find("<TrckNb>3</TrckNb>\n\t\t\t\t\t\t\t<TrckVal>" + card.track3 + "</TrckVal>"), std::string::npos);
    EXPECT_EQ(occurrences(xml, "<TrckNb>2</TrckNb>"), 0u);
    EXPECT_EQ(between(xml, "<PAN>", "</PAN>"), "") << "no second track, no PAN";
}

TEST_F(KVRAuthorisationRequestTest, AccountTypeFollowsTheCardApplicationOrElseTheSaleType) {
    struct Row {
        int appType;
        int saleType;
        const char* code;
    };
    const Row rows[] = {{0, 0, "CRDT"}, {0, 1, "CHCK"}, {1, 1, "CRDT"}, {3, 1, "CRDT"}, {2, 0, "CHCK"}, {4, 0, "CHCK"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << "appType " << row.appType << ", sale type " << row.saleType);
        transaction->setType(row.saleType);
        GcrReply card = chipCard();
        card.appType = row.appType;
        EXPECT_EQ(between(write(card), "<AcctTp>", "</"), row.code);
    }
}

TEST_F(KVRAuthorisationRequestTest, CaptureZeroIsCapturedAndOneIsNot) {
    transaction->setCapture(0);
    EXPECT_EQ(between(write(chipCard()), "<TxCaptr>", "</"), "true");
    transaction->setCapture(1);
    EXPECT_EQ(between(write(chipCard()), "<TxCaptr>", "</"), "false");
}

TEST_F(KVRAuthorisationRequestTest, MerchantTextsAreEscaped) {
    merchant->setSaleAffiliationKey("12-34&5<6>");
    transaction->setShortName("Açaí & \"Cia\" <Sul>");
    std::string xml = write(chipCard());
    EXPECT_NE(xml.find("<Id>1234&amp;5&lt;6&gt;</Id>"), std::string::npos) << xml;
    EXPECT_NE(xml.find("<ShrtNm>Açaí &amp; &quot;Cia&quot; &lt;Sul&gt;</ShrtNm>"), std::string::npos) << xml;
}

TEST_F(KVRAuthorisationRequestTest, ReferenceIsANewUpperCaseUuidWithoutDashes) {
    std::string xml = write(chipCard());
    EXPECT_EQ(between(xml, "<TxRef>", "</"), "1B4E28BA2FA111D2883F0016D3CCA427");

    KVRTestFixture::setUuidGenerator({});
    std::string first = between(write(chipCard()), "<TxRef>", "</");
    std::string second = between(write(chipCard()), "<TxRef>", "</");
    EXPECT_EQ(first.size(), 32u);
    EXPECT_EQ(first.find_first_not_of("0123456789ABCDEF"), std::string::npos) << first;
    EXPECT_NE(first, second);
}

TEST_F(KVRAuthorisationRequestTest, SaleWithoutMerchantOrAmountOmitsThoseTexts) {
    transaction->setMerchant(nullptr);
    transaction->setAmount(std::nullopt);
    transaction->setInitiatorTransactionKey(std::nullopt);
    std::string xml = write(chipCard());
    EXPECT_NE(xml.find("<Mrchnt>\n\t\t\t\t\t<Id>\n\t\t\t\t\t\t<Tp>OPOI</Tp>"), std::string::npos) << xml;
    EXPECT_EQ(occurrences(xml, "<TtlAmt>"), 0u);
    EXPECT_EQ(occurrences(xml, "<InitrTxId>"), 0u);
    EXPECT_EQ(occurrences(xml, "<SaleId></SaleId>"), 1u);
}

TEST_F(KVRAuthorisationRequestTest, UnknownCardOrApplicationTypeRaises) {
    GcrReply card = chipCard();
    card.cardType = 4;
    EXPECT_EQ(reasonOf([&] { write(card); }), "CardType desconhecido 4.");
    card = chipCard();
    card.appType = 5;
    EXPECT_EQ(reasonOf([&] { write(card); }), "AccountType desconhecido. 5");
    transaction->setInstalmentType(3);
    EXPECT_EQ(reasonOf([&] { write(chipCard()); }), "Unexpected InstalmentType.");
}

TEST(KVRAuthorisationRequestFactory, CardTypesToEntryModes) {
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

std::string written(const KVRCardholderIdentificationData& data) {
    XMLWriter writer;
    data.write(writer);
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
        EXPECT_EQ(occurrences(written(*data), "<CrdhldrIdVal>"), 0u);
    }
}

TEST(KVRAuthorisationRequestFactory, KeySerialNumberIsSplitIntoDerivationAndKey) {
    auto block = KVRAuthorisationRequestFactory::createEncryptedPinBlockData("8A3C1F0B9D2E4F67", "FFFF9876543210E00001");
    EXPECT_EQ(block->contentType, KVRContentTypeECRP);
    ASSERT_TRUE(block->envelopedData && block->envelopedData->recipient && block->envelopedData->recipient->kek);
    const auto& kek = *block->envelopedData->recipient->kek;
    EXPECT_EQ(kek.encryptedKey, "3210E00001");
    ASSERT_TRUE(kek.kekId);
    EXPECT_EQ(kek.kekId->derivationIdentification, "FFFF987654");
    ASSERT_TRUE(block->envelopedData->encryptedContent);
    EXPECT_EQ(block->envelopedData->encryptedContent->encryptedData, "8A3C1F0B9D2E4F67");

    auto withoutSerial = KVRAuthorisationRequestFactory::createEncryptedPinBlockData("8A3C1F0B9D2E4F67", std::nullopt);
    XMLWriter writer;
    withoutSerial->write(writer);
    EXPECT_EQ(occurrences(writer.toString(), "<NcrptdKey>"), 0u);
    EXPECT_EQ(occurrences(writer.toString(), "<DerivtnId>"), 0u);
    EXPECT_EQ(occurrences(writer.toString(), "<KEKId />"), 1u);
}

TEST(KVRAuthorisationRequestElements, OptionalChildrenAreWrittenOnlyWhenSet) {
    KVRCardholderIdentificationData cardholder;
    cardholder.cardholderIdentification = "12345678900";
    cardholder.cardholderIdentificationType = KVRCardholderIdentificationDRLC;
    EXPECT_EQ(written(cardholder),
              "\n<Crdhldr>\n\t<CrdhldrIdVal>12345678900</CrdhldrIdVal>\n\t<CrdhldrIdTp>DRLC</CrdhldrIdTp>\n</Crdhldr>");

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

    XMLWriter writer;
    card.write(writer);
    details.write(writer);
    tx.write(writer);
    context.write(writer);
    EXPECT_EQ(writer.toString(),
              "\n<PlainCardData>\n\t<CardSeqNb>01</CardSeqNb>\n\t<CardSctyCd>\n\t\t<CSCVal>123</CSCVal>\n\t</CardSctyCd>"
              "\n</PlainCardData>"
              "\n<TxDtls>\n\t<Ccy>986</Ccy>\n\t<AcctTp>DFLT</AcctTp>\n\t<Pdct>\n\t\t<PdctCd>P1</PdctCd>"
              "\n\t\t<PdctQty>2</PdctQty>\n\t\t<UnitPric>0</UnitPric>\n\t\t<PdctAmt>0</PdctAmt>\n\t</Pdct>\n</TxDtls>"
              "\n<Tx>\n\t<TxCaptr>false</TxCaptr>\n\t<MrchntCtgyCd>5812</MrchntCtgyCd>\n\t<AddtlTxData></AddtlTxData>\n</Tx>"
              "\n<Cntxt>\n\t<SaleRefNb>R9</SaleRefNb>\n</Cntxt>");
}

}  // namespace

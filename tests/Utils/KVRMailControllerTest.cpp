#include <gtest/gtest.h>

#include <kovra/KVRAddressModel.h>
#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRErrors.h>
#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRTransactionModel.h>

#include "Transactions/KVRMailController.h"
#include "testing/KVRFakeExchange.h"
#include "testing/KVRLocalTime.h"
#include "testing/KVRTemporaryStore.h"
#include "testing/KVRTestFixture.h"

namespace {

using json = nlohmann::json;

class MailControllerTest : public KVRTestFixture {
protected:
    void SetUp() override { KVRApplicationInfo::setValue("Kovra Mail Host", std::string("mail.test:8443")); }

    std::shared_ptr<KVRTransactionModel> soldTransaction() {
        auto address = KVRAddressModel::create();
        address->setStreet("Rua Augusta");
        address->setDoorNumber("1500");
        address->setCity("São Paulo");
        address->setZipCode("01304-001");
        auto merchant = KVRMerchantModel::create();
        merchant->setMerchantName("Padaria Kovra");
        merchant->setDocumentNumber("12345678000199");
        merchant->setAddress(address);
        auto transaction = KVRTransactionModel::create();
        transaction->setMerchant(merchant);
        transaction->setCardBrand("Visa");
        transaction->setType(0);
        transaction->setInstalmentAmount(3);
        transaction->setInstalmentType(1);
        transaction->setAmount(KVRNumber(123450LL));
        transaction->setAid("A0000000031010");
        transaction->setArqc("1122334455667788");
        transaction->setAuthorisationCode("123456");
        transaction->setCardHolderName("MARIA DA SILVA");
        transaction->setPan("0010");
        transaction->setDate(kvrtest::localTime(2024, 3, 5, 14, 7));
        return transaction;
    }

    KVRTemporaryStore store_;
    KVRMailController controller_;
};

TEST_F(MailControllerTest, ReceiptsCarryTheTransactionTheMerchantAndTheFlags) {
    auto transaction = soldTransaction();
    json expected = {
        {"card_brand", "Visa - Crédito 3"},
        {"company_name", "Padaria Kovra"},
        {"company_address", "Rua Augusta, 1500, São Paulo, 01304-001"},
        {"company_tax_document_number", "12345678000199"},
        {"transaction_aid", "A0000000031010"},
        {"transaction_arqc", "1122334455667788"},
        {"transaction_kovra_id", "123456"},
        {"client_name", "MARIA DA SILVA"},
        {"client_masked_card_number", "**** **** **** 0010"},
        {"transaction_date", "05/03/2024"},
        {"transaction_time", "14:07"},
        {"transaction_amount", "1234,50"},
        {"display_aid_arqc", "true"},
        {"display_company_information", "true"},
    };
    struct Row {
        const char* templateName;
        const char* subject;
        KVRMailController::Dictionary body;
    } rows[] = {
        {"transaction", "Comprovante de transação",
         controller_.composeTransactionDictionary(*transaction, KVRMailController::kSaleSubject, "ana@example.com",
                                                  true)},
        {"void_transaction", "Comprovante de cancelamento",
         controller_.composeVoidTransactionDictionary(*transaction, KVRMailController::kCancellationSubject,
                                                      "ana@example.com", true)},
    };
    for (const auto& row : rows) {
        json body = json::parse(row.body.dump());
        EXPECT_EQ(body, (json{{"template", row.templateName},
                              {"mail_header", {{"subject", row.subject}, {"to", "ana@example.com"}}},
                              {"body_parameters", expected}}))
            << body.dump(2);
    }
}

TEST_F(MailControllerTest, InstalmentsAmountsAndMissingValues) {
    struct Row {
        int type, instalments;
        KVRNumber amount;
        std::optional<std::string> aid;
        bool company;
        const char *brand, *amountText, *displayAid;
    } rows[] = {
        // Amounts are stored in cents and read in reais.
        {1, 1, KVRNumber(1000LL), std::nullopt, false, "Visa - Débito à vista", "10,00", "false"},
        {0, 0, KVRNumber(10LL), std::string(""), false, "Visa - Crédito à vista", "0,10", "false"},
        {0, 2, KVRNumber(12345LL), std::nullopt, false, "Visa - Crédito 2", "123,45", "false"},
        {0, 12, KVRNumber(100000000005LL), std::string("A0000000041010"), true, "Visa - Crédito 12", "1000000000,05",
         "true"},
    };
    for (const auto& row : rows) {
        auto transaction = soldTransaction();
        transaction->setType(row.type);
        transaction->setInstalmentAmount(row.instalments);
        transaction->setAmount(row.amount);
        transaction->setAid(row.aid);
        auto parameters = controller_.composeTransactionDictionary(*transaction, "s", "t@x.com", row.company)
                              .at("body_parameters");
        EXPECT_EQ(parameters.at("card_brand"), row.brand);
        EXPECT_EQ(parameters.at("transaction_amount"), row.amountText);
        EXPECT_EQ(parameters.at("display_aid_arqc"), row.displayAid);
        EXPECT_EQ(parameters.at("display_company_information"), row.company ? "true" : "false");
    }

    // A sale that never got its card data still gives a body of texts.
    auto bare = KVRTransactionModel::create();
    auto parameters = controller_.composeTransactionDictionary(*bare, "s", "t@x.com", false).at("body_parameters");
    EXPECT_EQ(parameters.size(), 14u);
    for (const auto& item : parameters.items()) EXPECT_TRUE(item.value().is_string()) << item.key();
    EXPECT_EQ(parameters.at("company_name"), "");
    EXPECT_EQ(parameters.at("transaction_date"), "");
    EXPECT_EQ(parameters.at("transaction_time"), "");
    EXPECT_EQ(parameters.at("client_masked_card_number"), "**** **** **** ");
}

TEST_F(MailControllerTest, SendingPostsTheBodyToTheMailHostAndReturnsTheReply) {
    KVRFakeExchange exchange;
    exchange.replyWith(R"({"status":"sent"})");
    auto transaction = soldTransaction();
    std::optional<KVRError> error;
    auto reply = controller_.sendMailCanceledTransaction(*transaction, "ana@example.com", false, &error);
    ASSERT_TRUE(reply) << (error ? error->description() : "");
    EXPECT_EQ(reply->at("status"), "sent");
    auto posts = exchange.requests();
    ASSERT_EQ(posts.size(), 1u);
    EXPECT_EQ(posts[0].url, "https://mail.test:8443/send");
    EXPECT_EQ(posts[0].contentType, "application/json");
    EXPECT_EQ(json::parse(posts[0].body).at("template"), "void_transaction");

    exchange.replyWith("<html>down</html>");
    EXPECT_FALSE(controller_.sendMailDefault("oi", "a@b.c", "s", &error));
    ASSERT_TRUE(error) << "a reply that is not JSON is an error";
    EXPECT_EQ(*error, KVRErrors::emailMessageError());
    EXPECT_FALSE(controller_.sendMailDefault("\xff\xfe", "a@b.c", "s", &error));
    EXPECT_EQ(exchange.requests().size(), 2u) << "a body that is not UTF-8 is not posted";
}

}  // namespace

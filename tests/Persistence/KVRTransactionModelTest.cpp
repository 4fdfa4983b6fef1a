#include <gtest/gtest.h>

#include <kovra/KVRTransactionModel.h>

#include "testing/KVRTemporaryStore.h"
#include "testing/KVRTestFixture.h"

#include <ostream>

namespace {

class KVRTransactionModelTest : public KVRTestFixture {
protected:
    KVRTemporaryStore store;
    KVRTransactionModel::Pointer transaction = KVRTransactionModel::create();
};

TEST_F(KVRTransactionModelTest, StatusTextsByStatus) {
    const std::vector<std::pair<int, std::string>> table = {
        {0, "Desconhecido"}, {1, "Transação Negada"},    {2, "Transação Aprovada"}, {3, "Parcialmente Aprovado"},
        {4, "Erro tecnico"}, {5, "Transação Cancelada"}, {6, "Inválido"},           {7, "Timeout"},
        {8, "Falha"},        {9, "Abortado"},            {10, ""},                  {-1, ""}};
    for (const auto& [status, text] : table) {
        transaction->setStatus(status);
        EXPECT_EQ(transaction->statusString(), text) << "status " << status;
    }
}

TEST_F(KVRTransactionModelTest, TypeTextAndAccountTypeByType) {
    struct Row {
        int type;
        std::string text;
        int accountType;
    };
    for (const auto& row : std::vector<Row>{{0, "Crédito", 3}, {1, "Débito", 2}, {2, "", 2}}) {
        transaction->setType(row.type);
        EXPECT_EQ(transaction->typeString(), row.text) << "type " << row.type;
        EXPECT_EQ(transaction->getAccountType(), row.accountType) << "type " << row.type;
    }
}

// A record without numbers reads as a credit sale of unknown status, and a
// fractional status (as an older store may hold) is cut to its whole part.
TEST_F(KVRTransactionModelTest, MissingAndFractionalNumbers) {
    EXPECT_EQ(transaction->status(), 0);
    EXPECT_EQ(transaction->getAccountType(), 3);
    transaction->setRawStatus(KVRNumber(5.9));
    EXPECT_EQ(transaction->status(), 5);
}

}  // namespace

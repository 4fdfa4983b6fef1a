#include <gtest/gtest.h>

#include <kovra/KVRTransactionModel.h>

#include "testing/KVRTemporaryStore.h"

#include <ctime>
#include <ostream>
#include "testing/KVRLocalTime.h"
#include "testing/KVRTestFixture.h"

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

TEST_F(KVRTransactionModelTest, DateTextIsDayMonthYearDashHourMinuteInLocalTime) {
    EXPECT_EQ(transaction->dateString(), "");
    transaction->setDate(kvrtest::localTime(2024, 3, 5, 14, 7));
    EXPECT_EQ(transaction->dateString(), "05/03/2024 - 14:07");
    transaction->setDate(kvrtest::localTime(1999, 12, 31, 0, 59));
    EXPECT_EQ(transaction->dateString(), "31/12/1999 - 00:59");
}

TEST_F(KVRTransactionModelTest, TypedAccessorsReadAndWriteTheRawNumbers) {
    // A new record has no numbers: the typed values read 0, i.e. a credit
    // sale of unknown status.
    EXPECT_FALSE(transaction->rawStatus().has_value());
    EXPECT_EQ(transaction->status(), 0);
    EXPECT_EQ(transaction->getAccountType(), 3);

    transaction->setStatus(7);
    transaction->setType(1);
    transaction->setInstalmentAmount(12);
    transaction->setInstalmentType(2);
    transaction->setCapture(1);
    EXPECT_EQ(transaction->rawStatus(), KVRNumber(7));
    EXPECT_EQ(transaction->rawType(), KVRNumber(1));
    EXPECT_EQ(transaction->rawInstalmentAmount(), KVRNumber(12));
    EXPECT_EQ(transaction->rawInstalmentType(), KVRNumber(2));
    EXPECT_EQ(transaction->rawCapture(), KVRNumber(1));

    transaction->setRawStatus(KVRNumber(5.9));
    EXPECT_EQ(transaction->status(), 5);
    EXPECT_EQ(transaction->statusString(), "Transação Cancelada");
}

}  // namespace

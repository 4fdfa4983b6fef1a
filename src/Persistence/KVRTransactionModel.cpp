#include <kovra/KVRTransactionModel.h>

#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRPinpadModel.h>

#include "Persistence/KVREntityDescription.h"
#include "Persistence/KVRTransactionStatus.h"
#include "Utils/KVRDateUtil.h"

#include <array>

namespace {

// Indexed by KVRTransactionStatus.
constexpr std::array<const char*, KVRTransactionStatusAborted + 1> kStatusTexts = {
    "Desconhecido", "Transação Negada", "Transação Aprovada", "Parcialmente Aprovado", "Erro tecnico",
    "Transação Cancelada", "Inválido", "Timeout", "Falha", "Abortado"};

constexpr int kCreditType = 0;
constexpr int kDebitType = 1;
constexpr int kCreditAccountType = 3;
constexpr int kOtherAccountType = 2;

int intOf(const std::optional<KVRNumber>& number) { return number ? number->intValue() : 0; }

}  // namespace

const KVREntityDescription& KVRTransactionModel::entity() {
    static const KVREntityDescription description(
        "KVRTransactionModel",
        {{"aid", KVRAttributeType::Text},
         {"arqc", KVRAttributeType::Text},
         {"authorisationCode", KVRAttributeType::Text},
         {"cardHolderName", KVRAttributeType::Text},
         {"cardBrand", KVRAttributeType::Text},
         {"initiatorTransactionKey", KVRAttributeType::Text},
         {"pan", KVRAttributeType::Text},
         {"receiptTransactionKey", KVRAttributeType::Text},
         {"reference", KVRAttributeType::Text},
         {"shortName", KVRAttributeType::Text},
         {"amount", KVRAttributeType::Number},
         {"date", KVRAttributeType::Date},
         {"rawType", KVRAttributeType::Number},
         {"rawInstalmentAmount", KVRAttributeType::Number},
         {"rawInstalmentType", KVRAttributeType::Number},
         {"rawStatus", KVRAttributeType::Number},
         {"rawCapture", KVRAttributeType::Number}},
        {{"merchant", &KVRMerchantModel::entity, "transactions", KVRRelationshipKind::ForeignKey},
         {"pinpad", &KVRPinpadModel::entity, "transaction", KVRRelationshipKind::ForeignKey}},
        [] { return std::shared_ptr<KVRManagedObject>(new KVRTransactionModel()); });
    return description;
}

std::optional<std::string> KVRTransactionModel::aid() const { return textValue("aid"); }
void KVRTransactionModel::setAid(std::optional<std::string> value) { setTextValue("aid", std::move(value)); }
std::optional<std::string> KVRTransactionModel::arqc() const { return textValue("arqc"); }
void KVRTransactionModel::setArqc(std::optional<std::string> value) { setTextValue("arqc", std::move(value)); }
std::optional<std::string> KVRTransactionModel::authorisationCode() const { return textValue("authorisationCode"); }
void KVRTransactionModel::setAuthorisationCode(std::optional<std::string> value) {
    setTextValue("authorisationCode", std::move(value));
}
std::optional<std::string> KVRTransactionModel::cardHolderName() const { return textValue("cardHolderName"); }
void KVRTransactionModel::setCardHolderName(std::optional<std::string> value) {
    setTextValue("cardHolderName", std::move(value));
}
std::optional<std::string> KVRTransactionModel::cardBrand() const { return textValue("cardBrand"); }
void KVRTransactionModel::setCardBrand(std::optional<std::string> value) { setTextValue("cardBrand", std::move(value)); }
std::optional<std::string> KVRTransactionModel::initiatorTransactionKey() const {
    return textValue("initiatorTransactionKey");
}
void KVRTransactionModel::setInitiatorTransactionKey(std::optional<std::string> value) {
    setTextValue("initiatorTransactionKey", std::move(value));
}
std::optional<std::string> KVRTransactionModel::pan() const { return textValue("pan"); }
void KVRTransactionModel::setPan(std::optional<std::string> value) { setTextValue("pan", std::move(value)); }
std::optional<std::string> KVRTransactionModel::receiptTransactionKey() const { return textValue("receiptTransactionKey"); }
void KVRTransactionModel::setReceiptTransactionKey(std::optional<std::string> value) {
    setTextValue("receiptTransactionKey", std::move(value));
}
std::optional<std::string> KVRTransactionModel::reference() const { return textValue("reference"); }
void KVRTransactionModel::setReference(std::optional<std::string> value) { setTextValue("reference", std::move(value)); }
std::optional<std::string> KVRTransactionModel::shortName() const { return textValue("shortName"); }
void KVRTransactionModel::setShortName(std::optional<std::string> value) { setTextValue("shortName", std::move(value)); }

std::optional<KVRNumber> KVRTransactionModel::amount() const { return numberValue("amount"); }
void KVRTransactionModel::setAmount(std::optional<KVRNumber> value) { setNumberValue("amount", value); }
std::optional<KVRManagedObject::TimePoint> KVRTransactionModel::date() const { return dateValue("date"); }
void KVRTransactionModel::setDate(std::optional<TimePoint> value) { setDateValue("date", value); }

std::optional<KVRNumber> KVRTransactionModel::rawType() const { return numberValue("rawType"); }
void KVRTransactionModel::setRawType(std::optional<KVRNumber> value) { setNumberValue("rawType", value); }
std::optional<KVRNumber> KVRTransactionModel::rawInstalmentAmount() const { return numberValue("rawInstalmentAmount"); }
void KVRTransactionModel::setRawInstalmentAmount(std::optional<KVRNumber> value) {
    setNumberValue("rawInstalmentAmount", value);
}
std::optional<KVRNumber> KVRTransactionModel::rawInstalmentType() const { return numberValue("rawInstalmentType"); }
void KVRTransactionModel::setRawInstalmentType(std::optional<KVRNumber> value) {
    setNumberValue("rawInstalmentType", value);
}
std::optional<KVRNumber> KVRTransactionModel::rawStatus() const { return numberValue("rawStatus"); }
void KVRTransactionModel::setRawStatus(std::optional<KVRNumber> value) { setNumberValue("rawStatus", value); }
std::optional<KVRNumber> KVRTransactionModel::rawCapture() const { return numberValue("rawCapture"); }
void KVRTransactionModel::setRawCapture(std::optional<KVRNumber> value) { setNumberValue("rawCapture", value); }

int KVRTransactionModel::type() const { return intOf(rawType()); }
void KVRTransactionModel::setType(int value) { setRawType(KVRNumber(value)); }
int KVRTransactionModel::instalmentAmount() const { return intOf(rawInstalmentAmount()); }
void KVRTransactionModel::setInstalmentAmount(int value) { setRawInstalmentAmount(KVRNumber(value)); }
int KVRTransactionModel::instalmentType() const { return intOf(rawInstalmentType()); }
void KVRTransactionModel::setInstalmentType(int value) { setRawInstalmentType(KVRNumber(value)); }
int KVRTransactionModel::status() const { return intOf(rawStatus()); }
void KVRTransactionModel::setStatus(int value) { setRawStatus(KVRNumber(value)); }
int KVRTransactionModel::capture() const { return intOf(rawCapture()); }
void KVRTransactionModel::setCapture(int value) { setRawCapture(KVRNumber(value)); }

std::string KVRTransactionModel::typeString() const {
    switch (type()) {
        case kCreditType: return "Crédito";
        case kDebitType: return "Débito";
        default: return "";
    }
}

std::string KVRTransactionModel::statusString() const {
    int value = status();
    if (value < 0 || value >= static_cast<int>(kStatusTexts.size())) return "";
    return kStatusTexts[static_cast<size_t>(value)];
}

std::string KVRTransactionModel::dateString() const {
    auto value = date();
    return value ? KVRDateUtil::dateStringWithFormat("dd/MM/yyyy '-' HH:mm", *value) : "";
}

int KVRTransactionModel::getAccountType() const { return type() == kCreditType ? kCreditAccountType : kOtherAccountType; }

std::shared_ptr<KVRMerchantModel> KVRTransactionModel::merchant() const {
    return std::static_pointer_cast<KVRMerchantModel>(toOneValue("merchant"));
}

void KVRTransactionModel::setMerchant(std::shared_ptr<KVRMerchantModel> value) { setToOneValue("merchant", std::move(value)); }

std::shared_ptr<KVRPinpadModel> KVRTransactionModel::pinpad() const {
    return std::static_pointer_cast<KVRPinpadModel>(toOneValue("pinpad"));
}

void KVRTransactionModel::setPinpad(std::shared_ptr<KVRPinpadModel> value) { setToOneValue("pinpad", std::move(value)); }

#include "CancellationHandler.h"

#include "FieldFormat.h"
#include "RequestRejected.h"
#include "SimTime.h"
#include "XmlCheck.h"
#include "XmlReply.h"

namespace acqsim {
namespace {

constexpr const char* kRequestNamespace = "urn:AcceptorCancellationAdviceV02.1";
constexpr const char* kReplyNamespace = "urn:AcceptorCancellationAdviceResponseV02.1";

struct AdviceFacts {
    std::string merchantId;
    std::string receiptId;      // empty when the advice carries none
    std::string initiatorId;
    std::string amount;
    std::string reference;
};

[[noreturn]] void reject(const std::string& detail) {
    throw RequestRejected("IMSG", detail);
}

void require(bool condition, pugi::xml_node parent, const char* name, const char* rule) {
    if (!condition) {
        reject(XmlCheck::pathOf(parent, name) + " " + rule);
    }
}

void checkHeader(pugi::xml_node header) {
    XmlCheck::order(header, {"MsgFctn", "PrtcolVrsn", "XchgId", "CreDtTm", "InitgPty", "RcptPty", "Tracblt"});
    XmlCheck::oneOf(header, "MsgFctn", XmlCheck::text(header, "MsgFctn"), {"CCAV"});
    XmlCheck::oneOf(header, "PrtcolVrsn", XmlCheck::text(header, "PrtcolVrsn"), {"2.0"});
}

std::string checkMerchant(pugi::xml_node environment, const MerchantDirectory& merchants) {
    XmlCheck::order(environment, {"Mrchnt"});
    pugi::xml_node merchant = XmlCheck::child(environment, "Mrchnt");
    XmlCheck::order(merchant, {"Id"});
    pugi::xml_node id = XmlCheck::child(merchant, "Id");
    XmlCheck::order(id, {"Id", "Tp", "Issr", "ShrtNm"});
    const std::initializer_list<const char*> parties = {"OPOI", "MERC", "ACCP", "ITAG", "ACQR", "CISS", "DLIS"};
    XmlCheck::oneOf(id, "Tp", XmlCheck::text(id, "Tp"), parties);
    XmlCheck::oneOf(id, "Issr", XmlCheck::text(id, "Issr"), parties);
    std::string key = XmlCheck::text(id, "Id");
    require(!key.empty() && key.find('-') == std::string::npos, id, "Id", "must be the sale affiliation key without \"-\"");
    if (merchants.findBySaleAffiliationKey(key) == nullptr) {
        throw RequestRejected("UNPR", "unknown merchant " + key);
    }
    return key;
}

void checkTransaction(pugi::xml_node transaction, AdviceFacts& facts) {
    XmlCheck::order(transaction, {"OrgnlTx", "TxDtls", "TxId"});
    pugi::xml_node original = XmlCheck::child(transaction, "OrgnlTx");
    XmlCheck::order(original, {"RcptTxId", "InitrTxId"});
    facts.receiptId = XmlCheck::optionalText(original, "RcptTxId");
    facts.initiatorId = XmlCheck::text(original, "InitrTxId");
    require(!facts.initiatorId.empty(), original, "InitrTxId", "is empty");
    pugi::xml_node details = XmlCheck::child(transaction, "TxDtls");
    XmlCheck::order(details, {"Ccy", "TtlAmt"});
    XmlCheck::oneOf(details, "Ccy", XmlCheck::text(details, "Ccy"), {"986"});
    facts.amount = XmlCheck::text(details, "TtlAmt");
    require(FieldFormat::isDigits(facts.amount), details, "TtlAmt", "must be a whole number of cents");
    pugi::xml_node id = XmlCheck::child(transaction, "TxId");
    XmlCheck::order(id, {"TxRef", "TxDtTm"});
    facts.reference = XmlCheck::text(id, "TxRef");
    require(!facts.reference.empty(), id, "TxRef", "is empty");
    require(FieldFormat::isLocalDateTime(XmlCheck::text(id, "TxDtTm")), id, "TxDtTm", "is not yyyy-MM-ddTHH:mm:ss");
}

std::string responseDocument(const AdviceFacts& facts, const std::string& code) {
    XmlReply reply(kReplyNamespace);
    pugi::xml_node message = XmlReply::element(reply.document(), "AccptrCxlAdvcRspn");
    pugi::xml_node header = XmlReply::element(message, "Hdr");
    XmlReply::leaf(header, "MsgFctn", "CCAK");
    XmlReply::leaf(header, "PrtcolVrsn", "2.0");
    XmlReply::leaf(header, "CreDtTm", SimTime::localDateTime());
    pugi::xml_node response = XmlReply::element(message, "CxlAdvcRspn");
    pugi::xml_node id = XmlReply::element(XmlReply::element(XmlReply::element(response, "Envt"), "Mrchnt"), "Id");
    XmlReply::leaf(id, "Id", facts.merchantId);
    XmlReply::leaf(id, "Tp", "OPOI");
    XmlReply::leaf(id, "Issr", "MERC");
    pugi::xml_node transaction = XmlReply::element(response, "Tx");
    XmlReply::leaf(transaction, "Rspn", code);
    pugi::xml_node txId = XmlReply::element(transaction, "TxId");
    XmlReply::leaf(txId, "TxDtTm", SimTime::localDateTime());
    XmlReply::leaf(txId, "TxRef", facts.reference);
    return reply.text();
}

} // namespace

CancellationHandler::CancellationHandler(const MerchantDirectory& merchants, SimState& state, double delaySeconds)
    : merchants_(merchants), state_(state), delaySeconds_(delaySeconds) {}

SimReply CancellationHandler::handle(const std::string& body) {
    pugi::xml_document doc;
    pugi::xml_node message = XmlCheck::openEnvelope(doc, body, kRequestNamespace, "AccptrCxlAdvc");
    XmlCheck::order(message, {"CxlAdvc", "Hdr"});
    checkHeader(XmlCheck::child(message, "Hdr"));
    pugi::xml_node advice = XmlCheck::child(message, "CxlAdvc");
    XmlCheck::order(advice, {"Envt", "Tx"});
    AdviceFacts facts;
    facts.merchantId = checkMerchant(XmlCheck::child(advice, "Envt"), merchants_);
    checkTransaction(XmlCheck::child(advice, "Tx"), facts);

    CancellationVerdict verdict =
        state_.cancel(facts.receiptId, facts.initiatorId, facts.amount, facts.merchantId, facts.reference);
    std::string code = verdict.approved ? "APPR" : "DECL";
    std::string outcome = "cancel " + code + " rcpt=" + (facts.receiptId.empty() ? "-" : facts.receiptId);
    if (!verdict.reason.empty()) {
        outcome += ": " + verdict.reason;
    }
    return SimReply{200, "text/xml", responseDocument(facts, code), outcome, delaySeconds_};
}

} // namespace acqsim

#include "AuthorizationHandler.h"

#include "AmountRule.h"
#include "CardDataMask.h"
#include "FieldFormat.h"
#include "IssuerChipData.h"
#include "RequestRejected.h"
#include "SimTime.h"
#include "XmlCheck.h"
#include "XmlReply.h"

#include <sstream>

#include <openssl/rand.h>

namespace acqsim {
namespace {

constexpr const char* kRequestNamespace = "urn:AcceptorAuthorisationRequestV02.1";
constexpr const char* kReplyNamespace = "urn:AcceptorAuthorisationResponseV02.1";
constexpr size_t kMaxAmountDigits = 12;

[[noreturn]] void reject(const std::string& detail) {
    throw RequestRejected("IMSG", detail);
}

void require(bool condition, pugi::xml_node parent, const char* name, const char* rule) {
    if (!condition) {
        reject(XmlCheck::pathOf(parent, name) + " " + rule);
    }
}

const std::initializer_list<const char*> kPartyCodes = {"OPOI", "MERC", "ACCP", "ITAG", "ACQR", "CISS", "DLIS"};

void checkIdentification(pugi::xml_node id) {
    XmlCheck::order(id, {"Id", "Tp", "Issr", "ShrtNm"});
    XmlCheck::oneOf(id, "Tp", XmlCheck::text(id, "Tp"), kPartyCodes);
    XmlCheck::oneOf(id, "Issr", XmlCheck::text(id, "Issr"), kPartyCodes);
}

void checkHeader(pugi::xml_node header, const char* messageFunction) {
    XmlCheck::order(header, {"MsgFctn", "PrtcolVrsn", "XchgId", "CreDtTm", "InitgPty", "RcptPty", "Tracblt"});
    XmlCheck::oneOf(header, "MsgFctn", XmlCheck::text(header, "MsgFctn"), {messageFunction});
    XmlCheck::oneOf(header, "PrtcolVrsn", XmlCheck::text(header, "PrtcolVrsn"), {"2.0"});
    for (const char* party : {"InitgPty", "RcptPty"}) {
        if (header.child(party)) {
            checkIdentification(header.child(party));
        }
    }
}

std::string checkMerchant(pugi::xml_node merchant, const MerchantDirectory& merchants) {
    XmlCheck::order(merchant, {"Id"});
    pugi::xml_node id = XmlCheck::child(merchant, "Id");
    checkIdentification(id);
    std::string key = XmlCheck::text(id, "Id");
    require(!key.empty() && key.find('-') == std::string::npos, id, "Id", "must be the sale affiliation key without \"-\"");
    if (merchants.findBySaleAffiliationKey(key) == nullptr) {
        throw RequestRejected("UNPR", "unknown merchant " + key);
    }
    return key;
}

// Returns the PAN.
std::string checkCard(pugi::xml_node card) {
    XmlCheck::order(card, {"PlainCardData"});
    pugi::xml_node plain = XmlCheck::child(card, "PlainCardData");
    XmlCheck::order(plain, {"XpryDt", "PAN", "CardSeqNb", "TrckData", "CardSctyCd"}, {"TrckData"});
    require(FieldFormat::isYearMonth(XmlCheck::text(plain, "XpryDt")), plain, "XpryDt", "is not yyyy-MM");
    // Never echo the card number: the reason goes to the request log.
    require(FieldFormat::passesLuhn(XmlCheck::text(plain, "PAN")), plain, "PAN", "fails the Luhn check");
    for (pugi::xml_node track : plain.children("TrckData")) {
        XmlCheck::order(track, {"TrckNb", "TrckVal"});
        XmlCheck::oneOf(track, "TrckNb", XmlCheck::text(track, "TrckNb"), {"1", "2", "3"});
        require(!XmlCheck::text(track, "TrckVal").empty(), track, "TrckVal", "is empty");
    }
    return XmlCheck::text(plain, "PAN");
}

void checkPinBlock(pugi::xml_node onlinePin) {
    XmlCheck::order(onlinePin, {"NcrptdPINBlck"});
    pugi::xml_node block = XmlCheck::child(onlinePin, "NcrptdPINBlck");
    XmlCheck::order(block, {"EnvlpdData", "CnttTp"});
    XmlCheck::oneOf(block, "CnttTp", XmlCheck::text(block, "CnttTp"), {"ECRP"});
    pugi::xml_node enveloped = XmlCheck::child(block, "EnvlpdData");
    XmlCheck::order(enveloped, {"Rcpt", "NcrptdCntt"});
    pugi::xml_node recipient = XmlCheck::child(enveloped, "Rcpt");
    XmlCheck::order(recipient, {"KEK"});
    pugi::xml_node kek = XmlCheck::child(recipient, "KEK");
    XmlCheck::order(kek, {"NcrptdKey", "KEKId"});
    std::string keyPart = XmlCheck::text(kek, "NcrptdKey");
    require(keyPart.size() == 10 && FieldFormat::isHex(keyPart), kek, "NcrptdKey",
            "must be the last 10 hexadecimal characters of the key serial number");
    pugi::xml_node kekId = XmlCheck::child(kek, "KEKId");
    XmlCheck::order(kekId, {"DerivtnId"});
    std::string derivation = XmlCheck::text(kekId, "DerivtnId");
    require(derivation.size() == 10 && FieldFormat::isHex(derivation), kekId, "DerivtnId",
            "must be the first 10 hexadecimal characters of the key serial number");
    pugi::xml_node content = XmlCheck::child(enveloped, "NcrptdCntt");
    XmlCheck::order(content, {"NcrptdData"});
    std::string pinBlock = XmlCheck::text(content, "NcrptdData");
    require(pinBlock.size() == 16 && FieldFormat::isHex(pinBlock), content, "NcrptdData",
            "must be a 16-character hexadecimal PIN block");
}

void checkCardholder(pugi::xml_node cardholder) {
    XmlCheck::order(cardholder, {"Authntcn", "CrdhldrIdVal", "CrdhldrIdTp"});
    pugi::xml_node authentication = XmlCheck::child(cardholder, "Authntcn");
    XmlCheck::order(authentication, {"CrdhldrOnLinePIN", "AuthntcnMtd"});
    std::string method = XmlCheck::text(authentication, "AuthntcnMtd");
    XmlCheck::oneOf(authentication, "AuthntcnMtd", method, {"NPIN", "FPIN"});
    if (method == "NPIN") {
        checkPinBlock(XmlCheck::child(authentication, "CrdhldrOnLinePIN"));
    } else {
        XmlCheck::absent(authentication, "CrdhldrOnLinePIN");
    }
}

void checkEnvironment(pugi::xml_node environment, const MerchantDirectory& merchants, AuthorisationRequestFacts& facts) {
    XmlCheck::order(environment, {"Mrchnt", "Card", "Crdhldr", "POI"});
    facts.merchantId = checkMerchant(XmlCheck::child(environment, "Mrchnt"), merchants);
    facts.pan = checkCard(XmlCheck::child(environment, "Card"));
    checkCardholder(XmlCheck::child(environment, "Crdhldr"));
    pugi::xml_node poi = XmlCheck::child(environment, "POI");
    XmlCheck::order(poi, {"SysNm"});
    XmlCheck::text(poi, "SysNm");
}

// Returns the card data entry mode.
std::string checkContext(pugi::xml_node context) {
    XmlCheck::order(context, {"PmtCntxt", "SaleId", "SaleRefNb"});
    pugi::xml_node payment = XmlCheck::child(context, "PmtCntxt");
    XmlCheck::order(payment, {"CardDataNtryMd"});
    std::string mode = XmlCheck::text(payment, "CardDataNtryMd");
    XmlCheck::oneOf(payment, "CardDataNtryMd", mode, {"TAGC", "PHYS", "BRCD", "MGST", "CICC", "DFLE", "CTLS", "ECTL"});
    XmlCheck::text(context, "SaleId");
    return mode;
}

void checkDetails(pugi::xml_node details, bool chip, AuthorisationRequestFacts& facts) {
    XmlCheck::order(details, {"Ccy", "TtlAmt", "AcctTp", "RcrngTx", "Pdct", "ICCRltdData"});
    XmlCheck::oneOf(details, "Ccy", XmlCheck::text(details, "Ccy"), {"986"});
    facts.amount = XmlCheck::text(details, "TtlAmt");
    require(FieldFormat::isDigits(facts.amount) && facts.amount.size() <= kMaxAmountDigits &&
                facts.amount.find_first_not_of('0') != std::string::npos,
            details, "TtlAmt", "must be a positive whole number of cents");
    facts.accountType = XmlCheck::text(details, "AcctTp");
    XmlCheck::oneOf(details, "AcctTp", facts.accountType, {"DFLT", "SVNG", "CHCK", "CRDT", "UVRL", "INVS", "EPRS"});
    if (pugi::xml_node recurring = details.child("RcrngTx")) {
        XmlCheck::order(recurring, {"InstlmtTp", "TtlNbOfPmts"});
        XmlCheck::oneOf(recurring, "InstlmtTp", XmlCheck::text(recurring, "InstlmtTp"), {"NONE", "MCHT", "ISSR"});
        require(FieldFormat::isDigits(XmlCheck::text(recurring, "TtlNbOfPmts")), recurring, "TtlNbOfPmts",
                "is not a number");
    }
    facts.cardRequestData = XmlCheck::optionalText(details, "ICCRltdData");
    if (chip || details.child("ICCRltdData")) {
        require(FieldFormat::isHex(facts.cardRequestData) && facts.cardRequestData.size() % 2 == 0, details,
                "ICCRltdData", chip ? "must carry the card's data (hexadecimal TLV) for a chip sale" : "is not hexadecimal TLV");
    }
}

void checkTransaction(pugi::xml_node transaction, bool chip, AuthorisationRequestFacts& facts) {
    XmlCheck::order(transaction, {"TxCaptr", "MrchntCtgyCd", "TxId", "TxDtls", "AddtlTxData", "InitrTxId"});
    XmlCheck::oneOf(transaction, "TxCaptr", XmlCheck::text(transaction, "TxCaptr"), {"true", "false"});
    pugi::xml_node id = XmlCheck::child(transaction, "TxId");
    XmlCheck::order(id, {"TxDtTm", "TxRef"});
    require(FieldFormat::isLocalDateTime(XmlCheck::text(id, "TxDtTm")), id, "TxDtTm", "is not yyyy-MM-ddTHH:mm:ss");
    facts.reference = XmlCheck::text(id, "TxRef");
    require(facts.reference.size() == 32 && FieldFormat::isUpperHex(facts.reference), id, "TxRef",
            "must be 32 upper-case hexadecimal characters");
    checkDetails(XmlCheck::child(transaction, "TxDtls"), chip, facts);
    facts.initiatorId = XmlCheck::text(transaction, "InitrTxId");
    require(!facts.initiatorId.empty(), transaction, "InitrTxId", "is empty");
}

std::string newAuthorisationCode() {
    unsigned char random[6];
    if (RAND_bytes(random, sizeof random) != 1) {
        throw std::runtime_error("no random numbers");
    }
    std::string code;
    for (unsigned char byte : random) {
        code.push_back(static_cast<char>('0' + byte % 10));
    }
    return code;
}

std::string htmlErrorPage() {
    return "<!DOCTYPE html>\n<html><head><title>500 Internal Server Error</title></head>\n"
           "<body><h1>Internal Server Error</h1><p>The authorisation service is unavailable.</p></body></html>\n";
}

std::string responseDocument(const AuthorisationRequestFacts& facts, const AuthorisationRecord& record,
                             AmountDecision rule) {
    const bool identified = rule != AmountDecision::NoIdentifiers;
    XmlReply reply(kReplyNamespace);
    pugi::xml_node message = XmlReply::element(reply.document(), "AccptrAuthstnRspn");
    pugi::xml_node header = XmlReply::element(message, "Hdr");
    XmlReply::leaf(header, "MsgFctn", "AUTP");
    XmlReply::leaf(header, "PrtcolVrsn", "2.0");
    XmlReply::leaf(header, "CreDtTm", SimTime::localDateTime());
    pugi::xml_node response = XmlReply::element(message, "AuthstnRspn");
    XmlReply::leaf(XmlReply::element(XmlReply::element(response, "Envt"), "MrchntId"), "Id", facts.merchantId);
    pugi::xml_node transaction = XmlReply::element(response, "Tx");
    pugi::xml_node id = XmlReply::element(transaction, "TxId");
    XmlReply::leaf(id, "TxDtTm", record.time);
    if (identified) {
        XmlReply::leaf(id, "TxRef", facts.reference);
        XmlReply::leaf(transaction, "RcptTxId", record.receiptId);
    }
    pugi::xml_node details = XmlReply::element(transaction, "TxDtls");
    XmlReply::leaf(details, "Ccy", "986");
    XmlReply::leaf(details, "TtlAmt", facts.amount);
    XmlReply::leaf(details, "AcctTp", facts.accountType);
    if (!facts.cardRequestData.empty()) {
        std::string issuerData = IssuerChipData::build(record.response, facts.cardRequestData, record.receiptId);
        XmlReply::leaf(details, "ICCRltdData", rule == AmountDecision::OddIssuerData ? issuerData + "0" : issuerData);
    }
    pugi::xml_node result = XmlReply::element(XmlReply::element(response, "TxRspn"), "AuthstnRslt");
    pugi::xml_node decision = XmlReply::element(result, "RspnToAuthstn");
    XmlReply::leaf(decision, "Rspn", record.response);
    if (record.response != "APPR") {
        XmlReply::leaf(decision, "RspnRsn", "decided by the amount rule for the amount " + facts.amount);
    }
    if (identified) {
        XmlReply::leaf(result, "AuthstnCd", record.authorisationCode);
    }
    std::string text = reply.text();
    return rule == AmountDecision::TruncatedAnswer ? text.substr(0, text.size() / 2) : text;
}

} // namespace

AuthorizationHandler::AuthorizationHandler(const MerchantDirectory& merchants, SimState& state, double lateAnswerSeconds,
                                           double replyDelaySeconds)
    : merchants_(merchants), state_(state), lateAnswerSeconds_(lateAnswerSeconds), replyDelaySeconds_(replyDelaySeconds) {}

SimReply AuthorizationHandler::handle(const std::string& body) {
    pugi::xml_document doc;
    pugi::xml_node message = XmlCheck::openEnvelope(doc, body, kRequestNamespace, "AccptrAuthstnReq");
    AuthorisationRequestFacts facts = check(message);
    AmountDecision decision = AmountRule::decide(facts.amount);
    if (decision == AmountDecision::HtmlErrorPage) {
        return SimReply{500, "text/html", htmlErrorPage(), "HTML error page (amount rule ..55)"};
    }
    return answer(facts, decision);
}

AuthorisationRequestFacts AuthorizationHandler::check(pugi::xml_node message) const {
    XmlCheck::order(message, {"AuthstnReq", "Hdr"});
    checkHeader(XmlCheck::child(message, "Hdr"), "AUTQ");
    pugi::xml_node request = XmlCheck::child(message, "AuthstnReq");
    XmlCheck::order(request, {"Envt", "Cntxt", "Tx"});
    AuthorisationRequestFacts facts;
    checkEnvironment(XmlCheck::child(request, "Envt"), merchants_, facts);
    std::string mode = checkContext(XmlCheck::child(request, "Cntxt"));
    checkTransaction(XmlCheck::child(request, "Tx"), mode == "CICC" || mode == "ECTL", facts);
    return facts;
}

SimReply AuthorizationHandler::answer(const AuthorisationRequestFacts& facts, AmountDecision decision) {
    const std::string responseCode = AmountRule::responseCode(decision);
    const double delaySeconds = decision == AmountDecision::LateAnswer ? lateAnswerSeconds_ : replyDelaySeconds_;
    const bool approved = responseCode == "APPR" || responseCode == "PART";
    AuthorisationRecord record{state_.nextReceiptId(), facts.initiatorId, facts.reference, facts.merchantId,
                               facts.amount,           responseCode,      approved ? newAuthorisationCode() : "000000",
                               SimTime::localDateTime()};
    state_.recordAuthorisation(record);

    std::ostringstream outcome;
    outcome << responseCode << " amount=" << facts.amount << " rcpt=" << record.receiptId
            << " pan=" << CardDataMask::value("PAN", facts.pan);
    if (delaySeconds > 0) {
        outcome << " answered after " << delaySeconds << " s";
    }
    return SimReply{200, "text/xml", responseDocument(facts, record, decision), outcome.str(), delaySeconds};
}

} // namespace acqsim

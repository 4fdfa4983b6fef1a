#include "Messages.h"

#include "SimSession.h"

#include <gtest/gtest.h>

#include <stdexcept>

std::string replace(std::string text, const std::string& from, const std::string& to) {
    size_t at = text.find(from);
    if (at == std::string::npos) {
        throw std::invalid_argument("\"" + from + "\" is not in the document");
    }
    return text.replace(at, from.size(), to);
}

namespace {

const char* kHeader =
    R"(<Hdr><MsgFctn>AUTQ</MsgFctn><PrtcolVrsn>2.0</PrtcolVrsn></Hdr>)";

const char* kPinBlock =
    R"(<CrdhldrOnLinePIN><NcrptdPINBlck><EnvlpdData><Rcpt><KEK><NcrptdKey>3210E00001</NcrptdKey><KEKId>)"
    R"(<DerivtnId>FFFF987654</DerivtnId></KEKId></KEK></Rcpt><NcrptdCntt><NcrptdData>1A2B3C4D5E6F7081)"
    R"(</NcrptdData></NcrptdCntt></EnvlpdData><CnttTp>ECRP</CnttTp></NcrptdPINBlck></CrdhldrOnLinePIN>)";

const char* kAuthorisation =
    R"(<?xml version="1.0" encoding="UTF-8" ?><Document xmlns="urn:AcceptorAuthorisationRequestV02.1">)"
    R"(<AccptrAuthstnReq>{HEADER_FIRST}<AuthstnReq><Envt><Mrchnt><Id><Id>{MERCHANT}</Id><Tp>OPOI</Tp><Issr>MERC)"
    R"(</Issr><ShrtNm>Padaria</ShrtNm></Id></Mrchnt><Card><PlainCardData><XpryDt>2028-12</XpryDt><PAN>{PAN})"
    R"(</PAN><TrckData><TrckNb>2</TrckNb><TrckVal>{PAN}=28122011234500000</TrckVal></TrckData></PlainCardData>)"
    R"(</Card><Crdhldr><Authntcn>{PIN_BLOCK}<AuthntcnMtd>{METHOD}</AuthntcnMtd></Authntcn></Crdhldr><POI>)"
    R"(<SysNm>iOs</SysNm></POI></Envt><Cntxt><PmtCntxt><CardDataNtryMd>{MODE}</CardDataNtryMd></PmtCntxt>)"
    R"(<SaleId></SaleId></Cntxt><Tx><TxCaptr>true</TxCaptr><TxId><TxDtTm>2025-06-01T10:20:30</TxDtTm>)"
    R"(<TxRef>{REFERENCE}</TxRef></TxId><TxDtls><Ccy>986</Ccy><TtlAmt>{AMOUNT}</TtlAmt><AcctTp>CRDT</AcctTp>)"
    R"(<RcrngTx><InstlmtTp>NONE</InstlmtTp><TtlNbOfPmts>1</TtlNbOfPmts></RcrngTx>{ICC}</TxDtls>)"
    R"(<InitrTxId>{INITIATOR}</InitrTxId></Tx></AuthstnReq>{HEADER_LAST}</AccptrAuthstnReq></Document>)";

const char* kCancellation =
    R"(<?xml version="1.0" encoding="UTF-8" ?><Document xmlns="urn:AcceptorCancellationAdviceV02.1">)"
    R"(<AccptrCxlAdvc><CxlAdvc><Envt><Mrchnt><Id><Id>{MERCHANT}</Id><Tp>OPOI</Tp><Issr>OPOI</Issr></Id>)"
    R"(</Mrchnt></Envt><Tx><OrgnlTx>{RECEIPT}<InitrTxId>{INITIATOR}</InitrTxId></OrgnlTx><TxDtls><Ccy>986</Ccy>)"
    R"(<TtlAmt>{AMOUNT}</TtlAmt></TxDtls><TxId><TxRef>{REFERENCE}</TxRef><TxDtTm>2025-06-01T11:00:00</TxDtTm>)"
    R"(</TxId></Tx></CxlAdvc><Hdr><MsgFctn>CCAV</MsgFctn><PrtcolVrsn>2.0</PrtcolVrsn></Hdr></AccptrCxlAdvc>)"
    R"(</Document>)";

const char* kEnrolment =
    R"(<?xml version="1.0" encoding="UTF-8" ?><Document xmlns="urn:StatusReportV02.1"><StsRpt><Hdr>)"
    R"(<DwnldTrf>false</DwnldTrf><FrmtVrsn>2.0</FrmtVrsn><CreDtTm>2025-06-01T09:00:00</CreDtTm></Hdr><StsRpt>)"
    R"(<POIId><Tp>OPOI</Tp><Issr>TMGT</Issr></POIId><DataSet><Id><Tp>STRP</Tp></Id><Cntt><POICmpnt><Tp>MRPR)"
    R"(</Tp><Id><Id>{CODE}</Id><PrvdrId>KOVRACODE</PrvdrId></Id></POICmpnt><POICmpnt><Tp>TERM</Tp><Id>)"
    R"(<Id>Mobile</Id><PrvdrId>Mobile</PrvdrId><SrlNb>Mobile</SrlNb></Id></POICmpnt><DataSetReqrd><Id><Tp>MRPR)"
    R"(</Tp></Id></DataSetReqrd></Cntt></DataSet></StsRpt><SctyTrlr><CnttTp>DATA</CnttTp></SctyTrlr></StsRpt>)"
    R"(</Document>)";

const char* kTableDataSet =
    R"(<DataSet><Id><Tp>STRP</Tp><CreDtTm>2025-06-01T09:00:01</CreDtTm></Id><Cntt><DataSetReqrd><Id><Tp>TRPR)"
    R"(</Tp><Vrsn>1</Vrsn><Nm>{NAME}</Nm></Id></DataSetReqrd></Cntt></DataSet>)";

const char* kTableDownload =
    R"(<?xml version="1.0" encoding="UTF-8" ?><Document xmlns="urn:StatusReportV02.1"><StsRpt><Hdr>)"
    R"(<DwnldTrf>false</DwnldTrf><FrmtVrsn>2.0</FrmtVrsn><CreDtTm>2025-06-01T09:00:00</CreDtTm></Hdr><StsRpt>)"
    R"(<POIId><Id>{KEY}</Id></POIId>{DATASETS}</StsRpt></StsRpt></Document>)";

std::string substitute(std::string text, const std::string& marker, const std::string& value) {
    for (size_t at; (at = text.find(marker)) != std::string::npos;) {
        text.replace(at, marker.size(), value);
    }
    return text;
}

} // namespace

std::string authorisationRequest(const AuthorisationFields& f) {
    std::string text = kAuthorisation;
    text = substitute(text, "{HEADER_FIRST}", f.headerFirst ? kHeader : "");
    text = substitute(text, "{HEADER_LAST}", f.headerFirst ? "" : kHeader);
    text = substitute(text, "{PIN_BLOCK}", f.onlinePin ? kPinBlock : "");
    text = substitute(text, "{METHOD}", f.onlinePin ? "NPIN" : "FPIN");
    text = substitute(text, "{ICC}", f.cardData.empty() ? "" : "<ICCRltdData>" + f.cardData + "</ICCRltdData>");
    text = substitute(text, "{MERCHANT}", f.merchantId);
    text = substitute(text, "{PAN}", f.pan);
    text = substitute(text, "{MODE}", f.entryMode);
    text = substitute(text, "{REFERENCE}", f.reference);
    text = substitute(text, "{AMOUNT}", f.amount);
    return substitute(text, "{INITIATOR}", f.initiatorId);
}

std::string cancellationAdvice(const CancellationFields& f) {
    std::string text = kCancellation;
    text = substitute(text, "{RECEIPT}", f.receiptId.empty() ? "" : "<RcptTxId>" + f.receiptId + "</RcptTxId>");
    text = substitute(text, "{MERCHANT}", f.merchantId);
    text = substitute(text, "{INITIATOR}", f.initiatorId);
    text = substitute(text, "{AMOUNT}", f.amount);
    return substitute(text, "{REFERENCE}", f.reference);
}

std::string statusReportForKovraCode(const std::string& kovraCode) {
    return substitute(kEnrolment, "{CODE}", kovraCode);
}

std::string statusReportForSaleKey(const std::string& saleAffiliationKey) {
    std::string sets;
    for (const char* name : {"AIDS", "CARDBRANDS", "CAPKS", "BINS"}) {
        sets += substitute(kTableDataSet, "{NAME}", name);
    }
    return substitute(substitute(kTableDownload, "{DATASETS}", sets), "{KEY}", saleAffiliationKey);
}

nlohmann::json saleReceiptMail() {
    return nlohmann::json{
        {"template", "transaction"},
        {"mail_header", {{"subject", "Comprovante de transação"}, {"to", "cliente@example.com"}}},
        {"body_parameters",
         {{"card_brand", "Visa - Crédito à vista"},
          {"company_name", "Padaria Pão Quente Ltda"},
          {"company_address", "Rua Augusta, 1500"},
          {"company_tax_document_number", "12.345.678/0001-95"},
          {"transaction_aid", "A0000000031010"},
          {"transaction_arqc", "A1B2C3D4E5F60718"},
          {"transaction_kovra_id", "123456"},
          {"client_name", "MARIA DA SILVA"},
          {"client_masked_card_number", "**** **** **** 0010"},
          {"transaction_date", "01/06/2025"},
          {"transaction_time", "10:20"},
          {"transaction_amount", "10,00"},
          {"display_aid_arqc", "true"},
          {"display_company_information", "true"}}}};
}

CancellationFields authorised(HttpsClient& client, const std::string& amount) {
    AuthorisationFields sale;
    sale.amount = amount;
    HttpReply reply = client.postXml("/Authorize", authorisationRequest(sale));
    CancellationFields advice;
    advice.receiptId = valueAt(reply.body, "/Document/AccptrAuthstnRspn/AuthstnRspn/Tx/RcptTxId");
    EXPECT_FALSE(advice.receiptId.empty()) << reply.body;
    advice.amount = amount;
    advice.reference = sale.reference;
    advice.initiatorId = sale.initiatorId;
    return advice;
}

#include "ReportHandler.h"

#include "EmvTables.h"
#include "FieldFormat.h"
#include "RequestRejected.h"
#include "SimTime.h"
#include "XmlCheck.h"
#include "XmlReply.h"

#include <vector>

namespace acqsim {
namespace {

constexpr const char* kRequestNamespace = "urn:StatusReportV02.1";
constexpr const char* kReplyNamespace = "urn:AcceptorConfigurationUpdateV02.1";

[[noreturn]] void reject(const std::string& detail) {
    throw RequestRejected("IMSG", detail);
}

void expectValue(pugi::xml_node parent, const char* name, const std::string& expected) {
    std::string value = XmlCheck::text(parent, name);
    if (value != expected) {
        reject(XmlCheck::pathOf(parent, name) + " is \"" + value + "\", expected \"" + expected + "\"");
    }
}

void checkDataSetIdentification(pugi::xml_node id) {
    XmlCheck::order(id, {"Tp", "Id", "Vrsn", "CreDtTm", "Nm"});
    XmlCheck::text(id, "Tp");
    if (id.child("CreDtTm") && !FieldFormat::isLocalDateTime(XmlCheck::text(id, "CreDtTm"))) {
        reject(XmlCheck::pathOf(id, "CreDtTm") + " is not yyyy-MM-ddTHH:mm:ss");
    }
}

void checkHeader(pugi::xml_node header) {
    XmlCheck::order(header, {"DwnldTrf", "FrmtVrsn", "XchgId", "CreDtTm"});
    XmlCheck::oneOf(header, "DwnldTrf", XmlCheck::text(header, "DwnldTrf"), {"true", "false"});
    expectValue(header, "FrmtVrsn", "2.0");
    if (!FieldFormat::isLocalDateTime(XmlCheck::text(header, "CreDtTm"))) {
        reject(XmlCheck::pathOf(header, "CreDtTm") + " is not yyyy-MM-ddTHH:mm:ss");
    }
}

// The common shape of every data set; the variants check their values.
void checkDataSet(pugi::xml_node dataSet) {
    XmlCheck::order(dataSet, {"Id", "SeqCntr", "Cntt"});
    checkDataSetIdentification(XmlCheck::child(dataSet, "Id"));
    pugi::xml_node content = XmlCheck::child(dataSet, "Cntt");
    XmlCheck::order(content, {"POICmpnt", "DataSetReqrd", "Errs", "Evt"}, {"POICmpnt"});
    for (pugi::xml_node component : content.children("POICmpnt")) {
        XmlCheck::order(component, {"Tp", "Id"});
        XmlCheck::text(component, "Tp");
        XmlCheck::order(XmlCheck::child(component, "Id"), {"Id", "PrvdrId", "ItmNb", "SrlNb"});
    }
    pugi::xml_node required = XmlCheck::child(content, "DataSetReqrd");
    XmlCheck::order(required, {"Id"});
    checkDataSetIdentification(XmlCheck::child(required, "Id"));
}

std::vector<pugi::xml_node> dataSetsOf(pugi::xml_node inner) {
    std::vector<pugi::xml_node> sets;
    for (pugi::xml_node set : inner.children("DataSet")) {
        checkDataSet(set);
        sets.push_back(set);
    }
    return sets;
}

pugi::xml_node configurationUpdate(XmlReply& reply, bool download) {
    pugi::xml_node update = XmlReply::element(reply.document(), "AccptrCfgtnUpd");
    pugi::xml_node header = XmlReply::element(update, "Hdr");
    XmlReply::leaf(header, "DwnldTrf", download ? "true" : "false");
    XmlReply::leaf(header, "FrmtVrsn", "2.0");
    XmlReply::leaf(header, "CreDtTm", SimTime::localDateTime());
    return update;
}

pugi::xml_node dataSetContent(pugi::xml_node configuration, const char* type, const char* name) {
    pugi::xml_node dataSet = XmlReply::element(configuration, "DataSet");
    pugi::xml_node id = XmlReply::element(dataSet, "Id");
    XmlReply::leaf(id, "Tp", type);
    XmlReply::leaf(id, "Vrsn", "1");
    XmlReply::leaf(id, "CreDtTm", SimTime::localDateTime());
    XmlReply::leaf(id, "Nm", name);
    return XmlReply::element(dataSet, "Cntt");
}

void writeMerchantParameters(pugi::xml_node content, const Merchant& merchant) {
    pugi::xml_node params = XmlReply::element(content, "MrchntParams");
    XmlReply::leaf(params, "Sak", merchant.saleAffiliationKey);
    pugi::xml_node address = XmlReply::element(params, "Adr");
    XmlReply::leaf(address, "City", merchant.address.city);
    XmlReply::leaf(address, "Strt", merchant.address.street);
    XmlReply::leaf(address, "Dstrct", merchant.address.district);
    XmlReply::leaf(address, "DrNb", merchant.address.doorNumber);
    XmlReply::leaf(address, "Nghbhd", merchant.address.neighborhood);
    XmlReply::leaf(address, "ZipCd", merchant.address.zipCode);
    XmlReply::leaf(address, "Cmplmt", merchant.address.complement);
    XmlReply::leaf(params, "CpnyNm", merchant.companyName);
    XmlReply::leaf(params, "IdCd", merchant.documentNumber);
}

SimReply unknownMerchant(const std::string& what) {
    return SimReply{200, "text/xml", XmlReply::rejection("UNPR", what), "rejected: " + what};
}

// The enrolment variant: names the merchant by KovraCode; returns the code.
std::string checkEnrolment(pugi::xml_node report) {
    pugi::xml_node inner = report.child("StsRpt");
    pugi::xml_node poi = inner.child("POIId");
    expectValue(poi, "Tp", "OPOI");
    expectValue(poi, "Issr", "TMGT");
    std::vector<pugi::xml_node> sets = dataSetsOf(inner);
    if (sets.size() != 1) {
        reject("an enrolment report carries one DataSet, not " + std::to_string(sets.size()));
    }
    expectValue(sets[0].child("Id"), "Tp", "STRP");
    pugi::xml_node content = sets[0].child("Cntt");
    pugi::xml_node merchantComponent = content.child("POICmpnt");
    pugi::xml_node terminalComponent = merchantComponent.next_sibling("POICmpnt");
    if (!terminalComponent || terminalComponent.next_sibling("POICmpnt")) {
        reject(XmlCheck::pathOf(content) + " must hold the merchant and the terminal POICmpnt");
    }
    expectValue(merchantComponent, "Tp", "MRPR");
    pugi::xml_node merchantId = merchantComponent.child("Id");
    expectValue(merchantId, "PrvdrId", "KOVRACODE");
    expectValue(terminalComponent, "Tp", "TERM");
    for (const char* tag : {"Id", "PrvdrId", "SrlNb"}) {
        expectValue(terminalComponent.child("Id"), tag, "Mobile");
    }
    expectValue(content.child("DataSetReqrd").child("Id"), "Tp", "MRPR");
    pugi::xml_node trailer = XmlCheck::child(report, "SctyTrlr");
    XmlCheck::order(trailer, {"CnttTp"});
    expectValue(trailer, "CnttTp", "DATA");
    return XmlCheck::text(merchantId, "Id");
}

// The table-download variant: names the merchant by sale affiliation key and
// asks for four data sets in a fixed order; returns the key.
std::string checkTableDownload(pugi::xml_node report) {
    pugi::xml_node inner = report.child("StsRpt");
    pugi::xml_node poi = inner.child("POIId");
    XmlCheck::absent(poi, "Tp");
    XmlCheck::absent(poi, "Issr");
    std::vector<pugi::xml_node> sets = dataSetsOf(inner);
    const char* names[] = {"AIDS", "CARDBRANDS", "CAPKS", "BINS"};
    if (sets.size() != std::size(names)) {
        reject("a table download asks for 4 data sets, not " + std::to_string(sets.size()));
    }
    for (size_t i = 0; i < sets.size(); ++i) {
        expectValue(sets[i].child("Id"), "Tp", "STRP");
        pugi::xml_node content = sets[i].child("Cntt");
        XmlCheck::absent(content, "POICmpnt");
        pugi::xml_node wanted = content.child("DataSetReqrd").child("Id");
        expectValue(wanted, "Tp", "TRPR");
        expectValue(wanted, "Vrsn", "1");
        expectValue(wanted, "Nm", names[i]);
    }
    return XmlCheck::text(poi, "Id");
}

std::string merchantParameters(const Merchant& merchant) {
    XmlReply reply(kReplyNamespace);
    pugi::xml_node configuration = XmlReply::element(configurationUpdate(reply, false), "AccptrCfgtn");
    pugi::xml_node poi = XmlReply::element(configuration, "POIId");
    XmlReply::leaf(poi, "Tp", "OPOI");
    XmlReply::leaf(poi, "Issr", "TMGT");
    XmlReply::leaf(poi, "Id", merchant.kovraCode);
    writeMerchantParameters(dataSetContent(configuration, "MRPR", "MERCHANT"), merchant);
    return reply.text();
}

std::string emvTables(const std::string& key) {
    XmlReply reply(kReplyNamespace);
    pugi::xml_node configuration = XmlReply::element(configurationUpdate(reply, true), "AccptrCfgtn");
    XmlReply::leaf(XmlReply::element(configuration, "POIId"), "Id", key);
    pugi::xml_node terminal = XmlReply::element(dataSetContent(configuration, "TRPR", "TABLES"), "TermnlParams");
    EmvTables::writeAidTable(terminal);
    EmvTables::writeCapkTable(terminal);
    EmvTables::writeCardBrands(terminal);
    EmvTables::writeBinRanges(terminal);
    return reply.text();
}

} // namespace

ReportHandler::ReportHandler(const MerchantDirectory& merchants, SimState& state)
    : merchants_(merchants), state_(state) {}

SimReply ReportHandler::handle(const std::string& body) {
    pugi::xml_document doc;
    pugi::xml_node outer = XmlCheck::openEnvelope(doc, body, kRequestNamespace, "StsRpt");
    XmlCheck::order(outer, {"Hdr", "StsRpt", "SctyTrlr"});
    checkHeader(XmlCheck::child(outer, "Hdr"));
    pugi::xml_node inner = XmlCheck::child(outer, "StsRpt");
    XmlCheck::order(inner, {"POIId", "DataSet"}, {"DataSet"});
    pugi::xml_node poi = XmlCheck::child(inner, "POIId");
    XmlCheck::order(poi, {"Tp", "Issr", "Id", "ShrtNm"});
    return poi.child("Id") ? downloadTables(outer) : enrol(outer);
}

SimReply ReportHandler::enrol(pugi::xml_node report) {
    const std::string kovraCode = checkEnrolment(report);
    const Merchant* merchant = merchants_.findByKovraCode(kovraCode);
    if (merchant == nullptr) {
        return unknownMerchant("unknown KovraCode \"" + kovraCode + "\"");
    }
    state_.noteEnrolment(merchant->kovraCode, merchant->saleAffiliationKey);
    return SimReply{200, "text/xml", merchantParameters(*merchant), "merchant parameters for " + merchant->kovraCode};
}

SimReply ReportHandler::downloadTables(pugi::xml_node report) {
    const std::string key = checkTableDownload(report);
    const Merchant* merchant = merchants_.findBySaleAffiliationKey(key);
    if (merchant == nullptr) {
        return unknownMerchant("unknown sale affiliation key \"" + key + "\"");
    }
    state_.noteTableDownload(merchant->kovraCode, merchant->saleAffiliationKey);
    return SimReply{200, "text/xml", emvTables(key), "EMV tables for " + merchant->kovraCode};
}

} // namespace acqsim

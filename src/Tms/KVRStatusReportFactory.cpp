#include "Tms/KVRStatusReportFactory.h"

#include "Utils/KVRClock.h"
#include "Utils/KVRDateUtil.h"

namespace {
constexpr const char* kFormatVersion = "2.0";
constexpr const char* kTerminalName = "Mobile";

std::string now() { return KVRDateUtil::dateStringWithFormat("yyyy-MM-dd'T'HH:mm:ss", KVRClock::now()); }

std::shared_ptr<KVRTmsHeader> header() {
    auto header = std::make_shared<KVRTmsHeader>();
    header->formatVersion = kFormatVersion;
    header->creationDateTime = now();
    return header;
}

std::shared_ptr<KVRDataSetIdentification> dataSetIdentification(KVRDataSetCategory type) {
    auto identification = std::make_shared<KVRDataSetIdentification>();
    identification->type = type;
    return identification;
}

std::shared_ptr<KVRPointOfInteractionComponentIdentification> componentIdentification(
    const std::string& identification, const std::string& provider) {
    auto id = std::make_shared<KVRPointOfInteractionComponentIdentification>();
    id->identification = identification;
    id->providerIdentification = provider;
    return id;
}

std::shared_ptr<KVRRequestContent> merchantParametersRequest(const std::string& kovraCode) {
    auto merchant = std::make_shared<KVRPoiComponent>();
    merchant->type = KVRPoiComponentTypeMRPR;
    merchant->identification = componentIdentification(kovraCode, "KOVRACODE");

    auto terminal = std::make_shared<KVRPoiComponentTerm>();
    terminal->type = KVRPoiComponentTypeTERM;
    terminal->identification = componentIdentification(kTerminalName, kTerminalName);
    terminal->identification->serialNumber = kTerminalName;

    auto content = std::make_shared<KVRRequestContent>();
    content->poiComponent = merchant;
    content->poiComponentTerm = terminal;
    content->dataSetRequired = std::make_shared<KVRDataSetRequired>();
    content->dataSetRequired->identification = dataSetIdentification(KVRDataSetCategoryMRPR);
    return content;
}

std::shared_ptr<KVRStatusReport> report(std::shared_ptr<KVRStatusReportContent> content) {
    auto data = std::make_shared<KVRStatusReportData>();
    data->header = header();
    data->statusReport = std::move(content);
    auto report = std::make_shared<KVRStatusReport>();
    report->data = data;
    return report;
}
}  // namespace

std::shared_ptr<KVRStatusReport> KVRStatusReportFactory::statusReportWithKovraCode(const std::string& kovraCode) {
    auto dataSet = std::make_shared<KVRRequestDataSet>();
    dataSet->dataIdentification = dataSetIdentification(KVRDataSetCategorySTRP);
    dataSet->requestContent = merchantParametersRequest(kovraCode);

    auto content = std::make_shared<KVRStatusReportContent>();
    content->poiIdentification = std::make_shared<KVRPoilIdentification>();
    content->poiIdentification->type = KVRPartyTypeOPOI;
    content->poiIdentification->issuer = KVRPartyTypeTMGT;
    content->listDataSet.push_back(dataSet);

    auto result = report(content);
    result->data->securityTrailer = std::make_shared<KVRSecurityTrailer>();
    result->data->securityTrailer->contentType = KVRContentTypeDATA;
    return result;
}

std::shared_ptr<KVRStatusReport> KVRStatusReportFactory::statusReportWithSaleAffiliationKey(
    const std::string& saleAffiliationKey) {
    auto content = std::make_shared<KVRStatusReportContent>();
    content->poiIdentification = std::make_shared<KVRPoilIdentification>();
    content->poiIdentification->identification = saleAffiliationKey;
    for (const char* name : {"AIDS", "CARDBRANDS", "CAPKS", "BINS"}) content->listDataSet.push_back(dataSetWithType(name));
    return report(content);
}

std::shared_ptr<KVRRequestDataSet> KVRStatusReportFactory::dataSetWithType(const std::string& name) {
    auto required = dataSetIdentification(KVRDataSetCategoryTRPR);
    required->version = "1";
    required->name = name;

    auto dataSet = std::make_shared<KVRRequestDataSet>();
    dataSet->dataIdentification = dataSetIdentification(KVRDataSetCategorySTRP);
    dataSet->dataIdentification->creationDateTime = now();
    dataSet->requestContent = std::make_shared<KVRRequestContent>();
    dataSet->requestContent->dataSetRequired = std::make_shared<KVRDataSetRequired>();
    dataSet->requestContent->dataSetRequired->identification = required;
    return dataSet;
}

#include <gtest/gtest.h>

#include <kovra/KVRException.h>

#include "Host/KVRHostMessageFixtures.h"
#include "Tms/KVRStatusReportFactory.h"
#include "Utils/KVRClock.h"
#include "testing/KVRTestFixture.h"


namespace {

class KVRStatusReportTest : public KVRTestFixture {
protected:
    // 09:07:05 on the machine's own clock face, whatever its time zone, so the
    // expected documents can be written by hand.
    void SetUp() override {
        KVRTestFixture::setClock([] { return kvrtest::localTime(2024, 5, 3, 9, 7, 5); });
    }
};

TEST_F(KVRStatusReportTest, EnrolmentReportMatchesTheExpectedDocumentWithTheKovraCodeEscaped) {
    auto report = KVRStatusReportFactory::statusReportWithKovraCode("Padaria \"São João\" <Açaí & Cia> d'Ávila");
    EXPECT_EQ(report->write(), KVRFiles::testData("status-report-kovracode.xml"));
}

TEST_F(KVRStatusReportTest, TableDownloadReportMatchesTheExpectedDocument) {
    auto report = KVRStatusReportFactory::statusReportWithSaleAffiliationKey("7C1F0A52-SAK-0001");
    EXPECT_EQ(report->write(), KVRFiles::testData("status-report-sale-affiliation-key.xml"));
}

TEST_F(KVRStatusReportTest, EmptyKovraCodeIsSentAsAnEmptyIdentification) {
    std::string text = KVRStatusReportFactory::statusReportWithKovraCode("")->write();
    EXPECT_NE(text.find("<Tp>MRPR</Tp>\n\t\t\t\t\t\t<Id>\n\t\t\t\t\t\t\t<Id></Id>\n\t\t\t\t\t\t\t<PrvdrId>KOVRACODE</PrvdrId>"),
              std::string::npos)
        << text;
}

TEST_F(KVRStatusReportTest, DataSetWithoutCategoryAbandonsTheWholeDocument) {
    auto report = KVRStatusReportFactory::statusReportWithSaleAffiliationKey("K");
    report->data->statusReport->listDataSet[2]->dataIdentification->type = static_cast<KVRDataSetCategory>(0);
    EXPECT_THROW(report->write(), KVRException);
}

// Every optional child the factories never fill, in its place.
TEST_F(KVRStatusReportTest, StandaloneDataSetWritesEveryChildInOrder) {
    auto dataSet = KVRStatusReportFactory::dataSetWithType("AIDS");
    dataSet->sequenceCounter = "7";

    auto inner = KVRStatusReportFactory::dataSetWithType("BINS");
    auto component = std::make_shared<KVRPoiComponent>();
    component->type = KVRPoiComponentTypeAPLI;
    component->identification = std::make_shared<KVRPointOfInteractionComponentIdentification>();
    component->identification->itemNumber = "3";
    component->identification->providerIdentification = "P";
    component->identification->identification = "I";
    component->identification->serialNumber = "S";
    component->listDataSet.push_back(inner);
    dataSet->requestContent->poiComponent = component;
    dataSet->requestContent->errors = "E";
    dataSet->requestContent->event = std::make_shared<KVREvent>();
    dataSet->requestContent->event->timeStamp = "T";
    dataSet->requestContent->event->result = KVRResultCodeSUCC;
    dataSet->requestContent->event->actionIdentification = std::make_shared<KVRRequestActionIdentification>();
    dataSet->requestContent->event->actionIdentification->actionType = KVRTerminalManagementActionDWNL;

    EXPECT_EQ(dataSet->write(),
              "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n"
              "<Document xmlns=\"urn:StatusReportV02.1\">\n"
              "\t<DataSet>\n"
              "\t\t<Id>\n\t\t\t<Tp>STRP</Tp>\n\t\t\t<CreDtTm>2024-05-03T09:07:05</CreDtTm>\n\t\t</Id>\n"
              "\t\t<SeqCntr>7</SeqCntr>\n"
              "\t\t<Cntt>\n"
              "\t\t\t<POICmpnt>\n"
              "\t\t\t\t<Tp>APLI</Tp>\n"
              "\t\t\t\t<Id>\n\t\t\t\t\t<Id>I</Id>\n\t\t\t\t\t<PrvdrId>P</PrvdrId>\n\t\t\t\t\t<ItmNb>3</ItmNb>\n"
              "\t\t\t\t\t<SrlNb>S</SrlNb>\n\t\t\t\t</Id>\n"
              "\t\t\t\t<DataSet>\n"
              "\t\t\t\t\t<Id>\n\t\t\t\t\t\t<Tp>STRP</Tp>\n\t\t\t\t\t\t<CreDtTm>2024-05-03T09:07:05</CreDtTm>\n\t\t\t\t\t</Id>\n"
              "\t\t\t\t\t<Cntt>\n\t\t\t\t\t\t<DataSetReqrd>\n\t\t\t\t\t\t\t<Id>\n\t\t\t\t\t\t\t\t<Tp>TRPR</Tp>\n"
              "\t\t\t\t\t\t\t\t<Vrsn>1</Vrsn>\n\t\t\t\t\t\t\t\t<Nm>BINS</Nm>\n\t\t\t\t\t\t\t</Id>\n"
              "\t\t\t\t\t\t</DataSetReqrd>\n\t\t\t\t\t</Cntt>\n"
              "\t\t\t\t</DataSet>\n"
              "\t\t\t</POICmpnt>\n"
              "\t\t\t<DataSetReqrd>\n\t\t\t\t<Id>\n\t\t\t\t\t<Tp>TRPR</Tp>\n\t\t\t\t\t<Vrsn>1</Vrsn>\n"
              "\t\t\t\t\t<Nm>AIDS</Nm>\n\t\t\t\t</Id>\n\t\t\t</DataSetReqrd>\n"
              "\t\t\t<Errs>E</Errs>\n"
              "\t\t\t<Evt>\n\t\t\t\t<TmStmp>T</TmStmp>\n\t\t\t\t<Rslt>SUCC</Rslt>\n"
              "\t\t\t\t<ActnId>\n\t\t\t\t\t<ActnTp>DWNL</ActnTp>\n\t\t\t\t</ActnId>\n\t\t\t</Evt>\n"
              "\t\t</Cntt>\n"
              "\t</DataSet>\n"
              "</Document>");
}

}  // namespace

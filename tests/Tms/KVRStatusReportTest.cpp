#include <gtest/gtest.h>

#include <kovra/KVRException.h>

#include "Host/KVRHostMessageFixtures.h"
#include "Host/XMLWriter.h"
#include "Tms/KVRStatusReportFactory.h"
#include "Utils/KVRClock.h"
#include "testing/KVRTestFixture.h"

#include <functional>

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
    EXPECT_EQ(report->write(), kvrtest::testData("status-report-kovracode.xml"));
}

TEST_F(KVRStatusReportTest, TableDownloadReportMatchesTheExpectedDocument) {
    auto report = KVRStatusReportFactory::statusReportWithSaleAffiliationKey("7C1F0A52-SAK-0001");
    EXPECT_EQ(report->write(), kvrtest::testData("status-report-sale-affiliation-key.xml"));
}

TEST_F(KVRStatusReportTest, EmptyKovraCodeIsSentAsAnEmptyIdentification) {
    std::string text = KVRStatusReportFactory::statusReportWithKovraCode("")->write();
    EXPECT_NE(text.find("<Tp>MRPR</Tp>\n\t\t\t\t\t\t<Id>\n\t\t\t\t\t\t\t<Id></Id>\n\t\t\t\t\t\t\t<PrvdrId>KOVRACODE</PrvdrId>"),
              std::string::npos)
        << text;
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

TEST(KVRPoilIdentification, PartyTypeAndIssuerAreWrittenOnlyWhenNotZero) {
    struct Case {
        KVRPartyType type, issuer;
        const char* expected;
    } cases[] = {
        {KVRPartyTypeACCP, KVRPartyTypeACCP, "\n<POIId>\n\t<Id>K</Id>\n</POIId>"},
        {KVRPartyTypeMERC, KVRPartyTypeACCP, "\n<POIId>\n\t<Tp>MERC</Tp>\n\t<Id>K</Id>\n</POIId>"},
        {KVRPartyTypeACCP, KVRPartyTypeMTMG, "\n<POIId>\n\t<Issr>MTMG</Issr>\n\t<Id>K</Id>\n</POIId>"},
        // A number with no code keeps its element, with nothing in it.
        {static_cast<KVRPartyType>(7), KVRPartyTypeACCP, "\n<POIId>\n\t<Tp />\n\t<Id>K</Id>\n</POIId>"},
    };
    for (const Case& c : cases) {
        KVRPoilIdentification id;
        id.type = c.type;
        id.issuer = c.issuer;
        id.identification = "K";
        XMLWriter writer;
        id.write(writer);
        EXPECT_EQ(writer.toString(), c.expected) << c.type << "/" << c.issuer;
    }
}

TEST(KVRStatusReportCodes, TablesGiveTheirCodesAndRefuseNumbersOutsideThem) {
    EXPECT_EQ(KVRPoilIdentification::serializePartyTypeCodeToString(0), "ACCP");
    EXPECT_EQ(KVRPoilIdentification::serializePartyTypeCodeToString(6), "TMGT");
    EXPECT_EQ(KVRPoilIdentification::serializePartyTypeCodeToString(7), std::nullopt);
    EXPECT_EQ(KVRDataSetIdentification::SerializeDataSetCategoryCodeToString(1), "AQPR");
    EXPECT_EQ(KVRDataSetIdentification::SerializeDataSetCategoryCodeToString(12), "VDPR");
    EXPECT_EQ(KVRPoiComponent::PoiComponentTypeCodeToString(0), "AQPP");
    EXPECT_EQ(KVRPoiComponentTerm::poiComponentTypeCodeToString(14), "MRPR");
    EXPECT_EQ(KVREvent::resultToString(13), "UKRF");
    EXPECT_EQ(KVRRequestActionIdentification::TerminalManagementActionCodeToString(6), "UPLD");

    struct Refusal {
        std::function<void()> write;
        const char* reason;
    } refusals[] = {
        {[] { KVRDataSetIdentification::SerializeDataSetCategoryCodeToString(0); }, "Unexpected DataSetCategoryCode."},
        {[] { KVRDataSetIdentification::SerializeDataSetCategoryCodeToString(13); }, "Unexpected DataSetCategoryCode."},
        {[] { KVRPoiComponent::PoiComponentTypeCodeToString(15); }, "Unexpected PoiComponentTypeCode."},
        {[] { KVRPoiComponentTerm::poiComponentTypeCodeToString(15); }, "Unexpected PoiComponentTypeCode."},
        {[] { KVREvent::resultToString(14); }, "Unexpected ResultCode."},
        {[] { KVRRequestActionIdentification::TerminalManagementActionCodeToString(7); },
         "Unexpected TerminalManagementActionCode."},
    };
    for (const Refusal& r : refusals) {
        try {
            r.write();
            ADD_FAILURE() << "no exception for " << r.reason;
        } catch (const KVRException& e) {
            EXPECT_EQ(e.reason(), r.reason);
        }
    }
}

TEST(KVRStatusReportCodes, ReverseLookupsAreExactAndDefaultToZero) {
    EXPECT_EQ(KVRPoilIdentification::PartyTypeCodeToString("OPOI"), KVRPartyTypeOPOI);
    EXPECT_EQ(KVRPoilIdentification::PartyTypeCodeToString("TMGT"), KVRPartyTypeTMGT);
    EXPECT_EQ(KVRPoilIdentification::PartyTypeCodeToString("opoi"), KVRPartyTypeACCP);
    EXPECT_EQ(KVRPoilIdentification::PartyTypeCodeToString(nullptr), KVRPartyTypeACCP);
    EXPECT_EQ(KVRDataSetIdentification::dataSetCategoryFromString("AQPR"), KVRDataSetCategoryAQPR);
    EXPECT_EQ(KVRDataSetIdentification::dataSetCategoryFromString("VDPR"), KVRDataSetCategoryVDPR);
    EXPECT_EQ(KVRDataSetIdentification::dataSetCategoryFromString("STRP "), 0u);
}

TEST_F(KVRStatusReportTest, DataSetWithoutCategoryAbandonsTheWholeDocument) {
    auto report = KVRStatusReportFactory::statusReportWithSaleAffiliationKey("K");
    report->data->statusReport->listDataSet[2]->dataIdentification->type = static_cast<KVRDataSetCategory>(0);
    EXPECT_THROW(report->write(), KVRException);
}

}  // namespace

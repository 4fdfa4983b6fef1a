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

TEST_F(KVRStatusReportTest, DataSetWithoutCategoryAbandonsTheWholeDocument) {
    auto report = KVRStatusReportFactory::statusReportWithSaleAffiliationKey("K");
    report->data->statusReport->listDataSet[2]->dataIdentification->type = static_cast<KVRDataSetCategory>(0);
    EXPECT_THROW(report->write(), KVRException);
}

}  // namespace

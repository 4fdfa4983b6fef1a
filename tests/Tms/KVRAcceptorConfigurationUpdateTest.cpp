#include <gtest/gtest.h>

#include <kovra/KVRAddress.h>
#include <kovra/KVRTmsTableModel.h>

#include "Tms/KVRCardBrand.h"
#include "Tms/KVRBinRange.h"
#include "Tms/KVRAddressElement.h"
#include "Host/XMLWriter.h"
#include "Host/TBXML.h"
#include "Tms/KVRAcceptorConfigurationUpdate.h"
#include "testing/KVRTemporaryStore.h"
#include "testing/KVRTestFixture.h"

namespace {

const char* const kConfiguration =
    "<AccptrCfgtnUpd>"
    "<Hdr><DwnldTrf>true</DwnldTrf><FrmtVrsn>2.0</FrmtVrsn><XchgId>42</XchgId>"
    "<CreDtTm>2024-05-03T09:07:06</CreDtTm></Hdr>"
    "<AccptrCfgtn>"
    "<POIId><Tp>OPOI</Tp><Issr>TMGT</Issr><Id>T1</Id><ShrtNm>Caixa 1</ShrtNm></POIId>"
    "<DataSet>"
    "<Id><Tp>MRPR</Tp><Id>DS1</Id><Vrsn>3</Vrsn><CreDtTm>2024-05-03T09:07:06</CreDtTm><Nm>MERCHANT</Nm></Id>"
    "<Cntt>"
    "<MrchntParams><Sak>SAK-0001</Sak>"
    "<Adr><City>São Paulo</City><Strt>Rua Augusta</Strt><Dstrct>SP</Dstrct><DrNb>1500</DrNb>"
    "<Nghbhd>Consolação</Nghbhd><ZipCd>01304-001</ZipCd><Cmplmt>Loja 2</Cmplmt><Pais>BR</Pais></Adr>"
    "<CpnyNm>Padaria &amp; Cia</CpnyNm><IdCd>12345678000190</IdCd></MrchntParams>"
    "<TermnlParams><AidTbl><Aid><AID>A0000000031010</AID></Aid></AidTbl><CapkTable></CapkTable></TermnlParams>"
    "<HstComParams><HstId>TMS</HstId><Adr><PmryAdr>10.0.0.1</PmryAdr><PmryPortNb>443</PmryPortNb></Adr>"
    "</HstComParams>"
    "<ApplParams><ApplId>KOVRA</ApplId><Vrsn>2.5</Vrsn><Params>x=1</Params></ApplParams>"
    "</Cntt>"
    "</DataSet>"
    "</AccptrCfgtn>"
    "<SctyTrlr><CnttTp>SIGN</CnttTp></SctyTrlr>"
    "</AccptrCfgtnUpd>";

struct Wrapping {
    const char* name;
    const char* before;
    const char* after;
};

const Wrapping kWrappings[] = {
    {"Bare", "", ""},
    {"InDocument", "<?xml version=\"1.0\" encoding=\"UTF-8\"?><Document xmlns=\"urn:AcceptorConfigurationUpdateV02.1\">",
     "</Document>"},
    // An unquoted attribute and no final end tag: what a sloppy host sends.
    {"InSloppyDocument", "<Document xmlns=urn:AcceptorConfigurationUpdateV02.1>", ""},
};

class KVRAcceptorConfigurationUpdateTest : public KVRTestFixture, public ::testing::WithParamInterface<Wrapping> {
protected:
    KVRTemporaryStore store;
};

TEST_P(KVRAcceptorConfigurationUpdateTest, ReadsEveryPathWithOrWithoutTheDocumentElement) {
    KVRAcceptorConfigurationUpdate update;
    update.read(GetParam().before + std::string(kConfiguration) + GetParam().after);
    ASSERT_TRUE(update.data);

    ASSERT_TRUE(update.data->header);
    EXPECT_EQ(update.data->header->exchangeIdentification, "42");
    auto& configuration = update.data->acceptorConfiguration;
    ASSERT_TRUE(configuration && configuration->poiIdentification && configuration->dataSet);
    EXPECT_EQ(configuration->poiIdentification->issuer, KVRPartyTypeTMGT);

    auto& content = configuration->dataSet->content;
    ASSERT_TRUE(content && content->merchantParameters);
    auto& merchant = *content->merchantParameters;
    EXPECT_EQ(merchant.saleAffiliationKey, "SAK-0001");
    EXPECT_EQ(merchant.companyName, "Padaria &amp; Cia");  // texts are not decoded
    EXPECT_EQ(merchant.identificationCode, "12345678000190");
    ASSERT_TRUE(merchant.address);
    auto stored = KVRAddress::findAll();  // created in the store while reading
    ASSERT_EQ(stored.size(), 1u);
    EXPECT_EQ(stored[0], merchant.address);
    EXPECT_EQ(merchant.address->neighborhood(), "Consolação");
    EXPECT_EQ(merchant.address->zipCode(), "01304-001");

    ASSERT_TRUE(content->terminalParameters);
    EXPECT_FALSE(content->terminalParameters->tableAID);
}

INSTANTIATE_TEST_SUITE_P(Wrapping, KVRAcceptorConfigurationUpdateTest, ::testing::ValuesIn(kWrappings),
                         [](const auto& info) { return info.param.name; });

TEST(KVRAcceptorConfigurationUpdate, RepliesThatAreNotAConfigurationLeaveDataUnset) {
    const char* bodies[] = {
        "",
        "Service Unavailable",
        "<html><head><title>502 Bad Gateway</title></head><body><h1>Bad Gateway</h1></body></html>",
        "<!DOCTYPE html><html><body><p>Erro<br></p></body></html>",
        // Looked for along first children only.
        "<Document><Hdr/><AccptrCfgtnUpd><Hdr/></AccptrCfgtnUpd></Document>",
    };
    for (const char* body : bodies) {
        KVRAcceptorConfigurationUpdate update;
        update.read(body);
        EXPECT_FALSE(update.data) << body;
    }
}

TEST(KVRTerminalParameter, TableChildrenDoNotFailOnAnEmptyStoreAndCreateNoTables) {
    KVRTemporaryStore store;
    TBXML xml("<TermnlParams><AidTbl><Aid/></AidTbl><CapkTable><Capk/></CapkTable></TermnlParams>");
    KVRTerminalParameter parameters;
    parameters.read(xml.rootXMLElement()->firstChild);
    EXPECT_FALSE(parameters.tableAID);
    EXPECT_FALSE(parameters.capkTable);

    auto tables = KVRTmsTableModel::create();
    tables->setAidTable("<AidTbl><Aid><AID>A0000000041010</AID></Aid></AidTbl>");
    parameters.read(xml.rootXMLElement()->firstChild);
    EXPECT_FALSE(parameters.tableAID);

    // Tables the caller provides are refreshed from the stored texts, not from the reply.
    parameters.tableAID = std::make_shared<KVRAidTable>();
    parameters.read(xml.rootXMLElement()->firstChild);
    ASSERT_EQ(parameters.tableAID->Aids.size(), 1u);
    EXPECT_EQ(parameters.tableAID->Aids[0]->ApplicationId, "A0000000041010");
}

// Elements the library writes but never reads from a reply.
TEST(KVRTmsWriters, AddressBinRangeAndCardBrandElements) {
    KVRTemporaryStore store;
    auto address = KVRAddress::create();
    address->setStreet("Av. Paulista");
    address->setDoorNumber("1000");
    address->setCity("São Paulo");
    XMLWriter writer;
    KVRAddressElement::write(*address, writer);
    KVRBinRange range;
    range.minRange = 411111;
    range.maxRange = 411199;
    range.tefBrandId = 3;
    range.dataSetVersion = "9";
    range.write(writer);
    KVRCardBrand brand;
    brand.identification = 3;
    brand.brandDescription = "VISA <Crédito>";
    brand.brandType = 1;
    brand.write(writer);
    EXPECT_EQ(writer.toString(),
              "\n<Adr>\n\t<City>São Paulo</City>\n\t<Strt>Av. Paulista</Strt>\n\t<DrNb>1000</DrNb>\n</Adr>"
              "\n<BinRng>\n\t<MaxRange>411199</MaxRange>\n\t<MinRange>411111</MinRange>\n\t<TefBrandId>3</TefBrandId>"
              "\n</BinRng>"
              "\n<CrdBrdTbl>\n\t<Id>3</Id>\n\t<Description>VISA &lt;Crédito&gt;</Description>\n\t<BrandType>1</BrandType>"
              "\n</CrdBrdTbl>");

    TBXML xml("<Root>" + writer.toString() + "</Root>");
    auto read = KVRAddress::create();
    KVRAddressElement::read(*read, xml.rootXMLElement()->firstChild->firstChild);
    EXPECT_EQ(read->street(), "Av. Paulista");
    EXPECT_EQ(read->doorNumber(), "1000");
    EXPECT_EQ(read->city(), "São Paulo");
    EXPECT_EQ(read->zipCode(), std::nullopt);
}

}  // namespace

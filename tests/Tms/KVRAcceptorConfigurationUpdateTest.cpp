#include <gtest/gtest.h>

#include <kovra/KVRAddress.h>
#include <kovra/KVRTmsTableModel.h>

#include "Host/TBXML.h"
#include "Host/XMLWriter.h"
#include "Tms/KVRAcceptorConfigurationUpdate.h"
#include "Tms/KVRAddressElement.h"
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
    EXPECT_TRUE(update.data->header->downloadTransfer);
    EXPECT_EQ(update.data->header->formatVersion, "2.0");
    EXPECT_EQ(update.data->header->exchangeIdentification, "42");
    EXPECT_EQ(update.data->header->creationDateTime, "2024-05-03T09:07:06");
    ASSERT_TRUE(update.data->securityTrailer);
    EXPECT_EQ(update.data->securityTrailer->contentType, KVRContentTypeSIGN);

    auto& configuration = update.data->acceptorConfiguration;
    ASSERT_TRUE(configuration && configuration->poiIdentification && configuration->dataSet);
    EXPECT_EQ(configuration->poiIdentification->type, KVRPartyTypeOPOI);
    EXPECT_EQ(configuration->poiIdentification->issuer, KVRPartyTypeTMGT);
    EXPECT_EQ(configuration->poiIdentification->identification, "T1");
    EXPECT_EQ(configuration->poiIdentification->shortName, "Caixa 1");

    auto& identification = configuration->dataSet->identification;
    ASSERT_TRUE(identification);
    EXPECT_EQ(identification->type, KVRDataSetCategoryMRPR);
    EXPECT_EQ(identification->identification, "DS1");
    EXPECT_EQ(identification->version, "3");
    EXPECT_EQ(identification->name, "MERCHANT");

    auto& content = configuration->dataSet->content;
    ASSERT_TRUE(content && content->merchantParameters);
    auto& merchant = *content->merchantParameters;
    EXPECT_EQ(merchant.saleAffiliationKey, "SAK-0001");
    EXPECT_EQ(merchant.companyName, "Padaria &amp; Cia");  // texts are not decoded
    EXPECT_EQ(merchant.identificationCode, "12345678000190");
    ASSERT_TRUE(merchant.address);
    EXPECT_EQ(merchant.address->city(), "São Paulo");
    EXPECT_EQ(merchant.address->street(), "Rua Augusta");
    EXPECT_EQ(merchant.address->district(), "SP");
    EXPECT_EQ(merchant.address->doorNumber(), "1500");
    EXPECT_EQ(merchant.address->neighborhood(), "Consolação");
    EXPECT_EQ(merchant.address->zipCode(), "01304-001");
    EXPECT_EQ(merchant.address->complement(), "Loja 2");

    ASSERT_TRUE(content->terminalParameters);
    EXPECT_FALSE(content->terminalParameters->tableAID);
    EXPECT_FALSE(content->terminalParameters->capkTable);
    ASSERT_TRUE(content->hostCommunicationParameters && content->hostCommunicationParameters->addressData);
    EXPECT_EQ(content->hostCommunicationParameters->hostIdentification, "TMS");
    EXPECT_EQ(content->hostCommunicationParameters->addressData->primaryAddress, "10.0.0.1");
    ASSERT_TRUE(content->appParameters);
    EXPECT_EQ(content->appParameters->applicationIdentification, "KOVRA");
    EXPECT_EQ(content->appParameters->version, 0.0f);
    EXPECT_EQ(content->appParameters->parameters, "x=1");
}

INSTANTIATE_TEST_SUITE_P(Wrapping, KVRAcceptorConfigurationUpdateTest, ::testing::ValuesIn(kWrappings),
                         [](const auto& info) { return info.param.name; });

TEST(KVRAcceptorConfigurationUpdate, TheAddressIsCreatedInTheStoreWhileReading) {
    KVRTemporaryStore store;
    ASSERT_TRUE(KVRAddress::findAll().empty());
    KVRAcceptorConfigurationUpdate update;
    update.read(kConfiguration);
    auto stored = KVRAddress::findAll();
    ASSERT_EQ(stored.size(), 1u);
    EXPECT_EQ(stored[0], update.data->acceptorConfiguration->dataSet->content->merchantParameters->address);
    EXPECT_EQ(stored[0]->city(), "São Paulo");
}

TEST(KVRAcceptorConfigurationUpdate, RepeatedElementsKeepTheLastOccurrence) {
    KVRTemporaryStore store;
    KVRAcceptorConfigurationUpdate update;
    update.read(
        "<Document><AccptrCfgtnUpd><AccptrCfgtn>"
        "<DataSet><Id><Tp>MRPR</Tp><Nm>FIRST</Nm></Id><Cntt><MrchntParams><Sak>A</Sak></MrchntParams></Cntt></DataSet>"
        "<DataSet><Id><Tp>TRPR</Tp><Nm>SECOND</Nm></Id>"
        "<Cntt><MrchntParams><Sak>B</Sak><Sak>C</Sak></MrchntParams></Cntt></DataSet>"
        "</AccptrCfgtn></AccptrCfgtnUpd></Document>");
    ASSERT_TRUE(update.data && update.data->acceptorConfiguration && update.data->acceptorConfiguration->dataSet);
    auto& dataSet = *update.data->acceptorConfiguration->dataSet;
    EXPECT_EQ(dataSet.identification->type, KVRDataSetCategoryTRPR);
    EXPECT_EQ(dataSet.identification->name, "SECOND");
    EXPECT_EQ(dataSet.content->merchantParameters->saleAffiliationKey, "C");
    EXPECT_FALSE(update.data->header);
    EXPECT_FALSE(update.data->securityTrailer);
}

TEST(KVRAcceptorConfigurationUpdate, DownloadTransferIsTrueWheneverItHasText) {
    struct Case {
        const char* header;
        bool expected;
    } cases[] = {
        {"<Hdr><DwnldTrf>true</DwnldTrf></Hdr>", true},
        {"<Hdr><DwnldTrf>false</DwnldTrf></Hdr>", true},
        {"<Hdr><DwnldTrf>0</DwnldTrf></Hdr>", true},
        {"<Hdr><DwnldTrf></DwnldTrf></Hdr>", false},
        {"<Hdr><DwnldTrf/></Hdr>", false},
        {"<Hdr><FrmtVrsn>2.0</FrmtVrsn></Hdr>", false},
        {"<Hdr><DwnldTrf>yes</DwnldTrf><DwnldTrf></DwnldTrf></Hdr>", false},
    };
    for (const Case& c : cases) {
        KVRAcceptorConfigurationUpdate update;
        update.read(std::string("<AccptrCfgtnUpd>") + c.header + "</AccptrCfgtnUpd>");
        ASSERT_TRUE(update.data && update.data->header) << c.header;
        EXPECT_EQ(update.data->header->downloadTransfer, c.expected) << c.header;
    }
}

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

#include "EmvTables.h"

#include "FieldFormat.h"
#include "XmlReply.h"

#include <stdexcept>

#include <openssl/evp.h>

namespace acqsim {
namespace {

constexpr const char* kAcquirerNumber = "8";

struct AidEntry {
    const char* recidx;
    const char* aid;
    const char* applicationType;   // 1 credit, 2 debit
    const char* appName;           // at most 16 characters
    const char* brandId;
    const char* tacDefault;
    const char* tacDenial;
    const char* tacOnline;
    const char* version;
};

// Terminal action codes as the brands publish them for attended terminals.
const AidEntry kAids[] = {
    {"3", "A0000000031010", "1", "VISA CREDITO", "1", "DC4000A800", "0010000000", "DC4004F800", "008C"},
    {"2", "A0000000032010", "2", "VISA ELECTRON", "1", "DC4000A800", "0010000000", "DC4004F800", "008C"},
    {"4", "A0000000041010", "1", "MASTERCARD", "2", "FE50BCA000", "0000000000", "FE50BCF800", "0002"},
    {"5", "A0000000043060", "2", "MAESTRO", "2", "FE50BCA000", "0000800000", "FE50BCF800", "0002"},
};

struct CapkEntry {
    const char* recIdx;
    const char* rid;
    const char* index;
    const char* modulus;
};

// The brands' public test keys (Visa 1408-, 1984- and 1152-bit; Mastercard
// 1984-, 1408- and 1152-bit), exponent 3.
const CapkEntry kCapks[] = {
    {"01", "A000000003", "92",
     "996AF56F569187D09293C14810450ED8EE3357397B18A2458EFAA92DA3B6DF6514EC060195318FD43BE9B8F0CC669E3F844057CBDDF8BDA"
     "191BB64473BC8DC9A730DB8F6B4EDE3924186FFD9B8C7735789C23A36BA0B8AF65372EB57EA5D89E7D14E9C7B6B557460F10885DA16AC9"
     "23F15AF3758F0F03EBD3C5C2C949CBA306DB44E6A2C076C5F67E281D7EF56785DC4D75945E491F01918800A9E2DC66F60080566CE0DAF8"
     "D17EAD46AD8E30A247C9F"},
    {"02", "A000000003", "94",
     "ACD2B12302EE644F3F835ABD1FC7A6F62CCE48FFEC622AA8EF062BEF6FB8BA8BC68BBF6AB5870EED579BC3973E121303D34841A796D6DC"
     "BC41DBF9E52C4609795C0CCF7EE86FA1D5CB041071ED2C51D2202F63F1156C58A92D38BC60BDF424E1776E2BC9648078A03B36FB554375"
     "FC53D57C73F5160EA59F3AFC5398EC7B67758D65C9BFF7828B6B82D4BE124A416AB7301914311EA462C19F771F31B3B57336000DFF732D"
     "3B83DE07052D730354D297BEC72871DCCF0E193F171ABA27EE464C6A97690943D59BDABB2A27EB71CEEBDAFA1176046478FD62FEC452D5"
     "CA393296530AA3F41927ADFE434A2DF2AE3054F8840657A26E0FC617"},
    {"03", "A000000003", "95",
     "BE9E1FA5E9A803852999C4AB432DB28600DCD9DAB76DFAAA47355A0FE37B1508AC6BF38860D3C6C2E5B12A3CAAF2A7005A7241EBAA7771"
     "112C74CF9A0634652FBCA0E5980C54A64761EA101A114E0F0B5572ADD57D010B7C9C887E104CA4EE1272DA66D997B9A90B5A6D624AB6C5"
     "7E73C8F919000EB5F684898EF8C3DBEFB330C62660BED88EA78E909AFF05F6DA627B"},
    {"04", "A000000004", "EF",
     "A191CB87473F29349B5D60A88B3EAEE0973AA6F1A082F358D849FDDFF9C091F899EDA9792CAF09EF28F5D22404B88A2293EEBBC1949C43"
     "BEA4D60CFD879A1539544E09E0F09F60F065B2BF2A13ECC705F3D468B9D33AE77AD9D3F19CA40F23DCF5EB7C04DC8F69EBA565B1EBCB46"
     "86CD274785530FF6F6E9EE43AA43FDB02CE00DAEC15C7B8FD6A9B394BABA419D3F6DC85E16569BE8E76989688EFEA2DF22FF7D35C04333"
     "8DEAA982A02B866DE5328519EBBCD6F03CDD686673847F84DB651AB86C28CF1462562C577B853564A290C8556D818531268D25CC98A4CC"
     "6A0BDFFFDA2DCCA3A94C998559E307FDDF915006D9A987B07DDAEB3B"},
    {"05", "A000000004", "F1",
     "A0DCF4BDE19C3546B4B6F0414D174DDE294AABBB828C5A834D73AAE27C99B0B053A90278007239B6459FF0BBCD7B4B9C6C50AC02CE9136"
     "8DA1BD21AAEADBC65347337D89B68F5C99A09D05BE02DD1F8C5BA20E2F13FB2A27C41D3F85CAD5CF6668E75851EC66EDBF98851FD4E42C"
     "44C1D59F5984703B27D5B9F21B8FA0D93279FBBF69E090642909C9EA27F898959541AA6757F5F624104F6E1D3A9532F2A6E51515AEAD1B"
     "43B3D7835088A2FAFA7BE7"},
    {"06", "A000000004", "FA",
     "A90FCD55AA2D5D9963E35ED0F440177699832F49C6BAB15CDAE5794BE93F934D4462D5D12762E48C38BA83D8445DEAA74195A301A102B2"
     "F114EADA0D180EE5E7A5C73E0C4E11F67A43DDAB5D55683B1474CC0627F44B8D3088A492FFAADAD4F42422D0E7013536C3C49AD3D0FAE9"
     "6459B0F6B1B6056538A3D6D44640F94467B108867DEC40FAAECD740C00E2B7A8852D"},
};

constexpr const char* kExponent = "03";

// Values the PIN pad record takes as fixed-width text: each is written at
// its full width, since the record pads some fields on the right.
void writeAid(pugi::xml_node table, const AidEntry& entry) {
    pugi::xml_node aid = XmlReply::element(table, "Aid");
    auto put = [&aid](const char* tag, const std::string& value) { XmlReply::leaf(aid, tag, value); };
    put("AID", entry.aid);
    put("BrandId", entry.brandId);
    put("AppName", entry.appName);
    put("AidLen", std::to_string(std::string(entry.aid).size() / 2));
    put("SelFlag", "1");
    put("Priority", "0");
    put("TargetPer", "0");
    put("MaxTargetPer", "0");
    put("FloorLimitCheck", "1");
    put("RandTransSel", "0");
    put("VelocityCheck", "0");
    put("FloorLimit", "00000000");
    put("Threshold", "0");
    put("TACDenial", entry.tacDenial);
    put("TACDefault", entry.tacDefault);
    put("TACOnline", entry.tacOnline);
    put("dDol", "039F3704");
    put("tDol", "0F9F02065F2A029A039C0195059F3704");
    put("Version", entry.version);
    put("RiskMainData", "0");
    put("Recidx", entry.recidx);
    put("ApplicationType", entry.applicationType);
    put("TerminalCountry", "076");
    put("TerminalCurrencyCode", "986");
    put("TerminalCurrencyExponent", "2");
    put("AdditionalTerminalCapabilities", "6000F0A001");
    put("TerminalType", "22");
    // The host format repeats the currency code in front of the contactless block.
    put("TerminalCurrencyCode", "986");
    put("CTLSZEROAM", "0");
    put("TCC", "R");
    put("CTLSMODE", "0");
    put("CTLSTRNLIM", "00100000");
    put("CTLSFLRLIM", "00000000");
    put("CTLSCVMLIM", "00020000");
    put("CTLSAPPVER", "0002");
    put("AcquirerNumber", kAcquirerNumber);
    put("TerminalCapabilities", "E0F0C8");
}

void writeCapk(pugi::xml_node table, const CapkEntry& entry) {
    const std::string modulus = entry.modulus;
    pugi::xml_node capk = XmlReply::element(table, "Capk");
    auto put = [&capk](const char* tag, const std::string& value) { XmlReply::leaf(capk, tag, value); };
    put("CapkIdx", entry.index);
    put("CheckSum", EmvTables::capkChecksum(entry.rid, entry.index, modulus, kExponent));
    put("DataSetVersion", "1");
    put("Exponent", kExponent);
    put("Modulus", modulus);
    put("RID", entry.rid);
    put("RecIdx", entry.recIdx);
    put("ExponentLen", std::to_string(std::string(kExponent).size() / 2));
    put("ModulusLen", std::to_string(modulus.size() / 2));
    put("AcquirerNumber", kAcquirerNumber);
}

} // namespace

void EmvTables::writeAidTable(pugi::xml_node parent) {
    pugi::xml_node table = XmlReply::element(parent, "AidTbl");
    for (const AidEntry& entry : kAids) {
        writeAid(table, entry);
    }
}

void EmvTables::writeCapkTable(pugi::xml_node parent) {
    pugi::xml_node table = XmlReply::element(parent, "CapkTable");
    for (const CapkEntry& entry : kCapks) {
        writeCapk(table, entry);
    }
}

void EmvTables::writeCardBrands(pugi::xml_node parent) {
    const std::pair<const char*, const char*> brands[] = {{"1", "Visa"}, {"2", "MasterCard"}};
    for (const auto& [id, description] : brands) {
        pugi::xml_node brand = XmlReply::element(parent, "CrdBrdTbl");
        XmlReply::leaf(brand, "Id", id);
        XmlReply::leaf(brand, "Description", description);
        XmlReply::leaf(brand, "BrandType", "1");
    }
}

void EmvTables::writeBinRanges(pugi::xml_node parent) {
    struct Range {
        const char* min;
        const char* max;
        const char* brand;
    };
    const Range ranges[] = {{"400000", "499999", "1"}, {"510000", "559999", "2"}, {"222100", "272099", "2"}};
    for (const Range& range : ranges) {
        pugi::xml_node node = XmlReply::element(parent, "BinRng");
        XmlReply::leaf(node, "MaxRange", range.max);
        XmlReply::leaf(node, "MinRange", range.min);
        XmlReply::leaf(node, "TefBrandId", range.brand);
    }
}

std::string EmvTables::capkChecksum(const std::string& rid, const std::string& index, const std::string& modulus,
                                    const std::string& exponent) {
    const std::string bytes = FieldFormat::fromHex(rid + index + modulus + exponent);
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    if (!EVP_Digest(bytes.data(), bytes.size(), digest, &length, EVP_sha1(), nullptr)) {
        throw std::runtime_error("SHA-1 is not available");
    }
    return FieldFormat::toHex(digest, length);
}

} // namespace acqsim

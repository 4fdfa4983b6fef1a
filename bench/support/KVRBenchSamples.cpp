#include "support/KVRBenchSamples.h"

#include "testing/KVRPinpadReplies.h"

#include <cstdint>
#include <cstdio>
#include <initializer_list>
#include <string>
#include <utility>

namespace {

std::string num(long long value, int width) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%0*lld", width, value);
    return buffer;
}

/// Writes elements the way the hosts lay them out: one tab per level, one
/// element per line.
class Layout {
public:
    explicit Layout(int level) : level_(level) {}

    Layout& open(const std::string& tag) {
        line("<" + tag + ">");
        ++level_;
        return *this;
    }
    Layout& close(const std::string& tag) {
        --level_;
        line("</" + tag + ">");
        return *this;
    }
    Layout& element(const std::string& tag, const std::string& text) {
        line("<" + tag + ">" + text + "</" + tag + ">");
        return *this;
    }
    Layout& elements(std::initializer_list<std::pair<const char*, std::string>> children) {
        for (const auto& [tag, text] : children) element(tag, text);
        return *this;
    }
    Layout& raw(const std::string& text) {
        text_ += text;
        return *this;
    }
    /// Without the line break after the last line.
    std::string text() const { return text_.empty() ? text_ : text_.substr(0, text_.size() - 1); }

private:
    void line(const std::string& content) { text_ += std::string(static_cast<size_t>(level_), '\t') + content + "\n"; }

    int level_;
    std::string text_;
};

// Where the tables stand inside the configuration update; the blocks the
// table download cuts out keep this indentation, so the table benchmarks
// parse what a real load parses.
constexpr int kTableLevel = 6;

struct Application {
    const char* aid;
    int type;
    const char* name;
    const char* tacDefault;
    const char* tacDenial;
    const char* tacOnline;
};

// Public EMV parameters of the schemes' usual credit and debit applications.
constexpr Application kApplications[] = {
    {"A0000000031010", 1, "VISA CREDITO", "DC4000A800", "0010000000", "DC4004F800"},
    {"A0000000032010", 2, "VISA ELECTRON", "DC4000A800", "0010000000", "DC4004F800"},
    {"A0000000041010", 1, "MASTERCARD", "FE50BCA000", "0000000000", "FE50BCF800"},
    {"A0000000043060", 2, "MAESTRO", "FE50BCA000", "0000800000", "FE50BCF800"},
    {"A0000004941010", 1, "ELO CREDITO", "FC50ACA000", "0010000000", "FC50ACF800"},
    {"A0000004942010", 2, "ELO DEBITO", "FC50ACA000", "0010000000", "FC50ACF800"},
    {"A00000002501", 1, "AMERICAN EXPRESS", "C800000000", "0000000000", "C800000000"},
    {"A0000001523010", 1, "DISCOVER", "DC00002000", "0010000000", "FCE09CF800"},
};

constexpr const char* kRids[] = {"A000000003", "A000000004", "A000000494", "A000000025"};
// Key sizes in use: 1024, 1152, 1408 and 1984 bits.
constexpr int kModulusBytes[] = {128, 144, 176, 248};
// Record indices are two digits wide: the tables spread over acquirers.
constexpr int kRecordsPerAcquirer = 50;

std::string hexDigits(uint32_t seed, size_t count) {
    static const char* const digits = "0123456789ABCDEF";
    std::string text;
    text.reserve(count);
    uint32_t state = seed * 2654435761u + 1;
    for (size_t i = 0; i < count; ++i) {
        state = state * 1664525u + 1013904223u;
        text.push_back(digits[(state >> 24) & 0xF]);
    }
    return text;
}

void writeAid(Layout& layout, int index) {
    const Application& app = kApplications[static_cast<size_t>(index) % std::size(kApplications)];
    layout.open("Aid").elements({
        {"AcquirerNumber", std::to_string(1 + index / kRecordsPerAcquirer)},
        {"Recidx", std::to_string(1 + index % kRecordsPerAcquirer)},
        {"AID", app.aid},
        {"BrandId", std::to_string(1 + index % 8)},
        {"ApplicationType", std::to_string(app.type)},
        {"AppName", app.name},
        {"AidLen", std::to_string(std::char_traits<char>::length(app.aid) / 2)},
        {"TerminalCountry", "076"},
        {"TerminalCurrencyCode", "986"},
        {"TerminalCurrencyExponent", "2"},
        {"TerminalCapabilities", "E0F8C8"},
        {"AdditionalTerminalCapabilities", "F000F0A001"},
        {"TerminalType", "22"},
        {"TACDefault", app.tacDefault},
        {"TACDenial", app.tacDenial},
        {"TACOnline", app.tacOnline},
        {"FloorLimit", "00000000"},
        {"TCC", "R"},
        {"CTLSZEROAM", "1"},
        {"CTLSMODE", "1"},
        {"CTLSTRNLIM", "00010000"},
        {"CTLSFLRLIM", "00000000"},
        {"CTLSCVMLIM", "00005000"},
        {"CTLSAPPVER", "008C"},
        {"tDol", "9F02065F2A029A039C0195059F3704"},
        {"dDol", "9F3704"},
        {"MerchantId", "123456"},
        {"Mcc", "5812"},
        {"TerminalId", "87654321"},
    });
    layout.close("Aid");
}

void writeCapk(Layout& layout, int index) {
    int modulusBytes = kModulusBytes[static_cast<size_t>(index) % std::size(kModulusBytes)];
    bool shortExponent = index % 5 != 0;
    layout.open("Capk").elements({
        {"AcquirerNumber", std::to_string(1 + index / kRecordsPerAcquirer)},
        {"RecIdx", std::to_string(1 + index % kRecordsPerAcquirer)},
        {"RID", kRids[static_cast<size_t>(index) % std::size(kRids)]},
        {"CapkIdx", num(index % 100, 2)},
        {"DataSetVersion", "12"},
        {"Exponent", shortExponent ? "03" : "010001"},
        {"ExponentLen", shortExponent ? "1" : "3"},
        {"Modulus", hexDigits(static_cast<uint32_t>(index), static_cast<size_t>(modulusBytes) * 2)},
        {"ModulusLen", std::to_string(modulusBytes)},
        {"CheckSum", hexDigits(static_cast<uint32_t>(index) + 7919u, 40)},
    });
    layout.close("Capk");
}

}  // namespace

std::string KVRBenchSamples::gcrChipReply() { return KVRPinpadReplies::gcrReply(0, KVRPinpadReplies::CardRead{}); }

std::string KVRBenchSamples::gocEmvData() {
    // Tag, value: the data a chip gives for an on-line authorisation.
    static const std::pair<const char*, const char*> kTags[] = {
        {"9F26", "1122334455667788"}, {"9F27", "80"},
        {"9F10", "0110A00003220000000000000000000000FF"}, {"9F36", "0012"},
        {"95", "0000008000"}, {"9A", "240517"}, {"9C", "00"}, {"5F2A", "0986"},
        {"9F02", "000000001500"}, {"9F03", "000000000000"}, {"9F1A", "0076"},
        {"9F33", "E0F8C8"}, {"9F37", "A1B2C3D4"}, {"82", "5800"}, {"9F34", "420300"},
        {"9F1E", "3132333435363738"}, {"84", "A0000000031010"},
    };
    std::string text;
    char length[17];
    for (const auto& [tag, value] : kTags) {
        std::snprintf(length, sizeof length, "%02zX", std::char_traits<char>::length(value) / 2);
        text += std::string(tag) + length + value;
    }
    return text;
}

std::string KVRBenchSamples::gocOnlineReply() {
    return KVRPinpadReplies::gocReply(0, 2, "8A3C1F0B9D2E4F67", "FFFF9876543210E00001", gocEmvData());
}

std::string KVRBenchSamples::authorisationResponse() {
    Layout layout(0);
    layout.raw("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    layout.open("Document xmlns=\"urn:AcceptorAuthorisationResponseV02.1\"");
    layout.open("AccptrAuthstnRspn");
    layout.open("Hdr").elements({{"MsgFctn", "AUTP"}, {"PrtcolVrsn", "2.0"}, {"XchgId", "77"}, {"CreDtTm", "2024-05-17T14:32:06"}});
    layout.open("InitgPty").elements({{"Id", "ACQ1"}, {"Tp", "ACQR"}}).close("InitgPty");
    layout.open("RcptPty").elements({{"Id", "1234-5678"}, {"Tp", "MERC"}}).close("RcptPty");
    layout.close("Hdr");
    layout.open("AuthstnRspn");
    layout.open("Envt");
    layout.open("MrchntId").elements({{"Id", "12345678"}, {"Tp", "OPOI"}, {"Issr", "MERC"}}).close("MrchntId");
    layout.open("POIId").elements({{"Id", "POI-7"}}).close("POIId");
    layout.close("Envt");
    layout.open("Tx");
    layout.open("TxId").elements({{"TxDtTm", "2024-05-17T14:32:05"}, {"TxRef", "1B4E28BA2FA111D2883F0016D3CCA427"}}).close("TxId");
    layout.element("RcptTxId", "000123456789");
    layout.open("TxDtls").elements({{"Ccy", "986"}, {"TtlAmt", "1500"}, {"AcctTp", "CRDT"}, {"VldtyDt", "2024-05-18"}});
    layout.open("DtldAmt").elements({{"AmtTp", "FEES"}, {"Val", "12"}, {"Labl", "Tarifa"}}).close("DtldAmt");
    layout.element("ICCRltdData", "910A1122334455667788990A8A023030");
    layout.close("TxDtls");
    layout.close("Tx");
    layout.open("TxRspn");
    layout.open("AuthstnRslt");
    layout.open("RspnToAuthstn").elements({{"Rspn", "APPR"}, {"RspnRsn", "00"}}).close("RspnToAuthstn");
    layout.elements({{"AuthstnCd", "123456"}, {"CmpltnReqrd", "false"}});
    layout.close("AuthstnRslt");
    layout.open("Actn").element("ActnTp", "DISP");
    layout.open("MsgToPres").elements({{"MsgDstn", "MDSP"}, {"MsgCntt", "Aprovada &amp; ok"}}).close("MsgToPres");
    layout.close("Actn");
    layout.close("TxRspn");
    layout.close("AuthstnRspn");
    layout.close("AccptrAuthstnRspn");
    layout.close("Document");
    return layout.text();
}

std::string KVRBenchSamples::aidTable(int count) {
    Layout layout(kTableLevel);
    layout.open("AidTbl");
    for (int i = 0; i < count; ++i) writeAid(layout, i);
    layout.close("AidTbl");
    // The block starts at its tag: the indentation before it is not part of it.
    return layout.text().substr(kTableLevel);
}

std::string KVRBenchSamples::capkTable(int count) {
    Layout layout(kTableLevel);
    layout.open("CapkTable");
    for (int i = 0; i < count; ++i) writeCapk(layout, i);
    layout.close("CapkTable");
    return layout.text().substr(kTableLevel);
}

std::string KVRBenchSamples::configurationUpdate(int aids, int capks) {
    Layout layout(0);
    layout.raw("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    layout.open("Document xmlns=\"urn:AcceptorConfigurationUpdateV02.1\"");
    layout.open("AccptrCfgtnUpd");
    layout.open("Hdr")
        .elements({{"DwnldTrf", "true"}, {"FrmtVrsn", "2.0"}, {"XchgId", "42"}, {"CreDtTm", "2024-05-17T14:32:06"}})
        .close("Hdr");
    layout.open("AccptrCfgtn");
    layout.open("POIId").elements({{"Tp", "OPOI"}, {"Issr", "TMGT"}, {"Id", "1234-5678"}}).close("POIId");
    layout.open("DataSet");
    layout.open("Id")
        .elements({{"Tp", "TRPR"}, {"Id", "DS-AIDS-CAPKS"}, {"Vrsn", "1"}, {"CreDtTm", "2024-05-17T14:32:06"}, {"Nm", "AIDS"}})
        .close("Id");
    layout.open("Cntt");
    layout.open("TermnlParams");
    layout.raw(std::string(kTableLevel, '\t') + aidTable(aids) + "\n");
    layout.raw(std::string(kTableLevel, '\t') + capkTable(capks) + "\n");
    layout.close("TermnlParams");
    layout.close("Cntt");
    layout.close("DataSet");
    layout.close("AccptrCfgtn");
    layout.open("SctyTrlr").element("CnttTp", "DATA").close("SctyTrlr");
    layout.close("AccptrCfgtnUpd");
    layout.close("Document");
    return layout.text();
}

#include "testing/KVREmvTableSamples.h"

namespace KVREmvTableSamples {
namespace {

std::string leaf(const std::string& tag, const std::string& value) { return "<" + tag + ">" + value + "</" + tag + ">"; }

std::string aidElement(const Aid& aid) {
    return "<Aid>" + leaf("AID", aid.aid) + leaf("BrandId", "1") + leaf("AppName", aid.appName) +
           leaf("Recidx", aid.recidx) + leaf("ApplicationType", aid.applicationType) + leaf("TerminalCountry", "076") +
           leaf("TerminalCurrencyCode", "986") + leaf("TerminalCurrencyExponent", "2") +
           leaf("TerminalCapabilities", "E0F0C8") + leaf("AdditionalTerminalCapabilities", "6000F0A001") +
           leaf("TerminalType", "22") + leaf("TACDefault", "DC4000A800") + leaf("TACDenial", "0010000000") +
           leaf("TACOnline", "DC4004F800") + leaf("FloorLimit", "00000000") + leaf("TCC", "R") +
           leaf("CTLSZEROAM", "0") + leaf("CTLSMODE", "0") + leaf("CTLSTRNLIM", "00100000") +
           leaf("CTLSFLRLIM", "00000000") + leaf("CTLSCVMLIM", "00020000") + leaf("CTLSAPPVER", "0002") +
           leaf("tDol", "0F9F02065F2A029A039C0195059F3704") + leaf("dDol", "039F3704") +
           leaf("AcquirerNumber", "8") + "</Aid>";
}

std::string capkElement(const Capk& capk) {
    return "<Capk>" + leaf("CapkIdx", capk.capkIdx) + leaf("DataSetVersion", "1") + leaf("Exponent", capk.exponent) +
           leaf("Modulus", capk.modulus) + leaf("RID", capk.rid) + leaf("RecIdx", capk.recIdx) +
           leaf("ExponentLen", capk.exponentLength) + leaf("ModulusLen", capk.modulusLength) +
           leaf("AcquirerNumber", "8") + "</Capk>";
}

}  // namespace

std::string aidTable(const std::vector<Aid>& aids) {
    std::string out = "<AidTbl>";
    for (const auto& aid : aids) out += aidElement(aid);
    return out + "</AidTbl>";
}

std::string capkTable(const std::vector<Capk>& capks) {
    std::string out = "<CapkTable>";
    for (const auto& capk : capks) out += capkElement(capk);
    return out + "</CapkTable>";
}

std::string defaultAidTable() {
    Aid credit;
    Aid debit;
    debit.recidx = "2";
    debit.aid = "A0000000032010";
    debit.appName = "VISA ELECTRON";
    debit.applicationType = "2";
    return aidTable({credit, debit});
}

std::string defaultCapkTable() {
    Capk first;
    Capk second;
    second.recIdx = "02";
    second.rid = "A000000004";
    second.capkIdx = "EF";
    return capkTable({first, second});
}

std::string configurationUpdate(const std::string& aidBlock, const std::string& capkBlock) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
           "<Document xmlns=\"urn:AcceptorConfigurationUpdateV02.1\"><AccptrCfgtnUpd>"
           "<Hdr><DwnldTrf>true</DwnldTrf><FrmtVrsn>2.0</FrmtVrsn></Hdr>"
           "<AccptrCfgtn><DataSet><Id><Tp>TRPR</Tp></Id><Cntt><TermnlParams>" +
           aidBlock + capkBlock + "</TermnlParams></Cntt></DataSet></AccptrCfgtn></AccptrCfgtnUpd></Document>";
}

}  // namespace KVREmvTableSamples

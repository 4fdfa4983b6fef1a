#pragma once

#include <cstdint>
#include <optional>
#include <string>

class XMLWriter;
struct TBXMLElement;

/// One EMV application of the host's AID table, as the host describes it.
/// The sale looks applications up here; the PIN pad record is built
/// separately (KVRAidTableCommand).
class KVRAid {
public:
    std::optional<std::string> ApplicationId;                  // AID
    std::optional<int32_t> TefBrandId;                         // BrandId
    std::optional<std::string> ApplicationName;                // AppName
    std::optional<int32_t> AidLength;                          // AidLen
    std::optional<std::string> SelFlag;                        // SelFlag
    std::optional<std::string> priority;                       // Priority
    std::optional<std::string> targerPer;                      // TargetPer
    std::optional<std::string> MaxTargerPer;                   // MaxTargetPer
    std::optional<std::string> FloorLimitCheck;                // FloorLimitCheck
    std::optional<std::string> RandTransSel;                   // RandTransSel
    std::optional<std::string> VelocityCheck;                  // VelocityCheck
    std::optional<std::string> floorLimit;                     // FloorLimit
    std::optional<std::string> Threshold;                      // Threshold
    std::optional<std::string> TerminalActionCodeDenial;       // TACDenial
    std::optional<std::string> TerminalActionCodeDefault;      // TACDefault
    std::optional<std::string> TerminalActionCodeOnline;       // TACOnline
    std::optional<std::string> dDol;                           // dDol
    std::optional<std::string> tDol;                           // tDol
    std::optional<std::string> Version;                        // Version
    std::optional<std::string> RiskMainData;                   // RiskMainData
    std::optional<std::string> Recidx;                         // Recidx
    std::optional<std::string> ApplicationType;                // ApplicationType
    std::optional<std::string> TerminalCountry;                // TerminalCountry
    std::optional<std::string> TerminalCurrencyCode;           // TerminalCurrencyCode
    std::optional<std::string> TerminalCurrencyExponent;       // TerminalCurrencyExponent
    std::optional<std::string> AdditionalTerminalCapabilities; // AdditionalTerminalCapabilities
    std::optional<std::string> TerminalType;                   // TerminalType
    std::optional<std::string> CTLSZEROAM;                     // CTLSZEROAM
    std::optional<std::string> TCC;                            // TCC
    std::optional<std::string> CTLSMODE;                       // CTLSMODE
    std::optional<std::string> CTLSTRNLIM;                     // CTLSTRNLIM
    std::optional<std::string> CTLSFLRLIM;                     // CTLSFLRLIM
    std::optional<std::string> CTLSCVMLIM;                     // CTLSCVMLIM
    std::optional<std::string> CTLSAPPVER;                     // CTLSAPPVER
    std::optional<int32_t> AcquirerNumber;                     // AcquirerNumber
    std::optional<int32_t> MerchantId;                         // MerchantId
    std::optional<int32_t> TerminalId;                         // TerminalId
    std::optional<int32_t> Mcc;                                // Mcc
    std::optional<std::string> TerminalCapabilities;           // TerminalCapabilities

    /// Fills the fields from the children of an `Aid` element; an unknown
    /// child is skipped, a repeated one keeps its last text.
    void read(const TBXMLElement* aid);
    /// An `Aid` element with every field that is set, in the order of the
    /// fields. When CTLSZEROAM is set, a second TerminalCurrencyCode precedes
    /// it: the hosts' table format carries the currency there again.
    void write(XMLWriter& writer) const;
};

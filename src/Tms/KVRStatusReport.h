#pragma once

#include "Tms/KVRPoilIdentification.h"
#include "Tms/KVRRequestDataSet.h"
#include "Tms/KVRSecurityTrailer.h"
#include "Tms/KVRTmsHeader.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

class XMLWriter;

/// Inner `StsRpt`: the terminal and the data sets it reports on or asks for.
class KVRStatusReportContent {
public:
    std::shared_ptr<KVRPoilIdentification> poiIdentification;      // POIId
    std::vector<std::shared_ptr<KVRRequestDataSet>> listDataSet;   // DataSet, in order

    void write(XMLWriter& writer) const;
};

/// Outer `StsRpt`: header, the inner `StsRpt` of the same name, trailer.
class KVRStatusReportData {
public:
    std::shared_ptr<KVRTmsHeader> header;                    // Hdr
    std::shared_ptr<KVRStatusReportContent> statusReport;    // StsRpt
    std::shared_ptr<KVRSecurityTrailer> securityTrailer;     // SctyTrlr

    void write(XMLWriter& writer) const;
};

/// The terminal-management status report, posted to the host's "/Report".
class KVRStatusReport {
public:
    static constexpr const char* namespaceURI = "urn:StatusReportV02.1";

    std::shared_ptr<KVRStatusReportData> data;

    /// The complete document.
    std::string write() const;

    /// A status-report document (declaration and `Document` root in the
    /// message's namespace) around whatever `body` writes.
    static std::string writeDocument(const std::function<void(XMLWriter&)>& body);
};

#pragma once

#include "Tms/KVRRequestDataSet.h"
#include "Tms/KVRStatusReport.h"

#include <memory>
#include <string>

/// Builds the two status reports the library sends to the
/// terminal-management host. Timestamps are taken from KVRClock, in local time.
class KVRStatusReportFactory {
public:
    KVRStatusReportFactory() = delete;

    /// Enrolment: names the merchant by its KovraCode and asks for the
    /// merchant's parameters. The terminal is identified only as "Mobile": no
    /// device identifier leaves the phone.
    static std::shared_ptr<KVRStatusReport> statusReportWithKovraCode(const std::string& kovraCode);
    /// Table download: names the merchant by its sale affiliation key and asks
    /// for the "AIDS", "CARDBRANDS", "CAPKS" and "BINS" data sets.
    static std::shared_ptr<KVRStatusReport> statusReportWithSaleAffiliationKey(const std::string& saleAffiliationKey);
    /// A request for the data set called `name`.
    static std::shared_ptr<KVRRequestDataSet> dataSetWithType(const std::string& name);
};

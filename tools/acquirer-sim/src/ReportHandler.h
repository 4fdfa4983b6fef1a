#pragma once

#include "MerchantDirectory.h"
#include "SimReply.h"
#include "SimState.h"

#include <string>

#include <pugixml.hpp>

namespace acqsim {

// "/Report": the terminal-management status report.
//  - naming a KovraCode (POICmpnt with PrvdrId "KOVRACODE"): enrolment;
//    answers the merchant's parameters in an AcceptorConfigurationUpdate;
//  - naming a sale affiliation key (POIId/Id) with the data sets AIDS,
//    CARDBRANDS, CAPKS and BINS: table download; answers the EMV tables.
// A merchant this acquirer does not know is answered with a rejection, a
// document without AccptrCfgtnUpd, as is a report that breaks the structure.
class ReportHandler {
public:
    ReportHandler(const MerchantDirectory& merchants, SimState& state);

    SimReply handle(const std::string& body);

private:
    SimReply enrol(pugi::xml_node report);
    SimReply downloadTables(pugi::xml_node report);

    const MerchantDirectory& merchants_;
    SimState& state_;
};

} // namespace acqsim

#pragma once

#include "Tms/KVRApplicationParameter.h"
#include "Tms/KVRDataSetIdentification.h"
#include "Tms/KVRHostCommunicationParameters.h"
#include "Tms/KVRMerchantParameter.h"
#include "Tms/KVRPoilIdentification.h"
#include "Tms/KVRSecurityTrailer.h"
#include "Tms/KVRTerminalParameter.h"
#include "Tms/KVRTmsHeader.h"

#include <memory>
#include <string>

struct TBXMLElement;

// The elements of the terminal-management host's configuration update. Each
// read walks the element's children: unknown ones are skipped, a repeated one
// replaces what an earlier one set, a missing one leaves its field unset.

/// `Cntt` of a configuration data set.
class KVRContent {
public:
    std::shared_ptr<KVRMerchantParameter> merchantParameters;                   // MrchntParams
    std::shared_ptr<KVRTerminalParameter> terminalParameters;                   // TermnlParams
    std::shared_ptr<KVRHostCommunicationParameters> hostCommunicationParameters; // HstComParams
    std::shared_ptr<KVRApplicationParameter> appParameters;                     // ApplParams

    void read(const TBXMLElement* firstChild);
};

/// `DataSet` of a configuration update.
class KVRDataSet {
public:
    std::shared_ptr<KVRDataSetIdentification> identification;  // Id
    std::shared_ptr<KVRContent> content;                       // Cntt

    void read(const TBXMLElement* firstChild);
};

/// `AccptrCfgtn`.
class KVRAcceptorConfiguration {
public:
    std::shared_ptr<KVRPoilIdentification> poiIdentification;  // POIId
    std::shared_ptr<KVRDataSet> dataSet;                       // DataSet, the last one

    void read(const TBXMLElement* firstChild);
};

/// `AccptrCfgtnUpd`.
class KVRAcceptorConfigurationUpdateData {
public:
    std::shared_ptr<KVRTmsHeader> header;                            // Hdr
    std::shared_ptr<KVRAcceptorConfiguration> acceptorConfiguration; // AccptrCfgtn
    std::shared_ptr<KVRSecurityTrailer> securityTrailer;             // SctyTrlr

    void read(const TBXMLElement* firstChild);
};

/// The host's answer to a status report.
class KVRAcceptorConfigurationUpdate {
public:
    /// Unset when the reply does not parse or holds no `AccptrCfgtnUpd`.
    std::shared_ptr<KVRAcceptorConfigurationUpdateData> data;

    /// `AccptrCfgtnUpd` is looked for along the first children from the root,
    /// so a reply with or without an enclosing `Document` reads the same.
    /// Never raises.
    void read(const std::string& body);
};

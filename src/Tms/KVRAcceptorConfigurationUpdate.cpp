#include "Tms/KVRAcceptorConfigurationUpdate.h"

#include "Host/Messages/KVRElementReading.h"
#include "Host/TBXML.h"

using KVRElementReading::named;
using KVRElementReading::nested;

void KVRContent::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "MrchntParams")) {
            merchantParameters = nested<KVRMerchantParameter>(e);
        } else if (named(e, "TermnlParams")) {
            terminalParameters = nested<KVRTerminalParameter>(e);
        } else if (named(e, "HstComParams")) {
            hostCommunicationParameters = nested<KVRHostCommunicationParameters>(e);
        } else if (named(e, "ApplParams")) {
            appParameters = nested<KVRApplicationParameter>(e);
        }
    }
}

void KVRDataSet::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "Id")) {
            identification = nested<KVRDataSetIdentification>(e);
        } else if (named(e, "Cntt")) {
            content = nested<KVRContent>(e);
        }
    }
}

void KVRAcceptorConfiguration::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "POIId")) {
            poiIdentification = nested<KVRPoilIdentification>(e);
        } else if (named(e, "DataSet")) {
            dataSet = nested<KVRDataSet>(e);
        }
    }
}

void KVRAcceptorConfigurationUpdateData::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "Hdr")) {
            header = nested<KVRTmsHeader>(e);
        } else if (named(e, "AccptrCfgtn")) {
            acceptorConfiguration = nested<KVRAcceptorConfiguration>(e);
        } else if (named(e, "SctyTrlr")) {
            securityTrailer = nested<KVRSecurityTrailer>(e);
        }
    }
}

void KVRAcceptorConfigurationUpdate::read(const std::string& body) {
    data = KVRElementReading::descendTo<KVRAcceptorConfigurationUpdateData>(body, "AccptrCfgtnUpd",
                                                                            KVRElementReading::Descent::firstNamed);
}

#include "Tms/KVRMerchantParameter.h"

#include "Host/TBXML.h"

#include <cstring>

void KVRMerchantParameter::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (std::strcmp(e->name, "Sak") == 0) {
            saleAffiliationKey = e->text;
        } else if (std::strcmp(e->name, "Adr") == 0) {
            address = KVRAddress::create();
            address->read(e->firstChild);
        } else if (std::strcmp(e->name, "CpnyNm") == 0) {
            companyName = e->text;
        } else if (std::strcmp(e->name, "IdCd") == 0) {
            identificationCode = e->text;
        }
    }
}

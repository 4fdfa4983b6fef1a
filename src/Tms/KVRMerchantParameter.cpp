#include "Tms/KVRMerchantParameter.h"

#include "Host/Messages/KVRElementReading.h"
#include "Host/TBXML.h"
#include "Tms/KVRAddressElement.h"

using KVRElementReading::named;
using KVRElementReading::text;

void KVRMerchantParameter::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "Sak")) {
            saleAffiliationKey = text(e);
        } else if (named(e, "Adr")) {
            address = KVRAddress::create();
            KVRAddressElement::read(*address, e->firstChild);
        } else if (named(e, "CpnyNm")) {
            companyName = text(e);
        } else if (named(e, "IdCd")) {
            identificationCode = text(e);
        }
    }
}

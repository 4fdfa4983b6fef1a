#pragma once

#include <kovra/KVRAddressModel.h>
#include <kovra/KVRRecord.h>

class XMLWriter;
struct TBXMLElement;

/// The address as it travels in the host's messages. Stored with the other
/// addresses: finding addresses returns KVRAddress objects for the rows made
/// as KVRAddress, and KVRAddress::findAll returns only those.
class KVRAddress : public KVRRecord<KVRAddress, KVRAddressModel> {
public:
    static const KVREntityDescription& entity();

    /// Takes City, Strt, Dstrct, DrNb, Nghbhd, ZipCd and Cmplmt from the
    /// address element's children (the first one given); unknown children
    /// are skipped.
    void read(const TBXMLElement* firstChild);
    /// An `Adr` element with the same children, each only when set.
    void write(XMLWriter& writer) const;

protected:
    KVRAddress() = default;
};

#pragma once

#include <kovra/KVRAddress.h>

class XMLWriter;
struct TBXMLElement;

/// The `Adr` element of the host's messages, read into and written from a
/// stored address. Kept out of KVRAddress so that the public header does not
/// name the library's XML types.
namespace KVRAddressElement {

/// Takes City, Strt, Dstrct, DrNb, Nghbhd, ZipCd and Cmplmt from the address
/// element's children (the first one given); unknown children are skipped.
void read(KVRAddress& address, const TBXMLElement* firstChild);
/// An `Adr` element with the same children, each only when set.
void write(const KVRAddress& address, XMLWriter& writer);

}  // namespace KVRAddressElement

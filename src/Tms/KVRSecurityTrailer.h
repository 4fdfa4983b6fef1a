#pragma once

#include "Host/KVREnumTypes.h"

class XMLWriter;
struct TBXMLElement;

/// `SctyTrlr`: only the content type travels; nothing is signed or enveloped.
class KVRSecurityTrailer {
public:
    KVRContentType contentType = KVRContentTypeDATA;  // CnttTp

    void write(XMLWriter& writer) const;
    /// An unknown content type reads as DATA.
    void read(const TBXMLElement* firstChild);
};

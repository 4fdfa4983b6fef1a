#pragma once

#include <string>
#include <string_view>

/// The one place that hides card data in what the library writes: PIN pad
/// traffic lines, XML exchanged with the host, and any other log text built
/// from them. Fields are recognised by what they are (the PIN pad reply's
/// own name and the field's offset, the XML element's name), never by the
/// look of their digits. A PAN keeps at most its first six and last four
/// digits; tracks, PIN blocks, key serial numbers, security codes and
/// cardholder names become asterisks. Texts keep their length.
///
/// The `...ForLog` operations leave the text as it is when the application
/// sets "Kovra Log Card Data" to true.
class KVRCardDataMasking {
public:
    KVRCardDataMasking() = delete;

    /// A PIN pad command text as sent (name, block length, blocks).
    static std::string maskPinpadRequest(std::string_view text);
    /// A PIN pad reply or notification as received (name, return code, block
    /// length, fields), recognised by the name it carries, whatever command
    /// was sent. A name this module does not know loses everything after it.
    static std::string maskPinpadReply(std::string_view text);
    /// XML text: the texts of the card data elements, namespace prefixes
    /// ignored; everything else stays.
    static std::string maskXml(std::string_view xml);

    /// First six and last four digits stay; the rest of the value (but its
    /// spaces) becomes '*'. Values of ten characters or fewer are masked whole.
    static std::string maskPan(std::string_view pan);
    /// Everything but the spaces that pad the value becomes '*'.
    static std::string maskWhole(std::string_view value);

    static std::string pinpadRequestForLog(std::string_view text);
    static std::string pinpadReplyForLog(std::string_view text);
    static std::string xmlForLog(std::string_view xml);
};

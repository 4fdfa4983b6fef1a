#include <gtest/gtest.h>

#include "Host/XMLWriter.h"

#include <kovra/KVRException.h>

#include <functional>

namespace {

using Writes = std::function<void(XMLWriter&)>;

// The envelope, the tab indentation and the default namespace are seen whole
// in the golden request documents; these are the layouts those do not reach.
TEST(XMLWriter, Layouts) {
    const std::tuple<const char*, Writes, const char*> cases[] = {
        {"declaration defaults", [](XMLWriter& w) {
            w.writeStartDocumentWithEncodingAndVersion(std::nullopt, std::nullopt); },
         "<?xml version=\"1.0\" ?>"},
        {"declaration", [](XMLWriter& w) { w.writeStartDocumentWithEncodingAndVersion("ISO-8859-1", "1.1"); },
         "<?xml version=\"1.1\" encoding=\"ISO-8859-1\" ?>"},
        {"empty elements and texts",
         [](XMLWriter& w) { w.writeStartElement("A"); w.writeStartElement("Empty"); w.writeEndElement();
             w.writeElement("Blank", ""); w.writeElementIfSet("Absent", std::nullopt); w.writeEndElement();
             w.writeStartElement("B"); w.writeEndElement(); },
         "\n<A>\n\t<Empty />\n\t<Blank></Blank>\n</A>\n<B />"},
        {"mixed text keeps the end tag where the last write left it",
         [](XMLWriter& w) { w.writeStartElement("A"); w.writeStartElement("B"); w.writeEndElement();
             w.writeCharacters("tail"); w.writeEndElement(); },
         "\n<A>\n\t<B />tail</A>"},
        {"attributes and prefixed namespaces",
         [](XMLWriter& w) { w.writeStartElement("Root"); w.writeNamespace("p", "urn:p");
             w.writeAttribute("a", "1 < 2"); w.writeStartElementWithNamespace("urn:p", "Child");
             w.writeCharacters("x"); w.writeEndElement(); w.writeEndElement(); },
         "\n<Root xmlns:p=\"urn:p\" a=\"1 &lt; 2\">\n\t<p:Child>x</p:Child>\n</Root>"},
        {"a namespace ends with the element that declared it",
         [](XMLWriter& w) { w.setDefaultNamespace("urn:d"); w.writeStartElementWithNamespace("urn:d", "A");
             w.writeEndElement(); w.writeStartElementWithNamespace("urn:d", "B"); w.writeEndElement(); },
         "\n<A xmlns=\"urn:d\" />\n<B xmlns=\"urn:d\" />"},
    };
    for (const auto& [name, writes, expected] : cases) {
        SCOPED_TRACE(name);
        XMLWriter w;
        writes(w);
        EXPECT_EQ(w.toString(), expected);
        EXPECT_EQ(w.level(), 0);
    }
}

TEST(XMLWriter, Escaping) {
    const std::tuple<const char*, std::string, std::string> cases[] = {
        {"markup", "A&B <x> \"q\"", "A&amp;B &lt;x&gt; &quot;q&quot;"},
        {"apostrophe kept", "d'Ávila", "d'Ávila"},
        {"tab, LF, CR kept", "a\tb\nc\rd", "a\tb\nc\rd"},
        {"other controls dropped", std::string("a\x01" "b\x1f" "c") + '\0' + "d", "abcd"},
        {"emoji dropped", "pago \xF0\x9F\x98\x80 ok", "pago  ok"},
        {"U+FFFE and U+FFFF dropped, U+FFFD kept", "\xEF\xBF\xBE\xEF\xBF\xBF\xEF\xBF\xBD", "\xEF\xBF\xBD"},
        {"encoded surrogate dropped", "x\xED\xA0\x80y", "xy"},
        {"invalid UTF-8 dropped", "a\xC3(b\x80\xFF", "a(b"},
        {"truncated sequence dropped", "ok\xE2\x82", "ok"},
        {"overlong form dropped", "<\xC0\xBC>", "&lt;&gt;"},
        {"basic plane kept", "ção €  ", "ção €  "},
        {"DEL and C1 kept", "\x7F\xC2\x85", "\x7F\xC2\x85"},
    };
    for (const auto& [name, in, out] : cases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(XMLWriter::escape(in), out);
        XMLWriter w;
        w.writeElement("T", in);
        EXPECT_EQ(w.toString(), "\n<T>" + out + "</T>");
    }
}

TEST(XMLWriter, MisuseRaisesWithItsReason) {
    const std::pair<Writes, const char*> cases[] = {
        {[](XMLWriter& w) { w.writeStartElement("A"); w.writeStartDocumentWithEncodingAndVersion("UTF-8", "1.0"); },
         "Document has already been started"},
        {[](XMLWriter& w) { w.writeEndElement(); }, "Cannot write more end elements than start elements."},
        {[](XMLWriter& w) { w.writeStartElement("A"); w.writeCharacters("x"); w.writeEndElement();
            w.writeEndElement(); },
         "Cannot write more end elements than start elements."},
        {[](XMLWriter& w) { w.writeStartElementWithNamespace("urn:unbound", "A"); w.writeCharacters("x");
            w.writeEndElement(); },
         "Unknown namespace URI urn:unbound"},
        {[](XMLWriter& w) { w.writeAttribute("a", "b"); }, "No open start element"},
        {[](XMLWriter& w) { w.writeElement("A", "x"); w.writeNamespace("p", "urn:p"); },
         "No open start element"},
        {[](XMLWriter& w) { w.writeStartElement("A"); w.writeNamespace("p", ""); },
         "Cannot declare namespace without namespace p"},
    };
    for (const auto& [misuse, reason] : cases) {
        SCOPED_TRACE(reason);
        XMLWriter writer;
        try {
            misuse(writer);
            ADD_FAILURE() << "no exception";
        } catch (const KVRException& e) {
            EXPECT_EQ(e.name(), "XMLWriterException");
            EXPECT_EQ(e.reason(), reason);
        }
    }
}

}  // namespace

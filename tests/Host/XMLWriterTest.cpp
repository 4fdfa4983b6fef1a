#include <gtest/gtest.h>

#include "Host/XMLWriter.h"

#include <kovra/KVRException.h>

#include <functional>

namespace {

void expectWriterException(const std::function<void(XMLWriter&)>& misuse, const std::string& reason) {
    XMLWriter writer;
    try {
        misuse(writer);
        ADD_FAILURE() << "no exception; expected " << reason;
    } catch (const KVRException& e) {
        EXPECT_EQ(e.name(), "XMLWriterException");
        EXPECT_EQ(e.reason(), reason);
    }
}

TEST(XMLWriter, EnvelopeDeclaresTheDefaultNamespaceOnceAndIndentsWithTabs) {
    XMLWriter w;
    w.setDefaultNamespace("urn:AcceptorAuthorisationRequestV02.1");
    w.writeStartDocumentWithEncodingAndVersion("UTF-8", "1.0");
    w.writeStartElementWithNamespace("urn:AcceptorAuthorisationRequestV02.1", "Document");
    w.writeStartElementWithNamespace("urn:AcceptorAuthorisationRequestV02.1", "AccptrAuthstnReq");
    w.writeStartElement("Hdr");
    w.writeElement("MsgFctn", "AUTQ");
    w.writeElement("PrtcolVrsn", "2.0");
    w.writeEndElement();
    w.writeEndElement();
    w.writeEndElement();
    EXPECT_EQ(w.toString(),
              "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n"
              "<Document xmlns=\"urn:AcceptorAuthorisationRequestV02.1\">\n"
              "\t<AccptrAuthstnReq>\n"
              "\t\t<Hdr>\n"
              "\t\t\t<MsgFctn>AUTQ</MsgFctn>\n"
              "\t\t\t<PrtcolVrsn>2.0</PrtcolVrsn>\n"
              "\t\t</Hdr>\n"
              "\t</AccptrAuthstnReq>\n"
              "</Document>");
    EXPECT_EQ(w.level(), 0);
}

TEST(XMLWriter, DeclarationDefaultsAndOptionalEncoding) {
    XMLWriter noArguments;
    noArguments.writeStartDocumentWithEncodingAndVersion(std::nullopt, std::nullopt);
    EXPECT_EQ(noArguments.toString(), "<?xml version=\"1.0\" ?>");
    XMLWriter other;
    other.writeStartDocumentWithEncodingAndVersion("ISO-8859-1", "1.1");
    EXPECT_EQ(other.toString(), "<?xml version=\"1.1\" encoding=\"ISO-8859-1\" ?>");
}

TEST(XMLWriter, EmptyElementsAndEmptyTexts) {
    XMLWriter w;
    w.writeStartElement("A");
    w.writeStartElement("Empty");
    w.writeEndElement();
    w.writeElement("Blank", "");
    w.writeElementIfSet("Absent", std::nullopt);
    w.writeEndElement();
    w.writeStartElement("B");
    w.writeEndElement();
    EXPECT_EQ(w.toString(), "\n<A>\n\t<Empty />\n\t<Blank></Blank>\n</A>\n<B />");
}

TEST(XMLWriter, MixedTextAndChildrenKeepTheEndTagWhereTheLastWriteLeftIt) {
    XMLWriter w;
    w.writeStartElement("A");
    w.writeStartElement("B");
    w.writeEndElement();
    w.writeCharacters("tail");
    w.writeEndElement();
    EXPECT_EQ(w.toString(), "\n<A>\n\t<B />tail</A>");
}

TEST(XMLWriter, Escaping) {
    struct Case {
        const char* name;
        std::string in;
        std::string out;
    };
    const Case cases[] = {
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
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(XMLWriter::escape(c.in), c.out);
        XMLWriter w;
        w.writeElement("T", c.in);
        EXPECT_EQ(w.toString(), "\n<T>" + c.out + "</T>");
    }
}

TEST(XMLWriter, AttributesAndPrefixedNamespaces) {
    XMLWriter w;
    w.writeStartElement("Root");
    w.writeNamespace("p", "urn:p");
    w.writeAttribute("a", "1 < 2");
    w.writeStartElementWithNamespace("urn:p", "Child");
    w.writeCharacters("x");
    w.writeEndElement();
    w.writeEndElement();
    EXPECT_EQ(w.toString(), "\n<Root xmlns:p=\"urn:p\" a=\"1 &lt; 2\">\n\t<p:Child>x</p:Child>\n</Root>");
}

TEST(XMLWriter, ANamespaceEndsWithTheElementThatDeclaredIt) {
    XMLWriter w;
    w.setDefaultNamespace("urn:d");
    w.writeStartElementWithNamespace("urn:d", "A");
    w.writeEndElement();
    w.writeStartElementWithNamespace("urn:d", "B");
    w.writeEndElement();
    EXPECT_EQ(w.toString(), "\n<A xmlns=\"urn:d\" />\n<B xmlns=\"urn:d\" />");
}

TEST(XMLWriter, MisuseRaisesWithItsReason) {
    expectWriterException(
        [](XMLWriter& w) {
            w.writeStartElement("A");
            w.writeStartDocumentWithEncodingAndVersion("UTF-8", "1.0");
        },
        "Document has already been started");
    expectWriterException([](XMLWriter& w) { w.writeEndElement(); },
                          "Cannot write more end elements than start elements.");
    expectWriterException(
        [](XMLWriter& w) {
            w.writeStartElement("A");
            w.writeCharacters("x");
            w.writeEndElement();
            w.writeEndElement();
        },
        "Cannot write more end elements than start elements.");
    expectWriterException(
        [](XMLWriter& w) {
            w.writeStartElementWithNamespace("urn:unbound", "A");
            w.writeCharacters("x");
            w.writeEndElement();
        },
        "Unknown namespace URI urn:unbound");
    expectWriterException([](XMLWriter& w) { w.writeAttribute("a", "b"); }, "No open start element");
    expectWriterException(
        [](XMLWriter& w) {
            w.writeElement("A", "x");
            w.writeNamespace("p", "urn:p");
        },
        "No open start element");
    expectWriterException(
        [](XMLWriter& w) {
            w.writeStartElement("A");
            w.writeNamespace("p", "");
        },
        "Cannot declare namespace without namespace p");
}

}  // namespace

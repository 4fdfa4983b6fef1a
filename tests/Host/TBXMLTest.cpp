#include <gtest/gtest.h>

#include "Host/KVRDataCoding.h"
#include "Host/TBXML.h"
#include "testing/KVRTempDirectory.h"

#include <fstream>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace {

std::vector<std::string> childNames(const TBXMLElement* parent) {
    std::vector<std::string> names;
    for (const TBXMLElement* e = parent ? parent->firstChild : nullptr; e; e = e->nextSibling) names.push_back(e->name);
    return names;
}

size_t depthAlongFirstChildren(const TBXMLElement* e) {
    size_t depth = 0;
    for (; e; e = e->firstChild) ++depth;
    return depth;
}

/// name[attribute=value,...]=text(children...): empty parts left out.
std::string outline(const TBXMLElement* e) {
    std::string text = e->name;
    for (const TBXMLAttribute* a = e->firstAttribute; a; a = a->next)
        text += (a == e->firstAttribute ? "[" : ",") + std::string(a->name) + "=" + a->value + (a->next ? "" : "]");
    if (*e->text) text += "=" + TBXML::textForElement(e);
    for (const TBXMLElement* c = e->firstChild; c; c = c->nextSibling)
        text += (c == e->firstChild ? "(" : ",") + outline(c) + (c->nextSibling ? "" : ")");
    return text;
}

// Texts as they stand, CDATA joined, comments left out; and from hosts that
// get XML slightly wrong, every element they sent.
TEST(TBXML, RawTextsAndEveryElementEvenPastFaults) {
    const std::pair<std::string, const char*> cases[] = {
        {"<A>  lead\r\n trail  </A>", "A=  lead\r\n trail  "},
        {"<A>x<![CDATA[<y> & ]]>z<B/>after</A>", "A=x<y> & z(B)"},
        {"<A>x<!-- a > b -->y<![CDATA[]]></A>", "A=xy"},
        {"<A>&lt;&#233;&unknown;caf\xC3\xA9</A>", "A=&lt;&#233;&unknown;caf\xC3\xA9"},
        {"<R><A>1</B><C>2</C></R>", "R(A=1,C=2)"},
        {"<R><A x=1 y = '2' z w=\"a>b&amp;\" v=/p/q>t</A><B u=3/></R>", "R(A[x=1,y=2,z=,w=a>b&amp;,v=/p/q]=t,B[u=3])"},
        {"<Document><Cfg><Hdr>x</Hdr></Cfg>", "Document(Cfg(Hdr=x))"},
        {"<R><A>cut short", "R(A=cut short)"},
        {"<R><A b=\"cut short", "R(A[b=cut short])"},
        {"if a < b <R>x<1</R>", "R=x<1"},
        {"\xEF\xBB\xBF<?xml version='1.0'?><!DOCTYPE R [<!ENTITY e \"<X/><Y/>\">]><R><A/>tail<B>b</B></R>", "R(A,B=b)"},
        {std::string("<R>a\0b<A\0c='1'/></R>", 20), "R=a(A[c=1])"},
    };
    for (const auto& [xml, expected] : cases) {
        SCOPED_TRACE(xml);
        std::optional<KVRError> error;
        TBXML document(xml, &error);
        ASSERT_NE(document.rootXMLElement(), nullptr);
        EXPECT_EQ(outline(document.rootXMLElement()), expected);
        EXPECT_FALSE(error);
    }
}

TEST(TBXML, LookupsMatchNamesExactlyAndReportWhatIsMissing) {
    TBXML xml("<R><a:X/><X id='1'/><Y/><X id='2'/></R>");
    const TBXMLElement* root = xml.rootXMLElement();
    ASSERT_NE(root, nullptr);
    const TBXMLElement* first = TBXML::childElementNamed("X", root);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(TBXML::valueOfAttributeNamed("id", first), "1");
    EXPECT_EQ(TBXML::valueOfAttributeNamed("id", TBXML::nextSiblingNamed("X", first)), "2");
    EXPECT_EQ(TBXML::nextSiblingNamed("X", TBXML::nextSiblingNamed("X", first)), nullptr);
    EXPECT_EQ(TBXML::elementName(TBXML::childElementNamed("a:X", root)), "a:X");

    struct Miss {
        const char* name;
        std::function<void(std::optional<KVRError>*)> call;
        long code;
    };
    const Miss misses[] = {
        {"child, wrong case", [&](auto* e) { EXPECT_EQ(TBXML::childElementNamed("x", root, e), nullptr); },
         TBXMLErrorElementNotFound},
        {"null parent", [&](auto* e) { EXPECT_EQ(TBXML::childElementNamed("X", nullptr, e), nullptr); },
         TBXMLErrorElementIsNil},
        {"empty name", [&](auto* e) { EXPECT_EQ(TBXML::childElementNamed("", root, e), nullptr); },
         TBXMLErrorParamNameIsNil},
        {"attribute", [&](auto* e) { EXPECT_EQ(TBXML::valueOfAttributeNamed("ID", first, e), std::nullopt); },
         TBXMLErrorAttributeNotFound},
        {"text of null", [&](auto* e) { EXPECT_EQ(TBXML::textForElement(nullptr, e), ""); }, TBXMLErrorElementIsNil},
    };
    for (const auto& miss : misses) {
        SCOPED_TRACE(miss.name);
        std::optional<KVRError> error;
        miss.call(&error);
        ASSERT_TRUE(error);
        EXPECT_EQ(error->domain(), TBXMLErrorDomain);
        EXPECT_EQ(error->code(), miss.code);
        EXPECT_EQ(error->localizedDescription(), TBXML::errorText(miss.code));
    }
}

TEST(TBXML, NoDataIsNotADecodeFailure) {
    std::optional<KVRError> error;
    TBXML nil(nullptr, 0, &error);
    EXPECT_EQ(nil.rootXMLElement(), nullptr);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), TBXMLErrorDataNil);
    EXPECT_EQ(error->localizedDescription(), "Data is nil");
}

// Inputs a broken or hostile host might send: each must come back with no
// tree or a partial one, without exhausting the stack or expanding entities.
TEST(TBXML, HostileInputsGiveAnEmptyOrPartialTree) {
    std::string deep;
    for (int i = 0; i < 100000; ++i) deep += "<a>";
    std::string deepClosed = deep + "x";
    for (int i = 0; i < 100000; ++i) deepClosed += "</a>";

    std::string garbage(50u << 20, '\0');
    std::mt19937 random(7);
    for (auto& c : garbage) c = static_cast<char>(random());

    const char* fragments[] = {"<a>", "</a>", "<b x='1'>", "</c>", "<!--", "-->", "<![CDATA[", "]]>",
                               "&amp;", "text", "<?", "?>", "\"", "=", "<d/>", "<!DOCTYPE"};
    std::string soup;
    while (soup.size() < (50u << 20)) soup += fragments[random() % std::size(fragments)];
    std::string hugeText = "<A>" + std::string(50u << 20, 'x') + "</A>";

    std::string laughs = "<?xml version=\"1.0\"?><!DOCTYPE l [<!ENTITY l0 \"ha\">";
    for (int i = 1; i < 10; ++i) {
        laughs += "<!ENTITY l" + std::to_string(i) + " \"";
        for (int j = 0; j < 10; ++j) laughs += "&l" + std::to_string(i - 1) + ";";
        laughs += "\">";
    }
    laughs += "]><l>&l9;</l>";

    struct Case {
        const char* name;
        std::string xml;
        std::optional<bool> rooted;  // unset: either is fine
        std::optional<size_t> depth;
    };
    const Case cases[] = {
        {"100 000 open levels", deep, true, 100000},
        {"100 000 closed levels", deepClosed, true, 100000},
        {"50 MB of random bytes", garbage, std::nullopt, std::nullopt},
        {"50 MB of tag soup", soup, std::nullopt, std::nullopt},
        {"50 MB of text in one element", hugeText, true, 1},
        {"HTML error page", "<html><head><title>500</title></head><body><p>Oops<br></body></html>", true, 3},
        {"truncated reply", "<Document><AccptrAuthstnRspn><Hdr><MsgFctn>AUT", true, 4},
        {"entities in a doctype", laughs, true, 1},
        {"plain text", "Service Unavailable", false, 0},
        {"empty", "", false, 0},
        {"lone angle brackets", "<<<<>>>></", false, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::optional<KVRError> error;
        TBXML xml(c.xml, &error);
        if (c.rooted) EXPECT_EQ(xml.rootXMLElement() != nullptr, *c.rooted);
        if (c.depth) EXPECT_EQ(depthAlongFirstChildren(xml.rootXMLElement()), *c.depth);
        EXPECT_EQ(error.has_value(), xml.rootXMLElement() == nullptr);
        if (error) EXPECT_EQ(error->code(), TBXMLErrorDecodeFailed);
        if (error) EXPECT_EQ(error->localizedDescription(), "Decode failure");
    }
    TBXML entities(laughs);
    EXPECT_STREQ(entities.rootXMLElement()->text, "&l9;");
}

TEST(TBXML, ReadsPlainAndGzipFiles) {
    KVRTempDirectory dir;
    const std::string xml = "<AidTbl><Aid><Id>1</Id></Aid></AidTbl>";
    std::ofstream(dir.file("plain.xml"), std::ios::binary) << xml;
    std::ofstream(dir.file("packed.xml.gz"), std::ios::binary) << *KVRDataCoding::gzipDeflate(xml);
    std::ofstream(dir.file("broken.gz"), std::ios::binary) << KVRDataCoding::gzipDeflate(xml)->substr(0, 12);
    const std::pair<const char*, std::optional<long>> cases[] = {{"plain.xml", std::nullopt},
                                                                 {"packed.xml.gz", std::nullopt},
                                                                 {"absent.xml", TBXMLErrorFileNotFoundInBundle},
                                                                 {"broken.gz", TBXMLErrorDecodeFailed}};
    for (const auto& [name, code] : cases) {
        SCOPED_TRACE(name);
        std::optional<KVRError> error;
        TBXML file = TBXML::fromFile(dir.file(name), &error);
        EXPECT_EQ(error ? std::optional<long>(error->code()) : std::nullopt, code);
        EXPECT_EQ(childNames(file.rootXMLElement()), code ? std::vector<std::string>{} : std::vector<std::string>{"Aid"});
    }
}

}  // namespace

#include "fileformat/3mf/XmlWork_p.h"

#include <memory>

#include <gtest/gtest.h>

#include <QTextCodec>

#include "fileformat/3mf/XmlEncoding_p.h"
#include "tests/3mf/ModelSupport.h"

namespace {

using kr::package3mf::XmlWork;
using test::OwnedModel;

template<class Make>
QByteArray Repeated(int count, const Make& make)
{
    QByteArray text;
    for (int i = 0; i < count; ++i)
        text += make(i);
    return text;
}

QByteArray Attributes(int count)
{
    return Repeated(count, [](int i) { return " a" + QByteArray::number(i) + "=''"; });
}

QByteArray DocumentType(const QByteArray& declarations)
{
    return "<!DOCTYPE model [" + declarations + "]>";
}

bool IsReadToItsEnd(const QByteArray& document, qint64 allowed)
{
    XmlWork work(allowed);
    if (!work.Begin(document))
        return false;
    QXmlStreamReader reader(document);
    while (!reader.atEnd())
        work.ReadNext(reader);
    return !reader.hasError();
}

bool IsModel(const QByteArray& document)
{
    return OwnedModel().LoadModel(document);
}

} // namespace

TEST(XmlWork, ATagHasTwentyThousandAttributesAtMost)
{
    for (const char* const before : {"<model", "<model><a/><b", "<model><!-- > --><c d=\"'\""}) {
        EXPECT_TRUE(XmlWork().Begin(before + Attributes(19'999) + "/></model>")) << before;
        EXPECT_FALSE(XmlWork().Begin(before + Attributes(20'001) + "/></model>")) << before;
    }
    EXPECT_TRUE(IsModel("<model" + Attributes(20'000) + "/>"));
    EXPECT_FALSE(IsModel("<model" + Attributes(20'001) + "/>"));
    EXPECT_FALSE(OwnedModel().LoadContentType("<Types" + Attributes(20'001) + "/>"));
}

TEST(XmlWork, ATagOfTooManyAttributesIsFoundAnywhere)
{
    const QByteArray tag = "<b" + Attributes(20'001) + "/>";
    for (int count = 0; count < 40'000; count += 1'111)
        EXPECT_FALSE(XmlWork().Begin("<model>" + QByteArray("<a/>").repeated(count) + tag + "</model>"))
            << count;
}

TEST(XmlWork, UnfinishedTagsAreLeftToTheReader)
{
    const QByteArray blanks(100'000, ' ');
    for (const QByteArray& document : {"<model" + Attributes(15'000) + blanks, "<model a='" + blanks,
                                       "<model>" + blanks + "<", blanks + "<"}) {
        EXPECT_TRUE(XmlWork().Begin(document)) << document.left(20).toStdString();
        EXPECT_FALSE(IsModel(document)) << document.left(20).toStdString();
    }
}

TEST(XmlWork, OnlyValuesOfATagAreCounted)
{
    const QByteArray quotes(300'001, '\'');
    for (const QByteArray& document : {"<model unit=\"" + quotes + "\"/>", "<model>" + quotes + "</model>",
                                       "<!--" + quotes + "--><model/>", "<?a " + quotes + "?><model/>",
                                       "<model><![CDATA[" + quotes + "]]></model>"})
        EXPECT_TRUE(IsModel(document)) << document.left(20).toStdString();
}

TEST(XmlWork, ADocumentTypeIsNoLongerThanTheAttributesThatCanBeCompared)
{
    const auto declared = [](int count) {
        return Repeated(count, [](int i) { return "<!ATTLIST a b" + QByteArray::number(i) + " CDATA ''>"; });
    };
    for (const char* const before :
         {"", "<?xml version='1.0'?>\n", "<!-- <!DOCTYPE < --><?a < ?>", "<!--'--><?a [?>\n"}) {
        EXPECT_TRUE(IsModel(before + DocumentType(declared(7'000)) + "<model/>"));
        EXPECT_FALSE(IsModel(before + DocumentType(declared(10'000)) + "<model/>"));
    }
    EXPECT_FALSE(IsModel(
        DocumentType(
            "<!ATTLIST a" +
            Repeated(20'000, [](int i) { return " b" + QByteArray::number(i) + " CDATA #IMPLIED"; }) + ">") +
        "<model/>"));
}

TEST(XmlWork, ADocumentTypeEndsWithItsOwnBracket)
{
    const QByteArray text = "<model>" + QByteArray("]]&gt;&#39;").repeated(50'000) + "</model>";
    for (const char* const declared :
         {"", "<!ENTITY e ']>'>", "<!--]>-->", "<!ENTITY e \"'\">", "<?a ]>?>", "<!ATTLIST a b CDATA '>' >"})
        EXPECT_TRUE(IsModel(DocumentType(declared) + text)) << declared;
    EXPECT_TRUE(IsModel("<!DOCTYPE model>" + text));
    EXPECT_TRUE(IsModel("<!DOCTYPE model SYSTEM '[>'>" + text));
    EXPECT_TRUE(IsModel("<!-- <!DOCTYPE --><model>" + QByteArray("%").repeated(300'000) + "</model>"));
}

TEST(XmlWork, AParameterEntityCountsAsAllThatItMayStandFor)
{
    const QByteArray declared = "<!ENTITY % e '<!-- -->'>";
    const QByteArray filled = declared + "<!--" + QByteArray(4'000, 'x') + "-->";
    EXPECT_TRUE(IsModel(DocumentType(filled + QByteArray("%e;").repeated(50)) + "<model/>"));
    EXPECT_FALSE(IsModel(DocumentType(filled + QByteArray("%e;").repeated(60)) + "<model/>"));
    EXPECT_TRUE(IsModel(DocumentType(declared + QByteArray("%e;").repeated(200)) + "<model/>"));
    // Its literal ends behind what looks like the end of the document type.
    EXPECT_FALSE(IsModel(DocumentType("<!ENTITY % e '<!ENTITY f \"'>%e;]><model/>\">" +
                                      QByteArray("<!ATTLIST a b CDATA ''>").repeated(15'000)) +
                         "<model/>"));
}

TEST(XmlWork, AttributesInAnEntityCountHoweverTheyAreWritten)
{
    const QByteArray many = Attributes(40'000), few = Attributes(300);
    for (const char* const begin : {"<b", "&#60;b", "&#x3c;b"}) {
        EXPECT_FALSE(XmlWork().Begin(DocumentType("<!ENTITY e \"" + (begin + many) + "/>\">") + "<model/>"))
            << begin;
        EXPECT_TRUE(IsModel(DocumentType("<!ENTITY e \"" + (begin + few) + "/>\">") + "<model>&e;</model>"))
            << begin;
    }
}

TEST(XmlWork, WhatEntitiesPutIntoATokenIsCountedBeforehand)
{
    const QByteArray declared = DocumentType("<!ENTITY e '" + QByteArray(4'000, 'x') + "'>");
    const auto document = [&](const char* before, int count, const char* behind) {
        return declared + "<model>" + before + QByteArray("&e;").repeated(count) + behind + "</model>";
    };
    for (const auto& [before, behind] : {std::pair("", ""), std::pair("<a b='", "'/>")}) {
        EXPECT_TRUE(IsModel(document(before, 1'000, behind)));
        EXPECT_FALSE(XmlWork().Begin(document(before, 80'000, behind)));
    }
    EXPECT_TRUE(IsModel("<model>" + QByteArray("&amp;").repeated(200'000) + "</model>"));
}

TEST(XmlWork, DocumentsWithoutATypeNeedNoAllowance)
{
    const QByteArray namespaces = Repeated(
        8, [](int i) { return " xmlns:n" + QByteArray::number(i) + "='u" + QByteArray::number(i) + "'"; });
    const QByteArray vertices = QByteArray("<vertex x='1' n0:y='2' z='3'/>").repeated(1'000);
    EXPECT_TRUE(IsReadToItsEnd("<model" + namespaces + ">" + vertices + "</model>", 0));
    const QByteArray namespaceEach = QByteArray("<n:a xmlns:n='u'>text</n:a>").repeated(1'000);
    EXPECT_TRUE(IsReadToItsEnd("<model>" + namespaceEach + "</model>", 0));
}

TEST(XmlWork, NamespacesWithinNamespacesAreCounted)
{
    const auto declared = [](int i) { return "<a xmlns:n" + QByteArray::number(i) + "='u'>"; };
    const QByteArray nested = Repeated(1'000, declared) + QByteArray("</a>").repeated(1'000);
    EXPECT_FALSE(IsReadToItsEnd(nested, 0));
    EXPECT_TRUE(IsReadToItsEnd(nested, XmlWork::kUsual));
}

TEST(XmlWork, WhatADocumentTypeDeclaresIsCounted)
{
    const QByteArray long4000(4'000, 'x');
    const struct {
        QByteArray declarations;
        QByteArray content;
    } kMultiplied[] = {
        {"<!ENTITY e '" + long4000 + "'>", "&e;<b/>"},
        {"<!ENTITY e '" + long4000 + "'>", "<b c='&e;'/>"},
        {"<!ENTITY e '" + QByteArray("<b/>").repeated(999) + "'>", "&e;"},
        {"<!ENTITY e \"<b" + Attributes(400) + "/>\">", "&e;"},
        {"<!ATTLIST b c CDATA '" + long4000 + "'>", "<b/>"},
        {Repeated(200, [](int i) { return "<!ATTLIST b c" + QByteArray::number(i) + " CDATA '1'>"; }),
         "<b/>"},
        {Repeated(200, [](int i) { return "<!ATTLIST c c" + QByteArray::number(i) + " CDATA '1'>"; }),
         "<b/>"},
    };
    for (const auto& [declarations, content] : kMultiplied) {
        const QByteArray document =
            DocumentType(declarations) + "<model>" + content.repeated(1'000) + "</model>";
        EXPECT_FALSE(IsReadToItsEnd(document, 0)) << declarations.left(20).toStdString();
        EXPECT_TRUE(IsReadToItsEnd(document, XmlWork::kUsual)) << declarations.left(20).toStdString();
    }
}

TEST(XmlWork, AModelThatIsStoppedKeepsTheMeshesInFront)
{
    const QByteArray defaults =
        Repeated(7'000, [](int i) { return "<!ATTLIST b c" + QByteArray::number(i) + " CDATA '1'>"; });
    const QByteArray object = "<object id='1'><mesh><vertex x='4'/></mesh></object>";
    OwnedModel model;
    EXPECT_FALSE(model.LoadModel(DocumentType(defaults) + "<model>" + object +
                                 QByteArray("<b/>").repeated(1'000) + object + "</model>"));
    ASSERT_EQ(model.GetObjects().size(), 1U);
    EXPECT_EQ(model.GetObjects()[0]->GetVertexNum(), 1);
    EXPECT_FALSE(model.LoadContentType(DocumentType(defaults) + "<Types>" +
                                       QByteArray("<b/>").repeated(1'000) + "</Types>"));
}

namespace {

// An encoding, and how a document in it begins.
struct Encoding {
    const char* codec;
    QByteArray begin;
};

QByteArray Declaration(const QByteArray& encodings)
{
    return "<?xml version='1.0'" + encodings + "?>";
}

const Encoding kEncodings[] = {
    {"UTF-16LE", "\xFF\xFE"},
    {"UTF-16BE", "\xFE\xFF"},
    {"UTF-16LE", ""},
    {"UTF-16BE", ""},
    {"IBM037", Declaration(" encoding='IBM037'")},
    {"HZ-GB-2312", Declaration(QByteArray(9'000, ' ') + "encoding='HZ-GB-2312'")},
    {"Shift_JIS", Declaration(" encoding='Shift_JIS' standalone='yes'")},
    {"ISO-8859-1", Declaration(" encoding='ISO-8859-1'")},
    {"UTF-7", Declaration(" encoding='UTF-8' encoding='UTF-7'")},
    {"UTF-8", Declaration(" encoding='utf8'")},
    {"UTF-8", " "},
};

QByteArray Encoded(const Encoding& encoding, const QByteArray& text)
{
    const std::unique_ptr<QTextEncoder> encoder(
        QTextCodec::codecForName(encoding.codec)->makeEncoder(QTextCodec::IgnoreHeader));
    return encoding.begin + encoder->fromUnicode(QString::fromUtf8(text));
}

} // namespace

TEST(XmlWork, DocumentsAreDecodedAsTheReaderDoes)
{
    const auto tokensOf = [](QXmlStreamReader&& reader) {
        QStringList tokens;
        while (!reader.atEnd()) {
            reader.readNext();
            tokens << reader.tokenString() + reader.name() + reader.attributes().value(QStringLiteral("a")) +
                          reader.text();
        }
        return tokens;
    };
    const QByteArray text = "<model><b a='1'>text</b><!-- c --></model>";
    for (const Encoding& encoding : kEncodings) {
        const QByteArray document = Encoded(encoding, text);
        const auto decoded = kr::package3mf::DecodedBehindDeclaration(document);
        ASSERT_TRUE(decoded) << encoding.codec;
        EXPECT_EQ(tokensOf(QXmlStreamReader(QString::fromStdString(*decoded))),
                  tokensOf(QXmlStreamReader(document)))
            << encoding.codec;
    }
}

TEST(XmlWork, DocumentsAreJudgedInTheirEncoding)
{
    // Some of the bytes of these characters are quotes, angle brackets and percent signs elsewhere.
    const QByteArray odd = "\xE2\x88\xBC\xE3\xB8\xBC\xE2\x88\xBE\xE2\x9C\xA5";
    for (const Encoding& encoding : kEncodings) {
        const auto encoded = [&](const QByteArray& text) { return Encoded(encoding, text); };
        const QByteArray begin = encoding.begin.left(40);
        EXPECT_TRUE(IsModel(encoded("<model a=''/>"))) << begin.toStdString();
        EXPECT_TRUE(XmlWork().Begin(encoded("<model a='" + odd.repeated(50'000) + "'/>")))
            << begin.toStdString();
        EXPECT_TRUE(XmlWork().Begin(encoded("<model" + Attributes(19'999) + "/>"))) << begin.toStdString();
        EXPECT_FALSE(XmlWork().Begin(encoded("<model" + Attributes(20'001) + "/>"))) << begin.toStdString();
        EXPECT_FALSE(XmlWork().Begin(encoded("<model a='" + odd + "'" + Attributes(20'001) + "/>")))
            << begin.toStdString();
        const QByteArray type = DocumentType("<!ENTITY % e ''>" + QByteArray("%e;").repeated(2'000));
        EXPECT_FALSE(XmlWork().Begin(encoded(type + "<model/>"))) << begin.toStdString();
    }
}

// Qt's reader goes on in the encoding that it had, and then reads all anew in UTF-8.
TEST(XmlWork, DocumentsThatChangeToUtf8AreJudgedInBothEncodings)
{
    const QByteArray tag = "<model" + Attributes(20'001) + "/>";
    const Encoding utf16 = {"UTF-16LE", "\xFF\xFE"};
    const QByteArray declaration = Declaration(" encoding='UTF-8'");
    EXPECT_TRUE(XmlWork().Begin(Encoded(utf16, declaration + "<model/>")));
    EXPECT_FALSE(XmlWork().Begin(Encoded(utf16, declaration + tag)));
    EXPECT_TRUE(XmlWork().Begin(Encoded(utf16, declaration + "<model/>") + "<model/>"));
    EXPECT_FALSE(XmlWork().Begin(Encoded(utf16, declaration + "<model/>") + tag));

    const QByteArray changing = Declaration(" encoding='IBM037' encoding='UTF-8'");
    EXPECT_FALSE(XmlWork().Begin(changing + tag));
    EXPECT_FALSE(XmlWork().Begin(Encoded({"IBM037", changing}, tag)));
    EXPECT_TRUE(XmlWork().Begin(changing + "<model/>"));
    OwnedModel model;
    EXPECT_FALSE(model.LoadModel(Declaration(" encoding='windows-1252' encoding='UTF-8'") +
                                 "<model><object id='1'><mesh/></object></model>"));
    EXPECT_EQ(model.GetObjects().size(), 1U);
}

TEST(XmlWork, ADocumentOfManyEncodingsIsDecodedSoOftenOnly)
{
    const QByteArray two = " encoding='UTF-7' encoding='ISO-8859-1'";
    const QByteArray large = "<model>" + QByteArray(1 << 20, ' ') + "</model>";
    EXPECT_TRUE(IsModel(Declaration(two.repeated(100)) + "<model/>"));
    EXPECT_TRUE(IsModel(Declaration(two.repeated(2)) + large));
    EXPECT_FALSE(IsModel(Declaration(two.repeated(200)) + large));
}

TEST(XmlWork, AProcessingInstructionDeclaresNoEncoding)
{
    const QByteArray instruction = "<?xml-stylesheet version='1.0' encoding='IBM037'?>";
    for (const Encoding& encoding : {Encoding{"UTF-16LE", "\xFF\xFE"}, Encoding{"UTF-8", "\n"}}) {
        EXPECT_TRUE(IsModel(Encoded(encoding, instruction + "<model/>")));
        EXPECT_FALSE(XmlWork().Begin(Encoded(encoding, instruction + "<model" + Attributes(20'001) + "/>")));
    }
}

TEST(XmlWork, DocumentsInAnUnknownEncodingAreLeftToTheReader)
{
    const QByteArray document = Declaration(" encoding='no-such'") + "<model/>";
    EXPECT_TRUE(XmlWork().Begin(document));
    EXPECT_FALSE(IsModel(document));
    for (const QByteArray& odd : {QByteArray(), QByteArray("<"), QByteArray("\xFF\xFE"),
                                  QByteArray("<?xml encoding='UTF-16' "), QByteArray("\0<", 2)})
        EXPECT_TRUE(XmlWork().Begin(odd));
}

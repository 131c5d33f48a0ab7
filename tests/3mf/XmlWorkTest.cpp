#include "fileformat/3mf/XmlWork_p.h"

#include <gtest/gtest.h>

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

TEST(XmlWork, OnlyValuesOfATagAreCounted)
{
    const QByteArray quotes(300'001, '\'');
    for (const QByteArray& document : {"<model unit=\"" + quotes + "\"/>", "<model>" + quotes + "</model>",
                                       "<!--" + quotes + "--><model/>", "<?a " + quotes + "?><model/>",
                                       "<model><![CDATA[" + quotes + "]]></model>"})
        EXPECT_TRUE(IsModel(document)) << document.left(20).toStdString();
}

TEST(XmlWork, ADocumentTypeDeclaresAnewAHundredTimesAtMost)
{
    const QByteArray declared = "<!ENTITY % e '<!-- -->'>";
    EXPECT_TRUE(IsModel(DocumentType(declared + QByteArray("%e;").repeated(99)) + "<model/>"));
    for (const char* const before : {"", "<?xml version='1.0'?>\n", "<!-- <!DOCTYPE < --><?a < ?>"})
        EXPECT_FALSE(IsModel(before + DocumentType(declared + QByteArray("%e;").repeated(100)) + "<model/>"));
    EXPECT_TRUE(IsModel("<!-- <!DOCTYPE --><model>" + QByteArray("%").repeated(1'000) + "</model>"));
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
        Repeated(5'000, [](int i) { return "<!ATTLIST b c" + QByteArray::number(i) + " CDATA '1'>"; });
    const QByteArray object = "<object id='1'><mesh><vertex x='4'/></mesh></object>";
    OwnedModel model;
    EXPECT_FALSE(model.LoadModel(DocumentType(defaults) + "<model>" + object +
                                 QByteArray("<b/>").repeated(1'000) + object + "</model>"));
    ASSERT_EQ(model.GetObjects().size(), 1U);
    EXPECT_EQ(model.GetObjects()[0]->GetVertexNum(), 1);
    EXPECT_FALSE(model.LoadContentType(DocumentType(defaults) + "<Types>" +
                                       QByteArray("<b/>").repeated(1'000) + "</Types>"));
}

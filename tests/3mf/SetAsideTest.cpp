#include "fileformat/3mf/SetAside_p.h"

#include <cstring>
#include <memory>
#include <string>

#include <QXmlStreamReader>

#include <gtest/gtest.h>

#include "tests/3mf/ModelSupport.h"
#include "tests/3mf/PlainModelReader.h"

namespace {

using kr::package3mf::ElementRow;
using kr::package3mf::SetAsideElements;
using test::OwnedModel;
using test::PlainModel;

std::string Vertices(int count)
{
    std::string text;
    for (int i = 0; i < count; ++i)
        text += "<vertex x=\"" + std::to_string(i) + "\" y=\"0.5\" z=\"-1e2\"/>";
    return text;
}

std::string Triangles(int count, const std::string& properties = "")
{
    std::string text;
    for (int i = 0; i < count; ++i)
        text += "<triangle v1=\"" + std::to_string(i) + "\" v2=\"1\" v3=\"2\"" + properties + "/>";
    return text;
}

// Elements close to the end of a document stay in it.
QByteArray Document(const std::string& content, const std::string& prolog = "")
{
    return QByteArray::fromStdString(prolog + "<model><object><mesh>" + content + "</mesh></object>" +
                                     std::string(300, ' ') + "</model>");
}

QByteArray Remainder(const QByteArray& document)
{
    return SetAsideElements(document).Remainder();
}

bool StaysWhole(const QByteArray& document)
{
    return Remainder(document) == document;
}

void ExpectReadAsPlainly(const QByteArray& document)
{
    OwnedModel model;
    PlainModel plain;
    EXPECT_EQ(model.LoadModel(document), plain.LoadModel(document)) << document.toStdString();
    EXPECT_EQ(Difference(plain, model), "") << document.toStdString();
}

} // namespace

TEST(Model3MFSetAside, LeavesTwoElementsAndAnInstructionOfALongRow)
{
    EXPECT_EQ(Remainder(Document(Vertices(16))), Document(Vertices(2) + "<?kr-set-aside 0?>"));
    EXPECT_EQ(Remainder(Document(Triangles(500))), Document(Triangles(2) + "<?kr-set-aside 0?>"));
}

TEST(Model3MFSetAside, NumbersRowsAsTheyStand)
{
    EXPECT_EQ(Remainder(Document(Vertices(16) + Triangles(16) + Vertices(16))),
              Document(Vertices(2) + "<?kr-set-aside 0?>" + Triangles(2) + "<?kr-set-aside 1?>" +
                       Vertices(2) + "<?kr-set-aside 2?>"));
}

TEST(Model3MFSetAside, LeavesRowsOfFifteenWhereTheyAre)
{
    EXPECT_TRUE(StaysWhole(Document(Vertices(15) + Triangles(15) + "<other/>" + Vertices(15))));
}

TEST(Model3MFSetAside, HandsOutTheWholeRowForItsInstructionAlone)
{
    SetAsideElements setAside(Document(Vertices(20) + Triangles(30)));
    QXmlStreamReader reader(setAside.Remainder());
    std::vector<ElementRow> rows;
    while (!reader.atEnd()) {
        reader.readNext();
        if (const ElementRow* const row = setAside.Take(reader))
            rows.push_back(*row);
    }
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0].vertices.size(), 20U);
    EXPECT_TRUE(rows[0].faces.empty());
    EXPECT_EQ(rows[0].vertices[19], Vector3D<float>(19, 0.5f, -100));
    EXPECT_TRUE(rows[1].vertices.empty());
    EXPECT_EQ(rows[1].faces.size(), 30U);
    EXPECT_EQ(rows[1].faces[29], TriangleFace(29, 1, 2));
}

TEST(Model3MFSetAside, SetsNothingAsideByDefault)
{
    SetAsideElements nothing;
    QXmlStreamReader reader(QByteArray("<a><?kr-set-aside 0?></a>"));
    while (!reader.atEnd()) {
        reader.readNext();
        EXPECT_EQ(nothing.Take(reader), nullptr);
    }
    EXPECT_FALSE(reader.hasError());
}

TEST(Model3MFSetAside, TakesPropertiesOnceAndInTheirOrder)
{
    for (const char* const properties : {" pid=\"1\"", " p1=\"0\"", " pid=\"1\" p1=\"0\" p2=\"1\" p3=\"2\"",
                                         " p1=\"0\" p3=\"1\"", "\n\tpid=\"1\"\r\n"})
        EXPECT_FALSE(StaysWhole(Document(Triangles(16, properties)))) << properties;
    for (const char* const properties : {" p1=\"0\" pid=\"1\"", " pid=\"1\" pid=\"1\"", " p1=\"x\"",
                                         " p2=\"-1\"", " p1='1'", " p4=\"1\"", "pid=\"1\""}) {
        EXPECT_TRUE(StaysWhole(Document(Triangles(16, properties)))) << properties;
        ExpectReadAsPlainly(Document(Triangles(16, properties)));
    }
}

TEST(Model3MFSetAside, EndsARowAtAnyElementThatDiffersInTheLeast)
{
    for (const char* const odd :
         {"<vertex x='1' y=\"2\" z=\"3\"/>", "<vertex y=\"2\" x=\"1\" z=\"3\"/>", "<vertex x=\"1\" y=\"2\"/>",
          "<vertex x=\"1\" y=\"2\" z=\"3\" w=\"4\"/>", "<vertex x=\"1\" y=\"2\" z=\"3\"></vertex>",
          "<vertex x = \"1\" y=\"2\" z=\"3\"/>", "<vertex x=\" 1\" y=\"2\" z=\"3\"/>",
          "<vertex x=\"\" y=\"2\" z=\"3\"/>", "<vertex x=\"&#49;\" y=\"2\" z=\"3\"/>", "<!-- -->", "text",
          "<vertexes x=\"1\" y=\"2\" z=\"3\"/>"}) {
        const QByteArray document = Document(Vertices(16) + odd + Vertices(16));
        const std::string row = Vertices(2) + "<?kr-set-aside ";
        EXPECT_EQ(Remainder(document), Document(row + "0?>" + odd + row + "1?>")) << odd;
        ExpectReadAsPlainly(document);
    }
}

TEST(Model3MFSetAside, GoesOnOverWhiteSpaceOfAllKinds)
{
    std::string row;
    for (int i = 0; i < 4; ++i)
        row += "<vertex x=\"1\" y=\"2\" z=\"3\"/>\n<vertex\tx=\"4\"\r\ny=\"5\"   z=\"6\" />\r\n"
               "<vertex x=\"7\" y=\"8\" z=\"9\"\n/>\t<vertex x=\"1\" y=\"2\" z=\"3\"/> \r";
    EXPECT_FALSE(StaysWhole(Document(row)));
    ExpectReadAsPlainly(Document(row));
}

TEST(Model3MFSetAside, LeavesCommentsAsTheyAre)
{
    for (const char* const end : {"-->", "--->", " --->", "-- -->", ""}) {
        const QByteArray document = Document("<!--" + Vertices(20) + end);
        EXPECT_TRUE(StaysWhole(document)) << end;
        ExpectReadAsPlainly(document);
    }
    ExpectReadAsPlainly(Document("<!-->" + Vertices(20) + "-->" + Vertices(20)));
    ExpectReadAsPlainly(Document("<!--->" + Vertices(20) + "-->" + Vertices(20)));
    ExpectReadAsPlainly(Document("<!---->" + Vertices(20) + "-->" + Vertices(20)));
}

TEST(Model3MFSetAside, LeavesDocumentsAloneWhereRowsMayMeanSomethingElse)
{
    const std::string row = Vertices(20);
    const QByteArray documents[] = {
        Document(row + "<![CDATA[" + row + "]]>"),
        Document(row + "<?other?>"),
        Document(row + "<?kr-set-aside 0?>"),
        Document(row, "<!DOCTYPE model>"),
        Document(row, "<!DOCTYPE model [<!ENTITY row '" + Vertices(1) + "'>]>"),
        Document(row, "<!DOCTYPE model [<!ATTLIST vertex x CDATA '1'>]>"),
    };
    for (const QByteArray& document : documents) {
        EXPECT_TRUE(StaysWhole(document)) << document.toStdString();
        ExpectReadAsPlainly(document);
    }
}

TEST(Model3MFSetAside, ReadsRowsOfDocumentsInUtf8Only)
{
    for (const char* const declaration :
         {"", "\xEF\xBB\xBF", "<?xml version=\"1.0\"?>", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>",
          "\xEF\xBB\xBF<?xml version='1.0' encoding='utf-8' standalone='yes'?>"})
        EXPECT_FALSE(StaysWhole(Document(Vertices(20), declaration))) << declaration;
    for (const char* const declaration :
         {"<?xml version=\"1.0\" encoding=\"UTF-16\"?>", "<?xml version=\"1.0\" encoding=\"UTF-7\"?>",
          "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>", "<?xml version=\"1.0\" encoding=\"utf8\"?>",
          "<?xml version=\"1.0\" encoding=\"", "<?xml\tversion=\"1.0\"?>", " ", "text"}) {
        EXPECT_TRUE(StaysWhole(Document(Vertices(20), declaration))) << declaration;
        ExpectReadAsPlainly(Document(Vertices(20), declaration));
    }
}

TEST(Model3MFSetAside, LeavesDocumentsInUtf16WithoutAMarkAlone)
{
    const QByteArray text = Document(Vertices(20));
    const QString wide = QString::fromUtf8(text);
    const QByteArray document(reinterpret_cast<const char*>(wide.utf16()), 2 * wide.size());
    EXPECT_TRUE(StaysWhole(document));
    ExpectReadAsPlainly(document);
}

// In UTF-7 a '+' begins encoded text.
TEST(Model3MFSetAside, LeavesDocumentsWithTwoEncodingsAlone)
{
    const QByteArray document = Document("<vertex x=\"+5\" y=\"+6\" z=\"7\"/>" + Vertices(20),
                                         "<?xml version=\"1.0\" encoding=\"UTF-8\" encoding=\"UTF-7\"?>");
    EXPECT_TRUE(StaysWhole(document));
    ExpectReadAsPlainly(document);
}

TEST(Model3MFSetAside, ReadsRowsWhereverTheyStand)
{
    const std::string row = Vertices(20), tail(300, ' ');
    for (const std::string& document :
         {row + tail, "<a/>" + row + tail + "<b/>",
          "<model>" + row + "<object>" + row + "<mesh>" + row + tail,
          "<model><object id='1'><components>" + row + "</components></object>" + tail + "</model>",
          "<model><build>" + row + "</build>" + tail + "</model>",
          "<model><metadata name='m'>" + row + "</metadata>" + tail + "</model>",
          "<model><object><mesh a=\"" + row + "\"/></object>" + tail + "</model>",
          "<model><object><mesh>" + row + "<object>" + row + "</object>" + row + "</mesh></object>" + tail +
              "</model>"})
        ExpectReadAsPlainly(QByteArray::fromStdString(document));
}

TEST(Model3MFSetAside, ReadsRowsThatFollowSingleElementsIntoOneList)
{
    const std::string one = "<vertex y='1'/>", row = Vertices(20);
    for (const std::string& content : {one + row, one + one + row, one + one + one + row, row + one + row,
                                       row + "<!-- -->" + row, Vertices(2) + one + row}) {
        EXPECT_FALSE(StaysWhole(Document(content)));
        ExpectReadAsPlainly(Document(content));
    }
}

TEST(Model3MFSetAside, KeepsWhatIsNoText)
{
    for (const char byte : {'\0', '\x01', '\xFF', '\xC0'}) {
        ExpectReadAsPlainly(Document(Vertices(20) + byte + Vertices(20)));
        ExpectReadAsPlainly(Document(std::string("<vertex x=\"") + byte + "\"/>" + Vertices(20)));
    }
}

// The bytes behind raw data belong to somebody else, and no NUL ends them.
TEST(Model3MFSetAside, ReadsNothingBehindTheDocument)
{
    const QByteArray whole = Document(Vertices(30) + Triangles(30)) + QByteArray(300, ' ');
    for (int size = 0; size <= whole.size(); ++size) {
        const std::unique_ptr<char[]> bytes(new char[static_cast<std::size_t>(size) + 1]);
        std::memcpy(bytes.get() + 1, whole.constData(), static_cast<std::size_t>(size));
        const QByteArray raw = QByteArray::fromRawData(bytes.get() + 1, size);
        EXPECT_EQ(Remainder(raw), Remainder(whole.left(size)));
        const QByteArray continued = QByteArray::fromRawData(whole.constData(), size);
        EXPECT_EQ(Remainder(continued), Remainder(whole.left(size)));
    }
}

TEST(Model3MFSetAside, ReadsDocumentsCutShortAnywhereAsPlainly)
{
    const QByteArray whole = Document(Vertices(40) + Triangles(20) + Vertices(17));
    for (int size = 0; size < whole.size(); size += 3)
        ExpectReadAsPlainly(whole.left(size));
}

// What follows a short row looks like its end from afar.
TEST(Model3MFSetAside, MakesNoRoomForTheRestOfTheDocumentInEachShortRow)
{
    std::string content;
    for (int i = 0; i < 400; ++i)
        content += Vertices(64) + "<other/>";
    SetAsideElements setAside(Document(content));
    QXmlStreamReader reader(setAside.Remainder());
    int rows = 0;
    while (!reader.atEnd()) {
        reader.readNext();
        const ElementRow* const row = setAside.Take(reader);
        if (!row)
            continue;
        ++rows;
        ASSERT_EQ(row->vertices.size(), 64U);
        ASSERT_LE(row->vertices.capacity(), 8192U);
    }
    EXPECT_EQ(rows, 400);
}

TEST(Model3MFSetAside, SetsRowsOfManyThousandsAside)
{
    const QByteArray document = Document(Vertices(100'000) + Triangles(100'000));
    EXPECT_LT(Remainder(document).size(), 1000);
    ExpectReadAsPlainly(document);
}

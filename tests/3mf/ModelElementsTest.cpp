#include <string>

#include <QXmlStreamReader>

#include <gtest/gtest.h>

#include "tests/3mf/ModelSupport.h"

// The parsers of single elements, driven by a host's own reader.

namespace {

using test::OwnedModel;

// A reader on the first start tag with a name.
class ReaderOn : public QXmlStreamReader {
public:
    ReaderOn(const char* name, const QByteArray& document) : QXmlStreamReader(document) { GoOnTo(name); }
    void GoOnTo(const char* name)
    {
        do {
            readNext();
        } while (!atEnd() && !(isStartElement() && this->name() == QLatin1String(name)));
    }
};

bool IsOnEndOf(const QXmlStreamReader& reader, const char* name)
{
    return reader.isEndElement() && reader.name() == QLatin1String(name);
}

constexpr char kMove[] = "1 0 0 0 1 0 0 0 1 10 20 30";

std::string Transform(const Mesh& mesh)
{
    return Model3MF::ConvertFromMatTo3MFMatStr(mesh.GetTransformMatrix()).toStdString();
}

void AddObject(Model3MF& model, int id)
{
    ReaderOn reader("object", "<object id='" + QByteArray::number(id) + "'/>");
    ASSERT_TRUE(model.ParserObject(reader));
}

} // namespace

TEST(Model3MFElements, ReadsAnObjectUpToItsEndTag)
{
    OwnedModel model;
    ReaderOn reader("object", "<model><object id='3' name='n'><mesh><vertex x='1'/></mesh></object><next/>"
                              "</model>");
    EXPECT_TRUE(model.ParserObject(reader));
    EXPECT_TRUE(IsOnEndOf(reader, "object"));
    ASSERT_EQ(model.GetObjects().size(), 1U);
    EXPECT_EQ(model.Object(0).GetObjectID(), 3);
    EXPECT_EQ(model.Object(0).GetVertexNum(), 1);
    EXPECT_TRUE(reader.readNextStartElement());
    EXPECT_EQ(reader.name(), QLatin1String("next"));
}

TEST(Model3MFElements, ReadsObjectsOneAfterAnother)
{
    OwnedModel model;
    ReaderOn reader("object", "<model><object id='1'/><object id='2'/></model>");
    EXPECT_TRUE(model.ParserObject(reader));
    reader.GoOnTo("object");
    EXPECT_TRUE(model.ParserObject(reader));
    ASSERT_EQ(model.GetObjects().size(), 2U);
    EXPECT_EQ(model.Object(1).GetObjectID(), 2);
}

TEST(Model3MFElements, EntersNoMembersByThemselves)
{
    OwnedModel model;
    AddObject(model, 4);
    EXPECT_TRUE(model.GetComponentMembers().isEmpty());
    model.ReadComponentsformId();
    EXPECT_EQ(model.GetComponentMembers().value(-1), std::vector<int>{4});
}

TEST(Model3MFElements, PassesAnObjectOfComponentsOn)
{
    OwnedModel model;
    AddObject(model, 1);
    ReaderOn reader("object", QByteArray("<object id='9'><components><component objectid='1' transform='") +
                                  kMove + "'/></components></object>");
    EXPECT_TRUE(model.ParserObject(reader));
    EXPECT_TRUE(IsOnEndOf(reader, "object"));
    ASSERT_EQ(model.GetObjects().size(), 1U);
    EXPECT_EQ(model.Object(0).GetComponentsId(), 9);
    EXPECT_EQ(Transform(model.Object(0)), kMove);
}

TEST(Model3MFElements, GivesComponentsTheIdOfTheCaller)
{
    OwnedModel model;
    AddObject(model, 1);
    ReaderOn reader("components", "<object id='9'><components><component objectid='1'/></components>"
                                  "<component objectid='1'/></object>");
    EXPECT_TRUE(model.ParserComponent(reader, 77));
    EXPECT_TRUE(IsOnEndOf(reader, "object"));
    EXPECT_EQ(model.Object(0).GetComponentsId(), 77);
}

TEST(Model3MFElements, ReadsABuildUpToItsEndTag)
{
    OwnedModel model;
    AddObject(model, 1);
    ReaderOn reader("build", QByteArray("<model><build><item objectid='1' transform='") + kMove +
                                 "'/></build><item objectid='1' transform='2'/></model>");
    EXPECT_TRUE(model.ParserBuild(reader));
    EXPECT_TRUE(IsOnEndOf(reader, "build"));
    EXPECT_EQ(Transform(model.Object(0)), kMove);
}

TEST(Model3MFElements, ReadsAnEmptyBuild)
{
    OwnedModel model;
    AddObject(model, 1);
    ReaderOn reader("build", "<model><build/><build><item objectid='1' transform='2'/></build></model>");
    EXPECT_TRUE(model.ParserBuild(reader));
    EXPECT_TRUE(IsOnEndOf(reader, "build"));
    EXPECT_EQ(Transform(model.Object(0)), "1 0 0 0 1 0 0 0 1 0 0 0");
}

TEST(Model3MFElements, EndsWithTheDocument)
{
    const QByteArray cut = "<x><object id='1'><mesh><vertex x='1'/>";
    OwnedModel model;
    ReaderOn object("object", cut);
    EXPECT_TRUE(model.ParserObject(object));
    EXPECT_TRUE(object.hasError());
    ReaderOn components("object", cut);
    EXPECT_TRUE(model.ParserComponent(components, 1));
    EXPECT_TRUE(components.atEnd());
    ReaderOn build("object", cut);
    EXPECT_TRUE(model.ParserBuild(build));
    EXPECT_TRUE(build.atEnd());
    ASSERT_EQ(model.GetObjects().size(), 1U);
    EXPECT_EQ(model.Object(0).GetVertexNum(), 1);
}

// Each reads on from where it is; what the element is called means nothing.
TEST(Model3MFElements, TakesAnyElementItIsCalledFor)
{
    OwnedModel model;
    ReaderOn reader("thing", "<model><thing id='5' name='n'><mesh><vertex/></mesh></thing></model>");
    EXPECT_TRUE(model.ParserObject(reader));
    EXPECT_TRUE(reader.atEnd());
    ASSERT_EQ(model.GetObjects().size(), 1U);
    EXPECT_EQ(model.Object(0).GetObjectID(), 5);
}

TEST(Model3MFElements, TakesManyObjectsWithoutLookingAtAllBefore)
{
    OwnedModel model;
    const QByteArray document = "<model>" + QByteArray("<object/>").repeated(50'000) + "</model>";
    QXmlStreamReader reader(document);
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isStartElement() && reader.name() == QLatin1String("object"))
            model.ParserObject(reader);
    }
    EXPECT_EQ(model.GetObjects().size(), 50'000U);
}

#include <limits>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/3mf/ModelSupport.h"

namespace {

using test::OwnedModel;
using Points = std::vector<Vector3D<float>>;
using Faces = std::vector<TriangleFace>;
using Texts = std::vector<QString>;

QString Text(const char* text)
{
    return QString::fromUtf8(text);
}

void Load(Model3MF& model, const QByteArray& document)
{
    ASSERT_TRUE(model.LoadModel(document)) << document.toStdString();
}

// The unit of a model whose attributes are given.
std::string UnitOf(const char* attributes)
{
    Model3MF model;
    EXPECT_TRUE(model.LoadModel(QByteArray("<model ") + attributes + "/>")) << attributes;
    return model.GetUnit().toStdString();
}

// What is kept under the name "n" of a metadata element with the given content.
QString MetadataOf(const char* content)
{
    Model3MF model;
    EXPECT_TRUE(
        model.LoadModel(QByteArray("<model><metadata name=\"n\">") + content + "</metadata></model>"));
    return model.GetDescription().value(Text("n"), Text("none"));
}

// The first mesh of a model with one mesh of the given content.
Points VerticesOf(const QByteArray& content)
{
    OwnedModel model;
    EXPECT_TRUE(model.LoadModel("<model><object><mesh>" + content + "</mesh></object></model>"))
        << content.toStdString();
    return *model.Object(0).GetVerticesVecPtr();
}

constexpr char kFourVertices[] = "<vertex/><vertex x='1'/><vertex y='1'/><vertex z='1'/>";

Faces FacesOf(const QByteArray& triangles)
{
    OwnedModel model;
    EXPECT_TRUE(model.LoadModel(QByteArray("<model><object><mesh>") + kFourVertices + triangles +
                                "</mesh></object></model>"))
        << triangles.toStdString();
    return *model.Object(0).GetFacesVecPtr();
}

constexpr char kTetrahedron[] =
    R"(<?xml version="1.0" encoding="UTF-8"?>
<model unit="millimeter" xml:lang="en-US" xmlns="http://schemas.microsoft.com/3dmanufacturing/core/2015/02">
  <metadata name="Title">Tetra</metadata>
  <resources>
    <object id="3" name="corner" type="model">
      <mesh>
        <vertices>
          <vertex x="0" y="0" z="0"/>
          <vertex x="3" y="0" z="0"/>
          <vertex x="0" y="2" z="0"/>
          <vertex x="0" y="0" z="1"/>
        </vertices>
        <triangles>
          <triangle v1="0" v2="2" v3="1"/>
          <triangle v1="0" v2="1" v3="3"/>
          <triangle v1="0" v2="3" v3="2"/>
          <triangle v1="1" v2="2" v3="3"/>
        </triangles>
      </mesh>
    </object>
  </resources>
  <build><item objectid="3" transform="1 0 0 0 1 0 0 0 1 5 6 7"/></build>
</model>
)";

} // namespace

TEST(Model3MFUnit, ScalesKnownUnitsToMillimetres)
{
    EXPECT_EQ(Model3MF::GetUnitScale(Text("micron")), 0.001);
    EXPECT_EQ(Model3MF::GetUnitScale(Text("millimeter")), 1.0);
    EXPECT_EQ(Model3MF::GetUnitScale(Text("centimeter")), 10.0);
    EXPECT_EQ(Model3MF::GetUnitScale(Text("inch")), 25.4);
    EXPECT_EQ(Model3MF::GetUnitScale(Text("foot")), 304.8);
    EXPECT_EQ(Model3MF::GetUnitScale(Text("meter")), 1000.0);
}

TEST(Model3MFUnit, ScalesAllOtherTextsByOne)
{
    for (const char* const unit : {"", "Inch", "INCH", " inch", "inches", "mm", "Meter", "millimetre", "foo"})
        EXPECT_EQ(Model3MF::GetUnitScale(Text(unit)), 1.0) << unit;
    EXPECT_EQ(Model3MF::GetUnitScale(QString()), 1.0);
}

TEST(Model3MFUnit, IsMillimeterBeforeAModelIsRead)
{
    const Model3MF model;
    EXPECT_EQ(model.GetUnit(), Text("millimeter"));
    EXPECT_EQ(model.GetUnitScale(), 1.0);
}

TEST(Model3MFUnit, IsWhatTheModelSays)
{
    EXPECT_EQ(UnitOf("unit=\"inch\""), "inch");
    EXPECT_EQ(UnitOf("unit='furlong &amp; more'"), "furlong & more");
    Model3MF model;
    Load(model, "<model unit='foot'/>");
    EXPECT_EQ(model.GetUnitScale(), 304.8);
}

TEST(Model3MFUnit, IsEmptyForAModelThatNamesNone)
{
    EXPECT_EQ(UnitOf(""), "");
    EXPECT_EQ(UnitOf("Unit='inch'"), "");
    Model3MF model;
    Load(model, "<model/>");
    EXPECT_EQ(model.GetUnitScale(), 1.0);
}

TEST(Model3MFUnit, StaysWhereNoModelElementIs)
{
    Model3MF model;
    model.SetUnit(Text("inch"));
    Load(model, "<package unit='foot'/>");
    EXPECT_EQ(model.GetUnit(), Text("inch"));
}

TEST(Model3MFUnit, ScalesNoCoordinates)
{
    OwnedModel model;
    Load(model, "<model unit='inch'><object><mesh><vertex x='2'/></mesh></object></model>");
    EXPECT_EQ(*model.Object(0).GetVerticesVecPtr(), (Points{{2, 0, 0}}));
}

TEST(Model3MFReader, HoldsNothingAtFirst)
{
    const Model3MF model;
    QString imageName;
    EXPECT_TRUE(model.GetImage(imageName).isEmpty());
    EXPECT_EQ(imageName, Text("Metadata/thumbnail.png"));
    EXPECT_TRUE(model.GetObjects().empty());
    EXPECT_EQ(model.GetMaterial().id, -1);
    EXPECT_TRUE(model.GetMaterial().colors.empty());
    EXPECT_TRUE(model.GetDescription().isEmpty());
    EXPECT_TRUE(model.GetComponentMembers().isEmpty());
    EXPECT_TRUE(model.GetTextures().empty());
    EXPECT_TRUE(model.GetTextureGroups().empty());
    EXPECT_TRUE(model.GetTextureImages().isEmpty());
    EXPECT_TRUE(model.GetModelExtension().isNull());
    EXPECT_TRUE(model.GetRelsExtension().isNull());
}

TEST(Model3MFRecords, StartWithTheirDefaults)
{
    const Model3MF::ModelObjectInfo object;
    EXPECT_EQ(object.mesh, nullptr);
    EXPECT_TRUE(object.name.isNull());
    EXPECT_EQ(object.position, Vector3D<float>(0, 0, 0));
    EXPECT_EQ(object.offset, Vector3D<float>(0, 0, 0));
    EXPECT_EQ(Model3MF::ConvertFromMatTo3MFMatStr(object.transform), Text("1 0 0 0 1 0 0 0 1 0 0 0"));
    EXPECT_EQ(Model3MF::BaseMaterial().id, -1);
    EXPECT_EQ(Model3MF::Texture().id, -1);
    EXPECT_EQ(Model3MF::TextureGroup().id, -1);
    EXPECT_EQ(Model3MF::TextureGroup().texture.id, -1);
}

TEST(Model3MFRecords, OfAnObjectTakeTheirFieldsInOrder)
{
    Mesh mesh(0.03f);
    Matrix4<double> transform;
    transform.set(0, 1, 5);
    const Model3MF::ModelObjectInfo object{&mesh, {1, 2, 3}, {4, 5, 6}, transform, Text("n")};
    EXPECT_EQ(object.mesh, &mesh);
    EXPECT_EQ(object.position, Vector3D<float>(1, 2, 3));
    EXPECT_EQ(object.offset, Vector3D<float>(4, 5, 6));
    EXPECT_EQ(object.transform.get(0, 1), 5);
    EXPECT_EQ(object.name, Text("n"));
}

TEST(Model3MFReader, ReadsAModel)
{
    OwnedModel model;
    Load(model, kTetrahedron);
    ASSERT_EQ(model.GetObjects().size(), 1U);
    const Mesh& mesh = model.Object(0);
    EXPECT_EQ(mesh.GetObjectID(), 3);
    EXPECT_EQ(mesh.GetObjectName(), Text("corner"));
    EXPECT_EQ(mesh.GetComponentsId(), -1);
    EXPECT_EQ(*mesh.GetVerticesVecPtr(), (Points{{0, 0, 0}, {3, 0, 0}, {0, 2, 0}, {0, 0, 1}}));
    EXPECT_EQ(*mesh.GetFacesVecPtr(), (Faces{{0, 2, 1}, {0, 1, 3}, {0, 3, 2}, {1, 2, 3}}));
    EXPECT_EQ(mesh.GetTransformMatrix().get(2, 3), 7);
    EXPECT_EQ(model.GetDescription().value(Text("Title")), Text("Tetra"));
}

TEST(Model3MFReader, FinishesMeshes)
{
    OwnedModel model;
    Load(model, kTetrahedron);
    const Mesh& mesh = model.Object(0);
    EXPECT_EQ(mesh.GetVertexNum(), 4);
    EXPECT_EQ(mesh.GetFaceNum(), 4);
    EXPECT_DOUBLE_EQ(mesh.GetVolume(), 1);
    ASSERT_EQ(mesh.GetFaceNormals().size(), 4U);
    EXPECT_EQ(mesh.GetFaceNormals()[0], Vector3D<float>(0, 0, -1));
    ASSERT_EQ(mesh.GetFaceNeighbours().size(), 4U);
    EXPECT_EQ(mesh.GetFaceNeighbours()[0], TriangleFace(2, 3, 1));
}

TEST(Model3MFReader, KeepsObjectsInTheirOrderWithAnyIds)
{
    OwnedModel model;
    Load(model, "<model><object id='9' name='a'/><object id='2' name='b'/><object id='9' name='c'/></model>");
    ASSERT_EQ(model.GetObjects().size(), 3U);
    EXPECT_EQ(model.Object(0).GetObjectName(), Text("a"));
    EXPECT_EQ(model.Object(1).GetObjectID(), 2);
    EXPECT_EQ(model.Object(2).GetObjectID(), 9);
}

TEST(Model3MFReader, MakesAnEmptyMeshOfAnObjectWithNeitherMeshNorComponents)
{
    OwnedModel model;
    Load(model, "<model><object id='4' name='empty'/><object id='5'>text<other/></object></model>");
    ASSERT_EQ(model.GetObjects().size(), 2U);
    EXPECT_EQ(model.Object(0).GetObjectID(), 4);
    EXPECT_EQ(model.Object(0).GetObjectName(), Text("empty"));
    EXPECT_EQ(model.Object(0).GetVertexNum(), 0);
    EXPECT_EQ(model.Object(0).GetFaceNum(), 0);
    EXPECT_EQ(model.Object(0).GetVolume(), 0);
    EXPECT_EQ(model.Object(1).GetObjectID(), 5);
}

TEST(Model3MFReader, ReadsIdsThatAreNoNumbersAsZero)
{
    OwnedModel model;
    Load(model, "<model><object id='x'/><object/><object id='2.0'/><object id='2147483648'/>"
                "<object id='-7'/><object id=' 8 '/></model>");
    const std::vector<int> expected = {0, 0, 0, 0, -7, 8};
    ASSERT_EQ(model.GetObjects().size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_EQ(model.Object(i).GetObjectID(), expected[i]);
}

TEST(Model3MFReader, ReadsNamesAsUnicode)
{
    OwnedModel model;
    Load(model, "<model><object name='\xC3\xA4&#x1F600;&lt;'/></model>");
    EXPECT_EQ(model.Object(0).GetObjectName(), Text("\xC3\xA4\xF0\x9F\x98\x80<"));
}

TEST(Model3MFReader, ReadsMissingAndUnreadableCoordinatesAsZero)
{
    EXPECT_EQ(VerticesOf("<vertex/>"), Points{{}});
    EXPECT_EQ(VerticesOf("<vertex y='5'/>"), (Points{{0, 5, 0}}));
    EXPECT_EQ(VerticesOf("<vertex x='1,5' y='' z='0x10'/>"), Points{{}});
    EXPECT_EQ(VerticesOf("<vertex x='1.5mm' y='--1' z='1e'/>"), Points{{}});
}

TEST(Model3MFReader, ReadsCoordinatesInDoublePrecisionFirst)
{
    // Rounded to a float at once it would be 1.0000001.
    EXPECT_EQ(VerticesOf("<vertex x='1.00000005960464477540' y='0.1' z='16777217'/>"),
              (Points{{1.0f, 0.1f, 16777216.0f}}));
    const float infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(VerticesOf("<vertex x='1e39' y='-1e400' z='inf'/>"), (Points{{infinity, -infinity, infinity}}));
}

TEST(Model3MFReader, ReadsIndicesThatAreNoNumbersAsZero)
{
    EXPECT_EQ(FacesOf("<triangle v1='x' v2='1' v3='2.0'/>"), (Faces{{0, 1, 0}}));
    EXPECT_EQ(FacesOf("<triangle v2='3'/>"), (Faces{{0, 3, 0}}));
    EXPECT_EQ(FacesOf("<triangle v1='4294967296' v2='3' v3='1e0'/>"), (Faces{{0, 3, 0}}));
}

TEST(Model3MFReader, DropsFacesWithIndicesOutsideTheVertexList)
{
    EXPECT_EQ(FacesOf("<triangle v1='0' v2='1' v3='4'/><triangle v1='1' v2='2' v3='3'/>"
                      "<triangle v1='-1' v2='1' v3='2'/><triangle v1='2147483647'/>"),
              (Faces{{1, 2, 3}}));
}

TEST(Model3MFReader, KeepsFacesThatNameAVertexTwice)
{
    EXPECT_EQ(FacesOf("<triangle v1='1' v2='1' v3='2'/>"), (Faces{{1, 1, 2}}));
}

TEST(Model3MFReader, ReadsTrianglesWithPropertiesAsPlainOnes)
{
    EXPECT_EQ(FacesOf("<triangle v1='0' v2='1' v3='2' pid='1' p1='0' p2='1' p3='2'/>"), (Faces{{0, 1, 2}}));
    EXPECT_EQ(FacesOf("<triangle pid='1' v3='2' p1='3' v2='1' v1='0'/>"), (Faces{{0, 1, 2}}));
}

TEST(Model3MFReader, GivesMeshesTheirMergeDistance)
{
    OwnedModel model;
    Load(model, "<model><object><mesh><vertex/><vertex x='0.02'/><vertex x='1'/><vertex x='1.04'/></mesh>"
                "</object></model>");
    Mesh& mesh = *model.GetObjects().at(0);
    mesh.PostProcess(true, false, false, false, nullptr, nullptr);
    EXPECT_EQ(*mesh.GetVerticesVecPtr(), (Points{{0, 0, 0}, {1, 0, 0}, {1.04f, 0, 0}}));
}

TEST(Model3MFReader, MergesNoVertices)
{
    EXPECT_EQ(VerticesOf("<vertex x='1'/><vertex x='1'/>"), (Points{{1, 0, 0}, {1, 0, 0}}));
}

TEST(Model3MFReader, TakesTrianglesInFrontOfVertices)
{
    OwnedModel model;
    Load(model, QByteArray("<model><object><mesh><triangle v1='1' v2='2' v3='3'/>") + kFourVertices +
                    "</mesh></object></model>");
    EXPECT_EQ(*model.Object(0).GetFacesVecPtr(), (Faces{{1, 2, 3}}));
}

TEST(Model3MFReader, ReadsVerticesAnywhereInAMesh)
{
    EXPECT_EQ(VerticesOf("<vertices><vertex x='1'/><a><vertex x='2'/></a></vertices><vertex x='3'/>"),
              (Points{{1, 0, 0}, {2, 0, 0}, {3, 0, 0}}));
    EXPECT_EQ(VerticesOf("<vertex x='1'><vertex x='2'/></vertex>"), (Points{{1, 0, 0}, {2, 0, 0}}));
    EXPECT_EQ(VerticesOf("<triangles><vertex x='1'/></triangles>"), (Points{{1, 0, 0}}));
}

TEST(Model3MFReader, ReadsVerticesOfAnObjectFromItsMeshOn)
{
    OwnedModel model;
    Load(model, "<model><object><vertex x='1'/><mesh><vertex x='2'/></mesh><vertex x='3'/></object>"
                "<object><vertex x='4'/></object></model>");
    ASSERT_EQ(model.GetObjects().size(), 2U);
    EXPECT_EQ(*model.Object(0).GetVerticesVecPtr(), (Points{{2, 0, 0}, {3, 0, 0}}));
    EXPECT_EQ(*model.Object(1).GetVerticesVecPtr(), Points()) << "passed over in search of a mesh";
}

TEST(Model3MFReader, ReadsNoVerticesOutsideOfObjects)
{
    OwnedModel model;
    Load(model, "<model><vertex x='1'/><object id='1'><mesh/></object><vertex x='2'/>"
                "<build><vertex x='3'/><object id='2'/></build></model>");
    ASSERT_EQ(model.GetObjects().size(), 1U);
    EXPECT_TRUE(model.Object(0).GetVerticesVecPtr()->empty());
}

TEST(Model3MFReader, EndsAnObjectAtTheFirstEndOfAnObject)
{
    OwnedModel model;
    Load(model, "<model><object id='1'><mesh><vertex x='1'/><object id='2'><vertex x='2'/></object>"
                "<vertex x='3'/></mesh></object></model>");
    ASSERT_EQ(model.GetObjects().size(), 1U);
    EXPECT_EQ(*model.Object(0).GetVerticesVecPtr(), (Points{{1, 0, 0}, {2, 0, 0}}));
}

TEST(Model3MFReader, TakesAnInnerObjectForTheMesh)
{
    OwnedModel model;
    Load(model, "<model><object id='1' name='a'><object id='2' name='b'><vertex x='5'/></object>"
                "<vertex x='6'/></object></model>");
    ASSERT_EQ(model.GetObjects().size(), 1U);
    EXPECT_EQ(model.Object(0).GetObjectID(), 1);
    EXPECT_EQ(model.Object(0).GetObjectName(), Text("a"));
    EXPECT_EQ(*model.Object(0).GetVerticesVecPtr(), (Points{{5, 0, 0}}));
}

TEST(Model3MFReader, TakesWhatComesFirstOfMeshAndComponents)
{
    OwnedModel model;
    Load(model, "<model><object id='1'/>"
                "<object id='2'><mesh/><components><component objectid='1'/></components></object>"
                "<object id='3'><components/><mesh><vertex/></mesh></object></model>");
    ASSERT_EQ(model.GetObjects().size(), 2U);
    EXPECT_EQ(model.Object(0).GetComponentsId(), -1);
    EXPECT_EQ(model.Object(1).GetObjectID(), 2);
}

TEST(Model3MFReader, ComparesNamesWithoutPrefixes)
{
    OwnedModel model;
    Load(model, "<a:model xmlns:a='urn:a' a:unit='inch'><a:object a:id='3' a:name='n'><a:mesh>"
                "<a:vertex a:x='1' y='2'/></a:mesh></a:object></a:model>");
    EXPECT_EQ(model.GetUnit(), Text("inch"));
    ASSERT_EQ(model.GetObjects().size(), 1U);
    EXPECT_EQ(model.Object(0).GetObjectID(), 3);
    EXPECT_EQ(model.Object(0).GetObjectName(), Text("n"));
    EXPECT_EQ(*model.Object(0).GetVerticesVecPtr(), (Points{{1, 2, 0}}));
}

TEST(Model3MFReader, PrefersAttributesWithoutPrefix)
{
    EXPECT_EQ(UnitOf("xmlns:a='urn:a' a:unit='foot' unit='inch'"), "inch");
    EXPECT_EQ(UnitOf("xmlns:a='urn:a' xmlns:b='urn:b' b:unit='foot' a:unit='inch'"), "foot");
}

TEST(Model3MFReader, DistinguishesCases)
{
    OwnedModel model;
    Load(model, "<Model unit='inch'><Object/><object ID='4'><Mesh/><Vertex/></object></Model>");
    EXPECT_EQ(model.GetUnit(), Text("millimeter"));
    ASSERT_EQ(model.GetObjects().size(), 1U);
    EXPECT_EQ(model.Object(0).GetObjectID(), 0);
    EXPECT_TRUE(model.Object(0).GetVerticesVecPtr()->empty());
}

TEST(Model3MFReader, ReadsObjectsWhateverTheRootIs)
{
    OwnedModel model;
    Load(model, "<object id='7'><mesh><vertex x='1'/></mesh></object>");
    ASSERT_EQ(model.GetObjects().size(), 1U);
    EXPECT_EQ(model.Object(0).GetObjectID(), 7);
}

TEST(Model3MFMetadata, IsKeptByName)
{
    Model3MF model;
    Load(model, "<model><metadata name='Title'>Box</metadata><metadata name='Designer'>A &amp; B</metadata>"
                "<metadata>nameless</metadata></model>");
    EXPECT_EQ(model.GetDescription().size(), 3);
    EXPECT_EQ(model.GetDescription().value(Text("Title")), Text("Box"));
    EXPECT_EQ(model.GetDescription().value(Text("Designer")), Text("A & B"));
    EXPECT_EQ(model.GetDescription().value(QString()), Text("nameless"));
}

TEST(Model3MFMetadata, KeepsTheLastOfAName)
{
    Model3MF model;
    model.AddDescription(Text("Title"), Text("from the host"));
    Load(model,
         "<model><metadata name='Title'>first</metadata><metadata name='Title'>last</metadata></model>");
    EXPECT_EQ(model.GetDescription().size(), 1);
    EXPECT_EQ(model.GetDescription().value(Text("Title")), Text("last"));
}

TEST(Model3MFMetadata, StoresNothingForAnEmptyElement)
{
    EXPECT_EQ(MetadataOf(""), Text("none"));
    Model3MF model;
    Load(model, "<model><metadata name='n'>kept</metadata><metadata name='n'/></model>");
    EXPECT_EQ(model.GetDescription().value(Text("n")), Text("kept"));
}

TEST(Model3MFMetadata, StoresTheFirstTokenAlone)
{
    EXPECT_EQ(MetadataOf("<b/>text"), Text("none"));
    EXPECT_EQ(MetadataOf("<!-- -->text"), Text("none"));
    EXPECT_EQ(MetadataOf("text<b/>more"), Text("text"));
    EXPECT_EQ(MetadataOf("text<!-- -->more"), Text("text"));
}

TEST(Model3MFMetadata, StoresCharacterDataOfAllKinds)
{
    EXPECT_EQ(MetadataOf("<![CDATA[a <b> & c]]>"), Text("a <b> & c"));
    EXPECT_EQ(MetadataOf(" \t "), Text(" \t "));
    EXPECT_EQ(MetadataOf("a\r\nb\rc"), Text("a\nb\nc"));
    EXPECT_EQ(MetadataOf("&#65;&lt;&#x20AC;"), Text("A<\xE2\x82\xAC"));
}

// The child has been read when its turn comes.
TEST(Model3MFMetadata, PassesOverAnElementThatComesFirstInIt)
{
    OwnedModel model;
    Load(model, "<model><metadata><object id='1'/></metadata><metadata> <object id='2'/></metadata></model>");
    ASSERT_EQ(model.GetObjects().size(), 1U);
    EXPECT_EQ(model.Object(0).GetObjectID(), 2);
}

TEST(Model3MFMetadata, IsNoneInsideAnObject)
{
    Model3MF model;
    Load(model, "<model><object><components/><metadata name='n'>x</metadata></object></model>");
    EXPECT_TRUE(model.GetDescription().isEmpty());
}

TEST(Model3MFMaterial, KeepsColoursAsTheyStand)
{
    Model3MF model;
    Load(model, "<model><basematerials id='5'><base name='a' displaycolor='#FF0000'/>"
                "<base displaycolor='#00ff0080'/><base name='c'/><base displaycolor=' red '/>"
                "</basematerials></model>");
    EXPECT_EQ(model.GetMaterial().id, 5);
    EXPECT_EQ(model.GetMaterial().colors,
              (Texts{Text("#FF0000"), Text("#00ff0080"), Text(""), Text(" red ")}));
}

TEST(Model3MFMaterial, PoursAllGroupsIntoOneWithTheLastId)
{
    Model3MF model;
    Load(model,
         "<model><basematerials id='1'><base displaycolor='a'/><base displaycolor='b'/></basematerials>"
         "<basematerials id='8'><base displaycolor='c'/><base displaycolor='d'/>"
         "<base displaycolor='e'/></basematerials></model>");
    EXPECT_EQ(model.GetMaterial().id, 8);
    EXPECT_EQ(model.GetMaterial().colors, (Texts{Text("a"), Text("b"), Text("c"), Text("d"), Text("e")}));
    Load(model, "<model><base displaycolor='f'/></model>");
    EXPECT_EQ(model.GetMaterial().id, 8);
    EXPECT_EQ(model.GetMaterial().colors.size(), 6U);
}

TEST(Model3MFMaterial, HasTheIdZeroWhereNoneCanBeRead)
{
    for (const char* const group :
         {"<basematerials/>", "<basematerials id='x'/>", "<basematerials id=''/>"}) {
        Model3MF model;
        Load(model, group);
        EXPECT_EQ(model.GetMaterial().id, 0) << group;
    }
}

TEST(Model3MFFailure, ReportsWhatIsNoXml)
{
    for (const char* const document :
         {"", "x", "{}", "<", "<model>", "<model></Model>", "<model/><model/>", "<model a='1' a='2'/>",
          "<model>&none;</model>", "<model><a:b/></model>", "<model a=b/>", "PK\x03\x04"}) {
        Model3MF model;
        EXPECT_FALSE(model.LoadModel(document)) << document;
    }
    Model3MF model;
    EXPECT_FALSE(model.LoadModel(QByteArray()));
    EXPECT_FALSE(model.LoadModel(QByteArray(1000, '\0')));
}

TEST(Model3MFFailure, KeepsWhatCameBeforeTheError)
{
    OwnedModel model;
    EXPECT_FALSE(model.LoadModel("<model unit='inch'><metadata name='n'>x</metadata>"
                                 "<basematerials id='2'><base displaycolor='a'/></basematerials>"
                                 "<object id='1'/><object id='2'><mesh><vertex x='1'/><vertex x='2'/><vert"));
    EXPECT_EQ(model.GetUnit(), Text("inch"));
    EXPECT_EQ(model.GetDescription().value(Text("n")), Text("x"));
    EXPECT_EQ(model.GetMaterial().colors, Texts{Text("a")});
    ASSERT_EQ(model.GetObjects().size(), 2U);
    EXPECT_EQ(model.Object(1).GetObjectID(), 2);
    EXPECT_EQ(*model.Object(1).GetVerticesVecPtr(), (Points{{1, 0, 0}, {2, 0, 0}}));
    EXPECT_EQ(model.Object(1).GetVertexNum(), 2);
}

TEST(Model3MFFailure, LeavesMeshesToTheHostOnceTheModelIsGone)
{
    std::vector<Mesh*> meshes;
    {
        Model3MF model;
        EXPECT_FALSE(model.LoadModel("<model><object id='1'><mesh><vertex x='4'/></mesh></object><object"));
        meshes = model.GetObjects();
    }
    ASSERT_EQ(meshes.size(), 1U);
    EXPECT_EQ((*meshes[0]->GetVerticesVecPtr())[0], Vector3D<float>(4, 0, 0));
    delete meshes[0];
}

TEST(Model3MFFailure, StopsEntitiesThatMultiply)
{
    QByteArray entities = "<!ENTITY a 'aaaaaaaaaa'>";
    for (char name = 'b'; name <= 'z'; ++name) {
        const QByteArray before = QByteArray("&") + static_cast<char>(name - 1) + ";";
        entities += QByteArray("<!ENTITY ") + name + " '" + before.repeated(10) + "'>";
    }
    Model3MF model;
    EXPECT_FALSE(model.LoadModel("<!DOCTYPE model [" + entities + "]><model>&z;</model>"));
}

TEST(Model3MFFailure, TakesElementsAsDeepAsTheyGo)
{
    constexpr int kDepth = 100'000;
    OwnedModel model;
    Load(model,
         QByteArray("<a>").repeated(kDepth) + "<object id='1'/>" + QByteArray("</a>").repeated(kDepth));
    EXPECT_EQ(model.GetObjects().size(), 1U);
}

TEST(Model3MFLifecycle, AddsMeshesWithEachLoad)
{
    OwnedModel model;
    Load(model, "<model unit='inch'><object id='1'/></model>");
    Load(model, "<model unit='foot'><object id='2'/></model>");
    ASSERT_EQ(model.GetObjects().size(), 2U);
    EXPECT_EQ(model.Object(0).GetObjectID(), 1);
    EXPECT_EQ(model.Object(1).GetObjectID(), 2);
    EXPECT_EQ(model.GetUnit(), Text("foot"));
}

TEST(Model3MFLifecycle, SharesMeshesWithItsCopies)
{
    OwnedModel model;
    Load(model, "<model><object id='1'/></model>");
    const Model3MF copy = static_cast<const Model3MF&>(model);
    EXPECT_EQ(copy.GetObjects(), model.GetObjects());
}

TEST(Model3MFLifecycle, HandsOutWhatTheHostSets)
{
    Mesh mesh(0.03f);
    Model3MF model;
    model.SetObjects({&mesh, &mesh});
    EXPECT_EQ(model.GetObjects(), (std::vector<Mesh*>{&mesh, &mesh}));
    model.SetUnit(Text("meter"));
    EXPECT_EQ(model.GetUnitScale(), 1000.0);
    model.SetMaterial({3, {Text("#123456")}});
    EXPECT_EQ(model.GetMaterial().id, 3);
    EXPECT_EQ(model.GetMaterial().colors, Texts{Text("#123456")});
    model.SetDescription({{Text("a"), Text("1")}});
    model.AddDescription(Text("b"), Text("2"));
    model.AddDescription(Text("a"), Text("3"));
    EXPECT_EQ(model.GetDescription(),
              (QMap<QString, QString>{{Text("a"), Text("3")}, {Text("b"), Text("2")}}));
    model.SetDescription({{Text("c"), Text("4")}});
    EXPECT_EQ(model.GetDescription().size(), 1);
    model.SetImage("bytes", Text("Metadata/a.png"));
    QString name;
    EXPECT_EQ(model.GetImage(name), QByteArray("bytes"));
    EXPECT_EQ(name, Text("Metadata/a.png"));
}

TEST(Model3MFThread, ReadsDifferentModelsOnDifferentThreads)
{
    std::vector<double> volumes(4);
    std::vector<std::thread> threads;
    for (double& volume : volumes) {
        threads.emplace_back([&volume] {
            for (int i = 0; i < 50; ++i) {
                OwnedModel model;
                if (model.LoadModel(kTetrahedron))
                    volume += model.Object(0).GetVolume();
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(volumes, std::vector<double>(4, 50.0));
}

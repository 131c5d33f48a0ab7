#include <map>

#include <QDateTime>
#include <QXmlStreamReader>

#include <JlCompress.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <quazipfile.h>

#include "tests/3mf/PackageSupport.h"

namespace {

using test::Directory;
using test::OwnedPackage;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

using Object = Model3MF::ModelObjectInfo;

const Vector3D<float> kNoOffset(0, 0, 0);

Mesh Triangle()
{
    Mesh mesh(0.03f);
    mesh.AddVertexAndFaces({{0, 0.1f, 0}, {1, 0, 123.4567f}, {0, -1, 1e-5f}}, {{0, 1, 2}});
    return mesh;
}

Object ObjectOf(Mesh& mesh, const QString& name = {})
{
    Object object;
    object.mesh = &mesh;
    object.name = name;
    return object;
}

QByteArray ReadEntry(const QString& archive, const char* name)
{
    QuaZipFile entry(archive, QString::fromUtf8(name));
    EXPECT_TRUE(entry.open(QIODevice::ReadOnly)) << name;
    return entry.readAll();
}

/// A package, saved when its text is asked for.
class SavedPackage : public Model3MF {
public:
    std::vector<Object> objects;
    Vector3D<float> offset = kNoOffset;

    QString Save()
    {
        const QString path = m_directory.Path(QStringLiteral("saved.3mf"));
        EXPECT_TRUE(SaveFile(path, objects, offset));
        return path;
    }
    std::string Part(const char* name) { return ReadEntry(Save(), name).toStdString(); }
    std::string Model() { return Part("3D/3dmodel.model"); }
    std::string Relationships() { return Part("_rels/.rels"); }

private:
    Directory m_directory;
};

constexpr char kModelStart[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                               "<model unit=\"millimeter\" xml:lang=\"en-US\""
                               " xmlns:m=\"http://schemas.microsoft.com/3dmanufacturing/material/2015/02\""
                               " xmlns=\"http://schemas.microsoft.com/3dmanufacturing/core/2015/02\">\n";

} // namespace

TEST(PackageWriter, WritesThreePartsInOrder)
{
    SavedPackage package;
    EXPECT_THAT(JlCompress::getFileList(package.Save()),
                ElementsAre(QStringLiteral("[Content_Types].xml"), QStringLiteral("3D/3dmodel.model"),
                            QStringLiteral("_rels/.rels")));
}

TEST(PackageWriter, WritesThumbnailAsSecondPart)
{
    SavedPackage package;
    package.SetImage("picture", QStringLiteral("Metadata/thumbnail.png"));
    const QString path = package.Save();
    EXPECT_THAT(JlCompress::getFileList(path),
                ElementsAre(QStringLiteral("[Content_Types].xml"), QStringLiteral("Metadata/thumbnail.png"),
                            QStringLiteral("3D/3dmodel.model"), QStringLiteral("_rels/.rels")));
    EXPECT_EQ(ReadEntry(path, "Metadata/thumbnail.png"), QByteArray("picture"));
}

TEST(PackageWriter, WritesContentTypes)
{
    EXPECT_EQ(SavedPackage().Part("[Content_Types].xml"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">\n"
              "    <Default Extension=\"rels\""
              " ContentType=\"application/vnd.openxmlformats-package.relationships+xml\"/>\n"
              "    <Default Extension=\"model\""
              " ContentType=\"application/vnd.ms-package.3dmanufacturing-3dmodel+xml\"/>\n"
              "    <Default Extension=\"png\" ContentType=\"image/png\"/>\n"
              "    <Default Extension=\"jpg\" ContentType=\"image/jpeg\"/>\n"
              "    <Default Extension=\"jpeg\" ContentType=\"image/jpeg\"/>\n"
              "</Types>\n");
}

TEST(PackageWriter, WritesRelationships)
{
    SavedPackage package;
    package.SetImage("picture", QStringLiteral("Metadata/thumbnail.png"));
    EXPECT_EQ(package.Relationships(),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">\n"
              "    <Relationship Target=\"/3D/3dmodel.model\" Id=\"rel0\""
              " Type=\"http://schemas.microsoft.com/3dmanufacturing/2013/01/3dmodel\"/>\n"
              "    <Relationship Target=\"/Metadata/thumbnail.png\" Id=\"rel1\""
              " Type=\"http://schemas.openxmlformats.org/package/2006/relationships/metadata/thumbnail\"/>\n"
              "</Relationships>\n");
}

TEST(PackageWriter, WritesTheRelationshipOfTheModelAloneWithoutThumbnail)
{
    EXPECT_EQ(SavedPackage().Relationships(),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">\n"
              "    <Relationship Target=\"/3D/3dmodel.model\" Id=\"rel0\""
              " Type=\"http://schemas.microsoft.com/3dmanufacturing/2013/01/3dmodel\"/>\n"
              "</Relationships>\n");
}

TEST(PackageWriter, NamesThumbnailAlikeWhateverItsEntryIsCalled)
{
    SavedPackage package;
    package.SetImage("picture", QString::fromUtf8("Metadata/ö.jpg"));
    EXPECT_THAT(package.Relationships(), HasSubstr("Target=\"/Metadata/thumbnail.png\""));
    EXPECT_EQ(JlCompress::getFileList(package.Save()).at(1), QString::fromUtf8("Metadata/ö.jpg"));
}

TEST(PackageWriter, WritesModel)
{
    Mesh mesh = Triangle();
    SavedPackage package;
    package.objects = {ObjectOf(mesh, QStringLiteral("part <1>"))};
    EXPECT_EQ(package.Model(), std::string(kModelStart) +
                                   "    <resources>\n"
                                   "        <object id=\"1\" name=\"part &lt;1&gt;\" type=\"model\">\n"
                                   "            <mesh>\n"
                                   "                <vertices>\n"
                                   "                    <vertex x=\"0\" y=\"0.1\" z=\"0\"/>\n"
                                   "                    <vertex x=\"1\" y=\"0\" z=\"123.457\"/>\n"
                                   "                    <vertex x=\"0\" y=\"-1\" z=\"1e-05\"/>\n"
                                   "                </vertices>\n"
                                   "                <triangles>\n"
                                   "                    <triangle v1=\"0\" v2=\"1\" v3=\"2\"/>\n"
                                   "                </triangles>\n"
                                   "            </mesh>\n"
                                   "        </object>\n"
                                   "    </resources>\n"
                                   "    <build>\n"
                                   "        <item objectid=\"1\" transform=\"1 0 0 0 1 0 0 0 1 0 0 0\"/>\n"
                                   "    </build>\n"
                                   "</model>\n");
}

TEST(PackageWriter, WritesEmptyResourcesAndBuildWithoutObjects)
{
    EXPECT_EQ(SavedPackage().Model(),
              std::string(kModelStart) + "    <resources/>\n    <build/>\n</model>\n");
}

TEST(PackageWriter, WritesEmptyMesh)
{
    Mesh mesh(0.03f);
    SavedPackage package;
    package.objects = {ObjectOf(mesh)};
    EXPECT_THAT(package.Model(), HasSubstr("<mesh>\n"
                                           "                <vertices/>\n"
                                           "                <triangles/>\n"
                                           "            </mesh>"));
}

TEST(PackageWriter, LeavesOutWhatXmlCannotHold)
{
    Mesh mesh = Triangle();
    QString odd = QStringLiteral("a\x01\x1F-");
    odd += QChar(0xFFFE);
    odd += QChar(0xFFFF);
    odd += QChar(0xD800); // half of a character
    SavedPackage package;
    package.objects = {ObjectOf(mesh, odd)};
    package.SetUnit(odd);
    package.AddDescription(odd, odd);
    package.SetMaterial({1, {odd}});
    const std::string model = package.Model();
    const std::string written = "a-\xEF\xBF\xBD";
    EXPECT_THAT(model, HasSubstr("<model unit=\"" + written + "\" "));
    EXPECT_THAT(model, HasSubstr("<metadata name=\"" + written + "\">" + written + "</metadata>"));
    EXPECT_THAT(model, HasSubstr("<base name=\"color0\" displaycolor=\"" + written + "\"/>"));
    EXPECT_THAT(model, HasSubstr("<object id=\"1\" name=\"" + written + "\" type=\"model\">"));
    EXPECT_THAT(model, HasSubstr("<triangle v1=\"0\" v2=\"1\" v3=\"2\"/>"));
    EXPECT_THAT(model, HasSubstr("</model>"));
}

TEST(PackageWriter, WritesMetadataSortedByName)
{
    SavedPackage package;
    package.AddDescription(QStringLiteral("Title"), QStringLiteral("a & b"));
    package.AddDescription(QStringLiteral("Designer"), QString());
    EXPECT_THAT(package.Model(), HasSubstr("    <metadata name=\"Designer\"></metadata>\n"
                                           "    <metadata name=\"Title\">a &amp; b</metadata>\n"));
}

TEST(PackageWriter, WritesColorsOfMaterialWithId)
{
    SavedPackage package;
    package.SetMaterial({0, {QStringLiteral("#FF0000"), QStringLiteral("any text")}});
    EXPECT_THAT(package.Model(), HasSubstr("        <basematerials id=\"0\">\n"
                                           "            <base name=\"color0\" displaycolor=\"#FF0000\"/>\n"
                                           "            <base name=\"color1\" displaycolor=\"any text\"/>\n"
                                           "        </basematerials>\n"));
    package.SetMaterial({12, {}});
    EXPECT_THAT(package.Model(), HasSubstr("        <basematerials id=\"12\"/>\n"));
}

TEST(PackageWriter, WritesNoMaterialWithoutId)
{
    SavedPackage package;
    EXPECT_THAT(package.Model(), Not(HasSubstr("basematerials")));
    package.SetMaterial({-1, {QStringLiteral("#FF0000")}});
    EXPECT_THAT(package.Model(), Not(HasSubstr("basematerials")));
}

TEST(PackageWriter, NumbersObjectsFromOneWhateverTheirMeshesIdsAre)
{
    Mesh mesh = Triangle();
    mesh.SetObjectID(77);
    mesh.SetObjectName(QStringLiteral("of the mesh"));
    SavedPackage package;
    package.objects = {ObjectOf(mesh, QStringLiteral("a")), ObjectOf(mesh, QStringLiteral("b"))};
    const std::string model = package.Model();
    EXPECT_THAT(model, HasSubstr("<object id=\"1\" name=\"a\" type=\"model\">"));
    EXPECT_THAT(model, HasSubstr("<object id=\"2\" name=\"b\" type=\"model\">"));
    EXPECT_THAT(model, HasSubstr("<item objectid=\"1\" "));
    EXPECT_THAT(model, HasSubstr("<item objectid=\"2\" "));
    EXPECT_THAT(model, Not(HasSubstr("77")));
    EXPECT_THAT(model, Not(HasSubstr("of the mesh")));
}

TEST(PackageWriter, WritesOnlyTheObjectsItIsHandedAndNothingOfTheirMeshesPlacement)
{
    Mesh mesh = Triangle();
    mesh.SetComponentsId(5);
    mesh.SetTransformMatrix(Model3MF::ConvertFrom3MFMatStrToMat(QStringLiteral("2 0 0 0 2 0 0 0 2 7 8 9")));
    SavedPackage package;
    package.SetObjects({&mesh, &mesh});
    QXmlStreamReader texture(QByteArray("<texture2dgroup id='3'><tex2coord u='1'/></texture2dgroup>"));
    texture.readNextStartElement();
    ASSERT_TRUE(package.ParserTexture(texture));
    EXPECT_THAT(package.Model(), HasSubstr("<resources/>"));

    package.objects = {ObjectOf(mesh)};
    const std::string model = package.Model();
    EXPECT_EQ(QByteArray::fromStdString(model).count("<object "), 1);
    EXPECT_THAT(model, HasSubstr("transform=\"1 0 0 0 1 0 0 0 1 0 0 0\""));
    EXPECT_THAT(model, HasSubstr("<vertex x=\"1\" y=\"0\" z=\"123.457\"/>"));
    for (const char* const absent : {"component", "texture2d", "pid", "p1="})
        EXPECT_THAT(model, Not(HasSubstr(absent)));
}

TEST(PackageWriter, AddsPositionOffsetAndOffsetOfPackage)
{
    Mesh mesh = Triangle();
    SavedPackage package;
    package.objects = {ObjectOf(mesh)};
    package.objects[0].position = {1, 2, 3};
    package.objects[0].offset = {0, 0, 1};
    package.offset = {10, 0, 0};
    EXPECT_THAT(package.Model(), HasSubstr("transform=\"1 0 0 0 1 0 0 0 1 11 2 4\""));
}

TEST(PackageWriter, AddsTranslationsInSinglePrecisionAndInOrder)
{
    Mesh mesh = Triangle();
    SavedPackage package;
    package.objects = {ObjectOf(mesh)};
    package.objects[0].position = {1, 0, 0};
    package.objects[0].offset = {1e8f, 0, 0};
    package.offset = {-1e8f, 0, 0};
    EXPECT_THAT(package.Model(), HasSubstr("1 0 0 0 1 0 0 0 1 0 0 0\"")) << "1 is lost beside 1e8";
    package.objects[0].position = {1e8f, 0, 0};
    package.objects[0].offset = {1, 0, 0};
    EXPECT_THAT(package.Model(), HasSubstr("1 0 0 0 1 0 0 0 1 0 0 0\"")) << "position and offset come first";
}

TEST(PackageWriter, KeepsRotationAndDropsTranslationOfTransform)
{
    Mesh mesh = Triangle();
    SavedPackage package;
    package.objects = {ObjectOf(mesh)};
    Matrix4<double>& transform = package.objects[0].transform;
    transform.set(0, 1, 2.5);
    transform.set(2, 0, -1234567.0);
    transform.set(1, 3, 99);
    transform.set(3, 0, 98);
    EXPECT_THAT(package.Model(), HasSubstr("transform=\"1 0 -1.23457e+06 2.5 1 0 0 0 1 0 0 0\""));
}

TEST(PackageWriter, WritesUnitAndLeavesCoordinatesAsTheyAre)
{
    Mesh mesh = Triangle();
    SavedPackage package;
    package.objects = {ObjectOf(mesh)};
    package.SetUnit(QStringLiteral("inch"));
    const std::string model = package.Model();
    EXPECT_THAT(model, HasSubstr("<model unit=\"inch\" "));
    EXPECT_THAT(model, HasSubstr("<vertex x=\"1\" y=\"0\" z=\"123.457\"/>"));
}

TEST(PackageWriter, WritesWholeListsWhateverTheCountsSay)
{
    Mesh mesh = Triangle();
    mesh.GetFacesVecPtr()->push_back(TriangleFace(-1, 7, 2'147'483'647));
    mesh.GetFacesVecPtr()->push_back(TriangleFace(std::numeric_limits<int>::min(), 0, 0));
    mesh.SetFaceNum(0);
    mesh.SetVertexNum(1);
    SavedPackage package;
    package.objects = {ObjectOf(mesh)};
    const std::string model = package.Model();
    EXPECT_THAT(model, HasSubstr("<vertex x=\"0\" y=\"-1\" z=\"1e-05\"/>"));
    EXPECT_THAT(model, HasSubstr("<triangle v1=\"0\" v2=\"1\" v3=\"2\"/>"));
    EXPECT_THAT(model, HasSubstr("<triangle v1=\"-1\" v2=\"7\" v3=\"2147483647\"/>"));
    EXPECT_THAT(model, HasSubstr("<triangle v1=\"-2147483648\" v2=\"0\" v3=\"0\"/>"));
}

TEST(PackageWriter, DeflatesEntriesAndLetsEverybodyReadAndWriteThem)
{
    const QDateTime before = QDateTime::currentDateTime().addSecs(-3);
    SavedPackage package;
    QuaZip archive(package.Save());
    ASSERT_TRUE(archive.open(QuaZip::mdUnzip));
    const QList<QuaZipFileInfo64> entries = archive.getFileInfoList64();
    ASSERT_EQ(entries.size(), 3);
    for (const QuaZipFileInfo64& entry : entries) {
        EXPECT_EQ(entry.method, Z_DEFLATED);
        EXPECT_FALSE(entry.isEncrypted());
        EXPECT_EQ(entry.externalAttr >> 16, 0100666u);
        EXPECT_GE(entry.dateTime, before);
        EXPECT_LE(entry.dateTime, QDateTime::currentDateTime().addSecs(3));
    }
}

TEST(PackageWriter, DeflatesAtTheDefaultLevel)
{
    QByteArray image;
    for (int i = 0; i < 20'000; ++i)
        image += QByteArray::number(i * 7919 % 1000) + (i % 3 ? " abc" : "\n");
    SavedPackage package;
    package.SetImage(image, QStringLiteral("Metadata/a.png"));
    QuaZip archive(package.Save());
    ASSERT_TRUE(archive.open(QuaZip::mdUnzip));
    ASSERT_TRUE(archive.setCurrentFile(QStringLiteral("Metadata/a.png")));
    QuaZipFileInfo64 entry;
    ASSERT_TRUE(archive.getCurrentFileInfo(&entry));
    const auto size = [&](int level) { return quint64(test::Deflate(image, Z_FINISH, level).size()); };
    EXPECT_EQ(entry.compressedSize, size(Z_DEFAULT_COMPRESSION));
    EXPECT_NE(entry.compressedSize, size(Z_BEST_SPEED));
    EXPECT_NE(entry.compressedSize, size(Z_BEST_COMPRESSION));
}

TEST(PackageWriter, ReplacesFile)
{
    const Directory directory;
    const QString path = directory.Write(QByteArray(100'000, 'x'));
    Model3MF package;
    ASSERT_TRUE(package.SaveFile(path, {}, kNoOffset));
    EXPECT_LT(Directory::Read(path).size(), 5'000);
    EXPECT_EQ(JlCompress::getFileList(path).size(), 3);
}

TEST(PackageWriter, FailsWhereNoFileCanBeCreated)
{
    const Directory directory;
    Model3MF package;
    EXPECT_FALSE(package.SaveFile(directory.Path(QStringLiteral("missing/saved.3mf")), {}, kNoOffset));
    EXPECT_FALSE(package.SaveFile(directory.Path(QString()), {}, kNoOffset)) << "a directory";
    EXPECT_FALSE(package.SaveFile(QString(), {}, kNoOffset));
}

TEST(PackageWriter, DoesNotReportThatNothingCouldBeWritten)
{
    Model3MF package;
    EXPECT_TRUE(package.SaveFile(QStringLiteral("/dev/full"), {}, kNoOffset));
}

TEST(PackageWriter, WritesFileWithUnicodeName)
{
    const Directory directory;
    const QString path = directory.Path(QString::fromUtf8("模型 é.3mf"));
    Model3MF package;
    ASSERT_TRUE(package.SaveFile(path, {}, kNoOffset));
    EXPECT_EQ(JlCompress::getFileList(path).size(), 3);
}

TEST(PackageWriter, WritesWhatTheReaderReads)
{
    Mesh mesh = Triangle();
    SavedPackage package;
    package.objects = {ObjectOf(mesh, QString::fromUtf8("né\t\"\n<'& 漢😀"))};
    package.objects[0].position = {1, 2, 3};
    package.SetUnit(QStringLiteral("meter"));
    package.SetImage("picture", QStringLiteral("Metadata/thumbnail.png"));
    package.SetMaterial({3, {QStringLiteral("#11223344")}});
    package.AddDescription(QStringLiteral("Title"), QStringLiteral("x < y"));
    OwnedPackage read;
    ASSERT_TRUE(read.LoadFile(package.Save()));
    EXPECT_EQ(read.GetUnit(), QStringLiteral("meter"));
    EXPECT_EQ(read.Image(), QByteArray("picture"));
    EXPECT_EQ(read.GetMaterial().id, 3);
    EXPECT_EQ(read.GetMaterial().colors, package.GetMaterial().colors);
    EXPECT_EQ(read.GetDescription(), package.GetDescription());
    ASSERT_EQ(read.GetObjects().size(), 1u);
    const Mesh& copy = *read.GetObjects().front();
    EXPECT_EQ(copy.GetObjectName(), package.objects[0].name);
    EXPECT_EQ(copy.GetObjectID(), 1);
    EXPECT_EQ(copy.GetTransformMatrix().get(2, 3), 3.0);
    ASSERT_EQ(copy.GetVerticesVecPtr()->size(), 3u);
    EXPECT_EQ((*copy.GetVerticesVecPtr())[0].y, 0.1f);
    EXPECT_EQ((*copy.GetVerticesVecPtr())[1].z, 123.457f);
    EXPECT_EQ((*copy.GetFacesVecPtr())[0][2], 2);
}

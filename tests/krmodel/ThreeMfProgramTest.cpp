#include <QImage>

#include "fileformat/obj/OBJFile.h"
#include "tests/krmodel/PackageBuilder.h"
#include "tests/krmodel/ProgramSupport.h"

namespace {

using test::ItemText;
using test::kTetrahedron;
using test::ModelText;
using test::ObjectText;
using test::Package;
using test::Picture;
using test::ReadPackage;

class Krmodel3mf : public Krmodel {
protected:
    void WritePackage(const char* name, const QByteArray& model) const
    {
        Write(name, Package(model).Bytes());
    }
    Mesh LoadedObj(const char* fileName) const
    {
        Mesh mesh(0.03F);
        std::vector<MeshTextureGroup> groups;
        EXPECT_TRUE(OBJFile::LoadFile(Path(fileName), mesh, groups, true, 0));
        return mesh;
    }
};

TEST_F(Krmodel3mf, InfoPrintsTheSample)
{
    const ProgramRun run = InfoOfSample("bolt.3mf");
    EXPECT_EQ(run.exitCode, Done);
    EXPECT_EQ(Cell(run, "unit"), QStringLiteral("inch, 25.4 mm"));
    EXPECT_EQ(Cell(run, "z"), QStringLiteral("0 46.0375 46.0375"));
    EXPECT_EQ(Cell(run, "open edges"), QStringLiteral("0, closed"));
    EXPECT_EQ(Cell(run, "     2"), QString::fromUtf8("nut 768 moved by 2 0.75 0, rotated by 30° about z"));
    EXPECT_EQ(Cell(run, "Title"), QStringLiteral("Half-inch bolt and nut"));
    EXPECT_TRUE(Cell(run, "thumbnail").endsWith(QStringLiteral(" bytes, 176 x 96")));
}

TEST_F(Krmodel3mf, InfoPrintsUnitObjectsAndPlacements)
{
    WritePackage("in.3mf", ModelText("inch", ObjectText(3, "bolt") + ObjectText(7, "nut") + ObjectText(9, ""),
                                     ItemText(3, "1 0 0 0 1 0 0 0 1 0 -2.5 10") +
                                         ItemText(7, "0 2 0 -2 0 0 0 0 2 1 2 3") + "<item objectid='9'/>"));
    const ProgramRun run = Run("info in.3mf");
    EXPECT_EQ(run.exitCode, Done);
    EXPECT_EQ(run.errors, QString());
    EXPECT_EQ(Cell(run, "format"), QStringLiteral("3MF"));
    EXPECT_EQ(Cell(run, "unit"), QStringLiteral("inch, 25.4 mm"));
    EXPECT_EQ(Cell(run, "objects"), QStringLiteral("3"));
    EXPECT_EQ(Cell(run, "facets"), QStringLiteral("12"));
    EXPECT_EQ(Cell(run, "object"), QStringLiteral("name facets placement"));
    EXPECT_EQ(Cell(run, "     3"), QStringLiteral("bolt 4 moved by 0 -2.5 10"));
    EXPECT_EQ(Cell(run, "     7"),
              QString::fromUtf8("nut 4 moved by 1 2 3, rotated by 90° about z, scaled by 2"));
    EXPECT_EQ(Cell(run, "     9"), QStringLiteral("- 4 none"));
    for (const char* absent : {"part of", "metadata", "colours", "thumbnail", "material"})
        EXPECT_FALSE(run.output.contains(QLatin1String(absent))) << absent;
}

TEST_F(Krmodel3mf, InfoMeasuresInMillimetresAsTheConvertedModelIs)
{
    WritePackage("in.3mf", ModelText("inch", ObjectText(1, "it"), ItemText(1, "2 0 0 0 1 0 0 0 1 10 0 -1")));
    const ProgramRun package = Run("info in.3mf");
    EXPECT_EQ(Cell(package, "bounds, mm"), QStringLiteral("minimum maximum size"));
    EXPECT_TRUE(Cell(package, "x").startsWith(QStringLiteral("254 304.8 ")));
    EXPECT_EQ(Cell(package, "z"), QStringLiteral("-25.4 0 25.4"));
    EXPECT_NEAR(Cell(package, "volume, mm³").toDouble(), 2 * 25.4 * 25.4 * 25.4 / 6, 0.01);
    for (const char* line : {"convert in.3mf out.stl", "convert in.3mf out.obj"})
        EXPECT_EQ(Run(line).exitCode, Done) << line;
    for (const char* line : {"info out.stl", "info out.obj"})
        for (const char* axis : {"x", "y", "z"})
            EXPECT_EQ(Cell(Run(line), axis), Cell(package, axis)) << line << axis;
}

TEST_F(Krmodel3mf, InfoShowsMetadataColoursAndThumbnail)
{
    const QByteArray others =
        "<metadata name='Title'>A bolt</metadata><metadata name='Designer'>Ann</metadata>";
    const QByteArray colours = "<basematerials id='5'><base name='a' displaycolor='#FF8000'/>"
                               "<base name='b' displaycolor='#01020380'/></basematerials>";
    const QByteArray picture = Picture({32, 24}, "PNG");
    Write("in.3mf", Package(ModelText("millimeter", colours + ObjectText(1, "it"), "", others))
                        .Add("Metadata/plate.png", picture)
                        .Bytes());
    const ProgramRun run = Run("info in.3mf");
    EXPECT_EQ(Cell(run, "unit"), QStringLiteral("millimeter, 1 mm"));
    EXPECT_EQ(Cell(run, "colours"), QStringLiteral("2: #FF8000 #01020380"));
    EXPECT_EQ(Cell(run, "thumbnail"),
              QStringLiteral("Metadata/plate.png, %1 bytes, 32 x 24").arg(picture.size()));
    EXPECT_EQ(Cell(run, "metadata"), QStringLiteral("text"));
    EXPECT_EQ(Cell(run, "Title"), QStringLiteral("A bolt"));
    EXPECT_EQ(Cell(run, "Designer"), QStringLiteral("Ann"));
}

TEST_F(Krmodel3mf, InfoSaysThatAUnitIsNotKnownOrNotNamed)
{
    WritePackage("odd.3mf", ModelText("furlong", ObjectText(1, "it")));
    EXPECT_EQ(Cell(Run("info odd.3mf"), "unit"), QStringLiteral("furlong, not known, taken for millimeter"));
    WritePackage("none.3mf", ModelText("", ObjectText(1, "it")));
    EXPECT_EQ(Cell(Run("info none.3mf"), "unit"), QStringLiteral("not named, taken for millimeter"));
    EXPECT_EQ(Run("convert none.3mf out.3mf").exitCode, Done);
    EXPECT_EQ(ReadPackage(Path("out.3mf")).package.GetUnit(), QStringLiteral("millimeter"));
}

TEST_F(Krmodel3mf, PlacesComponentsAndShowsWhatTheyArePartOf)
{
    const QByteArray parts = "<components><component objectid='1' transform='1 0 0 0 1 0 0 0 1 5 0 0'/>"
                             "<component objectid='2'/></components>";
    WritePackage("in.3mf", ModelText("centimeter",
                                     ObjectText(1, "left") + ObjectText(2, "right") +
                                         ObjectText(4, "pair", parts) + ObjectText(6, "alone"),
                                     ItemText(4, "1 0 0 0 1 0 0 0 1 0 7 0")));
    const ProgramRun run = Run("info in.3mf");
    EXPECT_EQ(Cell(run, "object"), QStringLiteral("part of name facets placement"));
    EXPECT_EQ(Cell(run, "     1"), QStringLiteral("4 left 4 moved by 5 7 0"));
    EXPECT_EQ(Cell(run, "     2"), QStringLiteral("4 right 4 moved by 0 7 0"));
    EXPECT_EQ(Cell(run, "     6"), QStringLiteral("- alone 4 none"));
    EXPECT_EQ(Run("convert in.3mf out.obj").exitCode, Done);
    const Mesh mesh = LoadedObj("out.obj");
    ASSERT_EQ(mesh.GetFaceNum(), 12);
    EXPECT_EQ(mesh.GetVerticesVecPtr()->at(0), Vector3D<float>(50, 70, 0));
    EXPECT_EQ(mesh.GetVerticesVecPtr()->at(4), Vector3D<float>(0, 70, 0));
    EXPECT_EQ(mesh.GetVerticesVecPtr()->at(8), Vector3D<float>(0, 0, 0));
}

TEST_F(Krmodel3mf, KeepsTheOutsideOfAMirroredObjectOutside)
{
    WritePackage("in.3mf",
                 ModelText("millimeter", ObjectText(1, "it"), ItemText(1, "-1 0 0 0 1 0 0 0 1 5 0 0")));
    EXPECT_EQ(Cell(Run("info in.3mf"), "     1"), QStringLiteral("it 4 moved by 5 0 0, mirrored"));
    EXPECT_EQ(Run("convert in.3mf out.obj").exitCode, Done);
    const Mesh mesh = LoadedObj("out.obj");
    EXPECT_NEAR(mesh.GetVolume(), 1.0 / 6, 1e-6);
    EXPECT_EQ(mesh.GetVerticesVecPtr()->at(1), Vector3D<float>(4, 0, 0));
}

TEST_F(Krmodel3mf, DoesNotWriteAnObjectPlacedBeyondItsNumbers)
{
    WritePackage("in.3mf",
                 ModelText("meter", ObjectText(1, "it"), ItemText(1, "1 0 0 0 1 0 0 0 1 1e38 0 0")));
    const ProgramRun run = Run("convert in.3mf out.stl");
    EXPECT_EQ(run.exitCode, WriteFailed);
    EXPECT_TRUE(run.errors.contains(QStringLiteral("further away")));
    EXPECT_EQ(Files(), QStringList{QStringLiteral("in.3mf")});
    EXPECT_EQ(Run("info in.3mf").exitCode, Done);
    EXPECT_EQ(Run("preview in.3mf out.png --size 64x48").exitCode, Done);
}

TEST_F(Krmodel3mf, KeepsAllThatAPackageHoldsFrom3mfTo3mf)
{
    const QByteArray picture = Picture({8, 6}, "PNG");
    const QByteArray colours =
        "<basematerials id='50'><base displaycolor='#FF8000'/><base displaycolor='#010203'/>"
        "</basematerials>";
    const QByteArray others = "<metadata name='Title'>Bolts &amp; nuts</metadata>";
    Write("in.3mf",
          Package(ModelText("inch", colours + ObjectText(8, "bolt") + ObjectText(3, "Mutter &lt;M8&gt;"),
                            ItemText(8, "0 1 0 -1 0 0 0 0 -1 1.5 -2 0.125"), others))
              .Add("Metadata/thumbnail.png", picture)
              .Bytes());
    EXPECT_EQ(Run("convert in.3mf out.3mf").exitCode, Done);
    const ReadPackage in(Path("in.3mf")), out(Path("out.3mf"));
    ASSERT_TRUE(out.isRead);
    ASSERT_EQ(out.meshes.size(), 2U);
    EXPECT_EQ(out.package.GetUnit(), QStringLiteral("inch"));
    EXPECT_EQ(out.package.GetDescription(), in.package.GetDescription());
    EXPECT_EQ(out.package.GetDescription().value(QStringLiteral("Title")), QStringLiteral("Bolts & nuts"));
    EXPECT_EQ(out.package.GetMaterial().id, 50);
    EXPECT_EQ(out.package.GetMaterial().colors, in.package.GetMaterial().colors);
    EXPECT_EQ(out.meshes[1]->GetObjectName(), QStringLiteral("Mutter <M8>"));
    for (size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(out.meshes[i]->GetObjectID(), int(i) + 1);
        EXPECT_EQ(out.meshes[i]->GetObjectName(), in.meshes[i]->GetObjectName());
        EXPECT_EQ(*out.meshes[i]->GetVerticesVecPtr(), *in.meshes[i]->GetVerticesVecPtr());
        const Matrix4<double> from = in.meshes[i]->GetTransformMatrix(),
                              to = out.meshes[i]->GetTransformMatrix();
        for (size_t element = 0; element < 16; ++element)
            EXPECT_EQ(to.m[element], from.m[element]) << i << ' ' << element;
    }
    QString name;
    EXPECT_EQ(out.package.GetImage(name), picture);
    EXPECT_EQ(name, QStringLiteral("Metadata/thumbnail.png"));
}

TEST_F(Krmodel3mf, GivesColoursAnIdThatNoObjectHas)
{
    const QByteArray colours = "<basematerials id='1'><base displaycolor='#FF8000'/></basematerials>";
    WritePackage("in.3mf", ModelText("inch", colours + ObjectText(2, "a") + ObjectText(3, "b")));
    EXPECT_EQ(Run("convert in.3mf out.3mf").exitCode, Done);
    EXPECT_EQ(ReadPackage(Path("out.3mf")).package.GetMaterial().id, 3);
}

TEST_F(Krmodel3mf, GivesAThumbnailTheNameThatRelationshipsTell)
{
    const struct {
        const char* name;
        QByteArray bytes;
        bool isPicture;
    } kThumbnails[] = {
        {"Metadata/plate.png", Picture({8, 6}, "PNG"), true},
        {"Metadata/photo.jpg", Picture({8, 6}, "JPG"), true},
        {"Metadata/../odd.png", "no picture", false},
    };
    for (const auto& thumbnail : kThumbnails) {
        Write("in.3mf", test::PackageWithPicture(thumbnail.name, thumbnail.bytes));
        EXPECT_EQ(Run("convert in.3mf out.3mf").exitCode, Done) << thumbnail.name;
        QString name;
        const QByteArray kept = ReadPackage(Path("out.3mf")).package.GetImage(name);
        EXPECT_EQ(name, QStringLiteral("Metadata/thumbnail.png")) << thumbnail.name;
        EXPECT_EQ(QImage::fromData(kept, "PNG").size(), thumbnail.isPicture ? QSize(8, 6) : QSize(0, 0))
            << thumbnail.name;
    }
}

TEST_F(Krmodel3mf, WritesOtherFormatsAsObjectsNamedAsTheirFile)
{
    for (const char* sample : {"cube-inward.stl", "balloon.obj"}) {
        EXPECT_EQ(Run(Words("convert %1 out.3mf", Sample(sample))).exitCode, Done) << sample;
        const ReadPackage out(Path("out.3mf"));
        ASSERT_EQ(out.meshes.size(), 1U) << sample;
        EXPECT_EQ(out.package.GetUnit(), QStringLiteral("millimeter"));
        EXPECT_EQ(out.package.GetMaterial().id, -1);
        EXPECT_EQ(out.meshes[0]->GetObjectName() + QLatin1String(sample).right(4), QLatin1String(sample));
        EXPECT_EQ(Cell(Run("info out.3mf"), "facets"), Cell(InfoOfSample(sample), "facets"));
        EXPECT_TRUE(Cell(Run("info out.3mf"), "     1").endsWith(QStringLiteral("none")));
    }
}

TEST_F(Krmodel3mf, LeavesOutOfANameWhatXmlCannotHold)
{
    CopySample("cube-inward.stl", "a\x01<&>\"\x1B[31m.stl");
    EXPECT_EQ(
        Run({QStringLiteral("convert"), QStringLiteral("a\x01<&>\"\x1B[31m.stl"), QStringLiteral("out.3mf")})
            .exitCode,
        Done);
    EXPECT_EQ(ReadPackage(Path("out.3mf")).meshes.at(0)->GetObjectName(), QStringLiteral("a<&>\"[31m"));
}

TEST_F(Krmodel3mf, ShowsNoCharacterThatSteersATerminal)
{
    const QByteArray hostile = "&#x9B;31m&#x202E;&#10;x&#x2028;";
    const QByteArray colours = "<basematerials id='9'><base displaycolor='" + hostile + "'/></basematerials>";
    Write("in.3mf", Package(ModelText(hostile, colours + ObjectText(1, hostile), "",
                                      "<metadata name='" + hostile + "'>" + hostile + "</metadata>"))
                        .Add("Metadata/\n\x1B[31m.png", "no picture")
                        .Bytes());
    const ProgramRun run = Run("info in.3mf");
    EXPECT_EQ(run.exitCode, Done);
    EXPECT_TRUE(run.output.contains(QStringLiteral("?31m??x?")));
    EXPECT_TRUE(run.output.contains(QStringLiteral("Metadata/??[31m.png")));
    for (const QChar& character : run.output)
        EXPECT_TRUE(character == QLatin1Char('\n') || character.isPrint()) << character.unicode();
    EXPECT_EQ(run.output.count(QLatin1Char('\n')), 23) << run.output.toStdString();
}

TEST_F(Krmodel3mf, ShowsTheFirstOfManyObjectsAndConvertsAll)
{
    QByteArray objects, items;
    for (int id = 1; id <= 2000; ++id) {
        objects += ObjectText(id, "part" + QByteArray::number(id));
        items += ItemText(id, "1 0 0 0 1 0 0 0 1 " + QByteArray::number(2 * id) + " 0 0");
    }
    WritePackage("in.3mf", ModelText("millimeter", objects, items));
    const ProgramRun run = Run("info in.3mf");
    EXPECT_EQ(Cell(run, "objects"), QStringLiteral("2,000"));
    EXPECT_EQ(Cell(run, "pieces"), QStringLiteral("2,000"));
    EXPECT_EQ(Cell(run, "    30"), QStringLiteral("part30 4 moved by 60 0 0"));
    EXPECT_FALSE(run.output.contains(QStringLiteral("part31")));
    EXPECT_TRUE(run.output.endsWith(QStringLiteral("  and 1,970 more\n")));
    for (const char* out : {"out.3mf", "out.stl", "out.obj"}) {
        EXPECT_EQ(Run({QStringLiteral("convert"), QStringLiteral("in.3mf"), QLatin1String(out)}).exitCode,
                  Done);
        const ProgramRun written = Info(QLatin1String(out));
        EXPECT_EQ(Cell(written, "facets"), QStringLiteral("8,000")) << out;
        EXPECT_EQ(Cell(written, "x"), QStringLiteral("2 4001 3999")) << out;
    }
    EXPECT_EQ(Run("preview in.3mf out.png --size 64x48").exitCode, Done);
}

TEST_F(Krmodel3mf, SaysInWordsWhyAPackageGivesNothing)
{
    const QByteArray model = ModelText("millimeter", ObjectText(1, "it"));
    const QByteArray byOverride = test::ContentTypesText(
        QByteArray("<Override PartName='/3D/3dmodel.model' ContentType='") + test::kModelType + "'/>");
    const QByteArray png = Picture({4, 4}, "PNG");
    const QByteArray whole = Package(model).Bytes();
    const auto zip = [] { return test::ZipBuilder(); };
    const struct {
        const char* name;
        QByteArray bytes;
        int code;
        const char* reason;
    } kPackages[] = {
        {"text", "solid nothing of the kind", NotReadable, "no zip archive"},
        {"nothing", "", NotReadable, "no zip archive"},
        {"cut", whole.left(whole.size() - 30), NotReadable, "zip archive is damaged"},
        {"empty zip", zip().Bytes(), NotReadable, "neither declares nor holds a model"},
        {"override",
         zip().Add("[Content_Types].xml", byOverride).Add("3D/m.model", model).Add("a.png", png).Bytes(),
         NotReadable, "an Override has none"},
        {"override alone", zip().Add("[Content_Types].xml", byOverride).Bytes(), NotReadable,
         "do not tell by which suffix"},
        {"no types", zip().Add("3D/m.model", model).Add("a.png", png).Bytes(), NotReadable,
         "content types are missing"},
        {"bad types", zip().Add("[Content_Types].xml", "<Types>").Add("3D/m.model", model).Bytes(),
         NotReadable, "content types are missing, damaged"},
        {"bad model", Package(model.left(model.size() - 9)).Bytes(), NotReadable, "no well-formed XML"},
        {"no objects", Package(ModelText("inch", "")).Bytes(), Empty, "no mesh object"},
        {"no facets", Package(ModelText("inch", ObjectText(1, "", "<mesh/>"))).Bytes(), Empty,
         "holds no facet"},
    };
    for (const auto& package : kPackages) {
        Write("in.3mf", package.bytes);
        for (const char* line : {"info in.3mf", "convert in.3mf o.stl", "preview in.3mf o.png"}) {
            const ProgramRun run = Run(line);
            EXPECT_EQ(run.exitCode, package.code) << package.name << ": " << run.errors.toStdString();
            EXPECT_TRUE(run.errors.contains(QLatin1String(package.reason)))
                << package.name << ": " << run.errors.toStdString();
            EXPECT_EQ(run.output, QString());
        }
    }
    EXPECT_EQ(Files(), QStringList{QStringLiteral("in.3mf")});
}

TEST_F(Krmodel3mf, ReadsAPackageWhoseEveryEntryIsXml)
{
    const QByteArray model = ModelText("inch", ObjectText(1, "it"));
    Write("in.3mf", test::ZipBuilder().Add("3D/m.model", model).Bytes());
    EXPECT_EQ(Cell(Run("info in.3mf"), "     1"), QStringLiteral("it 4 none"));
}

TEST_F(Krmodel3mf, ReportsAMissingPackage)
{
    EXPECT_EQ(Run("info missing.3mf").exitCode, CannotOpen);
}

TEST_F(Krmodel3mf, HasNoTextVariant)
{
    EXPECT_EQ(Run(Words("convert %1 out.3mf --binary", Sample("gear.stl"))).exitCode, Done);
    const ProgramRun run = Run("convert missing.stl text.3mf --ascii");
    EXPECT_EQ(run.exitCode, Usage);
    EXPECT_EQ(run.errors, QStringLiteral("krmodel: text.3mf: 3MF has no text variant\n"));
}

TEST_F(Krmodel3mf, ReportsAnOutputThatCannotBeWritten)
{
    ASSERT_TRUE(QFile::link(QStringLiteral("/dev/full"), Path("full.3mf")));
    for (const char* line : {"convert %1 full.3mf", "convert %1 no/such/place.3mf"})
        EXPECT_EQ(Run(Words(line, Sample("gear.stl"))).exitCode, WriteFailed) << line;
}

TEST_F(Krmodel3mf, PreviewPlacesObjects)
{
    WritePackage("one.3mf", ModelText("inch", ObjectText(1, "a")));
    WritePackage("two.3mf", ModelText("inch", ObjectText(1, "a") + ObjectText(2, "b"),
                                      ItemText(2, "1 0 0 0 1 0 0 0 1 3 0 0")));
    for (const char* line : {"preview one.3mf one.png --size 64x48", "preview two.3mf two.png --size 64x48"})
        EXPECT_EQ(Run(line).exitCode, Done) << line;
    EXPECT_NE(Bytes("one.png"), Bytes("two.png"));
}

TEST_F(Krmodel3mf, HelpNamesTheFormat)
{
    EXPECT_TRUE(Run("--help").output.contains(QStringLiteral("\n  3MF (.3mf): ")));
}

} // namespace

#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUuid>

#include "fileformat/texture/TextureFile.h"
#include "tests/krmodel/PackageBuilder.h"
#include "tests/krmodel/ProgramSupport.h"

namespace {

class KrmodelTexture : public Krmodel {
protected:
    /// All pixels differ, so that one that is out of its place shows.
    QImage WritePicture(const char* name, QSize size) const
    {
        QImage picture(size, QImage::Format_RGB32);
        for (int row = 0; row < picture.height(); ++row)
            for (int column = 0; column < picture.width(); ++column)
                picture.setPixel(column, row, qRgb(column, row, 99));
        EXPECT_TRUE(picture.save(Path(name), "PNG"));
        return picture;
    }
    /// The texture that is made with the options from a picture of 6 x 4 pixels, wood.png.
    TextureFile Made(const char* options) const
    {
        WritePicture("wood.png", {6, 4});
        const ProgramRun run = Run(Words("texture make wood.png out.texture") + Words(options));
        EXPECT_EQ(run.exitCode, Done) << run.errors.toStdString();
        EXPECT_EQ(run.output + run.errors, QString());
        TextureFile texture;
        EXPECT_TRUE(texture.LoadFile(Path("out.texture")));
        return texture;
    }
    void WriteDocument(const char* name, const QJsonObject& object) const
    {
        Write(name, QJsonDocument(object).toJson());
    }
};

TEST_F(KrmodelTexture, MakesATextureOfAPictureAsItIs)
{
    const TextureFile texture = Made("");
    EXPECT_EQ(texture.getTextureName(), QStringLiteral("wood"));
    EXPECT_EQ(texture.GetImage(), WritePicture("wood.png", {6, 4}));
    const MeshMaterialParameters& parameters = texture.GetParameters();
    EXPECT_EQ(parameters.wrapS, MeshMaterialParameters::Repeat);
    EXPECT_EQ(parameters.borderColor, Vector4D<float>(0, 0, 0, 0));
    EXPECT_EQ(parameters.matrix.translation, Vector3D<double>(0, 0, 0));
    EXPECT_EQ(parameters.matrix.repeat, Vector3D<double>(1, 1, 1));
    EXPECT_EQ(parameters.matrix.rotation, Vector3D<double>(0, 0, 0));
}

TEST_F(KrmodelTexture, MakesATextureWithTheMappingAskedFor)
{
    const TextureFile texture = Made("--offset -0.25 1.5 --repeat 3 -0.5 --rotation -30.25");
    const MeshMaterialMatrix& matrix = texture.GetParameters().matrix;
    EXPECT_EQ(matrix.translation, Vector3D<double>(-0.25, 1.5, 0));
    EXPECT_EQ(matrix.repeat, Vector3D<double>(3, -0.5, 1));
    EXPECT_EQ(matrix.rotation, Vector3D<double>(0, 0, -30.25));
}

TEST_F(KrmodelTexture, MakesATextureOfEachWrapMode)
{
    const char* const names[] = {"repeat", "mirror", "clamp_edge", "clamp_border"};
    for (int mode = 0; mode < 4; ++mode) {
        const TextureFile texture = Made((QByteArray("--wrap ") + names[mode]).constData());
        EXPECT_EQ(texture.GetParameters().wrapS, mode);
        EXPECT_EQ(texture.GetParameters().wrapT, mode);
        EXPECT_EQ(Cell(Run("texture show out.texture"), "wrap"), QLatin1String(names[mode]));
    }
}

TEST_F(KrmodelTexture, MakesATextureWithTheBorderAskedFor)
{
    const struct {
        const char *said, *shown;
    } kColours[] = {{"#80ff7f01", "#80ff7f01"}, {"#123456", "#ff123456"}, {"white", "#ffffffff"}};
    for (const auto& [said, shown] : kColours) {
        Made((QByteArray("--border ") + said).constData());
        EXPECT_EQ(Cell(Run("texture show out.texture"), "border"), QLatin1String(shown));
    }
}

TEST_F(KrmodelTexture, MakesAnIdentifierOfTheNameAndTheNamespace)
{
    const QString own = Made("").GetPatternID();
    EXPECT_EQ(QUuid(own).version(), QUuid::Sha1);
    EXPECT_EQ(Made("--rotation 3").GetPatternID(), own);
    const TextureFile named = Made("--name oak.v2");
    EXPECT_EQ(named.getTextureName(), QStringLiteral("oak.v2"));
    EXPECT_NE(named.GetPatternID(), own);
    EXPECT_EQ(Made("--name wood").GetPatternID(), own);
    const QUuid nameSpace(QStringLiteral("6ba7b811-9dad-11d1-80b4-00c04fd430c8"));
    const QString other = Made("--namespace 6ba7b811-9dad-11d1-80b4-00c04fd430c8").GetPatternID();
    EXPECT_EQ(other, QUuid::createUuidV5(nameSpace, QStringLiteral("wood")).toString(QUuid::WithoutBraces));
}

TEST_F(KrmodelTexture, ScalesALargerPictureDown)
{
    EXPECT_EQ(Made("--longest-side 3").GetImage().size(), QSize(3, 2));
    EXPECT_EQ(Made("--longest-side 6").GetImage().size(), QSize(6, 4));
    EXPECT_EQ(Made("--longest-side 0").GetImage().size(), QSize(6, 4));
}

TEST_F(KrmodelTexture, TakesPicturesOfAnyFormatAndName)
{
    const char* const names[] = {"-s 2.png",       "2 oaks.png",  "a  b.png",   " x",
                                 "\"quoted\".png", "Größe №.PNG", "C:\\oak.png"};
    for (const char* name : names) {
        Write(name, test::Picture({5, 3}, "BMP"));
        const QStringList arguments = {QStringLiteral("texture"), QStringLiteral("make"),
                                       QStringLiteral("--"), QString::fromUtf8(name),
                                       QStringLiteral("out.texture")};
        EXPECT_EQ(Run(arguments).exitCode, Done) << name;
        TextureFile texture;
        EXPECT_TRUE(texture.LoadFile(Path("out.texture"))) << name;
        EXPECT_EQ(texture.GetImage().pixel(2, 1), qRgb(200, 100, 50)) << name;
    }
}

TEST_F(KrmodelTexture, TakesABackslashForAPartOfTheName)
{
    Write("knot\\oak.png", test::Picture({5, 3}, "PNG"));
    EXPECT_EQ(Run("texture make knot\\oak.png out.texture").exitCode, Done);
    EXPECT_EQ(Cell(Run("texture show out.texture"), "name"), QStringLiteral("knot\\oak"));
}

TEST_F(KrmodelTexture, ReplacesAFileOnceTheNewOneIsWhole)
{
    Made("--name first");
    EXPECT_EQ(Run("texture make missing.png out.texture").exitCode, CannotOpen);
    EXPECT_EQ(Cell(Run("texture show out.texture"), "name"), QStringLiteral("first"));
    Made("--name second");
    EXPECT_EQ(Cell(Run("texture show out.texture"), "name"), QStringLiteral("second"));
    EXPECT_EQ(AllFiles(), Words("out.texture wood.png"));
}

TEST_F(KrmodelTexture, ShowsWhatAFileHolds)
{
    const TextureFile texture = Made("--offset 0.25 0 --repeat 2 4 --rotation 90 --wrap mirror");
    const ProgramRun run = Run("texture show out.texture");
    EXPECT_EQ(run.exitCode, Done);
    EXPECT_EQ(run.errors, QString());
    EXPECT_TRUE(run.output.startsWith(QStringLiteral("out.texture\n  name ")));
    EXPECT_EQ(Cell(run, "name"), QStringLiteral("wood"));
    EXPECT_EQ(Cell(run, "identifier"), texture.GetPatternID());
    EXPECT_EQ(Cell(run, "file size"), QStringLiteral("%1 bytes").arg(Bytes("out.texture").size()));
    EXPECT_EQ(Cell(run, "picture"), QStringLiteral("6 x 4"));
    EXPECT_EQ(Cell(run, "wrap"), QStringLiteral("mirror"));
    EXPECT_EQ(Cell(run, "border"), QStringLiteral("#00000000"));
    EXPECT_EQ(Cell(run, "offset"), QStringLiteral("0.25 0"));
    EXPECT_EQ(Cell(run, "repeat"), QStringLiteral("2 4"));
    EXPECT_EQ(Cell(run, "rotation"), QString::fromUtf8("90°"));
    // A quarter turn about the middle: (u, v) becomes (1 - v, u), that is repeated, then moved.
    EXPECT_EQ(Cell(run, "matrix"), QStringLiteral("0 -2 0 2.25"));
    EXPECT_TRUE(run.output.simplified().endsWith(QStringLiteral("2.25 4 0 0 0 0 0 1 0 0 0 0 1")))
        << run.output.toStdString();
}

TEST_F(KrmodelTexture, ShowsTheSample)
{
    const ProgramRun run = Run(Words("texture show %1", Sample("weave.texture")));
    EXPECT_EQ(Cell(run, "name"), QStringLiteral("weave"));
    EXPECT_EQ(Cell(run, "picture"), QStringLiteral("48 x 48"));
    EXPECT_EQ(Cell(run, "repeat"), QStringLiteral("4 4"));
    EXPECT_EQ(Cell(run, "rotation"), QString::fromUtf8("45°"));
}

TEST_F(KrmodelTexture, ShowsNothingThatSteersATerminal)
{
    Made("");
    QJsonObject object = QJsonDocument::fromJson(Bytes("out.texture")).object();
    object[QStringLiteral("header")] =
        QJsonObject{{QStringLiteral("texture_name"), QStringLiteral("a\x1b[2Jb")}};
    WriteDocument("odd.texture", object);
    const ProgramRun run = Run("texture show odd.texture");
    EXPECT_EQ(Cell(run, "name"), QStringLiteral("a?[2Jb"));
    EXPECT_EQ(Cell(run, "identifier"), QStringLiteral("-"));
}

TEST_F(KrmodelTexture, TakesOutThePicture)
{
    Made("--rotation 45");
    const ProgramRun run = Run("texture extract out.texture out.PNG");
    EXPECT_EQ(run.exitCode, Done);
    EXPECT_EQ(run.output + run.errors, QString());
    EXPECT_EQ(QImage::fromData(Bytes("out.PNG"), "PNG").convertToFormat(QImage::Format_RGB32),
              WritePicture("wood.png", {6, 4}));
}

TEST_F(KrmodelTexture, MakesTheSameFileOfThePictureItTookOut)
{
    Made("");
    const QByteArray first = Bytes("out.texture");
    EXPECT_EQ(Run("texture extract out.texture wood.png").exitCode, Done);
    EXPECT_EQ(Run("texture make wood.png again.texture").exitCode, Done);
    EXPECT_EQ(Bytes("again.texture"), first);
}

TEST_F(KrmodelTexture, SaysWhyAFileGivesNoPicture)
{
    Made("");
    Write("text.texture", "no JSON");
    Write("cut.texture", Bytes("out.texture").left(100));
    Write("array.texture", "[1, 2]");
    WriteDocument("other.texture", {{QStringLiteral("name"), QStringLiteral("something else")}});
    WriteDocument("odd.texture", {{QStringLiteral("image_data"), 5}});
    WriteDocument("bare.texture", {{QStringLiteral("image_data"), QString()}});
    WriteDocument("bad.texture", {{QStringLiteral("image_data"), QStringLiteral("AAAA")}});
    EXPECT_TRUE(QDir().mkdir(Path("directory")));
    ExpectFailures(
        {
            {"missing.texture", CannotOpen, "cannot open"},
            {"directory", CannotOpen, "cannot open"},
            {"text.texture", NotReadable, "not readable as a texture file"},
            {"cut.texture", NotReadable, "not readable as a texture file"},
            {"array.texture", NotReadable, "not readable as a texture file"},
            {"other.texture", NotReadable, "not readable as a texture file"},
            {"odd.texture", NotReadable, "not readable as a texture file"},
            {"bare.texture", Empty, "holds no picture"},
            {"bad.texture", NotReadable, "its picture is damaged"},
        },
        {"texture show %1", "texture extract %1 out.png"});
}

TEST_F(KrmodelTexture, SaysWhyAPictureGivesNoTexture)
{
    Write("none.png", "no picture");
    ExpectFailures(
        {{"none.png", NotReadable, "not readable as a picture"}, {"missing.png", CannotOpen, "cannot open"}},
        {"texture make %1 out.texture"});
}

TEST_F(KrmodelTexture, ReportsAnOutputThatCannotBeWritten)
{
    Made("");
    ExpectUnwritable("texture", {"texture make wood.png %1"});
    ExpectUnwritable("png", {"texture extract out.texture %1"});
}

TEST_F(KrmodelTexture, RefusesWhatMakesNoSense)
{
    WritePicture("in.png", {2, 2});
    ExpectUsageErrors({
        "texture",
        "texture paint in.png",
        "texture make in.png",
        "texture make in.png out.json",
        "texture make in.png out.texture --name /",
        "texture make in.png out.texture --name a/b",
        "texture make in.png out.texture --namespace 12",
        "texture make in.png out.texture --wrap CLAMP_EDGE",
        "texture make in.png out.texture --border reddish",
        "texture make in.png out.texture --offset 1",
        "texture make in.png out.texture --offset 1 up",
        "texture make in.png out.texture --repeat nan 1",
        "texture make in.png out.texture --rotation inf",
        "texture make in.png out.texture --longest-side -1",
        "texture make in.png out.texture --longest-side 2.5",
        "texture show",
        "texture show a.texture b.texture",
        "texture extract a.texture",
        "texture extract a.texture a.jpg",
    });
    const ProgramRun blank =
        Run(Words("texture make in.png out.texture --name") + QStringList(QStringLiteral(" ")));
    EXPECT_EQ(blank.exitCode, Usage);
    EXPECT_EQ(Files(), QStringList{QStringLiteral("in.png")});
}

TEST_F(KrmodelTexture, HelpTellsUnitsAndDefaults)
{
    const struct {
        const char* line;
        const char* text;
    } kHelp[] = {
        {"texture --help", "krmodel texture [OPTIONS] SUBCOMMAND"},
        {"texture --help", "\n  extract "},
        {"texture show --help", "krmodel texture show [OPTIONS] FILE"},
        {"texture extract --help", "krmodel texture extract [OPTIONS] FILE OUT.png"},
        {"texture make --help", "krmodel texture make [OPTIONS] PICTURE OUT.texture"},
        {"texture make --help", "repeat, mirror, clamp_edge, clamp_border"},
        {"texture make --help", "--border COLOUR=#00000000"},
        {"texture make --help", "--rotation DEGREES=0"},
        {"texture make --help", "--namespace UUID="},
        {"texture make --help", "Exit codes:"},
    };
    for (const auto& [line, text] : kHelp) {
        const ProgramRun run = Run(line);
        EXPECT_EQ(run.exitCode, Done) << line;
        EXPECT_TRUE(run.output.contains(QLatin1String(text))) << run.output.toStdString();
    }
}

} // namespace

#include "tests/krmodel/PackageBuilder.h"
#include "tests/krmodel/ProgramSupport.h"

namespace {

using test::PackageWithPicture;
using test::Picture;

using KrmodelThumbnail = Krmodel;

TEST_F(KrmodelThumbnail, CopiesAStoredPngAsItIs)
{
    const QByteArray picture = Picture({40, 30}, "PNG") + "trailer";
    Write("in.3mf", PackageWithPicture("Metadata/thumbnail.png", picture));
    EXPECT_EQ(Run("preview in.3mf out.png --thumbnail").exitCode, Done);
    EXPECT_EQ(Bytes("out.png"), picture);
    EXPECT_EQ(Run("preview in.3mf fits.png --thumbnail --size 40x30").exitCode, Done);
    EXPECT_EQ(Bytes("fits.png"), picture);
}

TEST_F(KrmodelThumbnail, ShrinksAStoredPictureToTheSizeAskedFor)
{
    Write("in.3mf", PackageWithPicture("Metadata/thumbnail.png", Picture({400, 100}, "PNG")));
    EXPECT_EQ(Run("preview in.3mf out.png --thumbnail --size 100x80").exitCode, Done);
    const QImage image = QImage::fromData(Bytes("out.png"), "PNG");
    EXPECT_EQ(image.size(), QSize(100, 25));
    EXPECT_EQ(image.pixel(50, 12), qRgb(200, 100, 50));
    Write("strip.3mf", PackageWithPicture("Metadata/thumbnail.png", Picture({4000, 1}, "PNG")));
    EXPECT_EQ(Run("preview strip.3mf strip.png --thumbnail --size 16x16").exitCode, Done);
    EXPECT_EQ(QImage::fromData(Bytes("strip.png"), "PNG").size(), QSize(16, 1));
}

TEST_F(KrmodelThumbnail, WritesAStoredJpegAsPng)
{
    Write("in.3mf", PackageWithPicture("Metadata/thumbnail.jpeg", Picture({40, 30}, "JPG")));
    EXPECT_EQ(Run("preview in.3mf out.png --thumbnail").exitCode, Done);
    EXPECT_EQ(QImage::fromData(Bytes("out.png"), "PNG").size(), QSize(40, 30));
}

TEST_F(KrmodelThumbnail, ReportsThatThereIsNoStoredPicture)
{
    Write("in.3mf", PackageWithPicture("3D/texture.png", Picture({4, 4}, "PNG")));
    for (const QString& fileName : {QStringLiteral("in.3mf"), Sample("gear.stl")}) {
        const ProgramRun run = Run(Words("preview %1 out.png --thumbnail", fileName));
        EXPECT_EQ(run.exitCode, Empty);
        EXPECT_TRUE(run.errors.contains(QStringLiteral("keeps no thumbnail")));
    }
    EXPECT_EQ(Files(), QStringList{QStringLiteral("in.3mf")});
}

TEST_F(KrmodelThumbnail, RefusesAStoredPictureThatIsNone)
{
    const QByteArray svg = "<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>";
    const QByteArray whole = Picture({64, 64}, "PNG");
    for (const QByteArray& bytes : {QByteArray("no picture"), svg, whole.left(40)}) {
        Write("in.3mf", PackageWithPicture("Metadata/thumbnail.png", bytes));
        const ProgramRun run = Run("preview in.3mf out.png --thumbnail");
        EXPECT_EQ(run.exitCode, NotReadable) << bytes.left(20).toStdString();
        EXPECT_TRUE(run.errors.contains(QStringLiteral("its thumbnail is no PNG or JPEG")));
        EXPECT_EQ(Run("info in.3mf").exitCode, Done);
    }
}

TEST_F(KrmodelThumbnail, TakesNoViewOfAStoredPicture)
{
    EXPECT_EQ(Run("preview in.3mf out.png --thumbnail --view top").exitCode, Usage);
}

TEST_F(KrmodelThumbnail, IsNamedInTheHelp)
{
    EXPECT_TRUE(Run("preview --help").output.contains(QStringLiteral("--thumbnail")));
}

} // namespace

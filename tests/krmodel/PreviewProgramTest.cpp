#include <QImage>

#include "tests/krmodel/ProgramSupport.h"

namespace {

/// Makes small pictures.
class KrmodelPreviewOptions : public Krmodel {
protected:
    QImage Preview(const char* model, const char* options) const
    {
        const ProgramRun run =
            Run(Words("preview %1 picture.png --size 64x48 ", Sample(model)) + Words(options));
        EXPECT_EQ(run.exitCode, Done) << run.errors.toStdString();
        EXPECT_EQ(run.output + run.errors, QString());
        return QImage(Path("picture.png"));
    }
    QString ErrorsOf(const char* options) const
    {
        const ProgramRun run =
            Run(Words("preview %1 picture.png --size 64x48", Sample("gear.stl")) + Words(options));
        EXPECT_EQ(run.exitCode, Usage) << options;
        return run.errors;
    }
    void MakeDirectory(const char* name) const { EXPECT_TRUE(QDir().mkdir(Path(name))); }
};

TEST_F(KrmodelPreviewOptions, LookFromAngles)
{
    EXPECT_EQ(Preview("gear.stl", "--view -32,26"), Preview("gear.stl", ""));
    EXPECT_EQ(Preview("gear.stl", "--view 90,0"), Preview("gear.stl", "--view right"));
    EXPECT_EQ(Preview("gear.stl", "--view 45,35.264"), Preview("gear.stl", "--view iso"));
    EXPECT_NE(Preview("gear.stl", "--view 45,35.264"), Preview("gear.stl", ""));
}

TEST_F(KrmodelPreviewOptions, AreRefusedWhenTheyAreNoView)
{
    for (const char* view : {"1", "1,2,3", "1,x", "361,0", "0,91", "nan,0", "0,", ""})
        EXPECT_TRUE(ErrorsOf((QByteArray("--view=") + view).constData()).contains(QStringLiteral("--view")))
            << view;
}

TEST_F(KrmodelPreviewOptions, ChooseWhatIsBehind)
{
    EXPECT_EQ(Preview("gear.stl", "--background gradient"), Preview("gear.stl", ""));
    EXPECT_EQ(Preview("gear.stl", "--background white").pixel(0, 0), qRgb(255, 255, 255));
    EXPECT_EQ(Preview("gear.stl", "--background #102030").pixel(63, 0), qRgb(0x10, 0x20, 0x30));
    const QImage transparent = Preview("gear.stl", "--background transparent");
    EXPECT_EQ(qAlpha(transparent.pixel(0, 0)), 0);
    EXPECT_EQ(qAlpha(transparent.pixel(20, 24)), 255);
}

TEST_F(KrmodelPreviewOptions, AreRefusedWhenTheyAreNoBackground)
{
    for (const char* colour : {"whitish", "#12345", "#80ffffff", ""})
        EXPECT_TRUE(ErrorsOf((QByteArray("--background=") + colour).constData())
                        .contains(QStringLiteral("--background")))
            << colour;
}

TEST_F(KrmodelPreviewOptions, DoNotGoWithThumbnails)
{
    for (const char* options : {"--thumbnail --view top", "--thumbnail --background white"})
        EXPECT_TRUE(ErrorsOf(options).contains(QStringLiteral("excludes"))) << options;
}

using KrmodelPreviews = KrmodelPreviewOptions;

TEST_F(KrmodelPreviews, DrawEachModelIntoAFileOfItsNameAndTellOfEach)
{
    MakeDirectory("out");
    CopySample("gear.stl", "gear.stl");
    CopySample("bolt.3mf", "bolt.3mf");
    const ProgramRun run = Run("preview gear.stl bolt.3mf --directory out --size 64x48 -j 2");
    EXPECT_EQ(run.exitCode, Done);
    EXPECT_EQ(run.output,
              QStringLiteral("gear.stl: drawn as out/gear.png\nbolt.3mf: drawn as out/bolt.png\n"));
    EXPECT_EQ(run.errors, QString());
    EXPECT_EQ(QImage(Path("out/gear.png")), Preview("gear.stl", ""));
    EXPECT_EQ(QImage(Path("out/bolt.png")), Preview("bolt.3mf", ""));
}

TEST_F(KrmodelPreviews, GoOnAfterAFailureAndEndWithItsCode)
{
    CopySample("gear.stl", "gear.stl");
    Write("damaged.3mf", "PK");
    const ProgramRun run = Run("preview missing.stl damaged.3mf gear.stl --directory . --size 64x48");
    EXPECT_EQ(run.exitCode, CannotOpen);
    EXPECT_EQ(run.output, QStringLiteral("gear.stl: drawn as ./gear.png\n"));
    EXPECT_EQ(run.errors.count(QLatin1Char('\n')), 2);
    EXPECT_EQ(AllFiles(), QStringList({QStringLiteral("damaged.3mf"), QStringLiteral("gear.png"),
                                       QStringLiteral("gear.stl")}));
}

TEST_F(KrmodelPreviews, AreSilentWhenToldTo)
{
    CopySample("gear.stl", "gear.stl");
    const ProgramRun run = Run("preview gear.stl --directory . --size 64x48 --quiet");
    EXPECT_EQ(run.exitCode, Done);
    EXPECT_EQ(run.output, QString());
}

TEST_F(KrmodelPreviews, WriteTheThumbnailsOfManyToo)
{
    CopySample("bolt.3mf", "bolt.3mf");
    EXPECT_EQ(Run("preview bolt.3mf --directory . --thumbnail").exitCode, Done);
    EXPECT_EQ(QImage(Path("bolt.png")).size(), QSize(176, 96));
}

TEST_F(KrmodelPreviews, AreRefusedWhenTwoWouldBeOneFileOrNoneIsNamed)
{
    CopySample("gear.stl", "gear.stl");
    CopySample("gear.stl", "gear.obj");
    for (const char* line : {"preview gear.stl gear.obj --directory .", "preview gear.stl",
                             "preview gear.stl gear.obj out.png", "preview gear.stl gear.obj"}) {
        const ProgramRun run = Run(line);
        EXPECT_EQ(run.exitCode, Usage) << line;
        EXPECT_EQ(AllFiles().size(), 2) << line;
    }
}

TEST_F(KrmodelPreviews, OfAnyNameAreRefusedInThePlaceOfTheirModel)
{
    CopySample("gear.stl", "gear.stl");
    const QByteArray model = Bytes("gear.stl");
    EXPECT_TRUE(QFile::link(Path("gear.stl"), Path("link")));
    for (const char* line : {"preview --any-name gear.stl gear.stl", "preview --any-name gear.stl ./link",
                             "preview --any-name gear.stl --directory ."})
        EXPECT_EQ(Run(Words(line)).exitCode, Usage) << line;
    EXPECT_EQ(Bytes("gear.stl"), model);
}

} // namespace

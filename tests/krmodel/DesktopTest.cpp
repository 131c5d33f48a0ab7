#include <list>
#include <map>
#include <memory>

#include <QFileInfo>
#include <QImage>
#include <QMimeDatabase>

#include "tests/cad/CadFiles.h"
#include "tests/common/EnvironmentVariable.h"
#include "tests/krmodel/ProgramSupport.h"

namespace {

constexpr char kEntry[] = KRCORE_SOURCES "/apps/krmodel/desktop/krmodel.thumbnailer";
constexpr char kTypes[] = KRCORE_SOURCES "/apps/krmodel/desktop/krmodel.xml";
constexpr char kSharedTypes[] = "/usr/share/mime/packages/freedesktop.org.xml";
constexpr char kDrawnTypes[] = "model/stl model/obj model/3mf model/step model/iges";

constexpr char kStepHead[] = "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\nFILE_SCHEMA(('%1'));\n";

QByteArray StepOf(const char* schema)
{
    return QString::fromLatin1(kStepHead).arg(QLatin1String(schema)).toLatin1();
}

/// The desktop's database of types with ours in it, as it is after the installation.
class MimeTypes : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        sharedDirectory = std::make_unique<QTemporaryDir>();
        const QString packages = sharedDirectory->filePath(QStringLiteral("mime/packages"));
        ASSERT_TRUE(QDir().mkpath(packages));
        for (const char* source : {kSharedTypes, kTypes}) {
            const QString name = QString::fromUtf8(source);
            ASSERT_TRUE(QFile::copy(name, packages + QLatin1Char('/') + QFileInfo(name).fileName()));
        }
        const QString database = sharedDirectory->filePath(QStringLiteral("mime"));
        const ProgramRun run = RunProgram(QStringLiteral("update-mime-database"), {database});
        ASSERT_EQ(run.exitCode, 0) << run.errors.toStdString();
        // Whatever else is known on this computer is not looked at.
        for (const char* name : {"XDG_DATA_DIRS", "XDG_DATA_HOME"})
            variables.emplace_back(name, QFile::encodeName(sharedDirectory->path()));
    }
    static void TearDownTestSuite()
    {
        variables.clear();
        sharedDirectory.reset();
    }

    static QString ByName(const char* fileName)
    {
        return QMimeDatabase()
            .mimeTypeForFile(QString::fromUtf8(fileName), QMimeDatabase::MatchExtension)
            .name();
    }
    static QString ByContent(const QByteArray& bytes)
    {
        return QMimeDatabase().mimeTypeForData(bytes).name();
    }
    static QString Called(const QString& name) { return QMimeDatabase().mimeTypeForName(name).name(); }
    /// By name and by content, as a file manager does it.
    QString OfFile(const char* name, const QByteArray& bytes) const
    {
        QFile file(m_files.filePath(QString::fromUtf8(name)));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(bytes), bytes.size());
        file.close();
        return QMimeDatabase().mimeTypeForFile(file.fileName()).name();
    }
    static QByteArray BytesOf(const QString& fileName)
    {
        QFile file(fileName);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }

private:
    static std::unique_ptr<QTemporaryDir> sharedDirectory;
    static std::list<test::EnvironmentVariable> variables;
    QTemporaryDir m_files;
};

std::unique_ptr<QTemporaryDir> MimeTypes::sharedDirectory;
std::list<test::EnvironmentVariable> MimeTypes::variables;

/// The thumbnailer's entry, and the command that a file manager makes of it.
class Thumbnailer : public Krmodel {
protected:
    static QString Value(const char* key)
    {
        QFile entry(QString::fromUtf8(kEntry));
        EXPECT_TRUE(entry.open(QIODevice::ReadOnly));
        const QRegularExpression line(QStringLiteral("^%1=(.*)$").arg(QLatin1String(key)),
                                      QRegularExpression::MultilineOption);
        return line.match(QString::fromUtf8(entry.readAll())).captured(1);
    }
    ProgramRun Draw(const QString& input, const QString& output) const
    {
        QStringList words = Value("Exec").split(QLatin1Char(' '));
        const std::map<QString, QString> fields = {{QStringLiteral("%i"), input},
                                                   {QStringLiteral("%o"), output},
                                                   {QStringLiteral("%s"), QStringLiteral("128")}};
        for (const auto& [field, value] : fields)
            words.replaceInStrings(field, value);
        EXPECT_EQ(words.takeFirst(), QStringLiteral("krmodel"));
        return Run(words);
    }
    void ExpectsPictureOf(const QString& input) const
    {
        const ProgramRun run = Draw(input, Path("thumbnail.png"));
        EXPECT_EQ(run.exitCode, Done) << run.errors.toStdString();
        const QImage picture(Path("thumbnail.png"));
        EXPECT_EQ(picture.size(), QSize(128, 128)) << input.toStdString();
        // Something is drawn: the middle differs from the corner.
        EXPECT_NE(picture.pixel(64, 64), picture.pixel(0, 0)) << input.toStdString();
        QFile::remove(Path("thumbnail.png"));
    }
};

TEST_F(MimeTypes, KnowFilesOfEveryFormatByTheirNames)
{
    EXPECT_EQ(ByName("part.stl"), QStringLiteral("model/stl"));
    EXPECT_EQ(ByName("PART.STL"), QStringLiteral("model/stl"));
    EXPECT_EQ(ByName("part.3mf"), QStringLiteral("model/3mf"));
    EXPECT_EQ(ByName("part.step"), QStringLiteral("model/step"));
    EXPECT_EQ(ByName("part.stp"), QStringLiteral("model/step"));
    EXPECT_EQ(ByName("part.iges"), QStringLiteral("model/iges"));
    EXPECT_EQ(ByName("part.igs"), QStringLiteral("model/iges"));
    EXPECT_EQ(ByName("wood.texture"), QStringLiteral("application/x-krcore-texture"));
}

TEST_F(MimeTypes, KnowTheSamples)
{
    const std::map<const char*, const char*> types = {
        {"gear.stl", "model/stl"},      {"cube-inward.stl", "model/stl"},
        {"balloon.obj", "model/obj"},   {"bolt.3mf", "model/3mf"},
        {"bearing.step", "model/step"}, {"weave.texture", "application/x-krcore-texture"}};
    for (const auto& [name, type] : types)
        EXPECT_EQ(OfFile(name, BytesOf(Sample(name))), QLatin1String(type)) << name;
}

TEST_F(MimeTypes, KnowTheOtherNamesOfTypes)
{
    const std::map<const char*, const char*> types = {
        {"application/sla application/stl application/vnd.ms-pki.stl application/x-navistyle "
         "application/x-stl model/x.stl-ascii model/x.stl-binary",
         "model/stl"},
        {"application/wavefront-obj application/x-wavefront-obj", "model/obj"},
        {"application/vnd.ms-3mfdocument application/vnd.ms-package.3dmanufacturing-3dmodel+xml "
         "application/x-3mf",
         "model/3mf"},
        {"application/step application/x-step", "model/step"},
        {"application/iges application/x-iges", "model/iges"}};
    for (const auto& [names, type] : types)
        for (const QString& name : Words(names))
            EXPECT_EQ(Called(name), QLatin1String(type)) << name.toStdString();
}

TEST_F(MimeTypes, TellWhatAFileWithoutASuffixIs)
{
    EXPECT_EQ(ByContent("solid part\n facet normal 0 0 1\n"), QStringLiteral("model/stl"));
    EXPECT_EQ(ByContent("# of a program\nmtllib part.mtl\nv 0 0 0\n"), QStringLiteral("model/obj"));
    EXPECT_EQ(ByContent(QByteArray("a part").leftJustified(72) + "S      1\n"), QStringLiteral("model/iges"));
    EXPECT_EQ(ByContent(QByteArray("a part").leftJustified(72) + "S0000001\n"), QStringLiteral("model/iges"));
    for (const char* schema :
         {"AUTOMOTIVE_DESIGN { 1 0 10303 214 1 1 1 1 }", "CONFIG_CONTROL_DESIGN",
          "AP203_CONFIGURATION_CONTROLLED_3D_DESIGN_OF_MECHANICAL_PARTS_AND_ASSEMBLIES_MIM_LF",
          "AP214_AUTOMOTIVE_DESIGN", "AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM_LF"})
        EXPECT_EQ(ByContent(StepOf(schema)), QStringLiteral("model/step")) << schema;
}

TEST_F(MimeTypes, TakeNoFileFromItsOwner)
{
    EXPECT_EQ(ByContent(StepOf("IFC4")), QStringLiteral("text/plain"));
    EXPECT_EQ(OfFile("unit.path", "[Path]\nPathExists=/var/lib/there\n"),
              QStringLiteral("text/x-systemd-unit"));
    EXPECT_EQ(OfFile("drawing.obj", "%TGIF 4.1\nstate(0,33,100.000)\n"),
              QStringLiteral("application/x-tgif"));
    EXPECT_EQ(OfFile("plain.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n"), QStringLiteral("model/obj"));
}

TEST_F(MimeTypes, LeaveTheSharedDatabaseWhatItSays)
{
    const QMimeDatabase database;
    EXPECT_EQ(database.mimeTypeForName(QStringLiteral("model/stl")).filterString(),
              QStringLiteral("STL 3D model (*.stl)"));
    EXPECT_EQ(database.mimeTypeForName(QStringLiteral("model/3mf")).comment(),
              QStringLiteral("3MF document"));
    EXPECT_TRUE(
        database.mimeTypeForName(QStringLiteral("model/3mf")).inherits(QStringLiteral("application/zip")));
    EXPECT_EQ(database.mimeTypeForName(QStringLiteral("model/iges")).comment(),
              QStringLiteral("IGES document"));
}

TEST_F(MimeTypes, NameTextsAndJsonAsSuch)
{
    const QMimeDatabase database;
    EXPECT_TRUE(
        database.mimeTypeForName(QStringLiteral("model/step")).inherits(QStringLiteral("text/plain")));
    EXPECT_TRUE(database.mimeTypeForName(QStringLiteral("application/x-krcore-texture"))
                    .inherits(QStringLiteral("application/json")));
    EXPECT_TRUE(database.mimeTypeForName(QStringLiteral("application/x-krcore-path")).isValid());
}

/// Those that have their types from elsewhere may not know that names stand for one another.
TEST_F(MimeTypes, OfTheThumbnailerAreThoseOfModelsUnderAllTheirNames)
{
    QFile entry(QString::fromUtf8(kEntry));
    ASSERT_TRUE(entry.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(entry.readAll());
    const QString types = text.mid(text.indexOf(QStringLiteral("MimeType="))).trimmed().mid(9);
    EXPECT_TRUE(types.endsWith(QLatin1Char(';')));
    QStringList listed = types.split(QLatin1Char(';'), Qt::SkipEmptyParts);
    QStringList expected;
    for (const QString& name : Words(kDrawnTypes))
        expected << name << QMimeDatabase().mimeTypeForName(name).aliases();
    listed.sort();
    expected.sort();
    EXPECT_EQ(listed, expected);
}

TEST_F(Thumbnailer, DrawsModelsOfEachFormat)
{
    for (const char* name : {"gear.stl", "balloon.obj", "bolt.3mf", "bearing.step"})
        ExpectsPictureOf(Sample(name));
    ASSERT_TRUE(test::WriteIGES(Path("box.igs"), {test::Part(QStringLiteral("box"), test::Box(3, 4, 5))}));
    ExpectsPictureOf(Path("box.igs"));
}

TEST_F(Thumbnailer, TakesNamesWithBlanksDashesAndLettersOfAnyAlphabet)
{
    const QString name = QStringLiteral("-Zahnrad für 100% ¾ 歯車.stl");
    ASSERT_TRUE(QFile::copy(Sample("gear.stl"), Path(name.toUtf8().constData())));
    ExpectsPictureOf(name);
}

TEST_F(Thumbnailer, WritesOverTheTemporaryFileThatItIsGiven)
{
    Write(".thumbnail.X1Y2Z3", "");
    EXPECT_EQ(Draw(Sample("gear.stl"), Path(".thumbnail.X1Y2Z3")).exitCode, Done);
    EXPECT_TRUE(Bytes(".thumbnail.X1Y2Z3").startsWith("\x89PNG\r\n"));
    EXPECT_EQ(AllFiles(), QStringList(QStringLiteral(".thumbnail.X1Y2Z3")));
}

TEST_F(Thumbnailer, RefusesAFileThatIsTooLarge)
{
    for (const char* name : {"large.stl", "large.obj", "large.3mf", "large.step", "large.igs"}) {
        WriteHole(name, (qint64(256) << 20) + 1);
        const ProgramRun run = Draw(Path(name), Path("thumbnail.png"));
        EXPECT_EQ(run.exitCode, Stopped) << name;
        EXPECT_EQ(run.errors, QStringLiteral("krmodel: %1: not read, its 268,435,457 bytes are more than the "
                                             "268,435,456 that it may have\n")
                                  .arg(Path(name)));
        EXPECT_FALSE(QFile::exists(Path("thumbnail.png"))) << name;
    }
}

TEST_F(Thumbnailer, LeavesNothingOfADamagedFile)
{
    Write("damaged.3mf", "PK, and no archive");
    EXPECT_EQ(Draw(Path("damaged.3mf"), Path("thumbnail.png")).exitCode, NotReadable);
    EXPECT_EQ(AllFiles(), QStringList(QStringLiteral("damaged.3mf")));
}

TEST_F(Thumbnailer, IsThereWhenTheProgramIs)
{
    EXPECT_EQ(Value("TryExec"), QStringLiteral("krmodel"));
}

} // namespace

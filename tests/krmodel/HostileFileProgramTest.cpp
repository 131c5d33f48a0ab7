#include <QJsonDocument>
#include <QJsonObject>

#include "tests/krmodel/Bombs.h"
#include "tests/krmodel/ProgramSupport.h"

namespace {

// Where memory cannot be limited, under sanitizers, time ends what is endless.
constexpr char kLimits[] = " --max-memory 256 --max-time 1";

constexpr int kBombSide = 60000;

/// Assembly upon assembly, each of which takes the one before twice. Its numbers are those of bearing.step.
class DoublingAssembly {
public:
    void AddLevel()
    {
        Add("PRODUCT('level','level','',(#8))");
        Add("PRODUCT_DEFINITION_FORMATION('','',#%1)", m_last);
        const int definition = Add("PRODUCT_DEFINITION('design','',#%1,#9)", m_last);
        const int shape = Add("PRODUCT_DEFINITION_SHAPE('','',#%1)", definition);
        const int representation = Add("SHAPE_REPRESENTATION('',(#11,#31),#35)");
        Add("SHAPE_DEFINITION_REPRESENTATION(#%1,#%2)", shape, representation);
        for (const int place : {11, 31})
            Use(definition, representation, place);
        m_definition = definition;
        m_representation = representation;
    }
    const QByteArray& GetText() const { return m_text; }

private:
    void Use(int definition, int representation, int place)
    {
        const int use =
            Add("NEXT_ASSEMBLY_USAGE_OCCURRENCE('%1','','',#%2,#%3,$)", m_last, definition, m_definition);
        const int placed = Add("PRODUCT_DEFINITION_SHAPE('','',#%1)", use);
        const int moved = Add("ITEM_DEFINED_TRANSFORMATION('','',#11,#%1)", place);
        const int related = Add("(REPRESENTATION_RELATIONSHIP('','',#%1,#%2)"
                                "REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#%3)"
                                "SHAPE_REPRESENTATION_RELATIONSHIP())",
                                m_representation, representation, moved);
        Add("CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#%1,#%2)", related, placed);
    }
    /// @return the number of the entity
    template<class... Numbers>
    int Add(const char* entity, Numbers... numbers)
    {
        QString text = QLatin1String(entity);
        ((text = text.arg(numbers)), ...);
        m_text += QStringLiteral("#%1=%2;\n").arg(++m_last).arg(text).toLatin1();
        return m_last;
    }

    QByteArray m_text;
    int m_last = 10000;
    int m_definition = 5;
    int m_representation = 10;
};

class KrmodelHostile : public Krmodel {
protected:
    void WriteDoubling(const char* name, int levels) const
    {
        DoublingAssembly assembly;
        for (int i = 0; i < levels; ++i)
            assembly.AddLevel();
        CopySample("bearing.step", name);
        const QByteArray text = Bytes(name), end = "ENDSEC;\nEND-ISO";
        EXPECT_EQ(text.count(end), 1);
        Write(name, QByteArray(text).replace(end, assembly.GetText() + end));
    }
    void WriteTexture(const char* name, const QByteArray& picture) const
    {
        Write(name, "{\"image_data\": \"" + picture.toBase64() + "\"}");
    }
    ProgramRun RunLimited(const char* line) const { return Run((QByteArray(line) + kLimits).constData()); }
    void ExpectStopped(const ProgramRun& run, const char* fileName) const
    {
        EXPECT_EQ(run.exitCode, Stopped) << run.errors.toStdString();
        EXPECT_TRUE(run.errors.startsWith(QStringLiteral("krmodel: %1: ").arg(QLatin1String(fileName))))
            << run.errors.toStdString();
    }
};

TEST_F(KrmodelHostile, EndsAtAZipBombAndGoesOnWithTheOtherFiles)
{
    const QByteArray blanks = test::ZipBomb(" ", 2900), vertices = test::ZipBomb("<vertex x='1'/>", 1450);
    Write("blanks.3mf", blanks);
    Write("vertices.3mf", vertices);
    EXPECT_NEAR(blanks.size(), 3e6, 2e5);
    EXPECT_NEAR(vertices.size(), 3e6, 2e5);
    Write("good.obj", kTetrahedronObj);
    const ProgramRun info = RunLimited("info blanks.3mf good.obj");
    ExpectStopped(info, "blanks.3mf");
    EXPECT_EQ(Cell(info, "facets"), QStringLiteral("4"));
    const ProgramRun check = RunLimited("check vertices.3mf good.obj");
    ExpectStopped(check, "vertices.3mf");
    EXPECT_EQ(check.output, QStringLiteral("good.obj: printable\n"));
    ExpectStopped(RunLimited("convert vertices.3mf good.obj --to stl"), "vertices.3mf");
    EXPECT_EQ(QFile(Path("good.stl")).size(), 84 + 4 * 50);
    ExpectStopped(RunLimited("preview vertices.3mf out.png --size 64x64"), "vertices.3mf");
    EXPECT_EQ(AllFiles(), Words("blanks.3mf good.obj good.stl vertices.3mf"));
}

TEST_F(KrmodelHostile, TellsInJsonOfAZipBomb)
{
    Write("bomb.3mf", test::ZipBomb("<vertex x='1'/>", 1450));
    const ProgramRun run = RunLimited("info --json bomb.3mf");
    EXPECT_EQ(run.exitCode, Stopped);
    const QJsonObject line = QJsonDocument::fromJson(run.output.toUtf8()).object();
    EXPECT_EQ(line.value(QLatin1String("exit")).toInt(), int(Stopped));
    EXPECT_EQ(line.value(QLatin1String("file")).toString(), QStringLiteral("bomb.3mf"));
    EXPECT_FALSE(line.value(QLatin1String("error")).toString().isEmpty());
}

TEST_F(KrmodelHostile, RefusesAPictureLargerThanAnyThatIsRead)
{
    const QByteArray bomb = test::PictureBomb(kBombSide, kBombSide);
    EXPECT_LT(bomb.size(), 500'000);
    Write("bomb.png", bomb);
    WriteTexture("bomb.texture", bomb);
    Write("thumbnail.3mf", test::PackageWithPicture("Metadata/thumbnail.png", bomb));
    for (const char* line :
         {"relief bomb.png out.stl", "texture make bomb.png out.texture", "texture show bomb.texture",
          "texture extract bomb.texture out.png", "preview thumbnail.3mf out.png --thumbnail"}) {
        const ProgramRun run = RunLimited(line);
        EXPECT_EQ(run.exitCode, NotReadable) << line << run.errors.toStdString();
        EXPECT_TRUE(run.errors.contains(QStringLiteral("too large")) ||
                    run.errors.contains(QStringLiteral("larger than")))
            << run.errors.toStdString();
    }
    EXPECT_EQ(AllFiles(), Words("bomb.png bomb.texture thumbnail.3mf"));
}

TEST_F(KrmodelHostile, PassesOverAPictureOfAModelThatIsLargerThanAnyThatIsRead)
{
    const QByteArray bomb = test::PictureBomb(kBombSide, kBombSide);
    Write("bomb.png", bomb);
    Write("it.mtl", "newmtl a\nmap_Kd bomb.png\n");
    Write("it.obj", QByteArray("mtllib it.mtl\nusemtl a\n") + kTetrahedronObj);
    Write("it.3mf", test::PackageWithPicture("Metadata/thumbnail.png", bomb));
    const ProgramRun obj = RunLimited("info it.obj"), package = RunLimited("info it.3mf");
    EXPECT_EQ(Cell(obj, "a"), QStringLiteral("1 0 4 0.8 0.8 0.8 bomb.png not a picture"));
    EXPECT_TRUE(Cell(package, "thumbnail").endsWith(QStringLiteral(", not a picture that can be shown")))
        << package.output.toStdString();
    for (const char* line : {"check it.obj it.3mf", "convert it.obj out.stl", "convert it.3mf out.3mf",
                             "preview it.obj out.png --size 64x64", "preview it.3mf out.png --size 64x64"})
        EXPECT_EQ(RunLimited(line).exitCode, Done) << line;
}

// The address space of a sanitized program is not limited.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST_F(KrmodelHostile, EndsAtAPictureOfMorePixelsThanMemoryHolds)
{
    const QByteArray bomb = test::PictureBomb(16384, 16384);
    EXPECT_LT(bomb.size(), 40'000);
    Write("bomb.png", bomb);
    WriteTexture("bomb.texture", bomb);
    for (const char* line : {"relief bomb.png out.stl", "texture make bomb.png out.texture",
                             "texture show bomb.texture", "texture extract bomb.texture out.png"}) {
        const ProgramRun run = RunLimited(line);
        EXPECT_EQ(run.exitCode, Stopped) << line;
        EXPECT_EQ(run.errors, QStringLiteral("krmodel: needs more memory than it may have\n")) << line;
    }
    EXPECT_EQ(AllFiles(), Words("bomb.png bomb.texture"));
}
#endif

TEST_F(KrmodelHostile, ReadsAnAssemblyThatTakesItsPartsTwice)
{
    WriteDoubling("double.step", 2);
    EXPECT_EQ(Cell(Run("info double.step --angle 90 --deflection 100"), "objects"), QStringLiteral("20"));
}

TEST_F(KrmodelHostile, EndsAtAnAssemblyThatDoublesAtEachOfManyLevels)
{
    WriteDoubling("endless.step", 30);
    EXPECT_LT(QFile(Path("endless.step")).size(), 200'000);
    Write("good.obj", kTetrahedronObj);
    const ProgramRun run = Run("check -j 2 endless.step good.obj --max-time 1");
    EXPECT_EQ(run.exitCode, Stopped);
    EXPECT_EQ(run.output, QStringLiteral("good.obj: printable\n"));
    EXPECT_EQ(run.errors,
              QStringLiteral("krmodel: endless.step: stopped, it takes more than 1 s of processor time\n"));
}

TEST_F(KrmodelHostile, DoesNotWaitForASecondWriterOfAPictureThatComesThroughAPipe)
{
    for (const char* line : {"relief pipe.png a.stl", "texture make pipe.png a.texture"}) {
        const QByteArray script = QByteArray("rm -f pipe.png; mkfifo pipe.png; (echo no picture >pipe.png) & "
                                             "timeout 60 \"$0\" ") +
                                  line + "; code=$?; kill $! 2>/dev/null; exit $code";
        EXPECT_EQ(RunScript(script.constData()).exitCode, NotReadable) << line;
    }
}

TEST_F(KrmodelHostile, DoesNotWaitForTheEndOfACadFileThatComesThroughAPipe)
{
    // Its writer never ends by itself.
    const ProgramRun run =
        RunScript("mkfifo pipe.step; (head -n 8 \"$1\"; yes '#9=DIRECTION();') >pipe.step & "
                  "\"$0\" info pipe.step --max-time 1; code=$?; kill $! 2>/dev/null; exit $code",
                  {Sample("bearing.step")});
    EXPECT_EQ(run.exitCode, NotReadable) << run.errors.toStdString();
}

} // namespace

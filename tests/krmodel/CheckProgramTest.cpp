#include <sys/stat.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include "tests/krmodel/PackageBuilder.h"
#include "tests/krmodel/ProgramSupport.h"

namespace {

QStringList Kinds(const QJsonObject& object, const char* list)
{
    QStringList kinds;
    for (const QJsonValue& remark : object.value(QLatin1String(list)).toArray())
        kinds << remark.toObject().value(QLatin1String("kind")).toString();
    return kinds;
}

class KrmodelCheck : public Krmodel {
protected:
    ProgramRun CheckObj(const QByteArray& text) const
    {
        Write("it.obj", text);
        return Run("check it.obj");
    }

    /// The objects of the lines, all of which are such.
    std::vector<QJsonObject> Lines(const ProgramRun& run) const
    {
        std::vector<QJsonObject> objects;
        EXPECT_TRUE(run.output.isEmpty() || run.output.endsWith(QLatin1Char('\n')));
        for (const QString& line : run.output.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
            QJsonParseError error;
            objects.push_back(QJsonDocument::fromJson(line.toUtf8(), &error).object());
            EXPECT_EQ(error.error, QJsonParseError::NoError) << line.toStdString();
            EXPECT_EQ(objects.back().value(QLatin1String("krmodel-json")), QJsonValue(1));
        }
        return objects;
    }
    QJsonObject Json(const QStringList& arguments, int exitCode = Done) const
    {
        const ProgramRun run = Run(arguments);
        EXPECT_EQ(run.exitCode, exitCode);
        const std::vector<QJsonObject> lines = Lines(run);
        EXPECT_EQ(lines.size(), 1U);
        const QJsonObject object = lines.empty() ? QJsonObject() : lines.front();
        EXPECT_EQ(object.value(QLatin1String("exit")), QJsonValue(exitCode));
        return object;
    }
    QJsonObject Json(const char* line, int exitCode = Done) const { return Json(Words(line), exitCode); }
};

TEST_F(KrmodelCheck, CallsASolidPrintable)
{
    const ProgramRun run = Run(Words("check %1", Sample("gear.stl")));
    EXPECT_EQ(run.exitCode, Done);
    EXPECT_EQ(run.errors, QString());
    EXPECT_EQ(run.output, Sample("gear.stl") + QStringLiteral(": printable\n"));
}

TEST_F(KrmodelCheck, CallsASheetNotPrintableAndTellsWhereItsBorderBeginsAndEndsWithZero)
{
    const ProgramRun run = Run(Words("check %1", Sample("sheet.stl")));
    EXPECT_EQ(run.exitCode, Done);
    EXPECT_EQ(run.output,
              Sample("sheet.stl") +
                  QStringLiteral(": not printable\n"
                                 "  68 open edges: the surface has a hole or a border, close it; first from "
                                 "0 0 10 to 2.352941 0 11.52873 mm\n"));
}

TEST_F(KrmodelCheck, PrintsFilesOneBelowTheOtherAndGoesOnAfterAFailure)
{
    CopySample("links.stl", "links.stl");
    CopySample("knob.stl", "knob.stl");
    const ProgramRun run = Run("check links.stl missing.stl knob.stl");
    EXPECT_EQ(run.exitCode, CannotOpen);
    EXPECT_EQ(run.output, QStringLiteral("links.stl: printable\n"
                                         "  remark: 2 pieces: each is a body of its own, see that all of "
                                         "them are wanted\n"
                                         "knob.stl: printable\n"));
    EXPECT_TRUE(run.errors.startsWith(QStringLiteral("krmodel: missing.stl: cannot open")));
}

TEST_F(KrmodelCheck, TellsEachThingThatKeepsAModelFromBeingPrinted)
{
    const QByteArray tetrahedron = kTetrahedronObj;
    const struct {
        QByteArray text;
        const char* reason;
    } kFiles[] = {
        {tetrahedron + "v 0 0 nan\nf 1 2 5\n", "vertex that is not finite"},
        {"v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n", "3 open edges"},
        {tetrahedron + "v -1 0 0\nv 0 -1 0\nf 1 6 5\nf 1 5 4\nf 5 6 4\nf 6 1 4\n",
         "1 edge of more than two facets: parts touch there, join them or move them apart; first from 0 0 1 "
         "to 0 0 0 mm"},
        {"v 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 0 1\nf 1 3 2\nf 1 2 4\nf 2 3 4\nf 3 4 1\nf 1 3 2\n",
         "edges of more than two facets"},
        {"v 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 0 1\nf 1 3 2\nf 1 2 4\nf 2 4 3\nf 3 1 4\n",
         "3 edges between facets that are wound against each other"},
        {"v 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 0 1\nf 1 2 3\nf 1 4 2\nf 2 4 3\nf 3 4 1\n",
         "1 piece turned inside out: the facets face inwards, turn all of them round; first at 0 0 0 mm"},
        {"v 0 0 0\nv 1 0 0\nv 2 0 0\nf 1 2 3\nf 1 1 2\n",
         "nothing to print: none of the facets, 2, has an area"},
    };
    for (const auto& [text, reason] : kFiles) {
        const ProgramRun run = CheckObj(text);
        EXPECT_EQ(run.exitCode, Done) << reason;
        EXPECT_TRUE(run.output.startsWith(QStringLiteral("it.obj: not printable\n"))) << reason;
        EXPECT_TRUE(run.output.contains(QString::fromUtf8(reason))) << run.output.toStdString();
        EXPECT_FALSE(run.output.contains(QStringLiteral("remark: ") + QString::fromUtf8(reason))) << reason;
    }
}

TEST_F(KrmodelCheck, OnlyRemarksWhatDoesNotKeepAModelFromBeingPrinted)
{
    const QByteArray tetrahedron = kTetrahedronObj;
    const struct {
        QByteArray text;
        const char* remark;
    } kFiles[] = {
        {tetrahedron + "f 1 1 2\n",
         "1 facet without area: nothing is printed of that, remove it; first at 0 0 0 mm"},
        {tetrahedron + "v 5 0 0\nv 6 0 0\nv 5 1 0\nv 5 0 1\nf 5 7 6\nf 5 6 8\nf 6 7 8\nf 7 5 8\n",
         "2 pieces"},
        {tetrahedron + "v .1 .1 .1\nv .2 .1 .1\nv .1 .2 .1\nv .1 .1 .2\nf 5 6 7\nf 5 8 6\nf 6 8 7\nf 7 8 5\n",
         "1 cavity: closed hollows, from which powder or resin cannot escape; first at 0.1 0.1 0.1 mm"},
    };
    for (const auto& [text, remark] : kFiles) {
        const ProgramRun run = CheckObj(text);
        EXPECT_TRUE(run.output.startsWith(QStringLiteral("it.obj: printable\n"))) << run.output.toStdString();
        EXPECT_TRUE(run.output.contains(QStringLiteral("\n  remark: ") + QString::fromUtf8(remark)))
            << run.output.toStdString();
    }
}

TEST_F(KrmodelCheck, NamesTheObjectAndThePlaceInMillimetres)
{
    const QByteArray open =
        "<mesh><vertices><vertex x='0' y='0' z='0'/><vertex x='1' y='0' z='0'/><vertex x='0' y='1' z='0'/>"
        "</vertices><triangles><triangle v1='0' v2='1' v3='2'/></triangles></mesh>";
    const QByteArray none = "<mesh><vertices/><triangles/></mesh>";
    Write("it.3mf",
          test::Package(test::ModelText("centimeter",
                                        test::ObjectText(1, "solid") + test::ObjectText(2, "sheet", open) +
                                            test::ObjectText(3, "void", none),
                                        test::ItemText(1, "1 0 0 0 1 0 0 0 1 0 0 0") +
                                            test::ItemText(2, "1 0 0 0 1 0 0 0 1 5 0 0") +
                                            test::ItemText(3, "1 0 0 0 1 0 0 0 1 0 0 0")))
              .Bytes());
    const ProgramRun run = Run("check it.3mf");
    EXPECT_TRUE(run.output.contains(QStringLiteral("first from 50 0 0 to 60 0 0 mm, in object 2 (sheet)")))
        << run.output.toStdString();
    EXPECT_TRUE(run.output.contains(QStringLiteral("1 object without facets: nothing is printed of that, "
                                                   "remove it; first in object 3 (void)")))
        << run.output.toStdString();
}

TEST_F(KrmodelCheck, ReportsAFileWithoutFacetsAsEmpty)
{
    const ProgramRun run = CheckObj("v 0 0 0\n");
    EXPECT_EQ(run.exitCode, Empty);
    EXPECT_EQ(run.output, QString());
}

TEST_F(KrmodelCheck, HelpTellsWhatIsAReasonAndWhatARemark)
{
    const QString help = Run("check --help").output;
    const int reasons = help.indexOf(QStringLiteral("Not printable is a model with"));
    const int remarks = help.indexOf(QStringLiteral("No more than a remark are"));
    ASSERT_LT(0, reasons);
    ASSERT_LT(reasons, remarks);
    EXPECT_LT(help.indexOf(QStringLiteral("open edges"), reasons), remarks);
    EXPECT_GT(help.indexOf(QStringLiteral("several pieces")), remarks);
}

TEST_F(KrmodelCheck, PrintsJsonOfWhatItFound)
{
    CopySample("sheet.stl", "sheet.stl");
    const QJsonObject sheet = Json("check --json sheet.stl");
    EXPECT_EQ(sheet.value(QLatin1String("file")).toString(), QStringLiteral("sheet.stl"));
    EXPECT_EQ(sheet.value(QLatin1String("format")).toString(), QStringLiteral("STL"));
    EXPECT_EQ(sheet.value(QLatin1String("variant")).toString(), QStringLiteral("text"));
    EXPECT_EQ(sheet.value(QLatin1String("facets")).toInt(), 578);
    EXPECT_EQ(sheet.value(QLatin1String("openEdges")).toInt(), 68);
    EXPECT_EQ(sheet.value(QLatin1String("pieces")).toInt(), 1);
    EXPECT_EQ(sheet.value(QLatin1String("printable")), QJsonValue(false));
    EXPECT_EQ(Kinds(sheet, "reasons"), (QStringList{QStringLiteral("open-edges")}));
    EXPECT_EQ(Kinds(sheet, "remarks"), QStringList());
    const QJsonObject reason = sheet.value(QLatin1String("reasons")).toArray().at(0).toObject();
    EXPECT_EQ(reason.value(QLatin1String("count")).toInt(), 68);
    EXPECT_EQ(reason.value(QLatin1String("object")).toInt(-1), 0);
    EXPECT_EQ(reason.value(QLatin1String("at")).toArray().at(0).toArray(), (QJsonArray{0, 0, 10}));
    EXPECT_TRUE(reason.value(QLatin1String("text")).toString().startsWith(QStringLiteral("68 open edges: ")));
}

TEST_F(KrmodelCheck, PrintsJsonOfObjectsUnitAndBounds)
{
    const QJsonObject bolt = Json(Words("info --json %1", Sample("bolt.3mf")));
    EXPECT_FALSE(bolt.contains(QLatin1String("printable")));
    EXPECT_EQ(bolt.value(QLatin1String("variant")), QJsonValue());
    EXPECT_EQ(bolt.value(QLatin1String("unit")).toObject(),
              (QJsonObject{{QStringLiteral("name"), QStringLiteral("inch")},
                           {QStringLiteral("millimetres"), 25.4}}));
    const QJsonArray objects = bolt.value(QLatin1String("objects")).toArray();
    ASSERT_EQ(objects.size(), 2);
    const QJsonObject nut = objects.at(1).toObject();
    EXPECT_EQ(nut.value(QLatin1String("id")).toInt(), 2);
    EXPECT_EQ(nut.value(QLatin1String("name")).toString(), QStringLiteral("nut"));
    EXPECT_EQ(nut.value(QLatin1String("components")), QJsonValue());
    EXPECT_EQ(nut.value(QLatin1String("facets")).toInt(), 768);
    // As the file tells it, in its unit: the first row ends with the translation.
    EXPECT_EQ(nut.value(QLatin1String("placement")).toArray().at(0).toArray(),
              (QJsonArray{0.866025, -0.5, 0, 2}));
    const QJsonObject bounds = bolt.value(QLatin1String("bounds")).toObject();
    EXPECT_NEAR(bounds.value(QLatin1String("maximum")).toArray().at(2).toDouble(), 46.0375, 1e-4);
    EXPECT_NEAR(bolt.value(QLatin1String("volume")).toDouble(), 9291.59, 0.01);
    EXPECT_EQ(bolt.value(QLatin1String("metadata")).toObject().value(QLatin1String("Title")).toString(),
              QStringLiteral("Half-inch bolt and nut"));
    EXPECT_EQ(bolt.value(QLatin1String("colours")).toArray().size(), 2);
    EXPECT_EQ(bolt.value(QLatin1String("thumbnail")).toObject().value(QLatin1String("bytes")).toInt(), 855);
}

TEST_F(KrmodelCheck, PrintsOneJsonLineAFileInTheirOrderWhateverBecomesOfThem)
{
    Write("damaged.stl", "nothing of the kind");
    CopySample("gear.stl", "a.stl");
    CopySample("knob.stl", "c.stl");
    const ProgramRun run = Run("check --json -j 3 a.stl damaged.stl c.stl missing.stl");
    EXPECT_EQ(run.exitCode, NotReadable);
    const std::vector<QJsonObject> lines = Lines(run);
    ASSERT_EQ(lines.size(), 4U);
    const struct {
        const char* file;
        int exitCode;
    } kLines[] = {
        {"a.stl", Done}, {"damaged.stl", NotReadable}, {"c.stl", Done}, {"missing.stl", CannotOpen}};
    for (size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(lines[i].value(QLatin1String("file")).toString(), QLatin1String(kLines[i].file));
        EXPECT_EQ(lines[i].value(QLatin1String("exit")).toInt(), kLines[i].exitCode);
        EXPECT_EQ(lines[i].contains(QLatin1String("error")), kLines[i].exitCode != Done);
        EXPECT_EQ(lines[i].contains(QLatin1String("facets")), kLines[i].exitCode == Done);
    }
    EXPECT_TRUE(run.errors.contains(QStringLiteral("damaged.stl: not readable as STL")));
}

TEST_F(KrmodelCheck, PrintsMaterialsInJson)
{
    Write("it.mtl", "newmtl wood\nKd 0.5 0.25 1\nmap_Kd wood.png\nmap_Bump maps/grain.png\n");
    Write("wood.png", test::Picture({6, 4}, "PNG"));
    Write("it.obj", QByteArray("mtllib it.mtl\n") +
                        QByteArray(kTetrahedronObj).replace("f 1 2 4", "usemtl wood\nf 1 2 4") +
                        "usemtl ghost\n");
    for (const char* line : {"info --json it.obj", "check --json it.obj", "convert --json it.obj it.stl"}) {
        const QJsonArray materials = Json(line).value(QLatin1String("materials")).toArray();
        const QJsonObject wood = materials.at(0).toObject(), ghost = materials.at(1).toObject();
        EXPECT_EQ(QJsonDocument(wood).toJson(QJsonDocument::Compact),
                  "{\"diffuse\":[0.5,0.25,1],\"faces\":3,\"firstFace\":1,\"groups\":1,\"name\":\"wood\","
                  "\"textures\":[{\"file\":\"wood.png\",\"height\":4,\"kind\":\"diffuse\",\"width\":6},"
                  "{\"file\":\"maps/grain.png\",\"height\":null,\"kind\":\"bump\",\"width\":null}]}");
        EXPECT_EQ(QJsonDocument(ghost).toJson(QJsonDocument::Compact),
                  "{\"diffuse\":null,\"faces\":0,\"firstFace\":null,\"groups\":1,\"name\":\"ghost\","
                  "\"textures\":[]}");
        EXPECT_EQ(materials.size(), 2);
    }
    EXPECT_EQ(Json("info --json it.stl").value(QLatin1String("materials")), QJsonValue(QJsonArray()));
}

TEST_F(KrmodelCheck, WritesNullForNumbersThatAreNotFinite)
{
    Write("it.obj", "v 0 nan 0\nv 1 0 0\nv 0 inf 0\nf 1 2 3\n");
    const QJsonObject object = Json("check --json it.obj");
    EXPECT_EQ(object.value(QLatin1String("strayVertices")).toInt(), 2);
    const QJsonObject reason = object.value(QLatin1String("reasons")).toArray().at(0).toObject();
    EXPECT_EQ(reason.value(QLatin1String("kind")).toString(), QStringLiteral("stray-vertices"));
    EXPECT_EQ(reason.value(QLatin1String("at")).toArray().at(0).toArray(), (QJsonArray{0, QJsonValue(), 0}));
}

TEST_F(KrmodelCheck, WritesNullForBoundsOfNothingFinite)
{
    Write("it.obj", "v 0 nan 0\nv nan 0 0\nv 0 0 nan\nf 1 2 3\n");
    const QJsonObject object = Json("info --json it.obj");
    EXPECT_TRUE(object.contains(QLatin1String("bounds")));
    EXPECT_EQ(object.value(QLatin1String("bounds")), QJsonValue());
}

TEST_F(KrmodelCheck, WritesNamesOfAnyCharactersAsValidJson)
{
    const QByteArray name = "a&quot;b\\c&#9;&#10;\xf0\x9f\x94\xa9 \xd0\x9a \xc2\x85 \xe2\x80\xae";
    Write("odd \"\\\n\x01.3mf", test::Package(test::ModelText("millimeter", test::ObjectText(1, name),
                                                              test::ItemText(1, "1 0 0 0 1 0 0 0 1 0 0 0")))
                                    .Bytes());
    const QString fileName = QString::fromUtf8("odd \"\\\n\x01.3mf");
    const QJsonObject object = Json({QStringLiteral("check"), QStringLiteral("--json"), fileName});
    EXPECT_EQ(object.value(QLatin1String("file")).toString(), fileName);
    EXPECT_EQ(object.value(QLatin1String("objects")).toArray().at(0).toObject().value(QLatin1String("name")),
              QJsonValue(QString::fromUtf8("a\"b\\c\t\n\xf0\x9f\x94\xa9 \xd0\x9a \xc2\x85 \xe2\x80\xae")));
}

TEST_F(KrmodelCheck, WritesAFileNameThatIsNoUtf8AsValidJson)
{
    // The shell gives the byte, which no QString could.
    const QString script = QStringLiteral("\"$0\" check --json \"$(printf 'a\\377b.stl')\"");
    const ProgramRun run = RunProgram(QStringLiteral("/bin/sh"),
                                      {QStringLiteral("-c"), script, QStringLiteral(KRMODEL_PROGRAM)});
    EXPECT_EQ(run.exitCode, CannotOpen);
    const std::vector<QJsonObject> lines = Lines(run);
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].value(QLatin1String("file")).toString(), QString::fromUtf8("a\xef\xbf\xbd"
                                                                                  "b.stl"));
}

// The address space of a sanitized program is not limited.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST_F(KrmodelCheck, TellsWhenTheMemoryDoesNotSuffice)
{
    CopySample("gear.stl", "gear.stl");
    for (const char* line : {"check --json --max-memory 1 gear.stl", "info --json --max-memory 1 gear.stl"}) {
        const QJsonObject object = Json(line, Stopped);
        EXPECT_EQ(object.value(QLatin1String("error")).toString(),
                  QStringLiteral("needs more memory than it may have"));
        EXPECT_EQ(object.value(QLatin1String("file")).toString(), QStringLiteral("gear.stl"));
    }
}
#endif

TEST_F(KrmodelCheck, TellsWhenTheTimeDoesNotSuffice)
{
    // Facets so small that there is no end of them.
    CopySample("bearing.step", "bearing.step");
    const QJsonObject object =
        Json("check --json --deflection 0.0001 --angle 0.1 --max-time 1 bearing.step", Stopped);
    EXPECT_EQ(object.value(QLatin1String("error")).toString(),
              QStringLiteral("stopped, it takes more than 1 s of processor time"));
}

// The address space of a sanitized program is not limited.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST_F(KrmodelCheck, EveryCommandThatReadsModelsOrPicturesEndsWhenTheMemoryDoesNotSuffice)
{
    for (const char* name : {"gear.stl", "medal.png", "weave.texture"})
        CopySample(name, name);
    const QStringList before = AllFiles();
    for (const char* line :
         {"info gear.stl", "check gear.stl", "convert gear.stl out.stl", "preview gear.stl out.png",
          "relief medal.png out.stl", "texture make medal.png out.texture", "texture show weave.texture",
          "texture extract weave.texture out.png"}) {
        const ProgramRun run = Run(Words(line) + Words("--max-memory 1"));
        EXPECT_EQ(run.exitCode, Stopped) << line;
        EXPECT_EQ(run.output, QString()) << line;
        EXPECT_TRUE(run.errors.endsWith(QStringLiteral("needs more memory than it may have\n"))) << line;
        EXPECT_EQ(run.errors.count(QLatin1Char('\n')), 1) << run.errors.toStdString();
    }
    EXPECT_EQ(AllFiles(), before);
}
#endif

TEST_F(KrmodelCheck, EveryCommandThatReadsFilesTakesLimits)
{
    for (const char* name : {"gear.stl", "medal.png", "weave.texture", "gasket.path"})
        CopySample(name, name);
    for (const char* line :
         {"info gear.stl", "check gear.stl", "convert gear.stl out.stl", "preview gear.stl out.png",
          "relief medal.png out.stl", "texture show weave.texture", "texture extract weave.texture out.png",
          "texture make medal.png out.texture", "paths gasket.path"}) {
        const QStringList none = Words("--max-memory 0 --max-time 0 --max-input 0 --max-output 0");
        EXPECT_EQ(Run(Words(line) + none).exitCode, Done) << line;
        for (const char* limit : {"--max-memory x", "--max-time x", "--max-input x", "--max-output x"})
            EXPECT_EQ(Run(Words(line) + Words(limit)).exitCode, Usage) << line << limit;
    }
}

TEST_F(KrmodelCheck, ReadsNoInputThatIsTooLarge)
{
    WriteHole("large.stl", (1 << 20) + 1);
    const QString reason =
        QStringLiteral("not read, its 1,048,577 bytes are more than the 1,048,576 that it may have");
    for (const char* line :
         {"info large.stl", "check large.stl", "convert large.stl out.obj", "preview large.stl out.png"}) {
        const ProgramRun run = Run(Words(line) + Words("--max-input 1"));
        EXPECT_EQ(run.exitCode, Stopped) << line;
        EXPECT_EQ(run.errors, QStringLiteral("krmodel: large.stl: %1\n").arg(reason)) << line;
    }
    EXPECT_EQ(Json("check --json --max-input 1 large.stl", Stopped).value(QLatin1String("error")).toString(),
              reason);
    EXPECT_EQ(Files(), QStringList(QStringLiteral("large.stl")));
}

TEST_F(KrmodelCheck, ReadsAnInputThatIsJustSmallEnough)
{
    Write("part.obj", QByteArray("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n").leftJustified(1 << 20, '\n'));
    EXPECT_EQ(Run("info --max-input 1 part.obj").exitCode, Done);
    Write("part.obj", Bytes("part.obj") + '\n');
    EXPECT_EQ(Run("info --max-input 1 part.obj").exitCode, Stopped);
}

TEST_F(KrmodelCheck, StopsAnOutputThatGrowsTooLarge)
{
    Write("text.stl", "old");
    // Seven lines a facet are more than the limit then.
    Write("many.obj", QByteArray("v 0 0 0\nv 1 0 0\nv 0 1 0\n") + QByteArray("f 1 2 3\n").repeated(30000));
    const ProgramRun run = Run("convert many.obj text.stl --ascii --max-output 1");
    EXPECT_EQ(run.exitCode, Stopped);
    EXPECT_EQ(run.errors,
              QStringLiteral("krmodel: many.obj: stopped, it writes a file of more than 1,048,576 bytes\n"));
    EXPECT_EQ(Bytes("text.stl"), QByteArray("old"));
}

TEST_F(KrmodelCheck, RefusesLimitsAndNumbersOfJobsThatAreNone)
{
    ExpectUsageErrors({"check -j -1 a.stl", "check -j x a.stl", "check -j 1.5 a.stl", "check",
                       "check --max-memory -1 a.stl", "check --max-time never a.stl",
                       "check --max-output 1e30 a.stl", "check --json=maybe a.stl"});
}

TEST_F(KrmodelCheck, TakesAsManyJobsAsThereAreCoresForNone)
{
    CopySample("gear.stl", "a.stl");
    CopySample("knob.stl", "b.stl");
    for (const char* line : {"check -j 0 a.stl b.stl", "check --jobs 2 a.stl b.stl",
                             "check a.stl b.stl --max-memory 0 --max-time 0 --max-output 0"}) {
        const ProgramRun run = Run(line);
        EXPECT_EQ(run.exitCode, Done) << line;
        EXPECT_EQ(run.output, QStringLiteral("a.stl: printable\nb.stl: printable\n")) << line;
    }
}

TEST_F(KrmodelCheck, WorksOnSeveralFilesAtOnceWhenAskedTo)
{
    // A reader waits until somebody writes. Nobody ever writes into the first pipe, and the second one can be
    // opened for writing only when its reader is there.
    for (const char* name : {"a.obj", "b.obj"})
        ASSERT_EQ(mkfifo(QFile::encodeName(Path(name)), 0600), 0);
    const QString script = QStringLiteral("\"$0\" check -j 2 a.obj b.obj & : >b.obj; kill -TERM $!; wait $!");
    const ProgramRun run = RunProgram(QStringLiteral("timeout"),
                                      {QStringLiteral("60"), QStringLiteral("/bin/sh"), QStringLiteral("-c"),
                                       script, QStringLiteral(KRMODEL_PROGRAM)},
                                      Path("."));
    EXPECT_EQ(run.exitCode, Interrupted);
}

TEST_F(KrmodelCheck, PrintsJsonOfAConversion)
{
    CopySample("bolt.3mf", "bolt.3mf");
    const QJsonObject object = Json("convert --json --quiet bolt.3mf bolt.stl");
    EXPECT_EQ(object.value(QLatin1String("file")).toString(), QStringLiteral("bolt.3mf"));
    EXPECT_EQ(object.value(QLatin1String("format")).toString(), QStringLiteral("3MF"));
    EXPECT_EQ(object.value(QLatin1String("outputFormat")).toString(), QStringLiteral("STL"));
    EXPECT_EQ(object.value(QLatin1String("outputs")).toArray(), QJsonArray{QStringLiteral("bolt.stl")});
    EXPECT_EQ(object.value(QLatin1String("objects")).toArray().size(), 2);
    // STL has neither names nor metadata.
    const QJsonArray losses = object.value(QLatin1String("losses")).toArray();
    ASSERT_FALSE(losses.isEmpty());
    for (const QJsonValue& loss : losses) {
        EXPECT_FALSE(loss.toObject().value(QLatin1String("kind")).toString().isEmpty());
        EXPECT_FALSE(loss.toObject().value(QLatin1String("text")).toString().isEmpty());
        EXPECT_GT(loss.toObject().value(QLatin1String("count")).toInt(), 0);
    }
    EXPECT_TRUE(QFile::exists(Path("bolt.stl")));
}

TEST_F(KrmodelCheck, PrintsJsonOfEachFileThatIsSplitFromAnother)
{
    CopySample("bolt.3mf", "bolt.3mf");
    const QJsonObject object = Json("convert --json --quiet --split bolt.3mf it.stl");
    EXPECT_EQ(object.value(QLatin1String("outputs")).toArray(),
              (QJsonArray{QStringLiteral("it-1.stl"), QStringLiteral("it-2.stl")}));
}

TEST_F(KrmodelCheck, ConvertsSeveralFilesAtATimeAndPrintsALineForEach)
{
    CopySample("gear.stl", "a.stl");
    Write("b.stl", "nothing of the kind");
    CopySample("knob.stl", "c.stl");
    const ProgramRun run = Run("convert --json -j 3 --to obj a.stl b.stl c.stl");
    EXPECT_EQ(run.exitCode, NotReadable);
    const std::vector<QJsonObject> lines = Lines(run);
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0].value(QLatin1String("outputs")).toArray(), QJsonArray{QStringLiteral("a.obj")});
    EXPECT_EQ(lines[1].value(QLatin1String("exit")).toInt(), NotReadable);
    EXPECT_FALSE(lines[1].contains(QLatin1String("outputs")));
    EXPECT_EQ(lines[2].value(QLatin1String("outputs")).toArray(), QJsonArray{QStringLiteral("c.obj")});
}

TEST_F(KrmodelCheck, RefusesJsonBesideAModelOnStandardOutput)
{
    const ProgramRun run = Run("convert --json --to obj a.stl -");
    EXPECT_EQ(run.exitCode, Usage);
    EXPECT_EQ(run.output, QString());
}

TEST_F(KrmodelCheck, TellsLossesOfTheInputInJson)
{
    Write("it.obj", QByteArray(kTetrahedronObj) + "p 1\n");
    const QJsonArray losses = Json("info --json it.obj").value(QLatin1String("losses")).toArray();
    ASSERT_EQ(losses.size(), 1);
    EXPECT_EQ(losses.at(0).toObject().value(QLatin1String("count")).toInt(), 1);
}

} // namespace

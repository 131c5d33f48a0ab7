#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>

#include "tests/krmodel/ProgramSupport.h"

// The recipes of docs/farms.md, as they stand there.

namespace {

constexpr int kFileCount = 20;

class KrmodelFarm : public Krmodel {
protected:
    /// Files of strangers: good ones, damaged ones, a pipe into which nobody writes, and one that is not
    /// there.
    KrmodelFarm()
    {
        EXPECT_TRUE(QDir().mkdir(Path("models")));
        for (int i = 0; i < kFileCount - 8; ++i)
            CopySample("cube-inward.stl", QStringLiteral("models/it's %1 \"Würfel\".stl").arg(i).toUtf8());
        Write("models/cut.stl", QByteArray(90, 'x'));
        Write("models/empty.3mf", "");
        Write("models/none.obj", "\x89PNG\r\n\x1a\n");
        Write("models/other.xyz", "solid");
        Write("models/text.step", "ISO-10303-21;\n");
        Write("models/nothing.stl", QByteArray(84, '\0'));
        EXPECT_EQ(RunScript("mkfifo models/k-pipe.obj; find models ! -type d | sort >files.txt; "
                            "echo models/missing.stl >>files.txt; echo 2/: >hosts")
                      .exitCode,
                  0);
    }
    /// The shell's lines below a heading.
    static QString Recipe(const char* heading)
    {
        QFile file(QStringLiteral(KRCORE_SOURCES "/docs/farms.md"));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        const QString text = QString::fromUtf8(file.readAll());
        const QString section =
            text.mid(text.indexOf(QStringLiteral("\n## %1\n").arg(QLatin1String(heading))));
        return section.section(QStringLiteral("```"), 1, 1).section(QLatin1Char('\n'), 1);
    }
    ProgramRun RunBash(const QString& script) const
    {
        const QString path = QFileInfo(QStringLiteral(KRMODEL_PROGRAM)).path() + QLatin1Char(':') +
                             QString::fromLocal8Bit(qgetenv("PATH"));
        return RunProgram(QStringLiteral("bash"), {QStringLiteral("-c"), script}, Path("."),
                          {QStringLiteral("PATH=") + path, QStringLiteral("HOME=") + Path(".")});
    }
    /// Runs a recipe until only those of its files have no line that wait behind the pipe, and stops all of
    /// its processes.
    void RunAndStop(const QString& recipe, const char* lines, int count) const
    {
        const QString script = QStringLiteral("set -m; touch %2; (%1) & "
                                              "until [ $(wc -l <%2) -ge %3 ]; do sleep 0.02; done; "
                                              "kill -TERM -- -$!; wait")
                                   .arg(recipe, QString::fromUtf8(lines))
                                   .arg(count);
        RunBash(script);
        EXPECT_EQ(Bytes(lines).count('\n'), count);
    }
    /// Somebody has put a file in the place of the pipe.
    void ReplaceThePipe() const
    {
        EXPECT_TRUE(QFile::remove(Path("models/k-pipe.obj")));
        Write("models/k-pipe.obj", kTetrahedronObj);
    }
    static void ExpectALineForEachFile(const QByteArray& text)
    {
        QMap<QString, int> codes;
        for (const QByteArray& line : text.trimmed().split('\n')) {
            const QJsonObject object = QJsonDocument::fromJson(line).object();
            const QString name = object.value(QLatin1String("file")).toString();
            EXPECT_FALSE(codes.contains(name)) << name.toStdString();
            codes[name] = object.value(QLatin1String("exit")).toInt(-1);
        }
        EXPECT_EQ(codes.size(), kFileCount);
        EXPECT_EQ(codes.values().count(Done), kFileCount - 7);
        EXPECT_EQ(codes.value(QStringLiteral("models/k-pipe.obj"), -1), int(Done));
        EXPECT_EQ(codes.value(QStringLiteral("models/cut.stl")), int(NotReadable));
        EXPECT_EQ(codes.value(QStringLiteral("models/nothing.stl")), int(Empty));
        EXPECT_EQ(codes.value(QStringLiteral("models/missing.stl")), int(CannotOpen));
    }
};

TEST_F(KrmodelFarm, GivesALineAFileWithGnuParallelThatIsStoppedAndGoesOn)
{
    const QString recipe = Recipe("GNU parallel");
    ASSERT_TRUE(recipe.startsWith(QStringLiteral("parallel ")));
    RunAndStop(recipe, "results.jsonl", kFileCount - 1);
    ReplaceThePipe();
    const ProgramRun run = RunBash(recipe);
    EXPECT_EQ(run.exitCode, 0) << run.errors.toStdString();
    ExpectALineForEachFile(Bytes("results.jsonl"));
    // Once more there is nothing to do.
    RunBash(recipe);
    ExpectALineForEachFile(Bytes("results.jsonl"));
}

TEST_F(KrmodelFarm, GivesALineAFileInASlurmArrayThatIsStoppedAndGoesOn)
{
    ASSERT_EQ(Recipe("Slurm"), QStringLiteral("sbatch check-many.sbatch files.txt results\n"));
    // What Slurm does: the script, with the number of the task. The pipe is the fifth file of the third task.
    const QString task =
        QStringLiteral("SLURM_ARRAY_TASK_ID=%1 SLURM_ARRAY_TASK_MIN=1 SLURM_ARRAY_TASK_COUNT=3 "
                       "bash '" KRCORE_SOURCES "/docs/check-many.sbatch' files.txt results");
    EXPECT_TRUE(QDir().mkdir(Path("results")));
    EXPECT_EQ(RunBash(task.arg(2)).exitCode, 0);
    RunAndStop(task.arg(3), "results/3.jsonl", 4);
    ReplaceThePipe();
    // What is left of a line when a computer loses its power.
    Write("results/3.jsonl", Bytes("results/3.jsonl") + "{\"krmodel-json\": 1, \"fi");
    for (const int number : {1, 2, 3}) {
        const ProgramRun run = RunBash(task.arg(number));
        EXPECT_EQ(run.exitCode, 0) << run.errors.toStdString();
    }
    EXPECT_EQ(QDir(Path("results")).entryList(QDir::Files), Words("1.jsonl 2.jsonl 3.jsonl"));
    ExpectALineForEachFile(Bytes("results/1.jsonl") + Bytes("results/2.jsonl") + Bytes("results/3.jsonl"));
}

} // namespace

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "core/mesh/Mesh.h"
#include "fileformat/stl/STLFile.h"
#include "tests/common/RunProgram.h"

namespace {

QString Sample(const QString& name)
{
    return QStringLiteral(KRCORE_SAMPLES "/") + name;
}

QStringList SampleNames(const QString& directory)
{
    return QDir(directory).entryList({QStringLiteral("*.stl")}, QDir::Files, QDir::Name);
}

QByteArray Bytes(const QString& fileName)
{
    QFile file(fileName);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << fileName.toStdString();
    return file.readAll();
}

Mesh Loaded(const QString& fileName)
{
    Mesh mesh(0.03F);
    EXPECT_TRUE(STLFile::LoadFile(fileName, mesh, false, 80, false)) << fileName.toStdString();
    return mesh;
}

TEST(Examples, StitchAndMeasurePrintsAndWritesWhatItRead)
{
    const QTemporaryDir directory;
    const QString output = directory.filePath(QStringLiteral("gear.stl"));
    const ProgramRun run =
        RunProgram(QStringLiteral(KRCORE_STITCH_AND_MEASURE), {Sample(QStringLiteral("gear.stl")), output});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.output, QStringLiteral("3600 facets, 1800 vertices, volume 14333.37\n"));
    EXPECT_EQ(Loaded(output).GetFaceNum(), 3600);
}

TEST(Examples, StitchAndMeasureFailsWithoutAFile)
{
    EXPECT_EQ(RunProgram(QStringLiteral(KRCORE_STITCH_AND_MEASURE),
                         {QStringLiteral("missing.stl"), QStringLiteral("out.stl")})
                  .exitCode,
              1);
}

TEST(Examples, ReadmeQuotesStitchAndMeasure)
{
    QByteArray program = Bytes(QStringLiteral(KRCORE_EXAMPLES "/StitchAndMeasure.cpp"));
    program.remove(0, program.indexOf("#include"));
    EXPECT_TRUE(Bytes(QStringLiteral(KRCORE_README)).contains("```cpp\n" + program + "```\n"));
}

TEST(Samples, AreWhatTheirMakerMakes)
{
    const QTemporaryDir directory;
    ASSERT_EQ(RunProgram(QStringLiteral(KRCORE_MAKE_SAMPLES), {directory.path()}).exitCode, 0);
    const QStringList names = SampleNames(QStringLiteral(KRCORE_SAMPLES));
    EXPECT_EQ(names, SampleNames(directory.path()));
    for (const QString& name : names) {
        const QByteArray kept = Bytes(Sample(name)), made = Bytes(directory.filePath(name));
        // The header of a binary file holds the time of writing.
        const int header = kept.startsWith("solid") ? 0 : 80;
        EXPECT_EQ(kept.mid(header), made.mid(header)) << name.toStdString();
        EXPECT_LT(kept.size(), 200'000) << name.toStdString();
    }
}

TEST(Samples, AreClosedButForTheSheet)
{
    for (const QString& name : SampleNames(QStringLiteral(KRCORE_SAMPLES))) {
        bool isClosed = true;
        const Mesh mesh = Loaded(Sample(name));
        for (const TriangleFace& across : mesh.GetFaceNeighbours())
            isClosed = isClosed && across[0] >= 0 && across[1] >= 0 && across[2] >= 0;
        EXPECT_EQ(isClosed, name != QStringLiteral("sheet.stl")) << name.toStdString();
        EXPECT_GT(mesh.GetVolume(), 0) << name.toStdString();
    }
}

} // namespace

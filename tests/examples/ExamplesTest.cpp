#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QImage>
#include <QRegularExpression>
#include <QTemporaryDir>

#include "core/mesh/Mesh.h"
#include "fileformat/obj/OBJFile.h"
#include "fileformat/stl/STLFile.h"
#include "tests/common/RunProgram.h"

namespace {

QString Sample(const QString& name)
{
    return QStringLiteral(KRCORE_SAMPLES "/") + name;
}

QStringList SampleNames(const QString& directory)
{
    const QStringList kinds = {QStringLiteral("*.stl"), QStringLiteral("*.obj"), QStringLiteral("*.mtl"),
                               QStringLiteral("*.png")};
    return QDir(directory).entryList(kinds, QDir::Files, QDir::Name);
}

QByteArray Bytes(const QString& fileName)
{
    QFile file(fileName);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << fileName.toStdString();
    return file.readAll();
}

/// What must not differ when a sample is made anew.
QByteArray Contents(const QString& fileName)
{
    // Pixels: each release of the compressor packs them in its own way.
    if (fileName.endsWith(QStringLiteral(".png"))) {
        const QImage image = QImage(fileName).convertToFormat(QImage::Format_RGB32);
        EXPECT_FALSE(image.isNull()) << fileName.toStdString();
        return QByteArray(reinterpret_cast<const char*>(image.constBits()), int(image.sizeInBytes()));
    }
    const QByteArray bytes = Bytes(fileName);
    // The header of a binary file holds the time of writing.
    const bool isBinary = fileName.endsWith(QStringLiteral(".stl")) && !bytes.startsWith("solid");
    return isBinary ? bytes.mid(80) : bytes;
}

Mesh Loaded(const QString& fileName)
{
    Mesh mesh(0.03F);
    std::vector<MeshTextureGroup> groups;
    EXPECT_TRUE(fileName.endsWith(QStringLiteral(".obj"))
                    ? OBJFile::LoadFile(fileName, mesh, groups, false, 0)
                    : STLFile::LoadFile(fileName, mesh, false, 80, false))
        << fileName.toStdString();
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
        const QByteArray kept = Contents(Sample(name)), made = Contents(directory.filePath(name));
        EXPECT_EQ(kept, made) << name.toStdString();
        EXPECT_LT(QFile(Sample(name)).size(), 200'000) << name.toStdString();
    }
}

TEST(Samples, AreClosedButForTheSheet)
{
    const QStringList models =
        SampleNames(QStringLiteral(KRCORE_SAMPLES)).filter(QRegularExpression(QStringLiteral("(stl|obj)$")));
    EXPECT_EQ(models.size(), 8);
    for (const QString& name : models) {
        bool isClosed = true;
        const Mesh mesh = Loaded(Sample(name));
        for (const TriangleFace& across : mesh.GetFaceNeighbours())
            isClosed = isClosed && across[0] >= 0 && across[1] >= 0 && across[2] >= 0;
        EXPECT_EQ(isClosed, name != QStringLiteral("sheet.stl")) << name.toStdString();
        EXPECT_GT(mesh.GetVolume(), 0) << name.toStdString();
    }
}

} // namespace

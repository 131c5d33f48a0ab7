#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

#include <tbb/global_control.h>

#include "tests/cad/CadFiles.h"
#include "tests/cad/CadLoadSupport.h"
#include "tests/cad/DamagedCad.h"
#include "tests/cad/RunInChild.h"
#include "tests/common/Directory.h"

// Files that were cut short or changed. OpenCASCADE reads what it can of a STEP file; of an IGES file that
// was cut it would follow pointers into nothing.

namespace {

using namespace test;

constexpr int kStride = 64;

class CadDamage : public testing::Test {
protected:
    QByteArray BytesOfSTEP(const std::vector<CadPartPointer>& parts) const
    {
        const QString path = m_directory.Path(QStringLiteral("whole.step"));
        EXPECT_TRUE(WriteSTEP(path, parts));
        return Directory::Read(path);
    }
    QByteArray BytesOfIGES(const std::vector<CadPartPointer>& parts) const
    {
        const QString path = m_directory.Path(QStringLiteral("whole.iges"));
        EXPECT_TRUE(WriteIGES(path, parts));
        return Directory::Read(path);
    }
    QString Damaged(const QByteArray& bytes, const char* extension) const
    {
        return m_directory.Write(bytes, QStringLiteral("damaged") + QString::fromLatin1(extension));
    }

    Directory m_directory;
};

// The files of these tests are read in children, which need a parent without other threads.
const tbb::global_control kNoWorkers(tbb::global_control::max_allowed_parallelism, 1);

/// Loads of the file with one bit of 7 flipped, wherever chance has it.
CadEnds LoadWithFlippedBits(const QByteArray& bytes, const QString& path, int count)
{
    std::mt19937 random(61);
    CadEnds ends;
    for (int i = 0; i < count; ++i) {
        QByteArray damaged = bytes;
        const int at = static_cast<int>(random() % static_cast<unsigned>(bytes.size()));
        damaged[at] = static_cast<char>(damaged[at] ^ (1 << random() % 7));
        LoadInChild(damaged, path, ends);
    }
    return ends;
}

} // namespace

TEST_F(CadDamage, RefusesEveryIGESFileThatWasCutBeforeItsTerminateRecordWasWhole)
{
    for (const CadPartPointer& part : {MakeSampleParts().pin, MakeSampleParts().sheet}) {
        const QByteArray bytes = BytesOfIGES({part});
        const int terminate = bytes.lastIndexOf("\nS") + 1;
        ASSERT_GT(terminate, 1000);
        std::vector<int> sizes;
        for (int size = 0; size < terminate; size += kStride)
            sizes.push_back(size);
        // Every size up to the letter of the terminate record, in column 73.
        for (int size = terminate; size <= terminate + 72; ++size)
            sizes.push_back(size);
        for (const int size : sizes) {
            const CadMeshes meshes(Damaged(bytes.left(size), ".iges"));
            ASSERT_FALSE(meshes.IsLoaded()) << size;
            ASSERT_EQ(meshes.Count(), 0u);
        }
        EXPECT_EQ(CadMeshes(Damaged(bytes, ".iges")).Count(), 1u);
    }
}

TEST_F(CadDamage, RefusesEveryIGESFileThatLacksALine)
{
    const QByteArray bytes = BytesOfIGES({MakeSampleParts().sheet});
    const QList<QByteArray> lines = bytes.split('\n');
    for (int missing = 0; missing + 1 < lines.size(); ++missing) {
        QList<QByteArray> left = lines;
        left.removeAt(missing);
        EXPECT_FALSE(CadMeshes(Damaged(left.join('\n'), ".iges")).IsLoaded()) << missing;
    }
}

// A STEP file says only by its last line that it ended. What stands before a cut may still be a whole model.
TEST_F(CadDamage, ASTEPFileThatWasCutAnywhereGivesWholeMeshesOrNothing)
{
    for (const CadPartPointer& part : {MakeSampleParts().pin, MakeSampleParts().sheet}) {
        const QByteArray bytes = BytesOfSTEP({part});
        for (int size = 0; size < bytes.size(); size += kStride)
            ASSERT_TRUE(GivesWholeMeshesOrNothing(Damaged(bytes.left(size), ".step"))) << size;
        EXPECT_EQ(CadMeshes(Damaged(bytes, ".step")).Count(), 1u);
    }
}

TEST_F(CadDamage, RefusesASTEPFileThatWasCutBeforeItsData)
{
    const QByteArray bytes = BytesOfSTEP({MakeSampleParts().sheet});
    for (int size = 0; size < bytes.indexOf("#1 ="); size += 16)
        EXPECT_FALSE(CadMeshes(Damaged(bytes.left(size), ".step")).IsLoaded()) << size;
}

TEST_F(CadDamage, AnIGESFaceWithAnUnfinishedLoopEndsInAnExceptionWithoutMeshes)
{
    const QString path = Damaged(WithAnUnfinishedLoop(BytesOfIGES({MakeSampleParts().sheet})), ".iges");
    std::vector<Mesh*> meshes;
    const auto load = [&] { return STEPAndIGESFile::LoadFile(path, meshes, kDeflection, kAngle, true); };
    EXPECT_TRUE(EndsInStandardFailure([&] { EXPECT_TRUE(load()); }));
    EXPECT_TRUE(meshes.empty());
    EXPECT_EQ(OpenDocumentCount(), 0);
}

TEST_F(CadDamage, ACrashOfOurOwnInAChildIsAFailure)
{
    EXPECT_EQ(RunInChild([] { return true; }, 30), ChildEnd::Done);
    EXPECT_EQ(RunInChild([] { return false; }, 30), ChildEnd::Failed);
    EXPECT_EQ(RunInChild([]() -> bool { std::abort(); }, 30), ChildEnd::Failed);
}

// OpenCASCADE follows a null pointer where a name of the file leads to an entity of another kind.
TEST_F(CadDamage, FlippedBitsGiveWholeMeshesOrNothingWhereverOpenCascadeSurvives)
{
    const QByteArray step = BytesOfSTEP({MakeSampleParts().sheet}),
                     iges = BytesOfIGES({MakeSampleParts().sheet});
    for (const auto& [bytes, extension] : {std::pair(step, ".step"), std::pair(iges, ".iges")}) {
        CadEnds ends = LoadWithFlippedBits(bytes, Damaged(bytes, extension), 200);
        EXPECT_EQ(ends[ChildEnd::Failed], 0) << extension;
        EXPECT_GT(ends[ChildEnd::Done], 150) << extension;
    }
}

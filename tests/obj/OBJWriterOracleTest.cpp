#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <stdexcept>

#include <QTextStream>

#include <gtest/gtest.h>

#include "core/mesh/Mesh.h"
#include "fileformat/obj/OBJFile.h"
#include "tests/common/Directory.h"
#include "tests/obj/LiteralOBJWriter.h"

namespace {

using test::Directory;
using Point = Vector3D<float>;

/// The bytes of one file after the other. Each is a new one: some file systems write a truncated file out to
/// the disk when it is closed.
class Files {
public:
    QString NewPath()
    {
        QFile::remove(m_path);
        return m_path;
    }
    QByteArray Read() const { return Directory::Read(m_path); }

private:
    Directory m_directory;
    QString m_path = m_directory.Path(QStringLiteral("out.obj"));
};

/// Random lists of small meshes with all that the writer must cope with.
class RandomMeshes {
public:
    explicit RandomMeshes(unsigned seed) : m_random(seed) {}

    int Below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }
    bool Chance(int percent) { return Below(100) < percent; }

    std::vector<const Mesh*> List()
    {
        m_meshes.clear();
        std::vector<const Mesh*> list;
        for (int left = Below(5); left > 0; --left) {
            if (list.empty() || Chance(75))
                m_meshes.push_back(OneMesh());
            list.push_back(
                m_meshes[static_cast<std::size_t>(Below(static_cast<int>(m_meshes.size())))].get());
        }
        return list;
    }

    std::vector<bool> Flags(std::size_t meshCount)
    {
        std::vector<bool> flags(meshCount + static_cast<std::size_t>(Below(2)));
        for (std::size_t i = 0; i < flags.size(); ++i)
            flags[i] = Chance(60);
        return flags;
    }

    /// Makes one index of one mesh of the latest list wrong; false when there is no face to spoil.
    bool Spoil()
    {
        if (m_meshes.empty())
            return false;
        const std::size_t chosen = static_cast<std::size_t>(Below(static_cast<int>(m_meshes.size())));
        Mesh& mesh = *m_meshes[chosen];
        std::vector<TriangleFace>& faces =
            *(Chance(50) ? mesh.GetFacesVecPtr() : mesh.GetTextureFacesVecPtr());
        if (faces.empty())
            return false;
        faces[static_cast<std::size_t>(Below(static_cast<int>(faces.size())))][Below(3)] = 40 + Below(1000);
        return true;
    }

private:
    float Coordinate()
    {
        static const float kSpecial[] = {0.0f,
                                         -0.0f,
                                         1e-9f,
                                         -1e-9f,
                                         0.0078125f,
                                         3.4e38f,
                                         -3.4e38f,
                                         16777216.0f,
                                         std::numeric_limits<float>::infinity(),
                                         -std::numeric_limits<float>::infinity(),
                                         std::numeric_limits<float>::quiet_NaN(),
                                         std::numeric_limits<float>::denorm_min()};
        if (Chance(15))
            return kSpecial[static_cast<std::size_t>(Below(static_cast<int>(std::size(kSpecial))))];
        const float value = std::uniform_real_distribution<float>(-100, 100)(m_random);
        return Chance(20) ? std::ldexp(value, Below(60) - 40) : value;
    }

    std::vector<TriangleFace> Faces(int count, int indexLimit)
    {
        std::vector<TriangleFace> faces;
        while (static_cast<int>(faces.size()) < count)
            faces.emplace_back(Below(indexLimit), Below(indexLimit), Below(indexLimit));
        return faces;
    }

    std::unique_ptr<Mesh> OneMesh()
    {
        auto mesh = std::make_unique<Mesh>(0.03f);
        mesh->GetVerticesVecPtr()->resize(static_cast<std::size_t>(1 + Below(15)));
        for (Point& vertex : *mesh->GetVerticesVecPtr())
            vertex = Point(Coordinate(), Coordinate(), Coordinate());
        mesh->GetTexCoordVecPtr()->resize(static_cast<std::size_t>(1 + Below(15)));
        for (Vector2D<float>& uv : *mesh->GetTexCoordVecPtr())
            uv = Vector2D<float>(Coordinate(), Coordinate());
        const int faceCount = Chance(20) ? 0 : Below(12);
        const int textureFaceCount = Chance(75) ? faceCount : Below(12);
        *mesh->GetFacesVecPtr() = Faces(faceCount, static_cast<int>(mesh->GetVerticesVecPtr()->size()));
        *mesh->GetTextureFacesVecPtr() =
            Faces(textureFaceCount, static_cast<int>(mesh->GetTexCoordVecPtr()->size()));
        mesh->SetFaceNum(Chance(90) ? faceCount : Below(faceCount + 1));
        return mesh;
    }

    std::mt19937 m_random;
    std::vector<std::unique_ptr<Mesh>> m_meshes;
};

Mesh LargeMesh()
{
    std::mt19937 random(7);
    std::uniform_real_distribution<float> coordinate(-2000, 2000);
    Mesh mesh(0.03f);
    const auto index = [&](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
    for (int i = 0; i < 30'000; ++i)
        mesh.GetVerticesVecPtr()->emplace_back(coordinate(random), coordinate(random), coordinate(random));
    for (int i = 0; i < 20'000; ++i)
        mesh.GetTexCoordVecPtr()->emplace_back(coordinate(random), coordinate(random));
    for (int i = 0; i < 40'000; ++i) {
        mesh.GetFacesVecPtr()->emplace_back(index(30'000), index(30'000), index(30'000));
        mesh.GetTextureFacesVecPtr()->emplace_back(index(20'000), index(20'000), index(20'000));
    }
    mesh.SetFaceNum(40'000);
    return mesh;
}

} // namespace

TEST(OBJWriterOracle, WritesRandomMeshListsAsTheLiteralWriterDoes)
{
    Files files;
    RandomMeshes random(1);
    for (int round = 0; round < 4000; ++round) {
        const std::vector<const Mesh*> meshes = random.List();
        const std::vector<bool> flags = random.Flags(meshes.size());
        const bool withNormals = random.Chance(50);
        ASSERT_TRUE(OBJFile::SaveFile(files.NewPath(), meshes, flags, withNormals));
        ASSERT_EQ(files.Read(), test::LiteralOBJ(meshes, flags, withNormals)) << "round " << round;
    }
}

TEST(OBJWriterOracle, LeavesTheLinesBeforeAWrongIndexAsTheLiteralWriterDoes)
{
    Files files;
    RandomMeshes random(2);
    int thrown = 0;
    for (int round = 0; round < 4000; ++round) {
        const std::vector<const Mesh*> meshes = random.List();
        if (!random.Spoil())
            continue;
        const std::vector<bool> flags = random.Flags(meshes.size());
        try {
            // A wrong index that no pass comes across is none.
            ASSERT_TRUE(OBJFile::SaveFile(files.NewPath(), meshes, flags, true));
        } catch (const std::out_of_range&) {
            ++thrown;
        }
        ASSERT_EQ(files.Read(), test::LiteralOBJ(meshes, flags, true)) << "round " << round;
    }
    EXPECT_GT(thrown, 1000);
}

TEST(OBJWriterOracle, WritesRandomMeshListsIntoAnyStreamAsTheLiteralWriterDoes)
{
    RandomMeshes random(3);
    for (int round = 0; round < 1000; ++round) {
        const std::vector<const Mesh*> meshes = random.List();
        const std::vector<bool> flags = random.Flags(meshes.size());
        const bool withNormals = random.Chance(50);
        const auto notation = static_cast<QTextStream::RealNumberNotation>(random.Below(3));
        const int precision = random.Below(10);
        QByteArray written, expected;
        for (QByteArray* const bytes : {&written, &expected}) {
            QTextStream stream(bytes);
            stream.setRealNumberNotation(notation);
            stream.setRealNumberPrecision(precision);
            if (bytes == &written)
                OBJFile::writeMesh(stream, meshes, flags, withNormals);
            else
                test::WriteLiterally(stream, meshes, flags, withNormals);
        }
        ASSERT_EQ(written, expected) << "round " << round;
    }
}

TEST(OBJWriterOracle, WritesFilesOfManyBlocksAsTheLiteralWriterDoes)
{
    Files files;
    const Mesh mesh = LargeMesh();
    const std::vector<const Mesh*> meshes = {&mesh, &mesh};
    ASSERT_TRUE(OBJFile::SaveFile(files.NewPath(), meshes, {true, false}, true));
    const QByteArray bytes = files.Read();
    EXPECT_GT(bytes.size(), 9'000'000);
    // Not EXPECT_EQ, which would print both.
    EXPECT_TRUE(bytes == test::LiteralOBJ(meshes, {true, false}, true));
}

#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "core/mesh/Mesh.h"
#include "core/mesh/MeshTextureGroup.h"
#include "fileformat/obj/OBJFile.h"
#include "tests/common/Directory.h"

// What is written and read again.

namespace {

using test::Directory;
using Point = Vector3D<float>;
using MeshList = std::vector<const Mesh*>;

/// Random vertices and texture coordinates, in the order in which the faces use them. Coordinates are
/// multiples of a 64th, which six decimals hold exactly, or any in range that do not round to zero.
Mesh RandomMesh(unsigned seed, bool exact)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> anyCoordinate(0.001f, 5000);
    const auto coordinate = [&] {
        const float magnitude = exact ? static_cast<float>(random() % 100'000) / 64
                                      : std::ldexp(anyCoordinate(random), -int(random() % 4));
        return random() % 2 == 0 ? magnitude : -magnitude;
    };
    Mesh mesh(0.03f);
    std::vector<Point>& vertices = *mesh.GetVerticesVecPtr();
    std::vector<Vector2D<float>>& texCoords = *mesh.GetTexCoordVecPtr();
    // Each corner uses an earlier entry or the next new one.
    const auto next = [&](auto& list, auto entry) {
        if (list.empty() || random() % 3 == 0) {
            list.push_back(entry);
            return static_cast<int>(list.size()) - 1;
        }
        return static_cast<int>(random() % list.size());
    };
    for (int i = 0; i < 400; ++i) {
        TriangleFace face, textureFace;
        for (int c = 0; c < 3; ++c) {
            face[c] = next(vertices, Point(coordinate(), coordinate(), coordinate()));
            textureFace[c] = next(texCoords, Vector2D<float>(coordinate(), coordinate()));
        }
        mesh.GetFacesVecPtr()->push_back(face);
        mesh.GetTextureFacesVecPtr()->push_back(textureFace);
    }
    mesh.SetFaceNum(400);
    mesh.SetVertexNum(static_cast<int>(vertices.size()));
    return mesh;
}

/// Writes and reads with what the directory holds.
class RoundTrip {
public:
    QByteArray Save(const MeshList& meshes, const std::vector<bool>& flags, bool withNormals)
    {
        QFile::remove(m_path);
        EXPECT_TRUE(OBJFile::SaveFile(m_path, meshes, flags, withNormals));
        return Directory::Read(m_path);
    }
    Mesh Load()
    {
        Mesh mesh(0.03f);
        std::vector<MeshTextureGroup> groups(1);
        EXPECT_TRUE(OBJFile::LoadFile(m_path, mesh, groups, false, 0));
        EXPECT_TRUE(groups.empty());
        return mesh;
    }

private:
    Directory m_directory;
    QString m_path = m_directory.Path(QStringLiteral("model.obj"));
};

} // namespace

TEST(OBJRoundTrip, GivesEqualListsForCoordinatesOfSixDecimals)
{
    RoundTrip trip;
    for (unsigned seed = 0; seed < 20; ++seed) {
        const Mesh mesh = RandomMesh(seed, true);
        trip.Save({&mesh}, {true}, seed % 2 == 0);
        const Mesh loaded = trip.Load();
        EXPECT_EQ(*loaded.GetVerticesVecPtr(), *mesh.GetVerticesVecPtr());
        EXPECT_EQ(*loaded.GetFacesVecPtr(), *mesh.GetFacesVecPtr());
        EXPECT_EQ(*loaded.GetTexCoordVecPtr(), *mesh.GetTexCoordVecPtr());
        EXPECT_EQ(*loaded.GetTextureFacesVecPtr(), *mesh.GetTextureFacesVecPtr());
        EXPECT_EQ(loaded.GetFaceNum(), mesh.GetFaceNum());
        EXPECT_EQ(loaded.GetVertexNum(), mesh.GetVertexNum());
        EXPECT_EQ(loaded.GetVolume(), mesh.CalcuateVolume());
    }
}

TEST(OBJRoundTrip, MovesNoCoordinateByMoreThanHalfAMillionth)
{
    RoundTrip trip;
    const Mesh mesh = RandomMesh(30, false);
    trip.Save({&mesh}, {true}, false);
    const Mesh loaded = trip.Load();
    ASSERT_EQ(loaded.GetVerticesVecPtr()->size(), mesh.GetVerticesVecPtr()->size());
    for (std::size_t i = 0; i < mesh.GetVerticesVecPtr()->size(); ++i) {
        const Point &before = (*mesh.GetVerticesVecPtr())[i], &after = (*loaded.GetVerticesVecPtr())[i];
        // And from there to the nearest float.
        const float step = std::nextafter(std::fabs(before.x), 1e9f) - std::fabs(before.x);
        EXPECT_LE(std::fabs(double(after.x) - double(before.x)), 0.5e-6 + double(step) / 2);
    }
    EXPECT_EQ(*loaded.GetFacesVecPtr(), *mesh.GetFacesVecPtr());
}

TEST(OBJRoundTrip, WritesWhatWasReadWithTheSameBytes)
{
    RoundTrip trip;
    for (unsigned seed = 40; seed < 60; ++seed) {
        const Mesh mesh = RandomMesh(seed, false);
        const bool textured = seed % 2 == 0;
        const QByteArray bytes = trip.Save({&mesh}, {textured}, false);
        const Mesh loaded = trip.Load();
        EXPECT_EQ(trip.Save({&loaded}, {textured}, false), bytes);
    }
}

TEST(OBJRoundTrip, ReadsSeveralMeshesAsOne)
{
    RoundTrip trip;
    const Mesh first = RandomMesh(70, true), second = RandomMesh(71, true), empty(0.03f);
    trip.Save({&first, &empty, &second, &first}, {false, false, false, false}, true);
    const Mesh loaded = trip.Load();
    std::vector<Point> vertices;
    std::vector<TriangleFace> faces;
    for (const Mesh* const mesh : {&first, &second, &first}) {
        const int offset = static_cast<int>(vertices.size());
        vertices.insert(vertices.end(), mesh->GetVerticesVecPtr()->begin(), mesh->GetVerticesVecPtr()->end());
        for (const TriangleFace& face : *mesh->GetFacesVecPtr())
            faces.emplace_back(face[0] + offset, face[1] + offset, face[2] + offset);
    }
    EXPECT_EQ(*loaded.GetVerticesVecPtr(), vertices);
    EXPECT_EQ(*loaded.GetFacesVecPtr(), faces);
    EXPECT_TRUE(loaded.GetTextureFacesVecPtr()->empty());
}

TEST(OBJRoundTrip, LeavesOutWhatNoFaceUses)
{
    RoundTrip trip;
    Mesh mesh(0.03f);
    mesh.AddVertexAndFaces({{9, 9, 9}, {1, 0, 0}, {0, 1, 0}, {9, 9, 9}, {0, 0, 1}}, {{4, 1, 2}, {2, 1, 4}});
    trip.Save({&mesh}, {false}, false);
    const Mesh loaded = trip.Load();
    EXPECT_EQ(*loaded.GetVerticesVecPtr(), (std::vector<Point>{{0, 0, 1}, {1, 0, 0}, {0, 1, 0}}));
    EXPECT_EQ(*loaded.GetFacesVecPtr(), (std::vector<TriangleFace>{{0, 1, 2}, {2, 1, 0}}));
}

TEST(OBJRoundTrip, ReadsAMeshWithoutFacesAsAnEmptyOne)
{
    RoundTrip trip;
    const Mesh empty(0.03f);
    trip.Save({&empty}, {true}, true);
    const Mesh loaded = trip.Load();
    EXPECT_TRUE(loaded.GetVerticesVecPtr()->empty());
    EXPECT_TRUE(loaded.GetFacesVecPtr()->empty());
    EXPECT_EQ(loaded.GetVolume(), 0);
}

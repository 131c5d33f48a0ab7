#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>

#include <gtest/gtest.h>

#include "fileformat/stl/STLFile.h"
#include "tests/stl/PlainStitcher.h"
#include "tests/stl/SoupBuilder.h"

namespace {

using Point = Vector3D<float>;

template<class T>
bool SameBytes(const std::vector<T>& a, const std::vector<T>& b)
{
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0);
}

struct Stitched {
    std::vector<Point> normals;
    std::vector<TriangleFace> faces;
    std::vector<Point> vertices;
};

Stitched Stitch(const SoupCorners& soup, const std::vector<Point>& normals)
{
    Stitched result{normals, {}, {}};
    STLFile::StitchTriangleSoup(soup, result.normals, result.faces, result.vertices);
    return result;
}

// Half-edges by their vertices, in either direction.
std::map<std::pair<int, int>, int> EdgeUse(const std::vector<TriangleFace>& faces)
{
    std::map<std::pair<int, int>, int> use;
    for (const TriangleFace& f : faces)
        for (int c = 0; c < 3; ++c)
            ++use[std::minmax(f[c], f[(c + 1) % 3])];
    return use;
}

double SignedVolume(const Stitched& mesh)
{
    double volume = 0;
    for (const TriangleFace& f : mesh.faces) {
        const Point &a = mesh.vertices[std::size_t(f[0])], &b = mesh.vertices[std::size_t(f[1])];
        const Point &c = mesh.vertices[std::size_t(f[2])], &r = mesh.vertices.front();
        const Vector3D<double> n = CalcAreaVector(a, b, c);
        const double part = (double(a.x) - double(r.x)) * n.x + (double(a.y) - double(r.y)) * n.y +
                            (double(a.z) - double(r.z)) * n.z;
        volume += std::isfinite(part) ? part / 6 : 0;
    }
    return volume;
}

std::string Describe(const SoupCorners& soup)
{
    std::string text;
    char line[100];
    for (const Point& p : soup) {
        std::snprintf(line, sizeof line, "{%.9gf, %.9gf, %.9gf},\n", double(p.x), double(p.y), double(p.z));
        text += line;
    }
    return text;
}

// Two apexes with the given number of facets around each.
SoupCorners SpindleSoup(int sides)
{
    SoupCorners soup;
    const auto rim = [sides](int i) {
        const double angle = 6.283185307179586 * (i % sides) / sides;
        return Point(float(std::cos(angle)), float(std::sin(angle)), 0);
    };
    for (int i = 0; i < sides; ++i) {
        soup.insert(soup.end(), {rim(i), rim(i + 1), Point(0, 0, 1)});
        soup.insert(soup.end(), {rim(i + 1), rim(i), Point(0, 0, -1)});
    }
    return soup;
}

class STLStitchOracle : public testing::TestWithParam<unsigned> {};

} // namespace

// Each of the 100 cases takes 1,000 soups, which must have gone all roads.
TEST_P(STLStitchOracle, AgreesWithThePlainStitcherBitForBit)
{
    Random random(GetParam());
    int tolerant = 0, turned = 0, open = 0, closed = 0;
    for (int i = 0; i < 1000; ++i) {
        const SoupCorners soup = RandomSoup(random);
        std::vector<Point> normals = NoNormals(soup);
        for (Point& normal : normals)
            if (random() % 2)
                normal = {float(random() % 3) - 1, float(random() % 3) - 1, float(random() % 3) - 1};
        const PlainStitchResult plain = StitchPlainly(soup, normals);
        const Stitched fast = Stitch(soup, normals);
        ASSERT_TRUE(SameBytes(fast.faces, plain.faces)) << "soup " << i << "\n" << Describe(soup);
        ASSERT_TRUE(SameBytes(fast.vertices, plain.vertices)) << "soup " << i << "\n" << Describe(soup);
        ASSERT_TRUE(SameBytes(fast.normals, plain.normals)) << "soup " << i << "\n" << Describe(soup);
        tolerant += plain.tolerantLinks > 0;
        turned += plain.wasTurnedOver;
        (plain.linkedEdges == int(3 * plain.faces.size()) ? closed : open) += 1;
    }
    EXPECT_GT(tolerant, 30);
    EXPECT_GT(turned, 30);
    EXPECT_GT(open, 30);
    EXPECT_GT(closed, 30);
}

TEST_P(STLStitchOracle, KeepsWhatAnyMeshMustHold)
{
    Random random(GetParam() + 1000);
    for (int i = 0; i < 250; ++i) {
        const SoupCorners soup = RandomSoup(random);
        const PlainStitchResult plain = StitchPlainly(soup, NoNormals(soup));
        const Stitched mesh = Stitch(soup, NoNormals(soup));
        ASSERT_TRUE(SameBytes(mesh.faces, plain.faces) && SameBytes(mesh.vertices, plain.vertices));
        std::vector<bool> isUsed(mesh.vertices.size(), false);
        for (const TriangleFace& f : mesh.faces) {
            for (const int v : f.v) {
                ASSERT_GE(v, 0);
                ASSERT_LT(v, int(mesh.vertices.size()));
                isUsed[std::size_t(v)] = true;
            }
            EXPECT_TRUE(f[0] != f[1] && f[1] != f[2] && f[2] != f[0]) << "a face that names a vertex twice";
        }
        EXPECT_EQ(std::count(isUsed.begin(), isUsed.end(), false), 0) << "a vertex without a face";
        EXPECT_LE(mesh.faces.size(), soup.size() / 3);
        EXPECT_LE(plain.movedAtMost, plain.tolerance * 1.001f) << "from where the edge lay when it was filed";
        for (const Point& vertex : mesh.vertices)
            EXPECT_TRUE(std::any_of(soup.begin(), soup.end(), [&](const Point& corner) {
                return std::memcmp(&corner, &vertex, sizeof vertex) == 0;
            })) << "vertices only lie where the file has a corner";
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, STLStitchOracle, testing::Range(1u, 101u));

// Seen from the box's corner the first facets lie between 2^51 and 2^52 cells away, where a double still has
// halves.
TEST(STLStitch, RoundsToWholeCellsHoweverFarTheyLie)
{
    const float d = 8.82818033e-44f;
    const SoupCorners soup{{0, 0, 0},
                           {-0.0f, -d, d},
                           {-0.0f, -d, -d},
                           {-5.87756004e-39f, d, 0},
                           {-0.0f, -d, -d},
                           {-d, d, -0.0f},
                           {0, 0, 0},
                           {1, 0, 5.08892321e-29f},
                           {-1.45487907e-26f, 1.17541828e-28f, 1.50635468e-36f},
                           {5.37198499e-26f, 5.83173477e-39f, 5.83155401e-39f},
                           {0, -2.01948897e-28f, 3.05178073e-05f},
                           {4.39213763e-05f, 5.16295527e-39f, -0.0f}};
    const PlainStitchResult plain = StitchPlainly(soup, NoNormals(soup));
    ASSERT_EQ(plain.tolerantLinks, 1);
    const Stitched fast = Stitch(soup, NoNormals(soup));
    EXPECT_TRUE(SameBytes(fast.faces, plain.faces));
    EXPECT_TRUE(SameBytes(fast.vertices, plain.vertices));
}

TEST(STLStitch, LinksAcrossTheBordersOfCells)
{
    int reachLinks = 0;
    Random random(7);
    for (int i = 0; i < 200; ++i) {
        SoupCorners soup = TorusSoup(12, 12, 5, 2);
        JitterCorners(soup, 0.2, 0.02f, random);
        const PlainStitchResult plain = StitchPlainly(soup, NoNormals(soup));
        const Stitched fast = Stitch(soup, NoNormals(soup));
        ASSERT_TRUE(SameBytes(fast.faces, plain.faces));
        ASSERT_TRUE(SameBytes(fast.vertices, plain.vertices));
        reachLinks += plain.reachLinks;
    }
    EXPECT_GT(reachLinks, 0);
}

// More ends lie apart than wait to be settled at once. In file order most fans are complete when their turn
// comes; in the shuffled file, around the apexes and at the holes' borders they are not.
TEST(STLStitch, SettlesEarlyAndLateFansAlike)
{
    Random random(13);
    for (int i = 0; i < 12; ++i) {
        SoupCorners soup = Joined(TorusSoup(40, 24, 5, 2), SpindleSoup(60));
        JitterCorners(soup, i < 6 ? 0.08 : 0.3, 1e-5f, random);
        if (i % 2 == 1)
            ShuffleFacets(soup, random);
        if (i % 3 == 1)
            FlipFacets(soup, 0.2, random);
        if (i % 3 == 2)
            soup.resize(soup.size() - 210);
        const PlainStitchResult plain = StitchPlainly(soup, NoNormals(soup));
        const Stitched fast = Stitch(soup, NoNormals(soup));
        ASSERT_GT(plain.tolerantLinks, 500);
        ASSERT_TRUE(SameBytes(fast.faces, plain.faces)) << i;
        ASSERT_TRUE(SameBytes(fast.vertices, plain.vertices)) << i;
    }
}

TEST(STLStitch, ClosesAJitteredTorusWholly)
{
    Random random(11);
    for (int i = 0; i < 50; ++i) {
        SoupCorners soup = TorusSoup(20, 16, 5, 2);
        JitterCorners(soup, 0.02, 1e-5f, random);
        ShuffleFacets(soup, random);
        const Stitched mesh = Stitch(soup, NoNormals(soup));
        ASSERT_EQ(mesh.faces.size(), 640u);
        ASSERT_EQ(mesh.vertices.size(), 320u);
        for (const auto& edge : EdgeUse(mesh.faces))
            ASSERT_EQ(edge.second, 2);
        EXPECT_GT(SignedVolume(mesh), 0);
    }
}

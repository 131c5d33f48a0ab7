#include <algorithm>
#include <random>
#include <stdexcept>

#include <gtest/gtest.h>

#include "tests/stl/LiteralReader.h"
#include "tests/stl/LoadSupport.h"

// Damaged and random files, each loaded by the library and by a literal reader: both must end alike.

namespace {

using test::BinarySTL;
using test::Cube;
using test::Directory;
using test::LiteralReader;
using test::LoadOptions;
using test::Point;
using test::TextSTL;

using Points = std::vector<Point>;
using Faces = std::vector<TriangleFace>;

QByteArray BitsOf(const Points& points)
{
    return {reinterpret_cast<const char*>(points.data()), static_cast<int>(points.size() * sizeof(Point))};
}

// What a load ends with, however it ends.
struct Outcome {
    enum class Kind { Refused, Threw, Loaded };
    Kind kind = Kind::Refused;
    Faces faces;
    QByteArray vertices;

    friend bool operator==(const Outcome& a, const Outcome& b)
    {
        return a.kind == b.kind && a.faces == b.faces && a.vertices == b.vertices;
    }
};

Outcome LoadedOutcome(const Mesh& mesh)
{
    return {Outcome::Kind::Loaded, *mesh.GetFacesVecPtr(), BitsOf(*mesh.GetVerticesVecPtr())};
}

Outcome OutcomeOfLoad(const QString& path, LoadOptions options)
{
    Mesh mesh(0.03f);
    try {
        if (!STLFile::LoadFile(path, mesh, options.isLight, options.headerSize, options.forceBinary))
            return {};
    } catch (const std::out_of_range&) {
        return {Outcome::Kind::Threw, {}, {}};
    }
    return LoadedOutcome(mesh);
}

Outcome OutcomeOfLiteralReader(const QString& path, LoadOptions options)
{
    std::optional<test::LiteralSoup> soup =
        LiteralReader::Load(path, options.headerSize, options.forceBinary);
    if (!soup)
        return {};
    Mesh mesh(0.03f);
    try {
        STLFile::StitchTriangleSoup(soup->corners, soup->normals, *mesh.GetFacesVecPtr(),
                                    *mesh.GetVerticesVecPtr());
    } catch (const std::out_of_range&) {
        return {Outcome::Kind::Threw, {}, {}};
    }
    mesh.PostProcess(false, true, false, false, nullptr, nullptr);
    return LoadedOutcome(mesh);
}

::testing::AssertionResult AgreesWithLiteralReader(const Directory& directory, const QByteArray& bytes,
                                                   LoadOptions options = {})
{
    const QString path = directory.Write(bytes);
    const Outcome expected = OutcomeOfLiteralReader(path, options);
    const Outcome outcome = OutcomeOfLoad(path, options);
    if (outcome == expected)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << "ended " << int(outcome.kind) << " with " << outcome.faces.size() << " faces, expected "
           << int(expected.kind) << " with " << expected.faces.size();
}

} // namespace

TEST(STLReaderRobustness, EveryTruncationIsReadAsByTheLiteralReader)
{
    const Directory directory;
    const QByteArray samples[] = {
        Cube(BinarySTL(), 2), TextSTL().Facets(2).End().Line("solid b").Facets(1).End(),
        TextSTL("\r\n").Facets(2),
        BinarySTL().Header(QByteArray("solid x").leftJustified(80, '\n')).Facets(2)};
    for (const QByteArray& sample : samples) {
        for (int size = 0; size <= sample.size(); ++size) {
            ASSERT_TRUE(AgreesWithLiteralReader(directory, sample.left(size))) << size;
            ASSERT_TRUE(AgreesWithLiteralReader(directory, sample.left(size), {true, 80, true})) << size;
        }
    }
}

TEST(STLReaderRobustness, EveryChangedByteIsReadAsByTheLiteralReader)
{
    const Directory directory;
    const QByteArray samples[] = {BinarySTL().Facets(3),
                                  TextSTL().Facets(2).End().Line("solid b").Facets(1).End()};
    for (const QByteArray& sample : samples) {
        for (int i = 0; i < sample.size(); ++i) {
            const char byte = sample[i];
            for (const int changed :
                 {0, 0xff, byte ^ 0xff, byte ^ 0x20, byte ^ 1, int('\r'), int('\n'), int('e')}) {
                QByteArray bytes = sample;
                bytes[i] = static_cast<char>(changed);
                ASSERT_TRUE(AgreesWithLiteralReader(directory, bytes)) << i << ' ' << changed;
            }
        }
    }
}

TEST(STLReaderRobustness, RandomBinariesAreReadAsByTheLiteralReader)
{
    const Directory directory;
    std::mt19937 random(17);
    const auto below = [&random](int limit) {
        return static_cast<int>(random() % static_cast<unsigned>(limit));
    };
    int loaded = 0;
    for (int i = 0; i < 20'000; ++i) {
        const int headers[] = {80, 80, 80, 0, 3, 5, 200, 1024, 1025, -1};
        const int headerSize = headers[below(10)];
        BinarySTL builder;
        QByteArray header(std::max(headerSize, 0), below(4) == 0 ? ' ' : 'h');
        const char* const words[] = {
            "", "", "solid", "x\nsolid ", "solid\nvertex 1 2 3 ", "SOLID\nendsolid", "solid\n normal 1"};
        header.replace(0, 20, words[below(7)]);
        builder.Header(header.leftJustified(std::max(headerSize, 0), '\0', true));
        for (int facets = below(6); facets > 0; --facets) {
            const auto coordinate = [&] { return static_cast<float>(below(3)); };
            builder.Facet({coordinate(), coordinate(), coordinate()},
                          {coordinate(), coordinate(), coordinate()},
                          {coordinate(), coordinate(), coordinate()});
        }
        const QByteArray whole = builder;
        if (below(3) == 0)
            builder.Count(static_cast<std::uint32_t>(below(6)));
        else
            builder.Count(static_cast<std::uint32_t>((whole.size() - std::max(headerSize, 0)) / 50));
        if (below(3) == 0)
            builder.Surplus(below(60));
        if (below(3) == 0)
            builder.CutLast(below(5));
        const LoadOptions options{below(2) == 0, headerSize, below(4) == 0};
        ASSERT_TRUE(AgreesWithLiteralReader(directory, builder, options)) << i;
        loaded +=
            OutcomeOfLoad(directory.Path(QStringLiteral("model")), options).kind == Outcome::Kind::Loaded;
    }
    // Both outcomes must have been seen often.
    EXPECT_GT(loaded, 4'000);
    EXPECT_LT(loaded, 16'000);
}

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <stdexcept>
#include <utility>

#include "core/math/EigenVecFunc3f.h"
#include "fileformat/stl/STLFile.h"
#include "fileformat/stl/Soup_p.h"
#include "fileformat/stl/Stitch_p.h"

// Stitching goes two roads. The fast one numbers the corners' positions first and pairs half-edges on these
// numbers; a closed, consistently wound file, the ordinary case, is done then but for a check that each
// position is one fan. What it leaves over goes the longer way: tolerant matching, winding, numbering fan by
// fan.

namespace kr::stl {

void CornerBox::Add(const Vector3D<float>& point)
{
    if (!IsFinite(point))
        return;
    if (isEmpty) {
        minimum = maximum = point;
        isEmpty = false;
        return;
    }
    minimum = {std::min(minimum.x, point.x), std::min(minimum.y, point.y), std::min(minimum.z, point.z)};
    maximum = {std::max(maximum.x, point.x), std::max(maximum.y, point.y), std::max(maximum.z, point.z)};
}

namespace {

constexpr float kNormalTolerance = 0.001f;

bool HaveSameBits(const Vector3D<float>& a, const Vector3D<float>& b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

bool IsDegenerate(const Vector3D<float>* corner)
{
    return HaveSameBits(corner[0], corner[1]) || HaveSameBits(corner[1], corner[2]) ||
           HaveSameBits(corner[2], corner[0]);
}

// The last facet fills each hole and is examined next.
void RemoveDegenerateFacets(Soup& soup)
{
    for (std::size_t t = 0; t < soup.facetCount;) {
        Vector3D<float>* const corner = &soup.corners[3 * t];
        if (!IsDegenerate(corner)) {
            ++t;
            continue;
        }
        std::for_each(corner, corner + 3,
                      [&](const Vector3D<float>& point) { soup.removedCorners.Add(point); });
        --soup.facetCount;
        std::copy_n(&soup.corners[3 * soup.facetCount], 3, corner);
    }
}

Soup MakeSoup(Scratch<Vector3D<float>> corners, std::size_t facetCount)
{
    if (facetCount > kMaxFacets)
        throw std::length_error("STL: more facets than 31 bits can number");
    Soup soup;
    soup.corners = std::move(corners);
    soup.facetCount = facetCount;
    soup.firstEdgeExtent = EdgeExtent(soup.corners[0], soup.corners[1]);
    RemoveDegenerateFacets(soup);
    return soup;
}

// Lets the position of every corner hold the corner's very bits: where 0 and -0 meet, one place becomes
// several positions. Edges have been paired by then, so nothing that belongs together is parted.
void PartZerosBySign(Soup& soup)
{
    std::map<std::pair<std::int32_t, std::uint32_t>, std::int32_t> parts;
    for (HalfEdge corner = 0; corner < HalfEdge(3 * soup.facetCount); ++corner) {
        const Vector3D<float>& point = soup.corners[std::size_t(corner)];
        const std::int32_t position = soup.PositionAt(corner);
        if (HaveSameBits(point, soup.PointOf(position)))
            continue;
        const std::uint32_t signs = std::uint32_t(std::signbit(point.x)) |
                                    std::uint32_t(std::signbit(point.y)) << 1 |
                                    std::uint32_t(std::signbit(point.z)) << 2;
        const auto [part, isNew] = parts.try_emplace({position, signs}, std::int32_t(soup.positions.count));
        if (isNew) {
            soup.positions.positions[soup.positions.count++] = {point, 0};
            soup.partedPositions.insert(soup.partedPositions.end(), {position, part->second});
        }
        soup.MoveCorner(corner, part->second);
    }
}

// Pairing needs memory as large as the corners. Fresh memory is the largest single cost of a load, so it gets
// theirs unless they hold more than their positions do.
void PairEdges(Soup& soup)
{
    const bool hasMixedZeros = soup.positions.hasMixedZeros;
    Scratch<EdgeRecord> records = hasMixedZeros ? Scratch<EdgeRecord>(3 * soup.facetCount)
                                                : std::move(soup.corners).ReuseAs<EdgeRecord>();
    soup.links = PairHalfEdges(soup.positionOf.data(), soup.facetCount, soup.positions.count, records);
    if (hasMixedZeros)
        PartZerosBySign(soup);
    soup.corners = Scratch<Vector3D<float>>();
}

void LinkFacets(Soup& soup)
{
    ReserveLarge(soup.positionOf, soup.facetCount);
    soup.positionOf.resize(soup.facetCount);
    soup.positions = NumberPositions(soup.corners.data(), soup.facetCount, soup.positionOf.data());
    PairEdges(soup);
    LinkWithinTolerance(soup);
    MakeWindingConsistent(soup);
}

// The text of the standard library's own bounds check.
[[noreturn]] void ThrowOutOfRange(std::size_t index, std::size_t size)
{
    char text[120]; // holds any two numbers
    static_cast<void>(std::snprintf(
        text, sizeof text, "vector::_M_range_check: __n (which is %zu) >= this->size() (which is %zu)", index,
        size));
    throw std::out_of_range(text);
}

bool IsClose(const Eigen::Vector3f& a, const Eigen::Vector3f& b)
{
    return ((a - b).array().abs() <= kNormalTolerance).all();
}

Eigen::Vector3f NormalOf(const Vector3D<float>& a, const Vector3D<float>& b, const Vector3D<float>& c)
{
    using namespace EigenVecFunc3f;
    return EigenVecNormal({VectorToEigen(a), VectorToEigen(b), VectorToEigen(c)});
}

// A normal from the file stays when it is right as it stands, or once it has length 1.
void UpdateNormal(Vector3D<float>& normal, const Eigen::Vector3f& geometric)
{
    Eigen::Vector3f stored = EigenVecFunc3f::VectorToEigen(normal);
    if (IsClose(stored, geometric))
        return;
    EigenVecFunc3f::EigenVecNormalize(stored);
    normal = EigenVecFunc3f::EigenToVector(IsClose(stored, geometric) ? stored : geometric);
}

void UpdateNormals(const Soup& soup, std::vector<Vector3D<float>>& normals)
{
    for (std::size_t t = 0; t < soup.facetCount; ++t) {
        // at(), not []: a file with fewer normals than facets is to throw std::out_of_range.
        UpdateNormal(normals.at(t), NormalOf(soup.PointAt(t, 0), soup.PointAt(t, 1), soup.PointAt(t, 2)));
    }
}

void TurnNormals(const Soup& soup, std::vector<Vector3D<float>>& normals)
{
    for (std::size_t t = 0; t < soup.facetCount; ++t)
        normals.at(t) = EigenVecFunc3f::EigenToVector(
            NormalOf(soup.PointAt(t, 1), soup.PointAt(t, 0), soup.PointAt(t, 2)));
}

} // namespace

StitchedMesh StitchCorners(Scratch<Vector3D<float>> corners, std::size_t cornerCount, std::size_t normalCount)
{
    const std::size_t facetCount = cornerCount / 3;
    Soup soup = MakeSoup(std::move(corners), facetCount);
    const std::size_t removedCount = facetCount - soup.facetCount;
    const std::size_t normalsLeft = normalCount - std::min(normalCount, removedCount);
    if (normalsLeft < soup.facetCount)
        ThrowOutOfRange(normalsLeft, normalsLeft);
    LinkFacets(soup);
    StitchedMesh mesh;
    const double volume = VolumeOf(soup);
    const bool isInsideOut = volume < 0;
    if (!isInsideOut)
        mesh.volume = volume;
    NumberFans(soup, isInsideOut, mesh.faces, mesh.vertices);
    return mesh;
}

} // namespace kr::stl

void STLFile::StitchTriangleSoup(const std::vector<Vector3D<float>>& corners,
                                 std::vector<Vector3D<float>>& normals, std::vector<TriangleFace>& faces,
                                 std::vector<Vector3D<float>>& vertices)
{
    using namespace kr::stl;
    const std::size_t facetCount = corners.size() / 3;
    if (facetCount == 0)
        return;
    kr::Scratch<Vector3D<float>> copy(facetCount * 3);
    std::copy_n(corners.begin(), facetCount * 3, copy.begin());
    Soup soup = MakeSoup(std::move(copy), facetCount);
    normals.resize(normals.size() - std::min(normals.size(), facetCount - soup.facetCount));
    LinkFacets(soup);
    UpdateNormals(soup, normals);
    const bool isInsideOut = VolumeOf(soup) < 0;
    if (isInsideOut)
        TurnNormals(soup, normals);
    StitchedMesh mesh;
    NumberFans(soup, isInsideOut, mesh.faces, mesh.vertices);
    faces = std::move(mesh.faces);
    vertices = std::move(mesh.vertices);
}

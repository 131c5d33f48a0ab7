#include "apps/krmodel/Pieces.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace krmodel {

namespace {

constexpr size_t kMostHulls = 100;

/// What rounding may leave of a flat piece's volume, in cubes of its diagonal.
constexpr double kNoVolume = 1e-12;

using Triangle = std::array<Eigen::Vector3d, 3>;

Triangle TriangleOf(const std::vector<Vector3D<float>>& vertices, const TriangleFace& facet)
{
    Triangle triangle;
    for (size_t corner = 0; corner < 3; ++corner) {
        const Vector3D<float>& vertex = vertices[size_t(facet.v[corner])];
        triangle[corner] = {double(vertex.x), double(vertex.y), double(vertex.z)};
    }
    return triangle;
}

/// @param origin  a corner of the piece: far from the origin of coordinates the volume would lose its digits
void AddFacet(Piece& piece, const Triangle& triangle, const Eigen::Vector3d& origin)
{
    const auto& [a, b, c] = triangle;
    piece.volume += (a - origin).dot((b - origin).cross(c - origin)) / 6;
    for (const Eigen::Vector3d& corner : triangle)
        piece.box.extend(corner);
}

/// The largest first.
std::vector<const Piece*> Hulls(const std::vector<Piece>& pieces)
{
    std::vector<const Piece*> hulls;
    for (const Piece& piece : pieces)
        if (piece.volume > 0)
            hulls.push_back(&piece);
    const auto middle = hulls.begin() + std::ptrdiff_t(std::min(hulls.size(), kMostHulls));
    std::partial_sort(hulls.begin(), middle, hulls.end(),
                      [](const Piece* left, const Piece* right) { return left->volume > right->volume; });
    hulls.erase(middle, hulls.end());
    return hulls;
}

} // namespace

bool Piece::HasVolume() const
{
    return std::abs(volume) > kNoVolume * std::pow(box.diagonal().norm(), 3);
}

std::vector<Piece> CollectPieces(const std::vector<Vector3D<float>>& vertices,
                                 const std::vector<TriangleFace>& facets, FacetSets& sets,
                                 const std::vector<bool>& isBroken)
{
    std::vector<Piece> pieces;
    std::vector<int> pieceOf(facets.size(), -1);
    for (size_t i = 0; i < facets.size(); ++i) {
        if (facets[i].v[0] < 0)
            continue;
        // The first facet of a set comes first.
        const auto set = size_t(sets.SetOf(int(i)));
        if (set == i) {
            pieceOf[i] = int(pieces.size());
            pieces.emplace_back().firstFacet = int(i);
        }
        Piece& piece = pieces[size_t(pieceOf[set])];
        AddFacet(piece, TriangleOf(vertices, facets[i]), TriangleOf(vertices, facets[set])[0]);
        piece.isInOrder = piece.isInOrder && !isBroken[i];
    }
    return pieces;
}

InwardPieces FindInwardPieces(const std::vector<Piece>& pieces)
{
    InwardPieces found;
    const std::vector<const Piece*> hulls = Hulls(pieces);
    for (const Piece& piece : pieces) {
        if (!piece.FacesInwards())
            continue;
        const bool isCavity = std::any_of(hulls.begin(), hulls.end(), [&](const Piece* hull) {
            return hull->box.contains(piece.box) && hull->volume > -piece.volume;
        });
        (isCavity ? found.cavities : found.others).push_back(&piece);
    }
    return found;
}

} // namespace krmodel

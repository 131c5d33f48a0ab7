#include "apps/krmodel/Pieces.h"

#include <algorithm>
#include <cmath>

#include "apps/krmodel/Enclosure.h"

namespace krmodel {

namespace {

constexpr size_t kMostHulls = 100;

/// What rounding may leave of a flat piece's volume, in cubes of its diagonal.
constexpr double kNoVolume = 1e-12;

Triangle TriangleOf(const std::vector<Vector3D<float>>& vertices, const TriangleFace& facet)
{
    Triangle triangle;
    for (size_t corner = 0; corner < 3; ++corner) {
        const Vector3D<float>& vertex = vertices[size_t(facet.v[corner])];
        triangle[corner] = {double(vertex.x), double(vertex.y), double(vertex.z)};
    }
    return triangle;
}

/// About a corner of the piece: far from the origin of coordinates the volume would lose its digits.
void AddFacet(Piece& piece, const Triangle& triangle)
{
    const auto& [a, b, c] = triangle;
    const Eigen::Vector3d& origin = piece.corner;
    piece.volume += (a - origin).dot((b - origin).cross(c - origin)) / 6;
    for (const Eigen::Vector3d& corner : triangle)
        piece.box.extend(corner);
}

/// Indices of pieces, the largest first.
std::vector<size_t> Hulls(const std::vector<Piece>& pieces)
{
    std::vector<size_t> hulls;
    for (size_t i = 0; i < pieces.size(); ++i)
        if (pieces[i].volume > 0)
            hulls.push_back(i);
    const auto middle = hulls.begin() + std::ptrdiff_t(std::min(hulls.size(), kMostHulls));
    std::partial_sort(hulls.begin(), middle, hulls.end(),
                      [&](size_t left, size_t right) { return pieces[left].volume > pieces[right].volume; });
    hulls.erase(middle, hulls.end());
    return hulls;
}

/// What a piece may have within it, as far as boxes tell; more cannot be told of one with a hole.
class Hull {
public:
    Hull(const Piece& hull, const std::vector<const Piece*>& inward)
        : m_isClosed(hull.isInOrder),
          m_candidates(CandidatesIn(hull, inward)),
          m_enclosure(CornersOf(m_candidates))
    {}

    void Add(const Triangle& facet) { m_enclosure.Add(facet); }
    bool IsWanted() const { return !m_candidates.empty(); }
    void AddCavities(std::vector<const Piece*>& cavities) const
    {
        for (size_t i = 0; i < m_candidates.size(); ++i)
            if (!m_isClosed || m_enclosure.Holds(i))
                cavities.push_back(m_candidates[i]);
    }

private:
    static std::vector<const Piece*> CandidatesIn(const Piece& hull, const std::vector<const Piece*>& inward)
    {
        std::vector<const Piece*> candidates;
        for (const Piece* const piece : inward)
            if (hull.box.contains(piece->box) && hull.volume > -piece->volume)
                candidates.push_back(piece);
        return candidates;
    }
    static std::vector<Eigen::Vector3d> CornersOf(const std::vector<const Piece*>& pieces)
    {
        std::vector<Eigen::Vector3d> corners;
        for (const Piece* const piece : pieces)
            corners.push_back(piece->corner);
        return corners;
    }

    bool m_isClosed;
    std::vector<const Piece*> m_candidates;
    Enclosure m_enclosure;
};

/// Sorted by address, which is their order in the list; a piece may be there twice.
std::vector<const Piece*> FindCavities(const std::vector<const Piece*>& inward, const Pieces& pieces,
                                       const std::vector<Vector3D<float>>& vertices,
                                       const std::vector<TriangleFace>& facets)
{
    std::vector<Hull> hulls;
    std::vector<int> hullOf(pieces.list.size(), -1);
    for (const size_t index : Hulls(pieces.list)) {
        hulls.emplace_back(pieces.list[index], inward);
        hullOf[index] = hulls.back().IsWanted() ? int(hulls.size()) - 1 : -1;
    }
    for (size_t i = 0; i < facets.size(); ++i)
        if (const int piece = pieces.pieceOf[i]; piece >= 0 && hullOf[size_t(piece)] >= 0)
            hulls[size_t(hullOf[size_t(piece)])].Add(TriangleOf(vertices, facets[i]));
    std::vector<const Piece*> cavities;
    for (const Hull& hull : hulls)
        hull.AddCavities(cavities);
    std::sort(cavities.begin(), cavities.end());
    return cavities;
}

} // namespace

bool Piece::HasVolume() const
{
    return std::abs(volume) > kNoVolume * std::pow(box.diagonal().norm(), 3);
}

Pieces CollectPieces(const std::vector<Vector3D<float>>& vertices, const std::vector<TriangleFace>& facets,
                     FacetSets& sets, const std::vector<bool>& isBroken)
{
    Pieces pieces;
    pieces.pieceOf.assign(facets.size(), -1);
    for (size_t i = 0; i < facets.size(); ++i) {
        if (facets[i].v[0] < 0)
            continue;
        // The first facet of a set comes first.
        const auto set = size_t(sets.SetOf(int(i)));
        const Triangle triangle = TriangleOf(vertices, facets[i]);
        if (set == i) {
            pieces.pieceOf[i] = int(pieces.list.size());
            Piece& piece = pieces.list.emplace_back();
            piece.firstFacet = int(i);
            piece.corner = triangle[0];
        }
        pieces.pieceOf[i] = pieces.pieceOf[set];
        Piece& piece = pieces.list[size_t(pieces.pieceOf[i])];
        AddFacet(piece, triangle);
        piece.isInOrder = piece.isInOrder && !isBroken[i];
    }
    return pieces;
}

InwardPieces FindInwardPieces(const Pieces& pieces, const std::vector<Vector3D<float>>& vertices,
                              const std::vector<TriangleFace>& facets)
{
    std::vector<const Piece*> inward;
    for (const Piece& piece : pieces.list)
        if (piece.FacesInwards())
            inward.push_back(&piece);
    if (inward.empty())
        return {};
    const std::vector<const Piece*> cavities = FindCavities(inward, pieces, vertices, facets);
    InwardPieces found;
    for (const Piece* const piece : inward) {
        const bool isCavity = std::binary_search(cavities.begin(), cavities.end(), piece);
        (isCavity ? found.cavities : found.others).push_back(piece);
    }
    return found;
}

} // namespace krmodel

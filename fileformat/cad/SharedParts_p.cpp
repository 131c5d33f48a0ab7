#include "fileformat/cad/SharedParts_p.h"

#include <algorithm>
#include <numeric>
#include <unordered_map>

#include <TopExp_Explorer.hxx>
#include <TopoDS_TShape.hxx>

namespace kr::cad {

namespace {

// Sets of shapes that grow together; each is known by its first shape.
class JoinedShapes {
public:
    explicit JoinedShapes(std::size_t count) : m_earlier(count)
    {
        std::iota(m_earlier.begin(), m_earlier.end(), std::size_t(0));
    }

    std::size_t FirstOf(std::size_t shape)
    {
        while (m_earlier[shape] != shape)
            shape = m_earlier[shape] = m_earlier[m_earlier[shape]];
        return shape;
    }

    void Join(std::size_t a, std::size_t b)
    {
        const std::size_t firstOfA = FirstOf(a), firstOfB = FirstOf(b);
        m_earlier[std::max(firstOfA, firstOfB)] = std::min(firstOfA, firstOfB);
    }

private:
    std::vector<std::size_t> m_earlier; // a shape of the same set that is not later
};

using Owners = std::unordered_map<const TopoDS_TShape*, std::size_t>;

void JoinOwners(const TopoDS_Shape& shape, std::size_t index, TopAbs_ShapeEnum kind, Owners& owners,
                JoinedShapes& joined)
{
    for (TopExp_Explorer parts(shape, kind); parts.More(); parts.Next()) {
        const auto owner = owners.try_emplace(parts.Current().TShape().get(), index).first;
        if (owner->second != index)
            joined.Join(owner->second, index);
    }
}

} // namespace

std::vector<ShapeGroup> GroupsWithoutSharedParts(const std::vector<PlacedShape>& shapes)
{
    Owners owners;
    JoinedShapes joined(shapes.size());
    for (std::size_t i = 0; i < shapes.size(); ++i)
        for (const TopAbs_ShapeEnum kind : {TopAbs_FACE, TopAbs_EDGE})
            JoinOwners(shapes[i].shape, i, kind, owners, joined);

    std::vector<ShapeGroup> groups;
    std::vector<std::size_t> groupOf(shapes.size());
    for (std::size_t i = 0; i < shapes.size(); ++i) {
        const std::size_t first = joined.FirstOf(i);
        if (first == i) {
            groupOf[i] = groups.size();
            groups.emplace_back();
        }
        groups[groupOf[first]].push_back(i);
    }
    return groups;
}

} // namespace kr::cad

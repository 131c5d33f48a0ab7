#pragma once

#include <array>
#include <vector>

#include <Eigen/Core>

namespace krmodel {

using Triangle = std::array<Eigen::Vector3d, 3>;

/// Which of some points a closed surface goes around. The surface is shown a facet at a time; a point costs
/// only the facets that reach across its x, so that many points in a large surface take little longer than
/// one.
///
/// From each point a ray goes upwards. A facet that it leaves through counts 1, one that it enters through
/// -1: around the point the surface goes as often as the sum tells. Where the ray meets an edge or a corner,
/// all facets there decide alike on which side it passes, so none is counted twice or not at all. A point on
/// the surface may be taken for either side.
class Enclosure {
public:
    explicit Enclosure(std::vector<Eigen::Vector3d> points);

    /// @param facet  its corners are counter-clockwise as seen from outside
    void Add(const Triangle& facet);

    /// Whether the facets added go around the point of this index, facing outwards.
    bool Holds(size_t point) const { return m_windings[point] > 0; }

private:
    std::vector<Eigen::Vector3d> m_points;
    std::vector<size_t> m_alongX; ///< indices of the points, by x
    std::vector<int> m_windings;  ///< by point
};

} // namespace krmodel

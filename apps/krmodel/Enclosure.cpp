#include "apps/krmodel/Enclosure.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include <Eigen/Geometry>

namespace krmodel {

namespace {

using Point = Eigen::Vector3d;

/// Seen from above, an edge that passes the point beyond it along y: 1 when it leads to the left, -1 to the
/// right, 0 when it does not pass there.
int Passing(const Point& point, const Point& from, const Point& to)
{
    if ((from.x() <= point.x()) == (to.x() <= point.x()))
        return 0;
    // Calculated from the left end, whichever facet asks, so that both facets of the edge get one answer.
    const bool isToTheRight = from.x() <= point.x();
    const Point& left = isToTheRight ? from : to;
    const Point& right = isToTheRight ? to : from;
    const double side =
        (right.x() - left.x()) * (point.y() - left.y()) - (right.y() - left.y()) * (point.x() - left.x());
    if (side >= 0)
        return 0;
    return isToTheRight ? -1 : 1;
}

/// How often the facet goes around the point as seen from above: 1, 0, or -1 when it is seen from its back.
int WindingFromAbove(const Point& point, const Triangle& facet)
{
    return Passing(point, facet[0], facet[1]) + Passing(point, facet[1], facet[2]) +
           Passing(point, facet[2], facet[0]);
}

/// For a facet that lies above or below the point.
bool IsAbove(const Triangle& facet, const Point& point)
{
    const Point normal = (facet[1] - facet[0]).cross(facet[2] - facet[0]);
    const double distance = normal.dot(facet[0] - point);
    return normal.z() < 0 ? distance < 0 : distance > 0;
}

} // namespace

Enclosure::Enclosure(std::vector<Point> points)
    : m_points(std::move(points)), m_alongX(m_points.size()), m_windings(m_points.size(), 0)
{
    std::iota(m_alongX.begin(), m_alongX.end(), size_t(0));
    std::sort(m_alongX.begin(), m_alongX.end(),
              [this](size_t a, size_t b) { return m_points[a].x() < m_points[b].x(); });
}

void Enclosure::Add(const Triangle& facet)
{
    const auto [least, most] = std::minmax({facet[0].x(), facet[1].x(), facet[2].x()});
    const auto isBefore = [this](size_t point, double x) { return m_points[point].x() < x; };
    // An edge passes points from its left end on, and none at its right end.
    for (auto at = std::lower_bound(m_alongX.begin(), m_alongX.end(), least, isBefore);
         at != m_alongX.end() && m_points[*at].x() < most; ++at) {
        const int winding = WindingFromAbove(m_points[*at], facet);
        if (winding != 0 && IsAbove(facet, m_points[*at]))
            m_windings[*at] += winding;
    }
}

} // namespace krmodel

#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

#include <Eigen/Core>

#include "core/math/KRCoreMathExport.h"

/// One edge of one triangle, prepared for finding the edges that coincide with it.
///
/// A record describes its edge by two keys, one for each end: after init() the end's coordinates, after
/// update() the cell of a grid that the end lies in. Records that were prepared in different ways, or with
/// different grids, must not be compared. Plain value; safe from any thread.
struct KRCORE_MATH_EXPORT MeshEigenEdgeInfo {
    int facet = -1; ///< index of the facet, from 0; set by the caller
    int edge = -1;  ///< 0..2: from corner `edge` to corner (edge + 1) mod 3; set by the caller

    /// Prepares for exact matching. The two corners are read now and not kept.
    /// Ends are equal as numbers: -0 equals 0; an end that is not finite equals nothing.
    void init(const Eigen::Vector3f* p, const Eigen::Vector3f* q);

    /// Prepares for matching within a tolerance: each end is counted in cells of size @p tolerance from the
    /// box's minimum corner, by rounding to the nearest multiple of the tolerance on each axis. The box's
    /// three extents stand directly after @p boxMin by convention; they are not needed and not read.
    /// @return whether the edge takes part: false when both ends fall into one cell, when an end or the
    ///         box's corner is not finite, or when the tolerance is not a positive finite number. Such a
    ///         record equals nothing.
    bool update(const Eigen::Vector3f& a, const Eigen::Vector3f& b, const Eigen::Vector3f& boxMin,
                float tolerance);

    /// Whether both records describe the same edge, in either direction.
    bool isSameEdge(const MeshEigenEdgeInfo& other) const;

    /// Whether the other record describes the same edge, run from its end to its start: the normal case
    /// between neighbours of one winding. Of an edge without length both directions are true.
    bool isOppositeEdge(const MeshEigenEdgeInfo& other) const;

    /// A bucket in 0..tableSize-1; records that are the same edge, in either direction, give the same one.
    /// @param tableSize 1 or more
    int getHashValue(int tableSize) const;

private:
    using Key = std::array<double, 3>;

    static double RoundToNearest(double value);
    static void SetToCell(Key& key, const Eigen::Vector3f& point, const Eigen::Vector3f& boxMin,
                          double cellsPerUnit);
    static bool IsFinite(const Key& key);

    Key m_start{};
    Key m_end{};
};

// Matching takes these steps for every open edge of a file: they are worth being compiled into it.

// To the nearest whole number, halves to the even one. Adding 1.5 * 2^52 leaves no bits for a fraction; from
// 2^51 on the sum would lose more than that.
inline double MeshEigenEdgeInfo::RoundToNearest(double value)
{
    constexpr double kNoFraction = 6755399441055744.0;
    constexpr double kTooLarge = 2251799813685248.0;
    return std::fabs(value) < kTooLarge ? (value + kNoFraction) - kNoFraction : std::nearbyint(value);
}

// Cell numbers stay doubles: a far point over a small tolerance has a number that no integer holds. They are
// written in place: a key handed back whole would be read again before its three stores are through.
inline void MeshEigenEdgeInfo::SetToCell(Key& key, const Eigen::Vector3f& point,
                                         const Eigen::Vector3f& boxMin, double cellsPerUnit)
{
    for (int axis = 0; axis < 3; ++axis)
        key[std::size_t(axis)] =
            RoundToNearest((double(point[axis]) - double(boxMin[axis])) * cellsPerUnit) + 0.0;
}

// Floats over a float make doubles that cannot overflow: a number that is not finite came in as one.
inline bool MeshEigenEdgeInfo::IsFinite(const Key& key)
{
    return (key[0] + key[1] + key[2]) * 0.0 == 0.0;
}

inline bool MeshEigenEdgeInfo::update(const Eigen::Vector3f& a, const Eigen::Vector3f& b,
                                      const Eigen::Vector3f& boxMin, float tolerance)
{
    if (tolerance > 0 && std::isfinite(tolerance)) {
        const double cellsPerUnit = 1 / double(tolerance);
        SetToCell(m_start, a, boxMin, cellsPerUnit);
        SetToCell(m_end, b, boxMin, cellsPerUnit);
        if (IsFinite(m_start) && IsFinite(m_end) && m_start != m_end)
            return true;
    }
    m_start.fill(std::numeric_limits<double>::quiet_NaN());
    m_end.fill(std::numeric_limits<double>::quiet_NaN());
    return false;
}

inline bool MeshEigenEdgeInfo::isSameEdge(const MeshEigenEdgeInfo& other) const
{
    return isOppositeEdge(other) || (m_start == other.m_start && m_end == other.m_end);
}

inline bool MeshEigenEdgeInfo::isOppositeEdge(const MeshEigenEdgeInfo& other) const
{
    return m_start == other.m_end && m_end == other.m_start;
}

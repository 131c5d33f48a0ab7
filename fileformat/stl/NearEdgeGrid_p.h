#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "core/common/HashSeed_p.h"
#include "core/math/Vector3D.h"

namespace kr::stl {

struct EdgeEnds {
    Vector3D<float> start;
    Vector3D<float> end;
};

/// Finds edges whose two ends lie near those of another edge, in either direction.
///
/// When both ends differ by less than the reach on each axis, so do the middles. Edges are filed by the cell
/// that their middle lies in, cells being four times the reach wide: a middle near a cell's border can meet
/// partners from the cell beyond it, so one to eight cells are looked at. The latest edges of a cell come
/// first, and no more than kCandidatesInCell of them, so that a crowd in one cell costs linear time.
class NearEdgeGrid {
public:
    NearEdgeGrid(std::size_t edgeCount, float reach)
        : m_cellSize(4 * double(reach)),
          m_heads(BucketCount(edgeCount), kNone),
          m_next(edgeCount, kNone),
          m_ends(edgeCount)
    {}

    void Insert(std::size_t edge, const EdgeEnds& ends)
    {
        std::int32_t& head = m_heads[BucketOf(CellOf(MiddleOf(ends)))];
        m_next[edge] = head;
        head = std::int32_t(edge);
        m_ends[edge] = ends;
    }

    /// Calls @p visit with number and ends, as they were inserted, of the edges that may be near, and of some
    /// others.
    template<class Visit>
    void ForEachNear(const EdgeEnds& ends, Visit visit) const
    {
        const Cell middle = MiddleOf(ends);
        const Cell home = CellOf(middle);
        Cell beyond; // on each axis the neighbouring cell within reach, or the same cell
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const double within = middle[axis] / m_cellSize - home[axis];
            beyond[axis] = home[axis] + (within < 0.25 ? -1.0 : within > 0.75 ? 1.0 : 0.0);
        }
        for (unsigned sides = 0; sides < 8; ++sides) {
            Cell cell = home;
            bool isNew = true;
            for (std::size_t axis = 0; axis < 3; ++axis)
                if (sides >> axis & 1) {
                    cell[axis] = beyond[axis];
                    isNew &= beyond[axis] != home[axis];
                }
            if (isNew)
                VisitCell(cell, visit);
        }
    }

private:
    using Cell = std::array<double, 3>; // whole numbers, of any size

    static constexpr std::int32_t kNone = -1;
    static constexpr int kCandidatesInCell = 64;

    static std::size_t BucketCount(std::size_t edgeCount)
    {
        std::size_t count = 64;
        while (count < edgeCount)
            count *= 2;
        return count;
    }

    static Cell MiddleOf(const EdgeEnds& ends)
    {
        return {(double(ends.start.x) + double(ends.end.x)) / 2,
                (double(ends.start.y) + double(ends.end.y)) / 2,
                (double(ends.start.z) + double(ends.end.z)) / 2};
    }

    Cell CellOf(const Cell& middle) const
    {
        return {std::floor(middle[0] / m_cellSize) + 0.0, std::floor(middle[1] / m_cellSize) + 0.0,
                std::floor(middle[2] / m_cellSize) + 0.0};
    }

    std::size_t BucketOf(const Cell& cell) const
    {
        std::uint64_t hash = HashSeed();
        for (const double value : cell) {
            std::uint64_t bits;
            std::memcpy(&bits, &value, sizeof bits);
            hash = (hash ^ bits) * 0x9E3779B97F4A7C15u;
            hash ^= hash >> 32;
        }
        return std::size_t(hash) & (m_heads.size() - 1);
    }

    template<class Visit>
    void VisitCell(const Cell& cell, Visit& visit) const
    {
        int left = kCandidatesInCell;
        for (std::int32_t edge = m_heads[BucketOf(cell)]; edge != kNone && left > 0; --left) {
            visit(std::size_t(edge), m_ends[std::size_t(edge)]);
            edge = m_next[std::size_t(edge)];
        }
    }

    double m_cellSize;
    std::vector<std::int32_t> m_heads;
    std::vector<std::int32_t> m_next;
    std::vector<EdgeEnds> m_ends;
};

} // namespace kr::stl

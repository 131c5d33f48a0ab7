#include "core/mesh/VertexMerge_p.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>

#include <QRandomGenerator>

namespace kr {

namespace {

using Point = Vector3D<float>;

// The multipliers differ from run to run, so that no file can be made whose coordinates all meet in one
// bucket. What a merge yields does not depend on them.
struct HashSeeds {
    std::uint64_t first = QRandomGenerator::system()->generate64();
    std::uint64_t second = QRandomGenerator::system()->generate64();
    std::uint64_t third = QRandomGenerator::system()->generate64();
};

const HashSeeds& Seeds()
{
    static const HashSeeds kSeeds;
    return kSeeds;
}

__extension__ using Wide = unsigned __int128;

std::uint64_t MixedProduct(std::uint64_t a, std::uint64_t b)
{
    const Wide product = Wide(a) * b;
    return std::uint64_t(product) ^ std::uint64_t(product >> 64);
}

std::uint64_t HashOf(std::uint64_t a, std::uint64_t b, std::uint64_t c, const HashSeeds& seeds)
{
    return MixedProduct(MixedProduct(a ^ seeds.first, b ^ seeds.second) ^ c, seeds.third | 1);
}

template<class Bits, class Number>
std::uint64_t BitsOf(Number number)
{
    static_assert(sizeof(Bits) == sizeof(Number));
    const Number unsignedZero = number + Number(0); // turns -0 into 0
    Bits bits;
    std::memcpy(&bits, &unsignedZero, sizeof bits);
    return bits;
}

std::uint64_t HashOf(const Point& point, const HashSeeds& seeds)
{
    return HashOf(BitsOf<std::uint32_t>(point.x), BitsOf<std::uint32_t>(point.y),
                  BitsOf<std::uint32_t>(point.z), seeds);
}

bool IsFinite(const Point& point)
{
    return std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
}

std::size_t PowerOfTwoFrom(std::size_t count)
{
    std::size_t power = 16;
    while (power < count)
        power *= 2;
    return power;
}

// Walks the vertices in order, packs those that `find` knows no earlier vertex for, and numbers all.
// find(point, kept) gives the number of the vertex that the point joins, or `kept` after taking it in as that
// one.
template<class Find>
VertexNumbers Merge(std::vector<Point>& vertices, Find find)
{
    VertexNumbers numbers(vertices.size());
    std::size_t kept = 0;
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        const Point point = vertices[i];
        const std::size_t number = IsFinite(point) ? find(point, kept) : kept;
        if (number == kept)
            vertices[kept++] = point;
        numbers[i] = int(number);
    }
    vertices.resize(kept);
    return numbers;
}

// An open table of vertex numbers. A slot keeps part of the hash beside the number, so that a slot of another
// vertex is nearly always passed by without looking at that vertex.
class EqualPointTable {
public:
    explicit EqualPointTable(const std::vector<Point>& vertices)
        : m_vertices(vertices), m_slots(PowerOfTwoFrom(2 * vertices.size())), m_mask(m_slots.size() - 1)
    {}

    std::size_t FindOrInsert(const Point& point, std::size_t newNumber)
    {
        const std::uint64_t hash = HashOf(point, m_seeds);
        const auto mark = std::uint32_t(hash >> 32);
        for (std::size_t at = hash & m_mask;; at = (at + 1) & m_mask) {
            Slot& slot = m_slots[at];
            if (slot.numberPlusOne == 0) {
                slot = {mark, std::uint32_t(newNumber + 1)};
                return newNumber;
            }
            if (slot.mark == mark && m_vertices[slot.numberPlusOne - 1] == point)
                return slot.numberPlusOne - 1;
        }
    }

private:
    struct Slot {
        std::uint32_t mark;
        std::uint32_t numberPlusOne;
    };

    const std::vector<Point>& m_vertices;
    const HashSeeds& m_seeds = Seeds();
    Scratch<Slot> m_slots;
    std::size_t m_mask;
};

// Kept vertices in a grid of cubes four distances wide. All that lies within the distance of a point is in
// the cells of the corners of the box around it: 1 to 8 cells, 3.4 on average. Kept vertices lie further
// apart than the distance, so a cell holds a bounded number of them. Cells share a bucket now and then; the
// distance decides alone.
class CloseGrid {
public:
    CloseGrid(const std::vector<Point>& vertices, double distance)
        : m_vertices(vertices),
          m_distance(distance),
          m_cellSize(4 * distance),
          m_firsts(PowerOfTwoFrom(vertices.size())),
          m_nexts(vertices.size()),
          m_mask(m_firsts.size() - 1)
    {}

    std::size_t FindOrInsert(const Point& point, std::size_t newNumber)
    {
        const std::array<Span, 3> spans = {SpanAround(point.x), SpanAround(point.y), SpanAround(point.z)};
        std::size_t earliest = newNumber;
        for (const double x : spans[0])
            for (const double y : spans[1])
                for (const double z : spans[2])
                    earliest = EarliestIn(BucketOf(x, y, z), point, earliest);
        if (earliest == newNumber)
            Insert(point, newNumber);
        return earliest;
    }

private:
    // The one or two cell numbers along an axis. They stay doubles: a far point over a small distance has a
    // number that no integer holds. The distance is a quarter of a cell, so that rounding never leaves a
    // third number in between.
    struct Span {
        std::array<double, 2> cells;

        const double* begin() const { return cells.data(); }
        const double* end() const { return cells.data() + (cells[0] == cells[1] ? 1 : 2); }
    };

    double CellOf(double coordinate) const { return std::floor(coordinate / m_cellSize); }

    Span SpanAround(float coordinate) const
    {
        return {{CellOf(double(coordinate) - m_distance), CellOf(double(coordinate) + m_distance)}};
    }

    std::size_t BucketOf(double x, double y, double z) const
    {
        return HashOf(BitsOf<std::uint64_t>(x), BitsOf<std::uint64_t>(y), BitsOf<std::uint64_t>(z), m_seeds) &
               m_mask;
    }

    std::size_t EarliestIn(std::size_t bucket, const Point& point, std::size_t earliest) const
    {
        for (std::uint32_t at = m_firsts[bucket]; at != 0; at = m_nexts[at - 1])
            if (at - 1 < earliest && AreClose(m_vertices[at - 1], point))
                earliest = at - 1;
        return earliest;
    }

    bool AreClose(const Point& a, const Point& b) const
    {
        const double x = double(a.x) - double(b.x), y = double(a.y) - double(b.y),
                     z = double(a.z) - double(b.z);
        return x * x + y * y + z * z <= m_distance * m_distance;
    }

    void Insert(const Point& point, std::size_t number)
    {
        const std::size_t bucket =
            BucketOf(CellOf(double(point.x)), CellOf(double(point.y)), CellOf(double(point.z)));
        m_nexts[number] = m_firsts[bucket];
        m_firsts[bucket] = std::uint32_t(number + 1);
    }

    const std::vector<Point>& m_vertices;
    const HashSeeds& m_seeds = Seeds();
    double m_distance;
    double m_cellSize;
    Scratch<std::uint32_t> m_firsts; // by bucket: number + 1 of the vertex last taken in, 0 for none
    Scratch<std::uint32_t> m_nexts;  // by vertex: number + 1 of the one taken in before it
    std::size_t m_mask;
};

// No two finite points lie further apart than this; an infinite distance would leave the grid without cells.
constexpr double kLargestDistance = 1.2e39;

} // namespace

VertexNumbers MergeEqualVertices(std::vector<Point>& vertices)
{
    EqualPointTable table(vertices);
    return Merge(vertices,
                 [&](const Point& point, std::size_t kept) { return table.FindOrInsert(point, kept); });
}

VertexNumbers MergeCloseVertices(std::vector<Point>& vertices, float distance)
{
    if (!(distance > 0))
        return MergeEqualVertices(vertices);
    CloseGrid grid(vertices, std::min(double(distance), kLargestDistance));
    return Merge(vertices,
                 [&](const Point& point, std::size_t kept) { return grid.FindOrInsert(point, kept); });
}

} // namespace kr

#include "fileformat/stl/CornerNumbers_p.h"

#include <algorithm>
#include <cstring>

#include "core/common/HashSeed_p.h"

// Open addressing over 8-byte slots. A slot holds a position's number and half of its hash, so that the
// position itself is hardly ever fetched in vain. In a large file each look-up would wait for memory twice,
// for the slot and for the position that it names; so the corners go through in blocks, three stages deep:
//
//   block n + 2   hash the corners, ask for their slots
//   block n + 1   read the slots, ask for the positions that they name
//   block n       look up and number
//
// A table that grows in between makes the requests useless, never wrong.

namespace kr::stl {

namespace {

constexpr std::size_t kBlock = 64;

using Slot = std::uint64_t; // high half: high half of the hash, low half: number + 1; 0 is empty

std::uint64_t HashOf(const Vector3D<float>& point, std::uint64_t seed)
{
    // Adding 0 turns -0 into 0, so that equal numbers are equal bits.
    const Vector3D<float> canonical(point.x + 0.0f, point.y + 0.0f, point.z + 0.0f);
    std::uint32_t bits[3];
    std::memcpy(bits, &canonical, sizeof bits);
    std::uint64_t hash = ((std::uint64_t(bits[0]) << 32 | bits[1]) ^ seed) * 0x9E3779B97F4A7C15u;
    hash ^= hash >> 29;
    hash = (hash + bits[2]) * 0xBF58476D1CE4E5B9u;
    return hash ^ (hash >> 32);
}

class PositionTable {
public:
    explicit PositionTable(std::size_t cornerCount) : m_positions(cornerCount), m_seed(HashSeed())
    {
        // A closed mesh has one position for every six corners.
        std::size_t capacity = 64;
        while (capacity < cornerCount / 3)
            capacity *= 2;
        Allocate(capacity);
    }

    std::uint64_t Hash(const Vector3D<float>& point) const { return HashOf(point, m_seed); }

    void PrefetchSlot(std::uint64_t hash) const { __builtin_prefetch(&m_slots[hash & m_mask]); }
    void PrefetchPosition(std::uint64_t hash) const
    {
        const std::uint32_t next = std::uint32_t(m_slots[hash & m_mask]);
        __builtin_prefetch(&m_positions[next - (next != 0)]);
    }

    std::int32_t Number(const Vector3D<float>& point, std::uint64_t hash)
    {
        for (std::size_t at = hash & m_mask;; at = (at + 1) & m_mask) {
            const Slot slot = m_slots[at];
            if (slot == 0)
                return Append(point, hash, at);
            const std::uint32_t number = std::uint32_t(slot) - 1;
            if (slot >> 32 == hash >> 32 && IsAt(m_positions[number].point, point)) {
                ++m_positions[number].cornerCount;
                return std::int32_t(number);
            }
        }
    }

    void MakeRoom(std::size_t more)
    {
        if ((m_used + more) * 4 > m_slots.size() * 3)
            Grow();
    }

    PositionList Release() { return {std::move(m_positions), m_count, m_hasMixedZeros}; }

private:
    // Points in the table are finite, so equal bits are equal numbers.
    bool IsAt(const Vector3D<float>& position, const Vector3D<float>& point)
    {
        if (std::memcmp(&position, &point, sizeof point) == 0)
            return true;
        const bool isEqual = position == point;
        m_hasMixedZeros |= isEqual;
        return isEqual;
    }

    std::int32_t Append(const Vector3D<float>& point, std::uint64_t hash, std::size_t at)
    {
        const std::size_t number = m_count++;
        m_positions[number] = {point, 1};
        if (IsFinite(point)) {
            m_slots[at] = SlotOf(hash, number);
            ++m_used;
        }
        return std::int32_t(number);
    }

    static Slot SlotOf(std::uint64_t hash, std::size_t number) { return hash >> 32 << 32 | (number + 1); }

    void Allocate(std::size_t capacity)
    {
        m_slots = Scratch<Slot>(capacity);
        m_mask = capacity - 1;
    }

    void Grow()
    {
        Allocate(m_slots.size() * 2);
        for (std::size_t number = 0; number < m_count; ++number) {
            if (!IsFinite(m_positions[number].point))
                continue;
            const std::uint64_t hash = Hash(m_positions[number].point);
            std::size_t at = hash & m_mask;
            while (m_slots[at] != 0)
                at = (at + 1) & m_mask;
            m_slots[at] = SlotOf(hash, number);
        }
    }

    Scratch<Slot> m_slots;
    Scratch<Position> m_positions;
    std::size_t m_mask = 0;
    std::size_t m_used = 0;
    std::size_t m_count = 0;
    std::uint64_t m_seed;
    bool m_hasMixedZeros = false;
};

// One block of corners on its way through the stages.
struct Block {
    std::size_t first = 0;
    std::size_t size = 0;
    std::uint64_t hashes[kBlock];
};

void HashBlock(const PositionTable& table, const Vector3D<float>* corners, Block& block)
{
    for (std::size_t i = 0; i < block.size; ++i)
        block.hashes[i] = table.Hash(corners[block.first + i]);
    for (std::size_t i = 0; i < block.size; ++i)
        table.PrefetchSlot(block.hashes[i]);
}

void PrefetchBlock(const PositionTable& table, const Block& block)
{
    for (std::size_t i = 0; i < block.size; ++i)
        table.PrefetchPosition(block.hashes[i]);
}

void NumberBlock(PositionTable& table, const Vector3D<float>* corners, const Block& block,
                 std::int32_t* numbers)
{
    table.MakeRoom(block.size);
    for (std::size_t i = 0; i < block.size; ++i)
        numbers[block.first + i] = table.Number(corners[block.first + i], block.hashes[i]);
}

} // namespace

PositionList NumberPositions(const Vector3D<float>* corners, std::size_t facetCount, TriangleFace* numbers)
{
    const std::size_t cornerCount = 3 * facetCount;
    const std::size_t blockCount = (cornerCount + kBlock - 1) / kBlock;
    // A vector's faces are packed, so all corners' numbers stand in one row.
    std::int32_t* const cornerNumbers = facetCount == 0 ? nullptr : numbers->v;
    PositionTable table(cornerCount);
    Block blocks[3];
    for (std::size_t n = 0; n < blockCount + 2; ++n) {
        if (n < blockCount) {
            Block& block = blocks[n % 3];
            block.first = n * kBlock;
            block.size = std::min(kBlock, cornerCount - block.first);
            HashBlock(table, corners, block);
        }
        if (n >= 1 && n - 1 < blockCount)
            PrefetchBlock(table, blocks[(n - 1) % 3]);
        if (n >= 2)
            NumberBlock(table, corners, blocks[(n - 2) % 3], cornerNumbers);
    }
    return table.Release();
}

} // namespace kr::stl

#pragma once

#include <cstddef>
#include <new>

#include <boost/pool/pool.hpp>

#include "core/common/LargePages_p.h"
#include "core/math/MeshEigenEdgeInfo.h"

namespace kr::stl {

/// The number of buckets for a table of @p wanted or a few more: a prime, about twice the one before it.
inline int BucketCountFor(std::size_t wanted)
{
    constexpr int kPrimes[] = {53,        97,        193,       389,       769,       1543,     3079,
                               6151,      12289,     24593,     49157,     98317,     196613,   393241,
                               786433,    1572869,   3145739,   6291469,   12582917,  25165843, 50331653,
                               100663319, 201326611, 402653189, 805306457, 1610612741};
    for (const int prime : kPrimes)
        if (std::size_t(prime) >= wanted)
            return prime;
    return kPrimes[sizeof kPrimes / sizeof kPrimes[0] - 1];
}

/// Unpaired edges, by hash. Buckets are lists with the latest edge first. The nodes come from a pool and go
/// with the table: a million edges must not cost a million allocations.
class EdgeTable {
public:
    explicit EdgeTable(std::size_t edgeCount)
        : m_bucketCount(BucketCountFor(2 * edgeCount)),
          m_buckets(std::size_t(m_bucketCount)),
          m_pool(sizeof(Node), 32)
    {}

    /// Takes the latest edge out of the table that is the same as @p edge and not of its facet; when there is
    /// none, puts @p edge in.
    /// @return whether one was found; it is then copied to @p partner
    bool TakePartnerOrInsert(const MeshEigenEdgeInfo& edge, MeshEigenEdgeInfo& partner)
    {
        Node*& bucket = m_buckets[std::size_t(edge.getHashValue(m_bucketCount))];
        for (Node** link = &bucket; *link; link = &(*link)->next) {
            Node* const node = *link;
            if (node->edge.facet == edge.facet || !node->edge.isSameEdge(edge))
                continue;
            partner = node->edge;
            *link = node->next;
            m_pool.free(node);
            return true;
        }
        void* const memory = m_pool.malloc();
        if (!memory)
            throw std::bad_alloc();
        bucket = new (memory) Node{edge, bucket};
        return false;
    }

private:
    struct Node {
        MeshEigenEdgeInfo edge;
        Node* next;
    };
    static_assert(std::is_trivially_destructible_v<Node>, "the pool drops its nodes without destroying them");

    int m_bucketCount;
    Scratch<Node*> m_buckets;
    boost::pool<> m_pool;
};

} // namespace kr::stl

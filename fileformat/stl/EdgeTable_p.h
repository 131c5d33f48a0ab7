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
    /// @param edgeCount  how many edges will come; at most half of them wait in the table at once when most
    ///                   find a partner, and a table that stays in the cache serves them faster
    explicit EdgeTable(std::size_t edgeCount)
        : m_bucketCount(BucketCountFor(edgeCount / 2)),
          m_buckets(std::size_t(m_bucketCount)),
          m_pool(sizeof(Node), 32)
    {}

    int BucketOf(const MeshEigenEdgeInfo& edge) const { return edge.getHashValue(m_bucketCount); }
    void Prefetch(int bucket) const { __builtin_prefetch(&m_buckets[std::size_t(bucket)]); }

    struct Partner {
        int number = -1; ///< -1: none was found
        bool isOpposite = false;
    };
    /// Takes the latest edge out of the table that is the same as @p edge and not of its facet; when there is
    /// none, puts @p edge in.
    /// @param bucket  BucketOf(edge)
    /// @param number  what the caller calls the edge
    Partner TakePartnerOrInsert(const MeshEigenEdgeInfo& edge, int bucket, int number)
    {
        Node*& head = m_buckets[std::size_t(bucket)].head;
        for (Node** link = &head; *link; link = &(*link)->next) {
            Node* const node = *link;
            if (node->edge.facet == edge.facet || !node->edge.isSameEdge(edge))
                continue;
            const Partner partner{node->number, edge.isOppositeEdge(node->edge)};
            *link = node->next;
            m_pool.free(node);
            return partner;
        }
        void* const memory = m_pool.malloc();
        if (!memory)
            throw std::bad_alloc();
        head = new (memory) Node{edge, number, head};
        return {};
    }

private:
    struct Node {
        MeshEigenEdgeInfo edge;
        int number;
        Node* next;
    };
    struct Bucket {
        Node* head;
    };
    static_assert(std::is_trivially_destructible_v<Node>, "the pool drops its nodes without destroying them");

    int m_bucketCount;
    Scratch<Bucket> m_buckets;
    boost::pool<> m_pool;
};

} // namespace kr::stl

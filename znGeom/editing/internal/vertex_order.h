/// The order of vertices by position, normal and UV.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/threads/radix_sort.h"

namespace znGeom::internal {

/// One `float` per vertex to compare by: `values[stride * vertex]`.
struct VertexKey
{
    const float* values;
    int stride;

    float operator()(int vertex) const { return values[static_cast<std::ptrdiff_t>(stride) * vertex]; }
};

/// The vertices sorted by a list of keys, the most significant first. A NaN lies beyond the infinities and is the same
/// as nothing, itself included.
struct VertexOrder
{
    int count;
    std::unique_ptr<znUtil::KeyedIndex[]> sorted; ///< `index` is the vertex
    std::unique_ptr<std::uint8_t[]>
        startsRun; ///< per place: 0 where all keys are the same as those of the place before

    explicit VertexOrder(int numVertices)
        : count(numVertices), sorted(std::make_unique_for_overwrite<znUtil::KeyedIndex[]>(static_cast<size_t>(count))),
          startsRun(std::make_unique_for_overwrite<std::uint8_t[]>(static_cast<size_t>(count)))
    {}
    int vertex(int place) const { return sorted[static_cast<size_t>(place)].index; }
    bool sameAsBefore(int place) const { return startsRun[static_cast<size_t>(place)] == 0; }
};

/// Sorts `count` vertices; those with all keys the same stay in ascending order.
///
/// Key by key: a run of vertices that are the same so far is sorted by the next key and falls into shorter runs. Large
/// runs, the first of which holds all vertices, take a radix sort on the whole pool; small ones are spread over its
/// threads and sorted by all their keys at once. The result does not depend on the number of threads.
VertexOrder sortVertices(int count, const zn::vector<VertexKey>& keys, znUtil::ThreadPool& pool);

} // namespace znGeom::internal

/// Many queries for nearest triangles at once.
#pragma once

#include "znGeom/foundation/threads/thread_pool.h"
#include "znGeom/spatial/queries/internal/closest_engine.h"

namespace znGeom::internal {

/// The queries, and where the answers go, in the same order.
struct ClosestQuestions
{
    const znLinear::Point* points;
    int count;
    MeshCoord* places; ///< may be null
    double* distances; ///< may be null
};

/// The answers of `ClosestEngine` to each point, taken in an order in which consecutive points lie close together, so
/// that each finds what it needs still cached from the one before.
/// \param progress  may be null
/// \return false after a cancel
bool computeAll(const ClosestIndex& index, const ClosestQuestions& questions, znUtil::Progress* progress,
                znUtil::ThreadPool& pool);

} // namespace znGeom::internal

/// Many questions for nearest triangles at once.
#pragma once

#include "znGeom/foundation/threads/thread_pool.h"
#include "znGeom/spatial/internal/closest_engine.h"

namespace znGeom::internal {

/// What is asked, and where the answers go, in the same order.
struct ClosestQuestions
{
    const znLinear::Point* points;
    int count;
    MeshCoord* places; ///< may be null
    double* distances; ///< may be null
};

/// The answers of `ClosestEngine` to each point, taken in an order in which points that follow each other lie close
/// together, so that one finds what it needs where the one before left it.
/// \param progress  may be null
/// \return false after a cancel
bool computeAll(const ClosestIndex& index, const ClosestQuestions& questions, znUtil::Progress* progress,
                znUtil::ThreadPool& pool);

} // namespace znGeom::internal

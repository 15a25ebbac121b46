/// `znGeom::PolylineBBoxCache`: the boxes of the segments of a polyline.
#pragma once

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/linear/range.h"
#include "znGeom/planar/polylines/polyline.h"

namespace znGeom {

/// Boxes that are made when the first is asked for, and kept: for many questions to one polyline, which has to outlive
/// the cache and must not change. Not to be asked for the first time by two threads at once.
class ZNGEOM_API PolylineBBoxCache
{
public:
    PolylineBBoxCache() = default;
    PolylineBBoxCache(const Polyline& line) : m_line(&line) {}

    /// Takes a polyline before the first question; boxes that were made stay those of the polyline before.
    void initialize(const Polyline& line) { m_line = &line; }

    /// The box of vertices i and i + 1.
    const znLinear::Range3d& getSegmentBBox(int i);

private:
    const Polyline* m_line = nullptr;
    zn::vector<znLinear::Range3d> m_boxes;
};

} // namespace znGeom

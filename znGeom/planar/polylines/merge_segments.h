/// `znGeom::MergeSegments`: loose segments joined into polylines.
#pragma once

#include <deque>

#include "znGeom/foundation/containers/reference.h"
#include "znGeom/foundation/containers/vector.h"
#include "znGeom/planar/polylines/polyline.h"
#include "znGeom/planar/polylines/segment.h"

namespace znGeom {

/// Joins segments that come in no order, such as the cuts of a plane through triangles, where their ends are near each
/// other. Keeps no state.
///
///     zn::vector<zn::Reference<Polyline>> outlines;
///     MergeSegments()(outlines, cuts, 1e-5f);
class ZNGEOM_API MergeSegments
{
public:
    MergeSegments() = default;

    /// \param lines      what was in it goes. Each line begins as the first segment that is in none yet, which grows at
    ///                   its start as long as it can, then at its end; its parameters are 0, 1, 2, ... A line that
    ///                   comes back to where it began ends in a copy of its first vertex, or a point near it
    /// \param segments   of any direction; one on which a line lies already, the other way round, is left out
    /// \param tolerance  world units. A line goes on with a segment that has an end no farther than this along each
    ///                   axis, and one whose squared distance is below twice the tolerance: of several, the one with
    ///                   the nearest end, the first of equally near ones. The line keeps its own point at the joint.
    ///                   With 0 or less, or not a number, nothing is joined
    ///
    /// Segments with a coordinate that is not finite are kept, but not joined there. Practically linear in the segments
    /// and in what lies within the tolerance of their ends: a tolerance above their length is slow. Runs on the calling
    /// thread.
    void operator()(zn::vector<zn::Reference<Polyline>>& lines, const std::deque<Segment>& segments, float tolerance);
};

} // namespace znGeom

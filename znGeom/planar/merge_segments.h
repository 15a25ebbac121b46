/// `znGeom::MergeSegments`: polylines from loose segments.
#pragma once

#include <deque>

#include "znGeom/foundation/containers/reference.h"
#include "znGeom/foundation/containers/vector.h"
#include "znGeom/planar/polyline.h"
#include "znGeom/planar/segment.h"

namespace znGeom {

/// Joins segments in any order and direction to polylines where their ends are near.
///
///     zn::vector<zn::Reference<Polyline>> lines;
///     MergeSegments()(lines, segments, 1e-4f);
class ZNGEOM_API MergeSegments
{
public:
    /// \param lines      receives the polylines, each begun with the first segment not used before; their parameters
    ///                   count the vertices. What it held is dropped
    /// \param tolerance  in world units; above 0, or nothing is joined
    ///
    /// A line grows at the front until nothing goes on there, then at the back. It goes on with the segment that has an
    /// end nearest to its own among those in the box of half the size `tolerance` round it, the first one of equals;
    /// that end is dropped, and the line keeps its own. Their squared distance has to be below twice the tolerance,
    /// which bounds a tolerance of more than 2/3.
    ///
    /// A segment that leads back along the line's last one, both ends to within a hundredth of the shorter of the two,
    /// is a copy: it is dropped. So every segment is in one line, or a copy of one that is. A closed line ends with the
    /// place where it began, or what is within the tolerance of it. Ends that are not finite are never joined.
    ///
    /// Linear in the segments as long as few ends are within the tolerance of one another. Results do not depend on
    /// hashing. Runs on the calling thread.
    void operator()(zn::vector<zn::Reference<Polyline>>& lines, const std::deque<Segment>& segments,
                    float tolerance) const;
};

} // namespace znGeom

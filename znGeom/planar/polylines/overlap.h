/// Where two polylines run beside each other.
#pragma once

#include "znGeom/foundation/linear/range.h"
#include "znGeom/planar/polylines/polyline.h"
#include "znGeom/planar/polylines/polyline_bbox_cache.h"

namespace znGeom {

/// Finds the longest stretch along which `a` stays within a tolerance of `b`.
///
/// \param tolerance      above 0, in world units
/// \param endTolerance   where the stretch begins or ends less than this far from an end of its polyline, it becomes
///                       that end
/// \param sameDirection  a stretch has to run the same way on both; one of a single segment of `a` may run against `b`
///                       still, and says so
/// \param rangeA, rangeB the stretch, as parameters of each polyline
/// \param sum            the length of what lies within the tolerance, along `a`
/// \param maxDistance    the greatest distance at the ends of the pieces, one for each segment of `a`
/// \param length         along `b`, before ends were moved
/// \param reversed       whether the stretch begins against the direction of `b`
/// \return false where there is none, with all results unchanged; for polylines of less than two vertices too
///
/// A stretch goes on over segments of `a` that follow one another for as long as each has a part within the tolerance,
/// and the parts of `b` beside them leave no gap of more than a tenth of the domain of `b`. Of a part of `b` whose
/// parameters span less than 1e-6 the length counts as 0. Of equally long stretches the first along `a` is taken.
/// Distances are measured to the infinite line of a segment of `b` and bounded by its ends, so that the outside of a
/// bend is rounded off.
///
/// Near n log n for lines whose neighbours along the line are neighbours in space. Runs on the calling thread.
ZNGEOM_API bool overlap(const Polyline& a, const Polyline& b, double tolerance, double endTolerance, bool sameDirection,
                        znLinear::Range1d& rangeA, znLinear::Range1d& rangeB, double& sum, double& maxDistance,
                        double& length, bool& reversed);

/// The same for many calls with one `b`.
/// \param boxes  those of `b`
ZNGEOM_API bool overlap(const Polyline& a, const Polyline& b, PolylineBBoxCache& boxes, double tolerance,
                        double endTolerance, bool sameDirection, znLinear::Range1d& rangeA, znLinear::Range1d& rangeB,
                        double& sum, double& maxDistance, double& length, bool& reversed);

} // namespace znGeom

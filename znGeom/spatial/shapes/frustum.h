/// `znGeom::Frustum`: the volume that a view or a pick rectangle sees.
#pragma once

#include "znGeom/foundation/linear/line.h"
#include "znGeom/foundation/linear/plane.h"
#include "znGeom/foundation/machine/export.h"

namespace znGeom {

/// A convex body of eight corners and six planes. Corners 0 to 3 run around the near cap, corners 4 to 7 around the far
/// one, and corner i is joined to corner i + 4. The normals of the planes point outward.
class ZNGEOM_API Frustum
{
public:
    znLinear::Point corners[8];
    znLinear::Plane planes[6];

    /// All corners at the origin, no valid plane.
    Frustum() = default;
    Frustum(const znLinear::Point (&corners_)[8], const znLinear::Plane (&planes_)[6]);
    /// With the planes through its faces: the near cap, the far cap, then the sides from corner 0, 1, 2 and 3. The near
    /// cap may be a single point, as in a pyramid; its plane then faces along the view direction.
    explicit Frustum(const znLinear::Point (&corners_)[8]);

    /// From the middle of the near cap to the middle of the far one: the order in which a traversal runs.
    znLinear::Vector getVector() const;
    /// The line through the middles of the caps, from the near one on: the pick ray.
    znLinear::Line getRay() const;
};

} // namespace znGeom

/// What the tests of the spatial types share.
#pragma once

#include "tests/support/random.h"
#include "znGeom/spatial/spatial_types.h"

namespace znTest {

inline znGeom::BoundingBox boxOf(const znLinear::PointFlt& a, const znLinear::PointFlt& b)
{
    znGeom::BoundingBox box;
    box.extend(a), box.extend(b);
    return box;
}

inline znLinear::PointFlt pointFlt(Random& random, double limit = 1.0)
{
    return znLinear::PointFlt(random.point(limit));
}

/// Whole numbers from -4 to 4, times `step`.
inline znLinear::PointFlt gridPoint(Random& random, int step)
{
    const int x = random.below(9) - 4, y = random.below(9) - 4, z = random.below(9) - 4;
    return {float(step * x), float(step * y), float(step * z)};
}

/// A cull distance for as long as it lives.
struct CullDistance
{
    explicit CullDistance(double distance) { znGeom::setBackfaceCullDistance(distance); }
    ~CullDistance() { znGeom::setBackfaceCullDistance(1e-06); }
};

} // namespace znTest

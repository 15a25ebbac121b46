#include "znGeom/spatial/queries/internal/nearest_measure.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "znGeom/foundation/machine/clones.h"
#include "znGeom/foundation/mesh/mesh_coord.h"
#include "znGeom/spatial/trees/internal/triangle_bounds.h"

namespace znGeom::internal {

namespace {

constexpr int lanes = 4;

/// Some triangles and their nearest places, component by component.
struct Batch
{
    double corners[9][lanes];
    double weights[3][lanes];
    double distance2[lanes]; ///< not a number where the triangle has to be measured in another way
};

struct Vec
{
    double x, y, z;
};
ZNGEOM_INLINE Vec operator-(const Vec& a, const Vec& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
ZNGEOM_INLINE Vec operator+(const Vec& a, const Vec& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
ZNGEOM_INLINE Vec operator*(const Vec& v, double t) { return {v.x * t, v.y * t, v.z * t}; }
ZNGEOM_INLINE double dot(const Vec& a, const Vec& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
ZNGEOM_INLINE Vec cross(const Vec& a, const Vec& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

/// The place on the side from `start` to `end`, clamped: its parameter, and the squared distance.
ZNGEOM_INLINE double onSide(const Vec& p, const Vec& start, const Vec& end, double& distance2)
{
    const Vec along = end - start;
    double t = dot(p - start, along) / dot(along, along);
    t = t < 0.0 ? 0.0 : t;
    t = 1.0 < t ? 1.0 : t;
    const Vec gap = p - (start + along * t);
    distance2 = dot(gap, gap);
    return t;
}

/// The squared distance of p from the place with these weights.
ZNGEOM_INLINE double distanceOf(const Vec& p, const Vec* corners, double w0, double w1, double w2)
{
    const Vec place = (Vec{0, 0, 0} + corners[0] * w0 + corners[1] * w1) + corners[2] * w2;
    const Vec gap = p - place;
    return dot(gap, gap);
}

/// What `MeshCoordBase::projectBase` does with a triangle that has an area, operation by operation, without branches.
ZNGEOM_INLINE void measureLane(Batch& batch, const Vec& p, int lane)
{
    const auto cornerAt = [&](int i) {
        return Vec{batch.corners[i][lane], batch.corners[i + 1][lane], batch.corners[i + 2][lane]};
    };
    const Vec corners[3] = {cornerAt(0), cornerAt(3), cornerAt(6)};
    const Vec ab = corners[1] - corners[0], ac = corners[2] - corners[0], ap = p - corners[0];
    const Vec normal = cross(ab, ac);
    const double area2 = dot(normal, normal);
    const double within1 = dot(cross(ap, ac), normal) / area2;
    const double within2 = dot(cross(ab, ap), normal) / area2;
    const double within0 = 1.0 - within1 - within2;

    double d0, d1, d2;
    const double t0 = onSide(p, corners[0], corners[1], d0);
    const double t1 = onSide(p, corners[1], corners[2], d1);
    const double t2 = onSide(p, corners[2], corners[0], d2);
    double w0 = 1.0 - t0, w1 = t0, w2 = 0.0;
    const bool takes1 = d1 < d0;
    w0 = takes1 ? 0.0 : w0, w1 = takes1 ? 1.0 - t1 : w1, w2 = takes1 ? t1 : w2;
    const bool takes2 = d2 < (takes1 ? d1 : d0);
    w0 = takes2 ? t2 : w0, w1 = takes2 ? 0.0 : w1, w2 = takes2 ? 1.0 - t2 : w2;

    const double onSides = distanceOf(p, corners, w0, w1, w2);
    const double onPlane = distanceOf(p, corners, within0, within1, within2);
    const bool isOutside = (within0 < 0) | (within1 < 0) | (within2 < 0);
    const bool takesSide = isOutside | (onSides < onPlane);
    batch.weights[0][lane] = takesSide ? w0 : within0;
    batch.weights[1][lane] = takesSide ? w1 : within1;
    batch.weights[2][lane] = takesSide ? w2 : within2;
    constexpr double most = std::numeric_limits<double>::max(), none = std::numeric_limits<double>::quiet_NaN();
    const bool hasPlane = (area2 > 0) & (area2 <= most) & (std::fabs(within0) <= most);
    batch.distance2[lane] = hasPlane ? (takesSide ? onSides : onPlane) : none;
}

ZNGEOM_CLONES void measureLanes(Batch& batch, const double* point)
{
    const Vec p{point[0], point[1], point[2]};
    for (int lane = 0; lane < lanes; ++lane) measureLane(batch, p, lane);
}

/// The plain way, for any triangle; false when it has no place.
bool measurePlainly(const Batch& batch, int lane, const znLinear::Point& query, MeasuredTriangle& result)
{
    znLinear::Point corners[3];
    for (int i = 0; i < 9; ++i) corners[i / 3][i % 3] = batch.corners[i][lane];
    MeshCoordBase coord;
    if (!coord.projectBase(corners[0], corners[1], corners[2], query)) return false;
    std::copy_n(coord.weights, 3, result.weights);
    result.distance2 = distance2(query, coord.evaluateBase(corners));
    return true;
}

void gather(const PackedTriangles& tree, const NearestCandidates::Candidate* candidates, int count, Batch& batch)
{
    for (int lane = 0; lane < lanes; ++lane) {
        const int place = candidates[lane < count ? lane : 0].place;
        for (int i = 0; i < 9; ++i) batch.corners[i][lane] = tree.cornerAt(place, i);
    }
}

} // namespace

int measureCandidates(const PackedTriangles& tree, const NearestCandidates& candidates, const znLinear::Point& query,
                      std::vector<MeasuredTriangle>& results)
{
    if (results.size() < static_cast<size_t>(candidates.count()))
        results.resize(2 * static_cast<size_t>(candidates.count()));
    MeasuredTriangle* next = results.data();
    const NearestCandidates::Candidate* from = candidates.begin();
    for (int left = candidates.count(); left > 0; left -= lanes, from += lanes) {
        const int count = std::min(left, lanes);
        Batch batch;
        gather(tree, from, count, batch);
        measureLanes(batch, &query.x);
        for (int lane = 0; lane < count; ++lane) {
            next->place = from[lane].place;
            next->distance2 = batch.distance2[lane];
            for (int i = 0; i < 3; ++i) next->weights[i] = batch.weights[i][lane];
            if (std::isnan(next->distance2) && !measurePlainly(batch, lane, query, *next)) continue;
            ++next;
        }
    }
    return static_cast<int>(next - results.data());
}

} // namespace znGeom::internal

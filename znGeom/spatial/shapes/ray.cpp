#include "znGeom/spatial/shapes/ray.h"

#include "znGeom/foundation/linear/tolerance.h"

namespace znGeom {

using namespace znLinear;

namespace {

double backfaceCullDistance = 1e-06;

/// Determinants of at most this magnitude mean parallel.
constexpr double parallelDeterminant = 1e-6;

Vector edge(const float* from, const float* to)
{
    return {double(to[0] - from[0]), double(to[1] - from[1]), double(to[2] - from[2])};
}

/// The products of the test before any division.
struct EdgeTest
{
    Vector d, e1, e2, s, p;
    double det;

    EdgeTest(const double* direction, const float* origin, const float* p0, const float* p1, const float* p2)
        : d(direction), e1(edge(p0, p1)), e2(edge(p0, p2)), s(edge(p0, origin)), p(cross(d, e2)), det(dot(e1, p))
    {}

    /// Whether the line passes within the triangle whose determinant has the sign of `sign`; sets the results if so.
    bool inside(double sign, double& t, double& u, double& v) const
    {
        const double bound = sign * det;
        const double uDet = sign * dot(s, p);
        if (uDet < 0 || uDet > bound) return false;
        const Vector q = cross(s, e1);
        const double vDet = sign * dot(d, q);
        if (vDet < 0 || uDet + vDet > bound) return false;
        t = dot(e2, q) / det;
        u = uDet / bound;
        v = vDet / bound;
        return true;
    }
};

/// The larger, the smaller; of a number and a not-a-number, the number.
float larger(float a, float b) { return a > b || b != b ? a : b; }
float smaller(float a, float b) { return a < b || b != b ? a : b; }

} // namespace

bool intersectRayTriangle(const double* direction, const float* origin, const float* p0, const float* p1,
                          const float* p2, double& t, double& u, double& v)
{
    const EdgeTest test(direction, origin, p0, p1, p2);
    if (test.det > parallelDeterminant) return test.inside(1.0, t, u, v);
    if (test.det < -parallelDeterminant) return test.inside(-1.0, t, u, v) && t >= backfaceCullDistance;
    return false;
}

bool intersectRayTriangleCull(const double* direction, const float* origin, const float* p0, const float* p1,
                              const float* p2, double& t, double& u, double& v)
{
    const EdgeTest test(direction, origin, p0, p1, p2);
    return test.det >= parallelDeterminant && test.inside(1.0, t, u, v);
}

bool intersectRayTriangle(const Vector& direction, const PointFlt& origin, const PointFlt& p0, const PointFlt& p1,
                          const PointFlt& p2)
{
    double t = 0, u = 0, v = 0;
    return intersectRayTriangle(&direction.dx, &origin.x, &p0.x, &p1.x, &p2.x, t, u, v) && t > epsilonTol;
}

void setBackfaceCullDistance(double distance) { backfaceCullDistance = distance; }

Ray::Ray(const PointFlt& from, const Vector& along)
    : origin(from), m_direction(along),
      inverseDirection(static_cast<float>(1.0 / along.dx), static_cast<float>(1.0 / along.dy),
                       static_cast<float>(1.0 / along.dz))
{
    const auto chooseSides = [](float inverse, int axis, int& nearSide, int& farSide) {
        nearSide = inverse < 0 ? axis + 3 : axis;
        farSide = inverse < 0 ? axis : axis + 3;
    };
    chooseSides(inverseDirection.dx, 0, nearX, farX);
    chooseSides(inverseDirection.dy, 1, nearY, farY);
    chooseSides(inverseDirection.dz, 2, nearZ, farZ);
}

bool Ray::intersects(const BoundingBox& box, float tNear, float tFar) const
{
    // A ray that lies in the plane of a face gives 0 * infinity there, which is not a number: every comparison with it
    // is false and the axis rejects nothing.
    const float* sides = &box.minX;
    const float xNear = (sides[nearX] - origin.x) * inverseDirection.dx;
    const float yFar = (sides[farY] - origin.y) * inverseDirection.dy;
    if (xNear > yFar) return false;
    const float yNear = (sides[nearY] - origin.y) * inverseDirection.dy;
    const float xFar = (sides[farX] - origin.x) * inverseDirection.dx;
    if (yNear > xFar) return false;
    const float low = larger(xNear, yNear), high = smaller(xFar, yFar);
    const float zFar = (sides[farZ] - origin.z) * inverseDirection.dz;
    if (low > zFar) return false;
    const float zNear = (sides[nearZ] - origin.z) * inverseDirection.dz;
    if (zNear > high) return false;
    return larger(low, zNear) < tFar && smaller(high, zFar) > tNear;
}

bool Ray::intersects(const MeshTriangle& triangle, const MeshVertex* vertices) const
{
    double t = 0, u = 0, v = 0;
    if (!intersectRayTriangle(&m_direction.dx, &origin.x, &vertices[triangle[0]].x, &vertices[triangle[1]].x,
                              &vertices[triangle[2]].x, t, u, v))
        return false;
    if (!(t > static_cast<double>(epsilonTolFlt))) return false;
    if (t < triParam) triParam = t, baryU = u, baryV = v;
    return true;
}

} // namespace znGeom

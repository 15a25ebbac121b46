/// The candidate test of casts against the triangles of a mesh.
#pragma once

#include <algorithm>
#include <cmath>

#include "znGeom/foundation/linear/tolerance.h"
#include "znGeom/foundation/mesh/mesh_coord.h"
#include "znGeom/spatial/shapes/ray.h"

namespace znGeom::internal {

/// What a cast asks.
struct RayQuestion
{
    znLinear::PointFlt origin;
    znLinear::Vector direction;
    bool findNearest; ///< or whether anything is hit at all

    /// False where nothing can be hit: nothing is met along no direction, or at places that are not numbers.
    bool isUsable() const
    {
        const double size = std::fabs(direction.dx) + std::fabs(direction.dy) + std::fabs(direction.dz);
        return size > 0 && std::isfinite(size) && std::isfinite(origin.x) && std::isfinite(origin.y) &&
               std::isfinite(origin.z);
    }
};

/// The nearest triangle that a ray has met so far; of several at the same parameter the one with the lowest number.
///
/// A hit is one by `intersectRayTriangle`, ahead of the origin by more than `epsilonTolFlt`, whose place lies in the
/// box of its triangle, within what `float` differences from the origin to the corners lose. The last of these turns
/// away only what is no hit, in triangles that the ray meets edge on; because of it, the answer depends on neither the
/// shape of a tree nor the order of tests.
class NearestHit
{
public:
    explicit NearestHit(const RayQuestion& question) : m_question(question) {}

    /// The parameter of the nearest hit; the largest float before the first one.
    double param() const { return m_param; }
    /// Whether the search is over.
    bool isFinal() const { return m_isHit && !m_question.findNearest; }
    /// Whether anything was hit; in a search for the nearest, before the largest float.
    bool isHit() const { return m_question.findNearest ? m_triangle >= 0 : m_isHit; }

    void test(int triangle, const float* a, const float* b, const float* c)
    {
        double t = 0, u = 0, v = 0;
        if (!intersectRayTriangle(&m_question.direction.dx, &m_question.origin.x, a, b, c, t, u, v)) return;
        if (!(t > static_cast<double>(znLinear::epsilonTolFlt)) || !isAt(t, a, b, c)) return;
        m_isHit = true;
        if (!(t < m_param || (t == m_param && triangle < m_triangle))) return;
        m_param = t;
        m_triangle = triangle;
        m_u = u, m_v = v;
    }

    MeshCoord coord() const
    {
        MeshCoord result;
        result.triangle = m_triangle;
        if (m_triangle >= 0) result.weights[0] = 1 - m_u - m_v, result.weights[1] = m_u, result.weights[2] = m_v;
        return result;
    }

private:
    /// Whether the ray is in the box of a triangle at a parameter.
    bool isAt(double t, const float* a, const float* b, const float* c) const
    {
        constexpr double margin = 8.0 / (1 << 24);
        double low[3], high[3], reach = 0;
        for (int axis = 0; axis < 3; ++axis) {
            low[axis] = static_cast<double>(std::min({a[axis], b[axis], c[axis]}));
            high[axis] = static_cast<double>(std::max({a[axis], b[axis], c[axis]}));
            const double origin = static_cast<double>((&m_question.origin.x)[axis]);
            reach = std::max({reach, std::fabs(low[axis] - origin), std::fabs(high[axis] - origin)});
        }
        for (int axis = 0; axis < 3; ++axis) {
            const double place =
                static_cast<double>((&m_question.origin.x)[axis]) + t * (&m_question.direction.dx)[axis];
            if (!(place >= low[axis] - margin * reach && place <= high[axis] + margin * reach)) return false;
        }
        return true;
    }

    const RayQuestion& m_question;
    double m_param = static_cast<double>(BoundingBox::largest), m_u = 0, m_v = 0;
    int m_triangle = -1;
    bool m_isHit = false;
};

} // namespace znGeom::internal

/// The candidate test that the closest-point engines share.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_coord.h"
#include "znGeom/foundation/util/prefetch.h"
#include "znGeom/spatial/internal/float4.h"

namespace znGeom {

/// Bounds, in `float`, on the squared distances of a point from some triangles: from below by their boxes, from above
/// by their corners.
class TriangleBounds
{
public:
    static constexpr int capacity = 64;

    float lower2[capacity]; ///< squared, one per triangle

    TriangleBounds(const CompactMesh& mesh, const znLinear::PointFlt& point)
        : m_point{point.x, point.y, point.z, 0}, m_positions(mesh.getVerticesRaw(), mesh.getNumVertices()),
          m_corners(mesh.getTrianglesRaw())
    {}

    /// \param count  at most `capacity`
    void computeLower(const int* triangles, int count)
    {
        const Float4 p = m_point;
        for (int i = 0; i < count; ++i) {
            if (i + cornersAhead < count) znUtil::prefetch(cornersOf(triangles[i + cornersAhead]));
            const int* corners = cornersOf(triangles[i]);
            const Float4 a = m_positions[corners[0]], b = m_positions[corners[1]], c = m_positions[corners[2]];
            const Float4 below = lesser(lesser(a, b), c) - p, above = p - greater(greater(a, b), c);
            lower2[i] = length2(greater(greater(below, above), Float4{}));
        }
    }

    /// An upper bound, squared, for the nearest of the triangles.
    float upper2(const int* triangles, int count) const
    {
        const Float4 p = m_point;
        float result = std::numeric_limits<float>::infinity();
        for (int i = 0; i < count; ++i) {
            const int* corners = cornersOf(triangles[i]);
            const float a2 = length2(m_positions[corners[0]] - p), b2 = length2(m_positions[corners[1]] - p),
                        c2 = length2(m_positions[corners[2]] - p);
            // No distance is known to a triangle with a corner that is no number.
            if (a2 + b2 + c2 < std::numeric_limits<float>::infinity()) result = std::min({result, a2, b2, c2});
        }
        return result;
    }

    /// Whether the whole triangle lies behind the plane that a ray from the point against `towards`, of unit length,
    /// meets at right angles at a distance.
    bool isBehind(int triangle, Float4 towards, float distance) const
    {
        const int* corners = cornersOf(triangle);
        return dot(m_point - m_positions[corners[0]], towards) > distance &&
               dot(m_point - m_positions[corners[1]], towards) > distance &&
               dot(m_point - m_positions[corners[2]], towards) > distance;
    }

private:
    /// How many triangles ahead the corners are asked for.
    static constexpr int cornersAhead = 12;

    const int* cornersOf(int triangle) const { return m_corners + 3 * std::ptrdiff_t{triangle}; }

    Float4 m_point;
    Float4Positions m_positions;
    const int* m_corners;
};

/// The nearest point of the triangles seen so far. A triangle replaces it only when it is strictly nearer, so among
/// equals the first one stays.
///
/// Most triangles are ruled out before anything is projected: by bounds on their distance, and by the plane through the
/// nearest point so far at right angles to the way there. What is ruled out is farther than another triangle by more
/// than all rounding on both sides, so that the result is exactly that of testing every triangle.
class NearestTriangle
{
public:
    /// \param best2   the squared distance to begin with: only what is nearer is taken
    /// \param extent  no vertex has a coordinate of larger magnitude
    /// \param coord   gets each nearer place; may be null
    NearestTriangle(const CompactMesh& mesh, const znLinear::Point& query, double best2, double extent,
                    MeshCoord* coord)
        : m_bounds(mesh, znLinear::PointFlt(query)), m_vertices(mesh.getVerticesRaw()),
          m_triangles(mesh.getTrianglesRaw()), m_query(query), m_best2(best2), m_coord(coord),
          m_loss(lossFlt * (extent + std::fabs(query.x) + std::fabs(query.y) + std::fabs(query.z)))
    {
        lowerReach(best2);
    }

    double best2() const { return m_best2; }
    /// Nothing at a larger squared distance can be nearest.
    float reach2() const { return m_reach2; }

    /// The place of a triangle that is nearest to the query.
    struct Candidate
    {
        MeshCoord coord;
        znLinear::Point place;
        double distance2;
    };

    /// Whether more than a look at the corners is needed.
    bool mayBeNearest(int triangle) const { return !m_bounds.isBehind(triangle, m_towards, m_reach); }

    /// Projects the query on a triangle; false when it has no place.
    bool measure(int triangle, Candidate& candidate) const
    {
        if (!candidate.coord.project(triangle, m_vertices, m_triangles, m_query)) return false;
        candidate.place = candidate.coord.evaluate(m_vertices, m_triangles);
        candidate.distance2 = distance2(m_query, candidate.place);
        return true;
    }

    /// Makes a place the nearest one.
    void take(const Candidate& candidate)
    {
        m_best2 = candidate.distance2;
        m_found = true;
        if (m_coord) *m_coord = candidate.coord;
        lowerReach(m_best2);
        // Where the query lies on the surface, nothing is behind.
        znLinear::Vector towards = m_query - candidate.place;
        if (!towards.normalize()) towards = znLinear::Vector();
        m_towards =
            Float4{static_cast<float>(towards.dx), static_cast<float>(towards.dy), static_cast<float>(towards.dz), 0};
    }

    /// Lets the corners of some triangles bound the distance before any of them is measured.
    void boundBy(const int* triangles, int count)
    {
        lowerReach(static_cast<double>(m_bounds.upper2(triangles, count)));
    }

    /// Tests triangles in order. `mark(triangle)` is asked about those that need a projection; those for which it
    /// answers false have been tested before.
    template <typename Mark>
    void testAll(const int* triangles, int count, const Mark& mark)
    {
        for (; count > 0; triangles += m_bounds.capacity, count -= m_bounds.capacity) {
            const int size = std::min(count, m_bounds.capacity);
            m_bounds.computeLower(triangles, size);
            if (!m_found) boundBy(triangles, size);
            for (int i = 0; i < size; ++i)
                if (!(m_bounds.lower2[i] > m_reach2) && mayBeNearest(triangles[i]) && mark(triangles[i]))
                    test(triangles[i]);
        }
    }

private:
    /// What a distance in `float` may lose by rounding, relative to the size of the coordinates, several times over; it
    /// covers by far what projection and evaluation in `double` lose.
    static constexpr double lossFlt = 2e-6;

    void test(int triangle)
    {
        Candidate candidate;
        if (measure(triangle, candidate) && m_best2 > candidate.distance2) take(candidate);
    }

    /// A triangle is known to be within the square root of `distance2`.
    void lowerReach(double distance2)
    {
        using Limits = std::numeric_limits<float>;
        // Squares below the smallest number vanish.
        const double reach = std::sqrt(distance2) + m_loss + 1e-18;
        if (reach * reach >= static_cast<double>(std::min(m_reach2, Limits::max()))) return;
        m_reach = static_cast<float>(reach);
        m_reach2 = static_cast<float>(reach * reach * (1 + lossFlt));
    }

    TriangleBounds m_bounds;
    const float* m_vertices;
    const int* m_triangles;
    znLinear::Point m_query;
    double m_best2;
    bool m_found = false;
    MeshCoord* m_coord;
    double m_loss;
    /// Beyond this distance a triangle cannot be the nearest.
    float m_reach = std::numeric_limits<float>::infinity(), m_reach2 = m_reach;
    Float4 m_towards{}; ///< from the nearest place to the query, of unit length
};

} // namespace znGeom

/// The candidate test that the closest-point engines share.
#pragma once

#include <cmath>
#include <limits>

#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_coord.h"

namespace znGeom {

/// Bounds, in `float`, on the squared distances of a point from triangles, several at once.
class TriangleBounds
{
public:
    static constexpr int capacity = 64;

    TriangleBounds(const CompactMesh& mesh, const znLinear::PointFlt& point)
        : m_point(point), m_vertices(mesh.getVertices()), m_triangles(mesh.getTriangles())
    {}

    /// From below, by the boxes of the triangles.
    /// \param count   at most `capacity`, as in the functions below
    /// \param lower2  one per triangle
    void boundByBoxes(const int* triangles, int count, float* lower2) const;
    /// From below and good to rounding: for each triangle by the plane through about its nearest place, at right angles
    /// to the way there, before which no corner lies. How well the place was found decides how sharp the bound is and
    /// not whether it holds.
    void boundByPlanes(const int* triangles, int count, float* lower2) const;
    /// From above: the least squared distance of a corner; infinite without triangles of finite corners.
    float nearestCorner2(const int* triangles, int count) const;

private:
    struct Corners;

    znLinear::PointFlt m_point;
    const MeshVertex* m_vertices;
    const MeshTriangle* m_triangles;
};

/// The nearest place found so far, and how far anything may be that could still be nearer.
///
/// What lies beyond is farther by more than all rounding on both sides, so that leaving it out changes no result.
class NearestTriangle
{
public:
    /// The place of a triangle that is nearest to the query.
    struct Candidate
    {
        MeshCoord coord;
        double distance2;
    };

    /// \param best2   the squared distance to begin with
    /// \param extent  no vertex has a coordinate of larger magnitude
    /// \param coord   gets each place that is taken; may be null
    NearestTriangle(const CompactMesh& mesh, const znLinear::Point& query, double best2, double extent,
                    MeshCoord* coord)
        : m_bounds(mesh, znLinear::PointFlt(query)), m_vertices(mesh.getVerticesRaw()),
          m_triangles(mesh.getTrianglesRaw()), m_query(query), m_best2(best2), m_coord(coord),
          m_loss(lossFlt * (extent + std::fabs(query.x) + std::fabs(query.y) + std::fabs(query.z)))
    {
        lowerReach(best2);
    }

    double best2() const { return m_best2; }
    bool isFound() const { return m_isFound; }
    const TriangleBounds& bounds() const { return m_bounds; }
    /// Whether something that is farther than this, by a bound from below, is out of the question.
    bool isBeyond(float lower2) const { return lower2 > m_reach2; }

    /// Projects the query on a triangle; false when it has no place.
    bool measure(int triangle, Candidate& candidate) const
    {
        if (!candidate.coord.project(triangle, m_vertices, m_triangles, m_query)) return false;
        candidate.distance2 = distance2(m_query, candidate.coord.evaluate(m_vertices, m_triangles));
        return true;
    }

    /// Makes a place the nearest one.
    void take(const Candidate& candidate)
    {
        m_best2 = candidate.distance2;
        m_isFound = true;
        if (m_coord) *m_coord = candidate.coord;
        lowerReach(m_best2);
    }

    /// Lets the corners of some triangles tell how far is too far, before any triangle is measured.
    void boundByCorners(const int* triangles, int count)
    {
        lowerReach(static_cast<double>(m_bounds.nearestCorner2(triangles, count)));
    }

    /// Keeps those triangles that may be nearest, in their order.
    /// \param lower2  a bound from below for each of the given triangles; replaced by sharper ones of those that stay
    /// \param kept    gets their places in the list
    /// \return how many stay
    int sift(const int* triangles, int count, float* lower2, int* kept) const;

    /// Tests triangles in order; one that is nearer than the best so far is taken, so that among equals the first one
    /// stays. `mark(triangle)` is asked about those that have to be measured; those for which it answers false have
    /// been tested before.
    template <typename Mark>
    void testAll(const int* triangles, int count, const Mark& mark)
    {
        constexpr int capacity = TriangleBounds::capacity;
        for (; count > 0; triangles += capacity, count -= capacity) {
            const int size = std::min(count, capacity);
            float lower2[capacity];
            int kept[capacity];
            m_bounds.boundByBoxes(triangles, size, lower2);
            if (!m_isFound) boundByCorners(triangles, size);
            const int numKept = sift(triangles, size, lower2, kept);
            Candidate candidate;
            for (int i = 0; i < numKept; ++i) {
                const int triangle = triangles[kept[i]];
                if (isBeyond(lower2[i]) || !mark(triangle)) continue;
                if (measure(triangle, candidate) && m_best2 > candidate.distance2) take(candidate);
            }
        }
    }

private:
    /// What a distance in `float` may lose by rounding, relative to the size of the coordinates, several times over; it
    /// covers by far what projection and evaluation in `double` lose.
    static constexpr double lossFlt = 2e-6;

    /// A triangle is known to be within the square root of `distance2`.
    void lowerReach(double distance2)
    {
        using Limits = std::numeric_limits<float>;
        // Squares below the smallest number vanish.
        const double reach = std::sqrt(distance2) + m_loss + 1e-18;
        if (reach * reach >= static_cast<double>(std::min(m_reach2, Limits::max()))) return;
        m_reach2 = static_cast<float>(reach * reach * (1 + lossFlt));
    }

    TriangleBounds m_bounds;
    const float* m_vertices;
    const int* m_triangles;
    znLinear::Point m_query;
    double m_best2;
    bool m_isFound = false;
    MeshCoord* m_coord;
    double m_loss;
    float m_reach2 = std::numeric_limits<float>::infinity(); ///< beyond it a triangle cannot be the nearest
};

} // namespace znGeom

/// The candidate test of the engines that walk over the leaves of an octree.
#pragma once

#include <cmath>
#include <limits>
#include <vector>

#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_coord.h"
#include "znGeom/spatial/trees/internal/search_frame.h"

namespace znGeom::internal {

/// Bounds, in `float` and in a frame, on the squared distances of a point from triangles, several at once.
class TriangleBounds
{
public:
    static constexpr int capacity = 64;

    TriangleBounds(const CompactMesh& mesh, const SearchFrame& frame, const FrameQuery& query)
        : m_frame(frame), m_query(query), m_vertices(mesh.getVertices()), m_triangles(mesh.getTriangles())
    {}

    /// From below, by the boxes of the triangles.
    /// \param count   at most `capacity`, as in the functions below
    /// \param lower2  one per triangle; 0 where a corner lies outside the mesh's box or is not a number
    void boundByBoxes(const int* triangles, int count, float* lower2) const;
    /// From below, and sharp up to rounding, by planes through approximately the nearest places.
    void boundByPlanes(const int* triangles, int count, float* lower2) const;
    /// From above: the least squared distance of a corner; infinite without triangles in the mesh's box.
    float nearestCorner2(const int* triangles, int count) const;

private:
    struct Corners;

    const SearchFrame& m_frame;
    const FrameQuery& m_query;
    const MeshVertex* m_vertices;
    const MeshTriangle* m_triangles;
};

/// The nearest place found so far, and how far anything may be that could still be nearer.
///
/// What lies beyond is farther by more than all rounding errors on both sides, so that leaving it out changes no
/// result.
class NearestTriangle
{
public:
    /// The place of a triangle that is nearest to the query.
    struct Candidate
    {
        MeshCoord coord;
        double distance2;
    };

    /// \param best2  the initial squared distance
    /// \param box    of the mesh; triangles outside are measured as well, but slowly
    /// \param coord  receives each place that is taken; may be null
    NearestTriangle(const CompactMesh& mesh, const znLinear::Point& query, double best2, const BoundingBox& box,
                    MeshCoord* coord)
        : m_frame(box), m_frameQuery(m_frame, query), m_bounds(mesh, m_frame, m_frameQuery),
          m_vertices(mesh.getVerticesRaw()), m_triangles(mesh.getTrianglesRaw()), m_query(query), m_best2(best2),
          m_coord(coord)
    {
        lowerReach(std::sqrt(best2) * m_frame.scale);
    }
    NearestTriangle(const NearestTriangle&) = delete;
    NearestTriangle& operator=(const NearestTriangle&) = delete;

    double best2() const { return m_best2; }

    /// Tests triangles in order; one that is nearer than the best so far is taken, so that among equals the first one
    /// is kept. `mark(triangle)` is called for those that have to be measured; those for which it returns false have
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
            if (!m_isFound) lowerReach(std::sqrt(static_cast<double>(m_bounds.nearestCorner2(triangles, size))));
            const int numKept = sift(triangles, size, lower2, kept);
            Candidate candidate;
            for (int i = 0; i < numKept; ++i) {
                const int triangle = triangles[kept[i]];
                if (isBeyond(lower2[i]) || !mark(triangle)) continue;
                if (measure(triangle, candidate) && m_best2 > candidate.distance2) take(candidate);
            }
        }
    }

    /// Lists all triangles of the mesh that are nearer than the best so far. Linear in the size of the mesh.
    std::vector<int> listNearer(int numTriangles) const;

private:
    bool isBeyond(float lower2) const { return lower2 > m_reach2; }

    /// Projects the query on a triangle; false when it has no place.
    bool measure(int triangle, Candidate& candidate) const
    {
        if (!candidate.coord.project(triangle, m_vertices, m_triangles, m_query)) return false;
        candidate.distance2 = distance2(m_query, candidate.coord.evaluate(m_vertices, m_triangles));
        return true;
    }

    /// Records a place as the nearest one.
    void take(const Candidate& candidate)
    {
        m_best2 = candidate.distance2;
        m_isFound = true;
        if (m_coord) *m_coord = candidate.coord;
        lowerReach(std::sqrt(m_best2) * m_frame.scale);
    }

    /// Keeps those triangles that may be nearest, in their order.
    /// \param lower2  a bound from below for each of the given triangles; replaced by sharper ones for those that stay
    /// \param kept    receives their places in the list
    /// \return how many stay
    int sift(const int* triangles, int count, float* lower2, int* kept) const;

    /// Notes that something is known to lie within a distance, in the frame.
    void lowerReach(double distance)
    {
        const double reach = distance + m_frameQuery.loss;
        if (!m_frameQuery.isInside || !(reach * reach < static_cast<double>(std::numeric_limits<float>::max()))) return;
        m_reach2 = std::min(m_reach2, static_cast<float>(reach * reach * (1 + SearchFrame::margin)));
    }

    SearchFrame m_frame;
    FrameQuery m_frameQuery;
    TriangleBounds m_bounds;
    const float* m_vertices;
    const int* m_triangles;
    znLinear::Point m_query;
    double m_best2;
    bool m_isFound = false;
    MeshCoord* m_coord;
    float m_reach2 = std::numeric_limits<float>::infinity(); ///< beyond it a triangle cannot be the nearest
};

} // namespace znGeom::internal

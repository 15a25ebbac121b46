/// Walking over triangles where a plane cuts them.
#pragma once

#include <cmath>
#include <utility>

#include "znGeom/analysis/edge_sides.h"
#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/linear/plane.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_coord.h"

namespace znGeom::internal {

/// For each side of each triangle, 3 * triangle + corner, the one side that lies along the same edge; -1 where there is
/// none, or more than one.
inline zn::vector<int> sidesAcross(const CompactMesh& mesh)
{
    MeshEdgeSides edges;
    meshEdgeSides(mesh, edges);
    zn::vector<int> across(3 * mesh.getNumTriangles(), -1);
    for (int edge = 0; edge < edges.getNumEdges(); ++edge)
        if (const auto sides = edges.sides(edge); sides.size() == 2) {
            across[sides[0]] = sides[1];
            across[sides[1]] = sides[0];
        }
    return across;
}

/// A plane through the triangles of a mesh. A vertex that lies on it counts as being on one and the same of its sides
/// throughout, so that the plane passes between vertices: it crosses two sides of a triangle or none.
class PlaneWalk
{
public:
    PlaneWalk(const CompactMesh& mesh, const znLinear::Plane& plane, bool isOnAbove)
        : m_vertices(mesh.getVertices()), m_triangles(mesh.getTriangles()), m_plane(plane), m_isOnAbove(isOnAbove)
    {}

    /// False as well where an end is not finite.
    bool crosses(int side) const
    {
        const double from = heightAt(side), to = heightAt(cornerAtSideEnd(side));
        return std::isfinite(from) && std::isfinite(to) && isAbove(from) != isAbove(to);
    }

    /// Of a side that is crossed: whether the plane is crossed downwards along it.
    bool startsAbove(int side) const { return isAbove(heightAt(side)); }

    /// The same digits from both triangles along an edge, also where each has vertices of its own.
    MeshCoord crossing(int side) const
    {
        int start = side, end = cornerAtSideEnd(side);
        if (startsAbove(side)) std::swap(start, end);
        const double from = std::fabs(heightAt(start)), to = std::fabs(heightAt(end));
        MeshCoord coord;
        coord.triangle = side / 3;
        coord.weights[start % 3] = to / (from + to);
        coord.weights[end % 3] = 1.0 - coord.weights[start % 3];
        return coord;
    }

    /// The other side of the same triangle that is crossed; -1 where a corner is not finite.
    int otherCrossed(int side) const
    {
        for (int other = side - side % 3, end = other + 3; other < end; ++other)
            if (other != side && crosses(other)) return other;
        return -1;
    }

private:
    double heightAt(int corner) const
    {
        return m_plane.eval(m_vertices[m_triangles[corner / 3][corner % 3]].asPoint());
    }
    bool isAbove(double height) const { return m_isOnAbove ? height >= 0 : height > 0; }

    const MeshVertex* m_vertices;
    const MeshTriangle* m_triangles;
    znLinear::Plane m_plane;
    bool m_isOnAbove;
};

/// The vertex at which a place lies, to the last bit; -1 for none.
inline int vertexAt(const CompactMesh& mesh, const MeshCoord& coord)
{
    for (int corner = 0; corner < 3; ++corner)
        if (coord.weights[cornerAfter(corner)] == 0 && coord.weights[cornerBefore(corner)] == 0)
            return mesh.getTriangles()[coord.triangle][corner];
    return -1;
}

} // namespace znGeom::internal

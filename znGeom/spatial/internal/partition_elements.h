/// What an octree is filled with: the triangles or the lines of a mesh.
#pragma once

#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/spatial/box_predicates.h"
#include "znGeom/spatial/internal/wide_box.h"
#include "znGeom/spatial/octree.h"

namespace znGeom::internal {

/// The triangles of a mesh, as the partition sees them.
class TriangleElements
{
public:
    using Table = OctreeTris;
    static constexpr const char* message = "OctreeTris:  Partitioned %d triangles into %d voxels in %.3f seconds.\n"
                                           "             (%.2f coherence, %.2f voxels/tri, %.0f tri/sec)\n";

    explicit TriangleElements(const CompactMesh& mesh)
        : count(mesh.getNumTriangles()), m_positions(mesh.getVerticesRaw(), mesh.getNumVertices()),
          m_triangles(mesh.getTriangles())
    {}

    /// The box that `meshTriBoundingBox` makes.
    WideBox box(int triangle) const
    {
        WideBox result = WideBox::of(BoundingBox());
        for (const int corner : m_triangles[triangle].corners) result.extend(m_positions[corner]);
        return result;
    }

    /// `intersects(leaf box, p0, p1, p2)`, which needs no work where a corner lies in the leaf.
    bool touchesLeaf(int triangle, const WideBox& leaf) const
    {
        const MeshTriangle& corners = m_triangles[triangle];
        if (leaf.contains(m_positions[corners[0]]) || leaf.contains(m_positions[corners[1]]) ||
            leaf.contains(m_positions[corners[2]]))
            return true;
        return intersects(leaf.narrow(), m_positions.at(corners[0]), m_positions.at(corners[1]),
                          m_positions.at(corners[2]));
    }

    int count;

private:
    Float4Positions m_positions;
    const MeshTriangle* m_triangles;
};

/// The lines of a mesh.
class LineElements
{
public:
    using Table = OctreeLines;
    static constexpr const char* message = "OctreeLines:  Partitioned %d lines into %d voxels in %.3f seconds.\n"
                                           "             (%.2f coherence, %.2f duplication, %.0f tri/sec)\n";

    explicit LineElements(const CompactMesh& mesh)
        : count(mesh.getNumLines()), m_positions(mesh.getVerticesRaw(), mesh.getNumVertices()), m_lines(mesh.getLines())
    {}

    WideBox box(int line) const
    {
        const Float4 start = m_positions[m_lines[line][0]];
        WideBox result{start, start};
        result.extend(m_positions[m_lines[line][1]]);
        return result;
    }
    bool touchesLeaf(int line, const WideBox& leaf) const
    {
        return intersects(leaf.narrow(), m_positions.at(m_lines[line][0]), m_positions.at(m_lines[line][1]));
    }

    int count;

private:
    Float4Positions m_positions;
    const MeshLine* m_lines;
};

} // namespace znGeom::internal

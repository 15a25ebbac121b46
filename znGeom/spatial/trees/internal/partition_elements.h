/// What an octree is filled with: the triangles or the lines of a mesh.
#pragma once

#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/spatial/shapes/box_predicates.h"
#include "znGeom/spatial/trees/internal/wide_box.h"
#include "znGeom/spatial/trees/octree.h"

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

    /// One triangle.
    struct Element
    {
        Float4 corners[3];

        /// The box that `meshTriBoundingBox` makes.
        WideBox box() const
        {
            WideBox result = WideBox::of(BoundingBox());
            for (const Float4& corner : corners) result.extend(corner);
            return result;
        }
        /// `intersects(leaf box, p0, p1, p2)`, which is called only where no corner lies in the leaf.
        bool touches(const WideBox& leaf) const
        {
            if (leaf.contains(corners[0]) || leaf.contains(corners[1]) || leaf.contains(corners[2])) return true;
            return intersects(leaf.narrow(), asFloats(corners[0]), asFloats(corners[1]), asFloats(corners[2]));
        }
    };

    Element operator[](int triangle) const
    {
        const MeshTriangle& corners = m_triangles[triangle];
        return {{m_positions[corners[0]], m_positions[corners[1]], m_positions[corners[2]]}};
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

    /// One line.
    struct Element
    {
        Float4 start, end;

        WideBox box() const
        {
            WideBox result{start, start};
            result.extend(end);
            return result;
        }
        bool touches(const WideBox& leaf) const { return intersects(leaf.narrow(), asFloats(start), asFloats(end)); }
    };

    Element operator[](int line) const { return {m_positions[m_lines[line][0]], m_positions[m_lines[line][1]]}; }

    int count;

private:
    Float4Positions m_positions;
    const MeshLine* m_lines;
};

} // namespace znGeom::internal

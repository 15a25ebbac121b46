/// The patch over a hole.
#pragma once

#include <vector>

#include "znGeom/repair/hole_fill.h"
#include "znGeom/repair/internal/patch_edges.h"

namespace znGeom::internal {

class HolePatch
{
public:
    /// \param rim        in the order of the boundary half-edges
    /// \param densities  room for a number for each vertex, which one patch leaves to the next
    HolePatch(TopoMesh& mesh, const zn::vector<TopoMeshVertex>& rim, std::vector<double>& densities)
        : m_mesh(mesh), m_rim(rim), m_firstEdge(mesh.edgeNumbers()), m_swappable(mesh, m_firstEdge),
          m_densities(densities)
    {}

    /// Closes the hole with triangles between the vertices of the rim.
    /// \param places  of these vertices
    HoleOutcome triangulate(const zn::vector<znLinear::Point>& places, znUtil::Progress& progress);

    /// Splits triangles, and swaps the edges between them, until they are as small as those around.
    /// \param densities  of the vertices of the rim: how long the edges there are
    void refine(const zn::vector<double>& densities, MeshEdgeSwapper& swapper, const znUtil::Progress& progress);

    /// Moves the new vertices to where the surface is smooth. A cancel leaves them where they are.
    void fair(znUtil::Progress& progress);

private:
    BitVector forbiddenEdges() const;
    bool isFree(TopoMeshVertex a, TopoMeshVertex b, TopoMeshVertex c) const;
    void addTriangles(const zn::vector<int>& triangles);
    void collectSwappable();
    bool splitFaces();
    bool isTooLarge(TopoMeshFace face, double meanDensity) const;
    double& densityOf(TopoMeshVertex vertex) { return m_densities[static_cast<size_t>(vertex.number())]; }
    double densityOf(TopoMeshVertex vertex) const { return m_densities[static_cast<size_t>(vertex.number())]; }
    void split(TopoMeshFace face, double density, zn::vector<TopoMeshFace>& faces);

    TopoMesh& m_mesh;
    const zn::vector<TopoMeshVertex>& m_rim;
    int m_firstEdge; ///< the number of the first half-edge of the patch
    PatchEdges m_swappable;
    zn::vector<TopoMeshFace> m_faces;
    std::vector<double>& m_densities; ///< by vertex number, of the rim and of the patch
    std::vector<TopoMeshVertex> m_added;
};

} // namespace znGeom::internal

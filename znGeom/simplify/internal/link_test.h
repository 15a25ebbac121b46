/// Whether edges of triangles can collapse, asked many times.
#pragma once

#include <vector>

#include "znGeom/foundation/containers/stamp_table.h"
#include "znGeom/topology/topo_mesh.h"

namespace znGeom::internal {

/// How the triangles lie around each vertex of a mesh whose edges collapse, by vertex numbers.
class VertexFans
{
public:
    explicit VertexFans(const TopoMesh& mesh);

    /// Whether all triangles at a vertex are one fan; at others nothing collapses.
    bool isSingle(TopoMeshVertex v) const { return m_single[static_cast<size_t>(v.number())] != 0; }
    /// Whether that fan is open.
    bool isOpen(TopoMeshVertex v) const { return m_open[static_cast<size_t>(v.number())] != 0; }

    /// Looks anew at a vertex that lost a triangle.
    void update(TopoMeshVertex v);
    /// Two ends of an edge became one vertex, at which the triangles are one fan as well.
    void merge(TopoMeshVertex survivor, TopoMeshVertex gone)
    {
        m_open[static_cast<size_t>(survivor.number())] |= m_open[static_cast<size_t>(gone.number())];
    }

private:
    std::vector<unsigned char> m_single, m_open;
};

/// The link test of Dey, Edelsbrunner, Guha and Nekhayev, "Topology preserving edge contraction" (1999), as in
/// `TopoMesh::canCollapse`, for many edges of one vertex after another. For one thread.
class LinkTest
{
public:
    LinkTest(const TopoMesh& mesh, const VertexFans& fans)
        : m_fans(fans), m_marks(mesh.vertexNumbers()), m_doubled(mesh.vertexNumbers())
    {}

    /// Chooses the vertex whose edges are tested next. Linear in its valence.
    void setCentre(TopoMeshVertex centre);
    /// Whether an edge at the centre, running from or to it, can collapse. Linear in the valence of the other end;
    /// where that is large, in that of the centre.
    bool allows(TopoMeshEdge e) const;

private:
    bool sharesFurther(TopoMeshEdge e, TopoMeshVertex a, TopoMeshVertex b) const;

    const VertexFans& m_fans;
    zn::StampTable m_marks, m_doubled; ///< the ring, and those in it to which two edges run
    TopoMeshVertex m_centre;
    std::vector<TopoMeshVertex> m_ring;
};

} // namespace znGeom::internal

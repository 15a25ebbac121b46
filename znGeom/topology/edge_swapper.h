/// Swapping edges under a policy.
///
///     MeshEdgeSwapper swapper;
///     swapper.getVetoSignal().addCallback(MeshEdgeSwapper::preserveFeatures);
///     swapper.getVetoSignal().addCallback(MeshEdgeSwapper::minimizeOppositeAngleSum);
///     meshSwapEdgesRepeatedly(mesh, swapper);
///
/// An edge e from A to B lies in two triangles, with the third corners C (in the face of e) and D (in that of its
/// twin). Swapping puts an edge between C and D in its place: see `TopoMesh::swapEdge`.
#pragma once

#include <memory>

#include "znGeom/foundation/containers/tree.h"
#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/signals/signal.h"
#include "znGeom/topology/topo_mesh.h"

namespace znGeom {

/// Decides which edges are swapped: those that no function on its signal vetoes. A policy is what the caller connects;
/// a swapper without one swaps nothing. Used by one thread at a time.
class ZNGEOM_API MeshEdgeSwapper
{
public:
    using VetoSignal = znRTB::Signal2Args<TopoMeshEdge, bool&>;

    MeshEdgeSwapper();
    virtual ~MeshEdgeSwapper();
    MeshEdgeSwapper(const MeshEdgeSwapper&) = delete;
    MeshEdgeSwapper& operator=(const MeshEdgeSwapper&) = delete;

    /// The signal that asks for vetoes, made when it is first needed. A function on it sets its second argument to true
    /// where the edge must not be swapped, and otherwise leaves it alone. All are called, in the order in which they
    /// were added, also after a veto. They may not change the mesh.
    VetoSignal& getVetoSignal();
    /// Drops the signal with everything connected to it.
    void clearVetoSignal();

    /// Whether an edge should be swapped. False without a twin, and as long as nothing is connected; true where all
    /// connections are blocked. Does not say whether `TopoMesh::swapEdge` can.
    virtual bool shouldSwap(TopoMeshEdge e);

    // Functions for the signal, which are also useful alone. They set `veto` where an edge must not be swapped, and
    // never clear it. All veto an edge without a twin. Both faces must be triangles.

    /// Vetoes unless the sum of the angles at C and D is greater than that of the angles which the triangles after the
    /// swap have at A and B. In the plane these are the swaps that make a Delaunay triangulation (Lawson, "Software for
    /// C1 surface interpolation", 1977). An angle with a side that has no length, or is not finite, counts as 0.
    /// A swap that is not vetoed is vetoed once it is done, to the last bit.
    static void minimizeOppositeAngleSum(TopoMeshEdge e, bool& veto);
    /// Vetoes where the triangles after the swap would meet at a fold of more than 90 degrees, or where one of them
    /// would have no area or a corner that is not finite. The triangles before the swap don't matter.
    static void preventFoldover(TopoMeshEdge e, bool& veto);
    /// Vetoes where A and B are both on the boundary, or C and D are.
    static void preserveBoundary(TopoMeshEdge e, bool& veto);
    /// Vetoes unless the swap leaves the fold between the two triangles as it is, within 2.5 degrees: so edges are
    /// swapped where the surface is nearly flat, or bent alike along both diagonals. Folds towards the normals and away
    /// from them have different signs, with `epsilonTol` as the least distance from the plane that counts. Vetoes, too,
    /// where one of the four triangles has no area.
    static void preserveFeatures(TopoMeshEdge e, bool& veto);

private:
    std::unique_ptr<VetoSignal> m_vetoSignal;
};

// In all of the following an edge counts as swapped when the swapper wanted it and `TopoMesh::swapEdge` could. If any
// was, `modified` is called on the mesh, once, at the end. The result is the number of swaps. A pass calls each
// function on the signal once per edge. Handles in lists must be of that mesh; those without a twin are skipped. A list
// is walked in its order, without a look at which half of a pair it names: it may hold both, and then asks twice.

/// Goes once through the half-edges of a mesh, those first of their pairs, in the order of the mesh's list.
ZNGEOM_API int meshSwapEdgesOnce(TopoMesh& mesh, MeshEdgeSwapper& swapper);
ZNGEOM_API int meshSwapEdgesOnce(TopoMesh& mesh, const zn::set<TopoMeshEdge>& edges, MeshEdgeSwapper& swapper);
ZNGEOM_API int meshSwapEdgesOnce(TopoMesh& mesh, const zn::vector<TopoMeshEdge>& edges, MeshEdgeSwapper& swapper);

/// Makes such passes until one swaps nothing. A policy must see to that: those with `minimizeOppositeAngleSum` do in
/// the plane, and no mesh is known on which they don't, but for rounding. There is no limit to the number of passes;
/// yet from the hundredth on it ends as well when all edges are back where they were after an earlier one.
ZNGEOM_API int meshSwapEdgesRepeatedly(TopoMesh& mesh, MeshEdgeSwapper& swapper);
ZNGEOM_API int meshSwapEdgesRepeatedly(TopoMesh& mesh, const zn::set<TopoMeshEdge>& edges, MeshEdgeSwapper& swapper);
ZNGEOM_API int meshSwapEdgesRepeatedly(TopoMesh& mesh, const zn::vector<TopoMeshEdge>& edges, MeshEdgeSwapper& swapper);

} // namespace znGeom

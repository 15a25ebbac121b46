/// Cutting a mesh open along curves.
///
///     MeshLaidPolyline laid = MeshLayPolyline(mesh, adjTris)(stroke, false);
///     const CompactMeshCutResult result = meshCut(mesh, adjTris, {laid.curve->coords}, 1e-6 * diagonal);
///     if (!result) tellWhere(result.getStatus(), result.getProblemPoint());
///
/// Faces and edges are divided until the curves run along edges; these are opened and become boundary, along a closed
/// curve on a closed surface two loops of it. The edges and vertices that this leaves too close together next to the
/// cut are then cleaned up, where that does not move the surface.
#pragma once

#include <deque>

#include "znGeom/curves/curve_topology.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_adjacency.h"
#include "znGeom/foundation/mesh/mesh_coord.h"
#include "znGeom/foundation/signals/signal.h"
#include "znGeom/foundation/threads/progress.h"

namespace znGeom {

/// What was cut, and what was given up without a word beside it.
struct MeshCutAccount
{
    MeshCurveLosses curves;    ///< curves and ends that were left out before the cut
    int numSkippedRuns = 0;    ///< pieces of curves that could not be brought on edges
    int numOpenedEdges = 0;    ///< edges that are boundary now, on both sides
    double openedLength = 0;   ///< their length, in world units: boundaries have grown by twice that
    int numUnopenedEdges = 0;  ///< edges along curves that are closed as before: at an end inside the surface
    double unopenedLength = 0; ///< their length
};

/// The numbers that both forms share.
struct MeshCutStatus
{
    enum Status : std::int32_t {
        Success = 0,          ///< the cut was made
        CurveEndsInFace = 1,  ///< an end of a curve is inside a face and meets nothing: the place is that end
        InvalidCurves = 2,    ///< no curves, a curve of fewer than two points, or one with a place that is none
        CurveLoopsInFace = 3, ///< a curve crosses others, or itself, twice on its way through one face: the place is
                              ///< the centre of that face
        NothingToCut = 4,     ///< nothing was left of the curves after their loose ends were taken off
        Cancelled = 5
    };
};

/// How a cut of a half-edge mesh went.
class ZNGEOM_API TopoMeshCutResult : public MeshCutStatus
{
public:
    Status status = Success;
    TopoMeshCoord problemPoint;
    MeshCutAccount account;

    explicit operator bool() const { return status == Success; }
    Status getStatus() const { return status; }
    const TopoMeshCoord& getProblemPoint() const { return problemPoint; }
    void setError(Status problem) { status = problem; }
    void setError(Status problem, const TopoMeshCoord& place) { status = problem, problemPoint = place; }
    /// With the centre of a face for the place.
    void setError(Status problem, TopoMeshFace face);
};

/// How a cut of a flat mesh went.
class ZNGEOM_API CompactMeshCutResult : public MeshCutStatus
{
public:
    Status status = Success;
    znLinear::Point problemPoint;
    MeshCutAccount account;

    explicit operator bool() const { return status == Success; }
    Status getStatus() const { return status; }
    const znLinear::Point& getProblemPoint() const { return problemPoint; }
    void setError(Status problem) { status = problem; }
    void setError(Status problem, const znLinear::Point& place) { status = problem, problemPoint = place; }
};

/// Cuts a half-edge mesh of triangles.
///
/// \param topology       the graph of the curves on this mesh; its points are placed anew, at vertices
/// \param removedVertex  may be null; sent each vertex of the mesh before the clean-up deletes it
/// \param progress       advanced, and looked at within all long loops; a cancel leaves a valid mesh of triangles, in
///                       which the cut is not made, made in part, or not cleaned up
/// \return with a status of 1 to 4 the mesh is as it was
///
/// A cut that ends at a vertex inside the surface opens up to the edge before it. Listeners of the mesh are told once
/// the cut is done. On the calling thread; n log n in what the curves cross, apart from the tables by element.
ZNGEOM_API TopoMeshCutResult meshCut(TopoMesh& mesh, MeshCurveTopology& topology,
                                     znRTB::SignalArg<TopoMeshVertex>* removedVertex);
ZNGEOM_API TopoMeshCutResult meshCut(TopoMesh& mesh, MeshCurveTopology& topology,
                                     znRTB::SignalArg<TopoMeshVertex>* removedVertex, znUtil::Progress& progress);

/// Cuts a flat mesh.
///
/// \param adjTris    built from the mesh by `meshAdjTris`; stale afterwards
/// \param curves     places in order; consecutive ones lie on a common triangle, or a new curve begins. A closed curve
///                   repeats its first place
/// \param tolerance  a distance in world units: places nearer to a vertex or an edge count as lying there. A millionth
///                   of the diagonal suits most meshes
/// \param progress   advanced, up to the merge; a cancel leaves every bit of the mesh
/// \return with a status other than 0 the mesh is as it was, to the last bit
///
/// Ends inside a triangle go on to its side. Then what ends inside the surface is taken off, back to the last crossing:
/// a curve cuts from boundary to boundary, round a loop, or between crossings. Vertices and triangles are renumbered,
/// channels other than positions have no values at new elements; see `MeshModifyRep`.
ZNGEOM_API CompactMeshCutResult meshCut(CompactMesh& mesh, const MeshAdjTris& adjTris,
                                        const std::deque<std::deque<MeshCoord>>& curves, double tolerance);
ZNGEOM_API CompactMeshCutResult meshCut(CompactMesh& mesh, const MeshAdjTris& adjTris,
                                        const std::deque<std::deque<MeshCoord>>& curves, double tolerance,
                                        znUtil::Progress& progress);

} // namespace znGeom

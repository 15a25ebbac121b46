#include "znGeom/curves/mesh_cut.h"

#include <algorithm>
#include <cmath>

#include "znGeom/curves/internal/condition_mesh.h"
#include "znGeom/curves/internal/curve_division.h"
#include "znGeom/curves/internal/cut_opening.h"
#include "znGeom/curves/internal/pace.h"
#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"
#include "znGeom/scopes/modify_rep.h"
#include "znGeom/topology/topo_walks.h"

namespace znGeom {

using namespace znLinear;

using Node = TopoMeshCurve::Node;

namespace {

bool isFinite(const Point& p) { return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z); }

bool areInvalid(TopoMeshCurves& curves)
{
    const auto isInvalid = [](TopoMeshCurve& curve) {
        return curve.size() < 2 || !std::all_of(curve.begin(), curve.end(), [](const auto& point) {
                   return point->coord.face && isFinite(point->position);
               });
    };
    return curves.empty() || std::any_of(curves.begin(), curves.end(), isInvalid);
}

class MeshCut
{
public:
    MeshCut(TopoMesh& mesh, MeshCurveTopology& topology, znRTB::SignalArg<TopoMeshVertex>* removedVertex)
        : m_mesh(mesh), m_topology(topology), m_removedVertex(removedVertex)
    {}

    TopoMeshCutResult operator()(znUtil::Progress& progress)
    {
        m_result.account.curves = m_topology.getLosses();
        if (checkEnds() && checkLoops()) cut(progress);
        return m_result;
    }

private:
    bool checkEnds()
    {
        for (const auto& [point, node] : m_topology.getIPoints())
            if (node.getDegree() < 2 && point->kind == TopoMeshPoint::InFace)
                return m_result.setError(MeshCutStatus::CurveEndsInFace, point->coord), false;
        return true;
    }

    /// Each way from node to node has to leave the face in which it begins.
    bool checkLoops()
    {
        for (TopoMeshCurve& curve : m_topology.getCurves()) {
            TopoMeshFace face; // that of all points since the last node; null when there are several
            for (const zn::Reference<TopoMeshPoint>& point : curve) {
                const TopoMeshFace own = point->kind == TopoMeshPoint::InFace ? point->coord.face : TopoMeshFace();
                const bool isNode = m_topology.getIPoint(point);
                if (isNode && own && own == face)
                    return m_result.setError(MeshCutStatus::CurveLoopsInFace, face), false;
                face = isNode || own == face ? own : TopoMeshFace();
            }
        }
        return true;
    }

    void cut(znUtil::Progress& progress)
    {
        const int numVertices = m_mesh.vertexNumbers();
        const zn::set<TopoMeshVertex> oldBoundary = boundaryOnCurves();
        internal::CurveDivision division(m_mesh, m_topology);
        if (progress.cancelled()) return m_result.setError(MeshCutStatus::Cancelled);
        znUtil::Progress share;
        progress.subPhase(0.4, share);
        bool goesOn = division.divide(share);
        m_result.account.numSkippedRuns = division.numSkipped();
        progress.subPhase(0.2, share);
        internal::CutOpening opening(m_mesh, m_topology.getCurves(), m_result.account);
        goesOn = goesOn && opening.open(share);
        for (const TopoMeshFace face : division.touchedFaces()) internal::triangulateFace(m_mesh, face);
        progress.subPhase(0.4, share);
        if (goesOn) condition(opening.rim(), numVertices, oldBoundary, share);
        TopoMeshModification modification(&m_mesh, TopoMeshModification::ConnectivityChanged);
        m_mesh.modified(modification);
        if (!progress.cancelled()) progress.set(1); // the last chance for an observer to cancel
        if (progress.cancelled()) m_result.setError(MeshCutStatus::Cancelled);
    }

    /// The vertices on curves that are on the boundary before anything is cut.
    zn::set<TopoMeshVertex> boundaryOnCurves() const
    {
        zn::set<TopoMeshVertex> boundary;
        for (MeshCurveTopologyIterator at(m_topology.getCurves()); at.valid(); at.next())
            if (const TopoMeshVertex v = at.getIterator().value()->vertex; v && v.onBoundary()) boundary.insert(v);
        return boundary;
    }

    /// \param rim  vertices along what was opened, sorted \param numOld  the numbers of vertices before the cut
    void condition(zn::vector<TopoMeshVertex> rim, int numOld, const zn::set<TopoMeshVertex>& oldBoundary,
                   znUtil::Progress& progress)
    {
        for (const TopoMeshVertex v : verticesOnCurves())
            if (v.number() >= numOld && v.onBoundary()) rim.append(v);
        zn::set<TopoMeshVertex> candidates;
        for (const TopoMeshVertex v : rim) {
            if (oldBoundary.contains(v)) continue;
            candidates.insert(v);
            for (const TopoMeshEdge e : outgoingOf(v))
                for (const TopoMeshVertex neighbour : {endOf(e), e->prev->origin})
                    if (!neighbour.onBoundary()) candidates.insert(neighbour);
        }
        internal::ConditionMesh(m_mesh, candidates, m_removedVertex)(m_topology.getTolerance(), progress);
    }

    zn::vector<TopoMeshVertex> verticesOnCurves() const
    {
        zn::vector<TopoMeshVertex> vertices;
        for (MeshCurveTopologyIterator at(m_topology.getCurves()); at.valid(); at.next())
            if (const TopoMeshVertex v = at.getIterator().value()->vertex) vertices.append(v);
        return vertices;
    }

    TopoMesh& m_mesh;
    MeshCurveTopology& m_topology;
    znRTB::SignalArg<TopoMeshVertex>* m_removedVertex;
    TopoMeshCutResult m_result;
};

class CompactMeshCut : public znRTB::SignalClient
{
public:
    CompactMeshCut(CompactMesh& mesh, const MeshAdjTris& adjTris, double tolerance)
        : m_scope(mesh, allOf(mesh.getNumTriangles()), allOf(mesh.getNumVertices()), adjTris), m_tolerance(tolerance)
    {}

    CompactMeshCutResult operator()(const std::deque<std::deque<MeshCoord>>& places, znUtil::Progress& progress)
    {
        CompactMeshCutResult result;
        TopoMesh& topoMesh = m_scope.extract();
        progress.set(0.2);
        TopoMeshCurves curves;
        znUtil::Progress share;
        progress.subPhase(0.1, share);
        if (!convert(places, curves, share)) return cancelled();
        MeshCurveTopology::extend(curves, m_tolerance);
        progress.subPhase(0.1, share);
        MeshCurveTopology topology(topoMesh, curves, m_tolerance, share);
        if (progress.cancelled()) return cancelled();
        topology.trimInteriorEndPoints();
        result.account.curves = topology.getLosses();
        if (topology.getIPoints().empty()) {
            result.setError(MeshCutStatus::NothingToCut);
            return result;
        }
        znRTB::SignalArg<TopoMeshVertex> removed;
        removed.addCallback([this](TopoMeshVertex v) { m_scope.removeVertex(v); }, *this);
        progress.subPhase(0.6, share);
        const TopoMeshCutResult cut = meshCut(topoMesh, topology, &removed, share);
        result.account = cut.account;
        result.status = cut.status;
        if (cut.problemPoint.face) result.problemPoint = cut.problemPoint.evaluate();
        if (result) m_scope.merge();
        return result;
    }

private:
    static BitVector allOf(int size)
    {
        BitVector all(size);
        all.setAllBits();
        return all;
    }

    static CompactMeshCutResult cancelled()
    {
        CompactMeshCutResult result;
        result.setError(MeshCutStatus::Cancelled);
        return result;
    }

    /// \return false after a cancel
    bool convert(const std::deque<std::deque<MeshCoord>>& places, TopoMeshCurves& curves,
                 znUtil::Progress& progress) const
    {
        internal::Pace pace(progress);
        std::int64_t numDone = 0, numPlaces = 0;
        for (const std::deque<MeshCoord>& run : places) numPlaces += static_cast<std::int64_t>(run.size());
        for (const std::deque<MeshCoord>& run : places) {
            std::deque<TopoMeshCoord> coords;
            for (const MeshCoord& place : run) {
                coords.push_back(m_scope.copy(place));
                if (!pace.goesOn(numDone++, numPlaces)) return false;
            }
            MeshCurveTopology::convert(curves, coords, m_tolerance);
        }
        return !progress.cancelled();
    }

    MeshModifyRep m_scope;
    double m_tolerance;
};

/// Whether all places are on the mesh.
bool areOn(const CompactMesh& mesh, const std::deque<std::deque<MeshCoord>>& curves)
{
    const auto isOn = [&](const MeshCoord& coord) {
        return coord.triangle >= 0 && coord.triangle < mesh.getNumTriangles() &&
               isFinite(coord.evaluate(mesh.getVertices(), mesh.getTriangles()));
    };
    return std::all_of(curves.begin(), curves.end(), [&](const std::deque<MeshCoord>& curve) {
        return std::all_of(curve.begin(), curve.end(), isOn);
    });
}

} // namespace

void TopoMeshCutResult::setError(Status problem, TopoMeshFace face)
{
    problemPoint.w0 = problemPoint.w1 = problemPoint.w2 = 1.0 / 3.0;
    problemPoint.face = face;
    status = problem;
}

TopoMeshCutResult meshCut(TopoMesh& mesh, MeshCurveTopology& topology, znRTB::SignalArg<TopoMeshVertex>* removedVertex,
                          znUtil::Progress& progress)
{
    debugChannel().print("meshCut:  curves(%d) IPoints(%d) faces(%d)\n", topology.getCurves().size(),
                         topology.getIPoints().size(), mesh.numFaces());
    znOS::StopWatch watch;
    TopoMeshCutResult result;
    result.setError(MeshCutStatus::InvalidCurves);
    if (areInvalid(topology.getCurves())) return result;
    result = MeshCut(mesh, topology, removedVertex)(progress);
    debugChannel().print("  after: faces(%d)  %g s\n", mesh.numFaces(), watch.stop());
    return result;
}

TopoMeshCutResult meshCut(TopoMesh& mesh, MeshCurveTopology& topology, znRTB::SignalArg<TopoMeshVertex>* removedVertex)
{
    znUtil::Progress progress;
    return meshCut(mesh, topology, removedVertex, progress);
}

CompactMeshCutResult meshCut(CompactMesh& mesh, const MeshAdjTris& adjTris,
                             const std::deque<std::deque<MeshCoord>>& curves, double tolerance,
                             znUtil::Progress& progress)
{
    if (areOn(mesh, curves)) return CompactMeshCut(mesh, adjTris, tolerance)(curves, progress);
    CompactMeshCutResult result;
    result.setError(MeshCutStatus::InvalidCurves);
    return result;
}

CompactMeshCutResult meshCut(CompactMesh& mesh, const MeshAdjTris& adjTris,
                             const std::deque<std::deque<MeshCoord>>& curves, double tolerance)
{
    znUtil::Progress progress;
    return meshCut(mesh, adjTris, curves, tolerance, progress);
}

} // namespace znGeom

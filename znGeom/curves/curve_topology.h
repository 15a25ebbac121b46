/// `znGeom::MeshCurveTopology`: how curves on a half-edge mesh repeat, meet and cross each other.
#pragma once

#include <deque>
#include <utility>

#include "znGeom/foundation/containers/list.h"
#include "znGeom/foundation/containers/tree.h"
#include "znGeom/foundation/threads/progress.h"
#include "znGeom/topology/topo_mesh.h"
#include "znGeom/topology/topo_point.h"

namespace znGeom {

namespace internal {
class CurveEnds;
}

/// The points of a curve in order; neighbours lie on a common face. Points are shared: curves that meet hold the same
/// point there.
using TopoMeshCurve = zn::list<zn::Reference<TopoMeshPoint>>;
using TopoMeshCurves = zn::list<TopoMeshCurve>;

/// What became of curves, or parts of them, that are not in the graph.
struct MeshCurveLosses
{
    int numRepeated = 0;       ///< curves that run like a later one at an end
    int numDegenerate = 0;     ///< curves of two points or less whose ends agree
    int numTrimmed = 0;        ///< dangling ends of curves that were taken off
    double repeatedLength = 0; ///< of the curves that repeat, in world units
    double trimmedLength = 0;  ///< of the ends taken off
};

/// The graph of a set of curves: its nodes are the ends of curves and the places where curves cross, themselves
/// included. Curves that cross get a point at the crossing, one for both.
///
/// The curves are the caller's and are edited: repeats are dropped, crossings are inserted. Mesh and curves are
/// borrowed and must outlive the graph. Nothing depends on addresses: equal input gives the same graph in every run.
/// Points nearer than the tolerance, in each coordinate, count as one where they lie on a common face and where no
/// curve would lose its way thereby; with a tolerance of zero or below, or not a number, no points do. What is not
/// finite, or has no length, crosses nothing.
class ZNGEOM_API MeshCurveTopology
{
public:
    /// One place on one curve.
    struct Use
    {
        TopoMeshCurve* curve;
        TopoMeshCurve::Node node;
    };

    /// A node of the graph: a point and every place where it stands on curves.
    class ZNGEOM_API IPoint
    {
    public:
        zn::Reference<TopoMeshPoint> point;
        zn::list<Use> uses;

        IPoint() = default;
        explicit IPoint(zn::Reference<TopoMeshPoint> place) : point(std::move(place)) {}

        /// Adds the first place of a curve, or the last. The curve has points.
        void addCurve(TopoMeshCurve& curve, bool atStart);
        void addCurve(TopoMeshCurve& curve, TopoMeshCurve::Node node) { uses.append({&curve, node}); }
        /// The number of uses: 1 at a lone end, 2 where a curve closes, one for each passage at a crossing.
        int getDegree() const { return uses.size(); }
    };

    /// In order of the points' creation.
    using IPoints = zn::map<zn::Reference<TopoMeshPoint>, IPoint, TopoMeshPointOrder>;

    /// Builds the graph: drops repeats, joins ends, finds crossings within faces, with curves along edges, and at
    /// vertices.
    ///
    /// \param tolerance  a distance in world units
    /// \param progress   advanced; a cancel leaves a graph, and curves, with which nothing more can be done
    ///
    /// Of two curves with an end in common, whose next points agree too, the earlier one counts as a repeat. An end of
    /// a curve joins one end at most of those after it. n log n in the points of curves, quadratic in the segments
    /// within one face.
    MeshCurveTopology(TopoMesh& mesh, TopoMeshCurves& curves, double tolerance);
    MeshCurveTopology(TopoMesh& mesh, TopoMeshCurves& curves, double tolerance, znUtil::Progress& progress);

    TopoMesh& getMesh() const { return *m_mesh; }
    TopoMeshCurves& getCurves() const { return *m_curves; }
    const IPoints& getIPoints() const { return m_iPoints; }
    /// Null for a point that is no node.
    IPoint* getIPoint(const zn::Reference<TopoMeshPoint>& point);
    double getTolerance() const { return m_tolerance; }
    const MeshCurveLosses& getLosses() const { return m_losses; }

    /// Takes off the ends of curves that end alone in the surface, back to the next node; curves without a node go
    /// altogether. Ends on the boundary stay. n log n in the curves.
    void trimInteriorEndPoints();

    /// Appends the curves of a run of surface coordinates: a new one begins where two consecutive coordinates have no
    /// face in common. Repeats of a coordinate are dropped. Without coordinates one empty curve is appended.
    static void convert(TopoMeshCurves& curves, const std::deque<TopoMeshCoord>& coords, double tolerance);
    /// Moves the ends of curves that lie inside a face on to its side, straight ahead, so that a cut reaches an edge.
    /// Ends that meet another end stay.
    static void extend(TopoMeshCurves& curves, double tolerance);

private:
    struct Segment;
    class Segments;

    void build(znUtil::Progress& progress);
    void validateCurves();
    void createIPoints();
    void linkCurves();
    bool closeOnItself(TopoMeshCurve& curve);
    void linkOpenCurves();
    void linkEnds(TopoMeshCurve& second, zn::Reference<TopoMeshPoint> (&ends)[4], internal::CurveEnds& places);
    void mergeEnds(const zn::Reference<TopoMeshPoint>& keep, const zn::Reference<TopoMeshPoint>& drop,
                   internal::CurveEnds& places);
    bool areEquivalent(const TopoMeshPoint& a, const TopoMeshPoint& b) const;
    void intersect(znUtil::Progress& progress);
    void intersect(const Segment& first, const Segment& second, TopoMeshFace face);
    void split(TopoMeshCurve& curve, TopoMeshCurve::Node before, const zn::Reference<TopoMeshPoint>& crossing);
    void findVertexIntersections();
    void addUse(TopoMeshCurve& curve, TopoMeshCurve::Node node);
    bool merge(const zn::Reference<TopoMeshPoint>& keep, const zn::Reference<TopoMeshPoint>& drop);
    TopoMeshCurve* removeUse(TopoMeshCurve& curve, TopoMeshCurve::Node node);
    bool isLoose(TopoMeshCurve& curve, TopoMeshCurve::Node node) const;
    std::pair<TopoMeshCurve*, TopoMeshCurve*> trim(TopoMeshCurve& curve, bool atStart);
    void dropPassedNodes();

    TopoMesh* m_mesh;
    TopoMeshCurves* m_curves;
    IPoints m_iPoints;
    double m_tolerance;
    MeshCurveLosses m_losses;
};

/// Visits all points of all curves; empty curves are skipped. Points inserted behind the present one are visited too.
class ZNGEOM_API MeshCurveTopologyIterator
{
public:
    explicit MeshCurveTopologyIterator(TopoMeshCurves& curves);

    bool valid() const { return m_curve && m_point; }
    void next();
    TopoMeshCurve& getCurve() const { return m_curve.value(); }
    TopoMeshCurve::Node getIterator() const { return m_point; }

private:
    void nextIfInvalid();

    TopoMeshCurves::Node m_curve;
    TopoMeshCurve::Node m_point;
};

} // namespace znGeom

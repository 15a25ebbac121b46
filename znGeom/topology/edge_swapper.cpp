#include "znGeom/topology/edge_swapper.h"

#include <cmath>
#include <numbers>

#include "znGeom/foundation/linear/plane.h"
#include "znGeom/topology/internal/fold_over.h"
#include "znGeom/topology/topo_walks.h"

namespace znGeom {

using namespace znLinear;
using internal::normalOf;

namespace {

constexpr double featureTolerance = 2.5 * std::numbers::pi / 180;

/// The corners of the two triangles on an edge: its ends, then the third corners, that of its own face first.
struct Quad
{
    TopoMeshVertex a, b, c, d;

    explicit Quad(TopoMeshEdge e) : a(e->origin), b(endOf(e)), c(e->prev->origin), d(e->twin->prev->origin) {}
};

/// The angle at a corner; the same to the last bit whichever side comes first. 0 where a side has no direction.
double angleAt(TopoMeshVertex corner, TopoMeshVertex first, TopoMeshVertex second)
{
    const Normal a(first->point - corner->point), b(second->point - corner->point);
    return a.isValid() && b.isValid() ? angle(a, b) : 0;
}

/// The sum of two angles between 0 and pi: the direction of a complex number.
struct AngleSum
{
    double x, y;

    /// Of the angles that two corners make over two points.
    static AngleSum at(TopoMeshVertex corner, TopoMeshVertex otherCorner, TopoMeshVertex p, TopoMeshVertex q)
    {
        const Vector toP = p->point - corner->point, toQ = q->point - corner->point;
        const Vector otherToP = p->point - otherCorner->point, otherToQ = q->point - otherCorner->point;
        const double cosine = dot(toP, toQ), sine = cross(toP, toQ).length();
        const double otherCosine = dot(otherToP, otherToQ), otherSine = cross(otherToP, otherToQ).length();
        return {cosine * otherCosine - sine * otherSine, cosine * otherSine + sine * otherCosine};
    }
    double length2() const { return x * x + y * y; }
};

/// Which of two sums is larger, without an arc tangent: -1 the first, 1 the second, 0 where that is not clear.
int clearlyLarger(const AngleSum& first, const AngleSum& second)
{
    constexpr double clearSine2 = 1e-18, smallest = 1e-250, largest = 1e250;
    const double firstScale = first.length2(), secondScale = second.length2(), scale = firstScale * secondScale;
    const double turn = first.x * second.y - first.y * second.x;
    const bool isClear = scale > smallest && scale < largest && turn * turn > clearSine2 * scale &&
                         first.y * first.y > clearSine2 * firstScale && second.y * second.y > clearSine2 * secondScale;
    if (!isClear) return 0;
    if ((first.y > 0) != (second.y > 0)) return second.y < 0 ? 1 : -1;
    return turn > 0 ? 1 : -1;
}

/// The fold along a to b between the triangles (a, b, c) and (b, a, d), in radians: negative when d lies above the
/// first. Not a number when one of them has no normal.
double foldAngle(TopoMeshVertex a, TopoMeshVertex b, TopoMeshVertex c, TopoMeshVertex d)
{
    const Normal first = normalOf(a, b, c), second = normalOf(b, a, d);
    if (!first.isValid() || !second.isValid()) return std::nan("");
    const double fold = angle(first, second);
    return isAbove(d->point, Plane(a->point, first), epsilonTol) ? -fold : fold;
}

/// Stands for the half-edges of a mesh that come first in their pairs.
struct AllEdges
{};

template <typename Visit>
void forEachPair(const TopoMesh& mesh, AllEdges, const Visit& visit)
{
    for (TopoMeshEdge e = mesh.firstEdge(); e; e = e->listNext)
        if (e->twin && e < e->twin) visit(e);
}

template <typename Edges, typename Visit>
void forEachPair(const TopoMesh&, const Edges& edges, const Visit& visit)
{
    for (const TopoMeshEdge e : edges)
        if (e->twin) visit(e);
}

template <typename Edges>
int passOver(TopoMesh& mesh, const Edges& edges, MeshEdgeSwapper& swapper)
{
    int count = 0;
    forEachPair(mesh, edges, [&](TopoMeshEdge e) { count += swapper.shouldSwap(e) && mesh.swapEdge(e); });
    return count;
}

/// Finds out whether the passes go round in circles, which rounding can bring about even where a policy has an end:
/// with corners on a line, to within the last bits. It keeps the corners around all edges as they stood once, from time
/// to time (Brent, "An improved Monte Carlo factorization algorithm", 1980).
class CircleDetector
{
public:
    /// To be asked after each pass.
    template <typename Edges>
    bool hasComeBack(const TopoMesh& mesh, const Edges& edges)
    {
        if (++m_numPasses < patience) return false;
        zn::vector<TopoMeshVertex> now;
        forEachPair(mesh, edges, [&now](TopoMeshEdge e) {
            const auto [a, b, c, d] = Quad(e);
            for (const TopoMeshVertex corner : {a, b, c, d}) now.append(corner);
        });
        if (now == m_kept) return true;
        if (m_numPasses < m_nextKept) return false;
        m_kept.swap(now);
        m_nextKept = 2 * m_numPasses;
        return false;
    }

private:
    static constexpr long patience = 100; ///< a policy that counts may have its way for so long
    long m_numPasses = 0, m_nextKept = patience;
    zn::vector<TopoMeshVertex> m_kept;
};

int notified(TopoMesh& mesh, int count)
{
    if (count == 0) return 0;
    TopoMeshModification modification(&mesh, TopoMeshModification::ConnectivityChanged);
    mesh.modified(modification);
    return count;
}

template <typename Edges>
int swapRepeatedly(TopoMesh& mesh, const Edges& edges, MeshEdgeSwapper& swapper)
{
    int total = 0;
    CircleDetector detector;
    while (const int count = passOver(mesh, edges, swapper)) {
        total += count;
        if (detector.hasComeBack(mesh, edges)) break;
    }
    return notified(mesh, total);
}

} // namespace

MeshEdgeSwapper::MeshEdgeSwapper() = default;
MeshEdgeSwapper::~MeshEdgeSwapper() = default;

MeshEdgeSwapper::VetoSignal& MeshEdgeSwapper::getVetoSignal()
{
    if (!m_vetoSignal) m_vetoSignal = std::make_unique<VetoSignal>();
    return *m_vetoSignal;
}

void MeshEdgeSwapper::clearVetoSignal() { m_vetoSignal.reset(); }

bool MeshEdgeSwapper::shouldSwap(TopoMeshEdge e)
{
    if (!m_vetoSignal || !m_vetoSignal->isConnected() || !e->twin) return false;
    bool veto = false;
    m_vetoSignal->emit(e, veto);
    return !veto;
}

void MeshEdgeSwapper::minimizeOppositeAngleSum(TopoMeshEdge e, bool& veto)
{
    if (!e->twin) return void(veto = true);
    const auto [a, b, c, d] = Quad(e);
    if (const int larger = clearlyLarger(AngleSum::at(c, d, a, b), AngleSum::at(b, a, c, d))) {
        if (larger > 0) veto = true;
        return;
    }
    const double before = angleAt(c, a, b) + angleAt(d, a, b), after = angleAt(b, c, d) + angleAt(a, c, d);
    if (after >= before) veto = true;
}

void MeshEdgeSwapper::preventFoldover(TopoMeshEdge e, bool& veto)
{
    if (!e->twin) return void(veto = true);
    const auto [a, b, c, d] = Quad(e);
    if (internal::foldsOver(a, b, c, d)) veto = true;
}

void MeshEdgeSwapper::preserveBoundary(TopoMeshEdge e, bool& veto)
{
    if (!e->twin) return void(veto = true);
    const auto [a, b, c, d] = Quad(e);
    if ((a.onBoundary() && b.onBoundary()) || (c.onBoundary() && d.onBoundary())) veto = true;
}

void MeshEdgeSwapper::preserveFeatures(TopoMeshEdge e, bool& veto)
{
    if (!e->twin) return void(veto = true);
    const auto [a, b, c, d] = Quad(e);
    const double change = std::fabs(foldAngle(a, b, c, d) - foldAngle(d, c, a, b));
    if (!(change < featureTolerance)) veto = true;
}

int meshSwapEdgesOnce(TopoMesh& mesh, MeshEdgeSwapper& swapper)
{
    return notified(mesh, passOver(mesh, AllEdges(), swapper));
}

int meshSwapEdgesOnce(TopoMesh& mesh, const zn::set<TopoMeshEdge>& edges, MeshEdgeSwapper& swapper)
{
    return notified(mesh, passOver(mesh, edges, swapper));
}

int meshSwapEdgesOnce(TopoMesh& mesh, const zn::vector<TopoMeshEdge>& edges, MeshEdgeSwapper& swapper)
{
    return notified(mesh, passOver(mesh, edges, swapper));
}

int meshSwapEdgesRepeatedly(TopoMesh& mesh, MeshEdgeSwapper& swapper)
{
    return swapRepeatedly(mesh, AllEdges(), swapper);
}

int meshSwapEdgesRepeatedly(TopoMesh& mesh, const zn::set<TopoMeshEdge>& edges, MeshEdgeSwapper& swapper)
{
    return swapRepeatedly(mesh, edges, swapper);
}

int meshSwapEdgesRepeatedly(TopoMesh& mesh, const zn::vector<TopoMeshEdge>& edges, MeshEdgeSwapper& swapper)
{
    return swapRepeatedly(mesh, edges, swapper);
}

} // namespace znGeom

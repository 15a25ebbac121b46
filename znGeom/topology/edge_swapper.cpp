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

/// A complex number whose argument is an angle, or the sum of two, up to a full turn. Its length is of no matter.
struct Turn
{
    double x, y;

    static Turn at(TopoMeshVertex corner, TopoMeshVertex first, TopoMeshVertex second)
    {
        const Vector u = first->point - corner->point, v = second->point - corner->point;
        return {dot(u, v), cross(u, v).length()};
    }
    friend Turn operator+(Turn a, Turn b) { return {a.x * b.x - a.y * b.y, a.x * b.y + a.y * b.x}; }
    double size() const { return std::fabs(x) + std::fabs(y); }
    bool isOverHalf() const { return y < 0; }
};

/// Tells two sums of angles apart without arcus functions. \return 1 where the first is greater, -1 where the second
/// is, 0 where they are too close to each other, or to no, half or a full turn, to tell; an angle that isn't one makes
/// that 0 as well
int compareSurely(Turn a, Turn b)
{
    constexpr double doubt = 1e-12;
    const double difference = b.x * a.y - b.y * a.x;
    if (!(std::fabs(a.y) > doubt * a.size() && std::fabs(b.y) > doubt * b.size())) return 0;
    if (a.isOverHalf() != b.isOverHalf()) return a.isOverHalf() ? 1 : -1;
    if (!(std::fabs(difference) > doubt * a.size() * b.size())) return 0;
    return difference > 0 ? 1 : -1;
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
    const int order = compareSurely(Turn::at(b, c, d) + Turn::at(a, c, d), Turn::at(c, a, b) + Turn::at(d, a, b));
    if (order != 0) {
        if (order > 0) veto = true;
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

#include "znGeom/topology/edge_swapper.h"

#include <cmath>
#include <numbers>

#include "znGeom/foundation/linear/plane.h"
#include "znGeom/topology/topo_walks.h"

namespace znGeom {

using namespace znLinear;

namespace {

constexpr double rightAngle = std::numbers::pi / 2;
constexpr double featureTolerance = 2.5 * std::numbers::pi / 180;

/// The corners of the two triangles on an edge: its ends, then the third corners, that of its own face first.
struct Quad
{
    TopoMeshVertex a, b, c, d;

    explicit Quad(TopoMeshEdge e) : a(e->origin), b(endOf(e)), c(e->prev->origin), d(e->twin->prev->origin) {}
};

/// The cosine and sine of an angle, or of the sum of two.
struct Turn
{
    double cosine, sine;

    friend Turn operator+(const Turn& a, const Turn& b)
    {
        return {a.cosine * b.cosine - a.sine * b.sine, a.sine * b.cosine + a.cosine * b.sine};
    }
    /// Grows with the angle from 0 to a full turn, nowhere faster than it.
    double rank() const { return sine >= 0 ? 1 - cosine : 3 + cosine; }
    /// Whether rounding might tell no turn from a full one.
    bool isNearWhole(double margin) const { return std::fabs(sine) < margin && cosine > 0; }
};

Turn turnBetween(const Normal& a, const Normal& b) { return {dot(a, b), cross(a, b).length()}; }

double angleBetween(const Normal& a, const Normal& b) { return a.isValid() && b.isValid() ? angle(a, b) : 0; }

/// From the corners C and D of a quad to A and B. The angles between them, in pairs, are those of the triangles on both
/// diagonals, to the last bit: nothing depends on the sense or the order of two directions.
struct QuadSides
{
    Normal toA[2], toB[2];

    explicit QuadSides(const Quad& quad)
        : toA{quad.a->point - quad.c->point, quad.a->point - quad.d->point}, toB{quad.b->point - quad.c->point,
                                                                                 quad.b->point - quad.d->point}
    {}

    double anglesAtCAndD() const { return angleBetween(toA[0], toB[0]) + angleBetween(toA[1], toB[1]); }
    double anglesAtAAndB() const { return angleBetween(toB[0], toB[1]) + angleBetween(toA[0], toA[1]); }

    /// Whether the angles at C and D are together greater than those at A and B. Most quads are told by cosines and
    /// sines; where these are too close to call, the angles themselves decide.
    bool isWiderAtCAndD() const
    {
        constexpr double margin = 1e-9;
        const Turn atCAndD = turnBetween(toA[0], toB[0]) + turnBetween(toA[1], toB[1]);
        const Turn atAAndB = turnBetween(toB[0], toB[1]) + turnBetween(toA[0], toA[1]);
        const double difference = atCAndD.rank() - atAAndB.rank();
        const bool isClear = toA[0].isValid() && toA[1].isValid() && toB[0].isValid() && toB[1].isValid() &&
                             std::fabs(difference) > margin && !atCAndD.isNearWhole(margin) &&
                             !atAAndB.isNearWhole(margin);
        return isClear ? difference > 0 : anglesAtCAndD() > anglesAtAAndB();
    }
};

Normal normalOf(TopoMeshVertex p, TopoMeshVertex q, TopoMeshVertex r)
{
    return Normal(cross(r->point - q->point, p->point - q->point));
}

/// The angle itself is only needed where its cosine is too close to call.
bool isBeyondRightAngle(const Normal& a, const Normal& b)
{
    constexpr double margin = 1e-9;
    const double cosine = dot(a, b);
    return std::fabs(cosine) > margin ? cosine < 0 : angle(a, b) > rightAngle;
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
    if (!QuadSides(Quad(e)).isWiderAtCAndD()) veto = true;
}

void MeshEdgeSwapper::preventFoldover(TopoMeshEdge e, bool& veto)
{
    if (!e->twin) return void(veto = true);
    const auto [a, b, c, d] = Quad(e);
    const Normal first = normalOf(c, d, b), second = normalOf(a, d, c);
    if (!first.isValid() || !second.isValid() || isBeyondRightAngle(first, second)) veto = true;
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

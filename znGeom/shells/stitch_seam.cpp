#include "znGeom/shells/stitch_seam.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "znGeom/foundation/linear/line.h"
#include "znGeom/foundation/linear/normal.h"
#include "znGeom/shells/internal/boundary_path.h"

namespace znGeom {

using namespace znLinear;
using namespace internal;

namespace {

constexpr double leastTolerance = 1e-6;
constexpr double turnMargin = 5 * std::numbers::pi / 180;

/// The two ends of a path.
struct Ends
{
    TopoMeshVertex first, last;
};

/// Divides a boundary half-edge, and its face from the new vertex to the corner before its origin. The half-edge keeps
/// its origin. \return the half-edge from the new vertex to the old end
TopoMeshEdge divide(TopoMesh& mesh, TopoMeshEdge e, const Point& place)
{
    const TopoMeshVertex middle = mesh.subdivideEdge(e, place);
    const TopoMeshEdge rest = e->next;
    mesh.subdivideFace(e->face, middle, e->prev->origin);
    return rest;
}

/// Brings two paths to the same number of steps at the same places. One side is walked by its boundary half-edge that
/// arrives at the vertex `u`, the other by the one that leaves the vertex `w` for the vertex before it on the walk.
class Zip
{
public:
    Zip(TopoMesh& mesh, MeshStitchSeam& removals, double tolerance, Ends a, Ends b)
        : m_mesh(mesh), m_removals(removals), m_tolerance(tolerance > leastTolerance ? tolerance : leastTolerance),
          m_a(a), m_b(b)
    {}

    /// \return false where a side comes apart under way
    bool run(TopoMeshEdge firstOfA, TopoMeshEdge firstOfB)
    {
        m_mesh.setPoint(m_b.first, m_a.first->point);
        m_mesh.setPoint(m_b.last, m_a.last->point);
        m_arriving = firstOfA;
        m_leaving = firstOfB;
        while (m_arriving && m_leaving) {
            if (u() == m_a.last && w() == m_b.last) return true;
            if (!shorten()) step();
        }
        return false;
    }

private:
    TopoMeshVertex u() const { return endOf(m_arriving); }
    TopoMeshVertex w() const { return m_leaving->origin; }
    const Point& last() const { return m_arriving->origin->point; }

    void advanceA() { m_arriving = nextOnBoundary(m_arriving); }
    void advanceB() { m_leaving = prevOnBoundary(m_leaving); }

    /// Contracts an edge where the two sides turn away from each other. \return whether it did
    bool shorten()
    {
        if (u() == m_a.last || w() == m_b.last) return false;
        const Vector alongA = last() - u()->point, alongB = endOf(m_leaving)->point - w()->point;
        const Normal a(alongA), b(alongB);
        if (!a.isValid() || !b.isValid() || !(angle(a, b) + turnMargin > std::numbers::pi / 2)) return false;
        return alongB.length2() > alongA.length2() ? contractA() : contractB();
    }

    bool isContractible(TopoMeshEdge e) const
    {
        const TopoMeshVertex dying = e->origin;
        const bool isLooseFace = !e->next->twin && !e->prev->twin;
        return !isLooseFace && dying != m_a.first && dying != m_a.last && dying != m_b.first && dying != m_b.last &&
               TopoMesh::canCollapse(e);
    }

    /// The vertex `u` takes the place of the one before it, and the next one becomes `u`.
    bool contractA()
    {
        const TopoMeshEdge e = m_arriving;
        if (!isContractible(e)) return false;
        const TopoMeshEdge next = nextOnBoundary(e);
        // Where both edges belong to one face, what lies beyond its third side comes to the boundary instead.
        m_arriving = next && next == e->next ? e->prev->twin : next;
        const Point place = e->origin->point;
        m_removals.emit(e->origin);
        m_mesh.setPoint(m_mesh.contractEdge(e), place);
        return true;
    }

    /// The vertex `w` goes, and the next one becomes `w`.
    bool contractB()
    {
        const TopoMeshEdge e = m_leaving;
        if (!isContractible(e)) return false;
        const TopoMeshEdge before = prevOnBoundary(e);
        m_leaving = before && before == e->prev ? e->next->twin : before;
        m_removals.emit(e->origin);
        m_mesh.contractEdge(e);
        return true;
    }

    void step()
    {
        const ParamLine edge(last(), u()->point);
        // An edge without length is matched as it is.
        const double t = edge.direction.length2() > 0 ? projectParam(w()->point, edge) : 1;
        if (w() == m_b.last)
            insertOnB();
        else if (t < m_tolerance)
            insertOnA(edge.eval(shareOfNext(edge)));
        else if (u() == m_a.last)
            insertOnA(edge.eval(t < 1 - m_tolerance ? t : shareOfNext(edge)));
        else if (std::fabs(t - 1) < m_tolerance)
            match();
        else if (t < 1)
            insertOnA(edge.eval(t));
        else
            insertOnB();
    }

    void match()
    {
        m_mesh.setPoint(w(), u()->point);
        advanceA();
        advanceB();
    }

    void insertOnA(const Point& place)
    {
        m_arriving = divide(m_mesh, m_arriving, place);
        m_mesh.setPoint(w(), place);
        advanceB();
    }

    void insertOnB()
    {
        const Point place = u()->point;
        divide(m_mesh, m_leaving, place);
        advanceA();
    }

    /// Where `w` goes on an edge across when it lies too near to the beginning, or at the last edge too near to the
    /// end: in the middle if no other vertex comes before that end. Several share the room before the first one that
    /// lies further on; halving for each what is left would soon leave nothing.
    double shareOfNext(const ParamLine& edge) const
    {
        constexpr int mostLookedAt = 16;
        constexpr double leastRoom = 1.0 / 16;
        double room = 0;
        int count = 0;
        TopoMeshEdge e = m_leaving;
        do {
            ++count;
            e = prevOnBoundary(e);
            room = !e || e->origin == m_b.last ? 1 : projectParam(e->origin->point, edge);
        } while (e && e->origin != m_b.last && !isFurtherOn(room) && count < mostLookedAt);
        return std::clamp(room, std::max(m_tolerance, leastRoom), 1.0) / (count + 1);
    }

    bool isFurtherOn(double t) const { return t >= m_tolerance && (u() != m_a.last || t < 1 - m_tolerance); }

    TopoMesh& m_mesh;
    MeshStitchSeam& m_removals;
    double m_tolerance;
    Ends m_a, m_b;
    TopoMeshEdge m_arriving, m_leaving;
};

} // namespace

class MeshStitchSeamImpl final : public zn::ImplBase
{
public:
    MeshStitchSeamImpl(TopoMesh& mesh, MeshStitchSeam& owner) : m_mesh(&mesh), m_owner(&owner) {}

    void stitch(Ends a, Ends b, double tolerance, bool merge)
    {
        preservedA = true;
        isComplete = false;
        zn::vector<TopoMeshEdge> pathA = boundaryPath(a.first, a.last, true);
        zn::vector<TopoMeshEdge> pathB = boundaryPath(b.first, b.last, false);
        if (pathA.empty() || pathB.empty() || !areDisjoint(pathA, pathB) || areAcrossFaces(pathA, pathB)) return;
        if (pathB.size() > pathA.size()) {
            // The longer side stays put: the sides change places, and with them the direction of the walk.
            a = {std::exchange(b.last, a.first), std::exchange(b.first, a.last)};
            pathA.swap(pathB);
            std::reverse(pathA.begin(), pathA.end());
            std::reverse(pathB.begin(), pathB.end());
            preservedA = false;
        }
        if (!freeEnds(a, b, pathA, pathB)) return;
        isComplete = zip(a, b, pathA[0], pathB[0], tolerance);
        if (merge && isComplete) isComplete = join(a, b);
        tell();
    }

    void stitchCircular(TopoMeshVertex a, TopoMeshVertex b, double tolerance, bool merge)
    {
        preservedA = true;
        isComplete = false;
        zn::vector<TopoMeshEdge> loopA = loopThrough(a), loopB = loopThrough(b);
        if (loopA.size() < 2 || loopB.size() < 2 || !areDisjoint(loopA, loopB)) return;
        if (loopB.size() > loopA.size()) {
            loopA.swap(loopB);
            std::swap(a, b);
            preservedA = false;
        }
        const TopoMeshEdge half = loopA[loopA.size() / 2];
        const TopoMeshEdge nearA = nearest(loopB, a->point);
        const TopoMeshEdge nearHalf = nearest(boundaryLoop(nearA), half->origin->point);
        const TopoMeshVertex m = half->origin, c = nearA->origin, d = nearHalf->origin;
        if (a == m || c == d) return;
        isComplete = zip({a, m}, {c, d}, loopA[0], prevOnBoundary(nearA), tolerance) && zip({c, d}, {a, m}, tolerance);
        if (merge && isComplete) {
            isComplete = join({a, m}, {c, d});
            isComplete = join({m, a}, {m, a}) && isComplete;
        }
        tell();
    }

    bool preservedA = true;
    bool isComplete = false;

private:
    static TopoMeshEdge nearest(const zn::vector<TopoMeshEdge>& loop, const Point& place)
    {
        return *std::min_element(loop.begin(), loop.end(), [&](TopoMeshEdge a, TopoMeshEdge b) {
            return (a->origin->point - place).length2() < (b->origin->point - place).length2();
        });
    }

    /// Whether a face reaches from one path to the other: they are the sides of a ribbon then, and not of a gap.
    static bool areAcrossFaces(const zn::vector<TopoMeshEdge>& pathA, const zn::vector<TopoMeshEdge>& pathB)
    {
        zn::vector<TopoMeshVertex> within;
        for (int i = 0; i + 1 < pathB.size(); ++i) within.append(pathB[i]->origin);
        std::sort(within.begin(), within.end());
        return std::any_of(pathA.begin(), pathA.end(), [&](TopoMeshEdge e) {
            return std::binary_search(within.begin(), within.end(), e->prev->origin);
        });
    }

    /// Begins and ends one step further in where an edge joins the two vertices that would become one. \return false
    /// where no step is left
    static bool freeEnds(Ends& a, Ends& b, zn::vector<TopoMeshEdge>& pathA, zn::vector<TopoMeshEdge>& pathB)
    {
        if (isInTheWay(a.first, b.first)) {
            a.first = endOf(pathA.front());
            b.first = pathB.front()->origin;
            pathA.erase(pathA.begin());
            pathB.erase(pathB.begin());
        }
        if (pathA.empty() || pathB.empty()) return false;
        if (isInTheWay(a.last, b.last)) {
            a.last = pathA.back()->origin;
            b.last = endOf(pathB.back());
            pathA.eraseBack();
            pathB.eraseBack();
        }
        return !pathA.empty() && !pathB.empty() && !isInTheWay(a.first, b.first) && !isInTheWay(a.last, b.last);
    }

    bool zip(Ends a, Ends b, TopoMeshEdge firstOfA, TopoMeshEdge firstOfB, double tolerance)
    {
        return Zip(*m_mesh, *m_owner, tolerance, a, b).run(firstOfA, firstOfB);
    }

    bool zip(Ends a, Ends b, double tolerance)
    {
        const zn::vector<TopoMeshEdge> pathA = boundaryPath(a.first, a.last, true);
        const zn::vector<TopoMeshEdge> pathB = boundaryPath(b.first, b.last, false);
        return !pathA.empty() && !pathB.empty() && zip(a, b, pathA[0], pathB[0], tolerance);
    }

    /// Joins the half-edges of two zipped paths. \return whether all of them are joined
    bool join(Ends a, Ends b)
    {
        const zn::vector<TopoMeshEdge> pathA = boundaryPath(a.first, a.last, true);
        const zn::vector<TopoMeshEdge> pathB = boundaryPath(b.first, b.last, false);
        if (pathA.empty() || pathA.size() != pathB.size()) return false;
        bool isWhole = true;
        for (int i = 0; i < pathA.size(); ++i) isWhole = joinPair(pathA[i], pathB[i]) && isWhole;
        return isWhole;
    }

    bool joinPair(TopoMeshEdge e, TopoMeshEdge f)
    {
        if (isInTheWay(e->origin, endOf(f)) || isInTheWay(endOf(e), f->origin)) return false;
        if (doublesEdge(e->origin, endOf(f)) || doublesEdge(endOf(e), f->origin)) return false;
        if (e->origin != endOf(f)) m_owner->emit(endOf(f));
        if (endOf(e) != f->origin) m_owner->emit(f->origin);
        m_mesh->mergeVertices(e, f);
        return true;
    }

    /// Whether two edges would run between the same vertices if two vertices became one, other than along a seam.
    static bool doublesEdge(TopoMeshVertex kept, TopoMeshVertex dying)
    {
        if (kept == dying) return false;
        const auto isOpen = [](TopoMeshVertex a, TopoMeshVertex b) {
            const TopoMeshEdge there = TopoMesh::findEdge(a, b), back = TopoMesh::findEdge(b, a);
            return (there && !there->twin) || (back && !back->twin);
        };
        const auto isDoubled = [&](TopoMeshVertex v) {
            return v != kept && areJoined(v, kept) && !(isOpen(v, kept) && isOpen(v, dying));
        };
        for (const TopoMeshEdge spoke : outgoingOf(dying))
            if (isDoubled(endOf(spoke)) || isDoubled(spoke->prev->origin)) return true;
        return false;
    }

    /// Whether an edge would end where it begins if two vertices became one.
    static bool isInTheWay(TopoMeshVertex kept, TopoMeshVertex dying)
    {
        return kept != dying && areJoined(kept, dying);
    }

    void tell()
    {
        TopoMeshModification modification(m_mesh, TopoMeshModification::ConnectivityChanged);
        m_mesh->modified(modification);
    }

    TopoMesh* m_mesh;
    MeshStitchSeam* m_owner; ///< sends the vertices that go
};

MeshStitchSeam::MeshStitchSeam(TopoMesh& mesh) : m_impl(new MeshStitchSeamImpl(mesh, *this)) {}
MeshStitchSeam::MeshStitchSeam(const MeshStitchSeam& other) : SignalArg(), m_impl(other.m_impl) {}
MeshStitchSeam::~MeshStitchSeam() = default;

void MeshStitchSeam::stitch(TopoMeshVertex a0, TopoMeshVertex a1, TopoMeshVertex b0, TopoMeshVertex b1,
                            double tolerance, bool merge)
{
    m_impl->stitch({a0, a1}, {b0, b1}, tolerance, merge);
}

void MeshStitchSeam::stitchCircular(TopoMeshVertex a, TopoMeshVertex b, double tolerance, bool merge)
{
    m_impl->stitchCircular(a, b, tolerance, merge);
}

bool MeshStitchSeam::preservedA() const { return m_impl->preservedA; }
bool MeshStitchSeam::isComplete() const { return m_impl->isComplete; }

} // namespace znGeom

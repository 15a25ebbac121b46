#include "znGeom/curves/lay_polyline.h"

#include <algorithm>

#include "znGeom/analysis/bounds.h"
#include "znGeom/curves/internal/pace.h"
#include "znGeom/curves/internal/plane_walk.h"
#include "znGeom/spatial/queries/closest_point.h"
#include "znGeom/spatial/trees/octree.h"
#include "znGeom/spatial/trees/octree_partition.h"

namespace znGeom {

using namespace znLinear;

namespace {

constexpr int leafCapacity = 16;
constexpr int stepsPerLook = 16; ///< a piece may cross thousands of triangles

/// Below this weight a place lies on the side across.
constexpr double leastWeight = 1e-9;

BoundingBox boxOf(const CompactMesh& mesh)
{
    BoundingBox box;
    meshBoundingBox(mesh, box);
    return box;
}

/// Moves a place that is next to nothing inside its triangle on to the side or the corner.
void snap(MeshCoord& coord)
{
    double sum = 0;
    for (double& weight : coord.weights) sum += weight = weight < leastWeight ? 0 : weight;
    for (double& weight : coord.weights) weight /= sum;
}

} // namespace

class MeshLayPolylineImpl final : public zn::ImplBase
{
public:
    MeshLayPolylineImpl(const CompactMesh& mesh, const MeshAdjTris& adjTris)
        : m_mesh(mesh), m_adjTris(adjTris), m_across(internal::sidesAcross(mesh)),
          m_octree(mesh.getNumVertices(), mesh.getVerticesRaw(), boxOf(mesh), true, leafCapacity)
    {
        computeOctreeTris(mesh, m_octree, m_octreeTris);
    }

    MeshLaidPolyline lay(const zn::vector<Point>& points, bool closed, znUtil::Progress& progress)
    {
        MeshLaidPolyline laid;
        zn::vector<MeshCoord> places(points.size(), MeshCoord());
        MeshClosestPoint closest(m_mesh, m_octree, m_octreeTris);
        znUtil::Progress share;
        progress.subPhase(0.5, share);
        internal::Pace pace(share, stepsPerLook);
        for (int i = 0; i < points.size(); ++i) {
            if (!pace.goesOn(i, points.size())) return {};
            const double distance = closest.compute(points[i], &places[i]);
            if (!places[i].valid()) {
                laid.lostPoint = i;
                return laid;
            }
            snap(places[i]);
            if (laid.farthestPoint >= 0 && !(distance > laid.farthestDistance)) continue;
            laid.farthestPoint = i, laid.farthestDistance = distance;
        }
        progress.subPhase(0.5, share);
        join(places, closed, share, laid);
        return laid;
    }

private:
    struct Start
    {
        int side;
        double forward; ///< the cosine between the way to the side and that to the end
    };

    void join(const zn::vector<MeshCoord>& places, bool closed, znUtil::Progress& progress,
              MeshLaidPolyline& laid) const
    {
        internal::Pace pace(progress, stepsPerLook);
        std::deque<MeshCoord> coords;
        const int count = places.size();
        for (int i = 0; i < count; ++i) {
            if (!pace.goesOn(i, count)) return void(laid = {});
            if (coords.empty() || pointAt(coords.back()) != pointAt(places[i])) coords.push_back(places[i]);
            if (i + 1 == count && (!closed || count < 3)) break;
            if (trace(places[i], places[i + 1 < count ? i + 1 : 0], coords)) continue;
            laid.lostPiece = i;
            return;
        }
        if (!progress.cancelled()) progress.set(1); // the last chance for an observer to cancel
        if (progress.cancelled()) return void(laid = {});
        laid.curve = new MeshCurve(coords, closed && count > 2);
    }

    Point pointAt(const MeshCoord& coord) const { return coord.evaluate(m_mesh.getVertices(), m_mesh.getTriangles()); }

    /// The triangles that hold a place: one, those on an edge, or those around a vertex.
    zn::vector<int> trianglesAt(const MeshCoord& place) const
    {
        zn::vector<int> triangles;
        if (const int vertex = internal::vertexAt(m_mesh, place); vertex >= 0) {
            for (const int triangle : m_adjTris.around(vertex)) triangles.append(triangle);
            return triangles;
        }
        triangles.append(place.triangle);
        for (int corner = 0; corner < 3; ++corner)
            if (const int side = m_across[3 * place.triangle + cornerAfter(corner)];
                place.weights[corner] == 0 && side >= 0)
                triangles.append(side / 3);
        return triangles;
    }

    /// The mean direction of the triangles that hold a place, weighted by their areas.
    Vector normalAt(const zn::vector<int>& triangles) const
    {
        Vector sum;
        for (const int triangle : triangles) {
            const MeshTriangle& corners = m_mesh.getTriangles()[triangle];
            const auto corner = [&](int i) { return m_mesh.getVertices()[corners[i]].asPoint(); };
            sum += cross(corner(1) - corner(0), corner(2) - corner(0));
        }
        return Normal(sum).asVector();
    }

    /// Appends the crossings between two places. \return false, and nothing appended, when the way doesn't lead there
    bool trace(const MeshCoord& from, const MeshCoord& to, std::deque<MeshCoord>& coords) const
    {
        const Point start = pointAt(from);
        const Vector way = pointAt(to) - start;
        const zn::vector<int> first = trianglesAt(from), last = trianglesAt(to);
        if (way.length2() == 0 ||
            std::find_first_of(first.begin(), first.end(), last.begin(), last.end()) != first.end())
            return true;
        const Vector atStart = normalAt(first), atEnd = normalAt(last);
        for (const Vector& upright : {atStart + atEnd, atStart, atEnd}) {
            const Plane plane(start, Normal(cross(way, upright)));
            if (!plane.isValid()) continue;
            for (const bool isOnAbove : {true, false}) {
                const internal::PlaneWalk walk(m_mesh, plane, isOnAbove);
                for (const Start& begin : starts(walk, first, start, way))
                    if (follow(walk, begin.side, last, coords)) return true;
            }
        }
        return false;
    }

    /// The sides over which a walk may leave, those straight ahead first.
    zn::vector<Start> starts(const internal::PlaneWalk& walk, const zn::vector<int>& triangles, const Point& start,
                             const Vector& way) const
    {
        zn::vector<Start> found;
        for (const int triangle : triangles)
            for (int side = 3 * triangle; side < 3 * triangle + 3; ++side) {
                if (!walk.crosses(side)) continue;
                Vector out = pointAt(walk.crossing(side)) - start;
                if (out.length2() > 1e-24 * way.length2() && out.normalize()) found.append({side, dot(out, way)});
            }
        std::stable_sort(found.begin(), found.end(),
                         [](const Start& a, const Start& b) { return a.forward > b.forward; });
        return found;
    }

    bool follow(const internal::PlaneWalk& walk, int first, const zn::vector<int>& last,
                std::deque<MeshCoord>& coords) const
    {
        const std::size_t before = coords.size();
        int exit = first;
        do {
            coords.push_back(walk.crossing(exit));
            const int side = m_across[exit];
            if (side < 0) break;
            if (std::find(last.begin(), last.end(), side / 3) != last.end()) return true;
            exit = walk.otherCrossed(side);
        } while (exit >= 0 && exit != first);
        coords.resize(before);
        return false;
    }

    const CompactMesh& m_mesh;
    const MeshAdjTris& m_adjTris;
    zn::vector<int> m_across;
    Octree m_octree;
    OctreeTris m_octreeTris;
};

MeshLayPolyline::MeshLayPolyline(const CompactMesh& mesh, const MeshAdjTris& adjTris)
    : m_impl(new MeshLayPolylineImpl(mesh, adjTris))
{}

MeshLaidPolyline MeshLayPolyline::operator()(const zn::vector<Point>& points, bool closed) const
{
    znUtil::Progress progress;
    return m_impl->lay(points, closed, progress);
}

MeshLaidPolyline MeshLayPolyline::operator()(const zn::vector<Point>& points, bool closed,
                                             znUtil::Progress& progress) const
{
    return m_impl->lay(points, closed, progress);
}

} // namespace znGeom

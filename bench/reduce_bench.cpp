// Reducing a mesh: to parts of its vertices and within a tolerance; and what every edit of a region costs at least, the
// whole mesh taken out as a half-edge mesh and merged back.
#include "bench/compact.h"
#include "bench/reduction.h"
#include "bench/suite.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/analysis/bounds.h"
#include "znGeom/scopes.h"
#include "znGeom/simplify.h"
#include "znGeom/spatial/queries/closest_point.h"
#include "znGeom/spatial/trees/octree_partition.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <set>
#include <vector>

namespace {

using bench::Input;
using bench::Soup;
using znGeom::CompactMesh;
using znLinear::Point;

/// Corners, and the middles of triangles.
std::vector<Point> samplesOf(const CompactMesh& mesh)
{
    std::vector<Point> samples;
    std::vector<bool> isTaken(static_cast<std::size_t>(mesh.getNumVertices()));
    for (int t = 0; t < mesh.getNumTriangles(); ++t) {
        znLinear::Vector sum;
        for (const int corner : mesh.getTriangles()[t].corners) {
            const Point at = mesh.getVertices()[corner].asPoint();
            sum += at.asVector();
            if (!isTaken[static_cast<std::size_t>(corner)]) samples.push_back(at);
            isTaken[static_cast<std::size_t>(corner)] = true;
        }
        samples.push_back((sum / 3.0).asPoint());
    }
    return samples;
}

/// Nearest places on a mesh.
class Nearest
{
public:
    explicit Nearest(const CompactMesh& mesh)
        : m_octree(mesh.getNumVertices(), mesh.getVerticesRaw(), boxOf(mesh), true, 16), m_tree(mesh)
    {
        znGeom::computeOctreeTris(mesh, m_octree, m_triangles);
        m_closest = std::make_unique<znGeom::MeshClosestPoint>(mesh, m_octree, m_triangles, m_tree);
    }

    std::vector<double> distancesTo(const std::vector<Point>& points, znGeom::MeshCoord* places = nullptr)
    {
        std::vector<double> distances(points.size());
        m_closest->compute(points.data(), static_cast<int>(points.size()), places, distances.data());
        return distances;
    }

private:
    static znGeom::BoundingBox boxOf(const CompactMesh& mesh)
    {
        znGeom::BoundingBox box;
        znGeom::meshBoundingBox(mesh, box);
        return box;
    }

    znGeom::Octree m_octree;
    znGeom::OctreeTris m_triangles;
    znGeom::TriangleTree m_tree;
    std::unique_ptr<znGeom::MeshClosestPoint> m_closest;
};

znLinear::Vector normalOf(const CompactMesh& mesh, int triangle)
{
    const auto [a, b, c] = mesh.getTriangles()[triangle].corners;
    const Point at = mesh.getVertices()[a].asPoint();
    return cross(mesh.getVertices()[b].asPoint() - at, mesh.getVertices()[c].asPoint() - at);
}

int countTurned(const CompactMesh& original, Nearest& nearest, const CompactMesh& reduced)
{
    std::vector<Point> middles;
    for (int t = 0; t < reduced.getNumTriangles(); ++t) {
        znLinear::Vector sum;
        for (const int corner : reduced.getTriangles()[t].corners)
            sum += reduced.getVertices()[corner].asPoint().asVector();
        middles.push_back((sum / 3.0).asPoint());
    }
    std::vector<znGeom::MeshCoord> places(middles.size());
    nearest.distancesTo(middles, places.data());
    int numTurned = 0;
    for (int t = 0; t < reduced.getNumTriangles(); ++t)
        numTurned += dot(normalOf(reduced, t), normalOf(original, places[static_cast<std::size_t>(t)].triangle)) < 0;
    return numTurned;
}

template <class Reduce>
bool measureReduction(const char* work, Reduce reduce)
{
    return bench::measure({work, "znGeom", [](const Input&) { return true; },
                           [=](benchmark::State& state, const Input& input) {
                               std::unique_ptr<CompactMesh> mesh;
                               bench::timeWork(
                                   state,
                                   [&] {
                                       mesh = bench::toCompact(input.soup());
                                       return mesh.get();
                                   },
                                   [&](CompactMesh* subject) {
                                       zn::vector<Point> removed;
                                       reduce(*subject, input.soup(), removed);
                                       return removed;
                                   });
                               bench::countQuality(state, input.soup(), bench::toSoup(*mesh));
                           },
                           2, bench::generatedInputs()});
}

template <int Percent>
void toPercent(CompactMesh& mesh, const Soup&, zn::vector<Point>& removed)
{
    znUtil::Progress progress;
    znGeom::meshReduceToFraction(mesh, Percent / 100.0, progress, removed);
}

void withinTolerance(CompactMesh& mesh, const Soup& soup, zn::vector<Point>& removed)
{
    znUtil::Progress progress;
    znGeom::meshReduceWithTolerance(mesh, bench::toleranceFor(soup), progress, removed);
}

void runScope(benchmark::State& state, const Input& input)
{
    std::unique_ptr<CompactMesh> mesh;
    znGeom::MeshAdjTris adjTris;
    znGeom::BitVector triangles, vertices;
    bench::timeWork(
        state,
        [&] {
            mesh = bench::toCompact(input.soup());
            znGeom::meshAdjTris(*mesh, adjTris);
            triangles.resize(mesh->getNumTriangles());
            vertices.resize(mesh->getNumVertices());
            triangles.setAllBits();
            vertices.setAllBits();
            return mesh.get();
        },
        [&](CompactMesh* subject) {
            znGeom::MeshModifyRep scope(*subject, triangles, vertices, adjTris);
            scope.extract();
            scope.merge();
            return subject->getNumTriangles();
        });
}

bool alwaysAgrees(const Input&) { return true; }

[[maybe_unused]] const bool listed[] = {
    measureReduction("reduce_half", toPercent<50>),
    measureReduction("reduce_tenth", toPercent<10>),
    measureReduction("reduce_tolerance", withinTolerance),
    bench::measure({"scope", "znGeom", alwaysAgrees, runScope, 0, bench::generatedInputs()}),
};

} // namespace

double bench::toleranceFor(const Soup& soup) { return 0.001 * boxOf(soup).diagonal(); }

bench::Deviation bench::deviation(const Soup& original, const Soup& reduced)
{
    const auto a = toCompact(original), b = toCompact(reduced);
    Nearest onA(*a), onB(*b);
    Deviation result;
    result.numTurned = countTurned(*a, onA, *b);
    double sum2 = 0, count = 0;
    for (const std::vector<double>& distances : {onB.distancesTo(samplesOf(*a)), onA.distancesTo(samplesOf(*b))})
        for (const double distance : distances) {
            result.largest = std::max(result.largest, distance);
            sum2 += distance * distance;
            ++count;
        }
    const double diagonal = boxOf(original).diagonal();
    result.largest /= diagonal;
    result.rootMeanSquare = std::sqrt(sum2 / count) / diagonal;
    return result;
}

void bench::countQuality(benchmark::State& state, const Soup& original, const Soup& reduced)
{
    const Deviation found = deviation(original, reduced);
    const std::set<int> used(reduced.triangles.begin(), reduced.triangles.end());
    state.counters["vertices"] = static_cast<double>(used.size());
    state.counters["turned"] = found.numTurned;
    state.counters["largest_deviation"] = found.largest;
    state.counters["rms_deviation"] = found.rootMeanSquare;
}

#include "znGeom/simplify/internal/reduce_tolerance.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "znGeom/foundation/mesh/mesh_coord.h"
#include "znGeom/spatial/queries/closest_point.h"

namespace znGeom::internal {

using znLinear::Point;
using znUtil::Progress;

void MeshReduceTolerance::beginIteration(int iteration, int candidateCount, Progress& progress)
{
    constexpr double forTheFirst = 0.1, forTheRest = 0.9, rateOfTheLast = 0.01;
    double share = forTheFirst;
    if (iteration == 1) {
        const double rate = static_cast<double>(candidateCount) / m_previousCount;
        const double expected = std::ceil(std::log(rateOfTheLast) / std::log(rate));
        m_expectedIterations = rate < 1 && expected >= 1 ? expected : 1;
    }
    if (iteration > 0)
        share = iteration < m_expectedIterations ? forTheRest / m_expectedIterations : m_usedProgress / 2;
    m_usedProgress += share;
    progress.subPhase(share, m_iterationProgress);
    m_previousCount = candidateCount;
}

void MeshReduceTolerance::endIteration()
{
    m_iterationProgress.set(1.0);
    m_iterationProgress.setCaption(("Reducing (" + std::to_string(mesh().getNumVertices()) + " verts)").c_str());
}

void MeshReduceTolerance::beginBatch(int batchSize, int candidateCount)
{
    m_iterationProgress.subPhase(static_cast<double>(batchSize) / candidateCount, m_batchProgress);
}

void MeshReduceTolerance::endBatch() { m_batchProgress.set(1.0); }

bool MeshReduceTolerance::isCandidate(int vertexIndex) { return flatness(vertexIndex) < m_tolerance; }

bool MeshReduceTolerance::isNear(const Point& point, const std::vector<TrianglePoints>& triangles) const
{
    return std::any_of(triangles.begin(), triangles.end(), [&](const TrianglePoints& corners) {
        MeshCoordBase coord;
        return coord.projectBase(corners[0], corners[1], corners[2], point) &&
               m_tolerance * m_tolerance >= distance2(point, coord.evaluateBase(corners.data()));
    });
}

bool MeshReduceTolerance::acceptRemoval(int vertexIndex, const std::vector<TrianglePoints>& triangles)
{
    if (!isNear(std::as_const(mesh()).getVertices()[vertexIndex].asPoint(), triangles)) return false;
    if (m_pointsOf.getNumSets() == 0) return true;
    const zn::Reference<MeshAdjTris> adjTris = cache().getAdjTris(mesh());
    for (const int triangle : adjTris->around(vertexIndex))
        for (const int point : m_pointsOf.members(triangle))
            if (!isNear(removed()[static_cast<size_t>(point)], triangles)) return false;
    return true;
}

void MeshReduceTolerance::beforeMerge()
{
    const MeshTriangle* triangles = std::as_const(mesh()).getTriangles();
    if (m_pointsOf.getNumSets() > 0)
        m_oldTriangles = zn::vector<MeshTriangle>(triangles, triangles + mesh().getNumTriangles());
}

void MeshReduceTolerance::afterMerge(const Array<int>& remap)
{
    zn::vector<int> triangleOf(static_cast<int>(removed().size()), -1);
    keepAssignments(remap, triangleOf);
    assignToNearest(triangleOf);
    m_oldTriangles.clear();
    if (m_batchProgress.cancelled()) return;
    zn::vector<int> pairs;
    pairs.reserve(2 * triangleOf.size());
    for (int point = 0; point < triangleOf.size(); ++point) {
        if (triangleOf[point] < 0) continue;
        pairs.append(triangleOf[point]);
        pairs.append(point);
    }
    m_pointsOf.assignFromPairs(mesh().getNumTriangles(), pairs.size() / 2, pairs.data());
}

/// Points of triangles that are there as before stay with them.
void MeshReduceTolerance::keepAssignments(const Array<int>& remap, zn::vector<int>& triangleOf)
{
    const zn::Reference<MeshAdjTris> adjTris = cache().getAdjTris(mesh());
    for (int old = 0; old < m_oldTriangles.size(); ++old) {
        const std::span<const int> points = m_pointsOf.members(old);
        if (points.empty()) continue;
        const auto [a, b, c] = m_oldTriangles[old].corners;
        const MeshTriangle moved{{remap[a], remap[b], remap[c]}};
        if (moved[0] < 0 || moved[1] < 0 || moved[2] < 0) continue;
        for (const int triangle : adjTris->around(moved[0])) {
            const MeshTriangle& now = std::as_const(mesh()).getTriangles()[triangle];
            if (!hasDirectedEdge(now, moved[0], moved[1]) || !hasDirectedEdge(now, moved[1], moved[2])) continue;
            for (const int point : points) triangleOf[point] = triangle;
            break;
        }
    }
}

void MeshReduceTolerance::assignToNearest(zn::vector<int>& triangleOf)
{
    constexpr int leafCapacity = 64;
    zn::vector<int> numbers;
    zn::vector<Point> points;
    for (int point = 0; point < triangleOf.size(); ++point) {
        if (triangleOf[point] >= 0) continue;
        numbers.append(point);
        points.append(removed()[static_cast<size_t>(point)]);
    }
    const zn::Reference<Octree> octree = cache().getOctree(mesh(), leafCapacity);
    const zn::Reference<OctreeTris> octreeTris = cache().getOctreeTris(mesh());
    const TriangleTree tree(mesh());
    zn::vector<MeshCoord> places(points.size());
    zn::vector<double> distances(points.size(), 0.0);
    MeshClosestPoint closest(mesh(), *octree, *octreeTris, tree);
    if (!closest.compute(points.data(), points.size(), places.data(), distances.data(), &m_batchProgress)) return;
    for (int i = 0; i < numbers.size(); ++i) {
        triangleOf[numbers[i]] = places[i].triangle;
        m_greatestDeviation = std::max(m_greatestDeviation, distances[i]);
    }
}

} // namespace znGeom::internal

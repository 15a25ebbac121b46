// Nearest points on a mesh by the triangles of an octree.
#include "bench/closest.h"

#include "bench/checks.h"
#include "bench/compact.h"
#include "znGeom/analysis/bounds.h"
#include "znGeom/spatial/closest_point.h"
#include "znGeom/spatial/octree_partition.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace bench {

std::vector<float> checkedPoints(const Input& input, Spread spread) { return queryPoints(input.soup(), spread, 100); }

bool closestAgrees(const Input& input, Spread spread, const std::vector<double>& distances)
{
    static std::map<std::pair<const Input*, Spread>, std::vector<double>> known;
    std::vector<double>& wanted = known[{&input, spread}];
    if (wanted.empty()) wanted = distancesTo(input.soup(), checkedPoints(input, spread));
    const double tolerance = 1e-5 * boxOf(input.soup()).diagonal();
    return std::equal(wanted.begin(), wanted.end(), distances.begin(), distances.end(),
                      [=](double a, double b) { return std::abs(a - b) <= tolerance; });
}

} // namespace bench

namespace {

class OctreeIndex
{
public:
    explicit OctreeIndex(const bench::Soup& soup) : mesh_(bench::toCompact(soup))
    {
        znGeom::BoundingBox box;
        znGeom::meshBoundingBox(*mesh_, box);
        octree_ = std::make_unique<znGeom::Octree>(mesh_->getNumVertices(), mesh_->getVerticesRaw(), box, true, 16);
        znGeom::computeOctreeTris(*mesh_, *octree_, triangles_);
        tree_ = std::make_unique<znGeom::TriangleTree>(*mesh_);
    }

    void distances(const float* points, std::size_t count, double* distances) const
    {
        znGeom::MeshClosestPoint closestPoint(*mesh_, *octree_, triangles_, *tree_);
        znGeom::MeshCoord coord;
        for (std::size_t i = 0; i < count; ++i)
            distances[i] = closestPoint.compute(znLinear::Point(znLinear::PointFlt(points + 3 * i)), &coord);
    }

private:
    std::unique_ptr<znGeom::CompactMesh> mesh_;
    std::unique_ptr<znGeom::Octree> octree_;
    znGeom::OctreeTris triangles_;
    std::unique_ptr<znGeom::TriangleTree> tree_;
};

[[maybe_unused]] const bool listed = bench::measureClosest<OctreeIndex>("znGeom");

} // namespace

// Nearest points on a mesh, using the triangle sets of an octree.
#include "bench/closest.h"

#include "bench/checks.h"
#include "bench/compact.h"
#include "znGeom/analysis/bounds.h"
#include "znGeom/spatial/queries/closest_point.h"
#include "znGeom/spatial/trees/octree_partition.h"

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

/// Octree and triangle sets, which answer by a walk.
class WalkIndex
{
public:
    explicit WalkIndex(const bench::Soup& soup) : mesh_(bench::toCompact(soup)), bytesBefore_(bench::heapInUse())
    {
        znGeom::BoundingBox box;
        znGeom::meshBoundingBox(*mesh_, box);
        octree_ = std::make_unique<znGeom::Octree>(mesh_->getNumVertices(), mesh_->getVerticesRaw(), box, true, 16);
        znGeom::computeOctreeTris(*mesh_, *octree_, triangles_);
        bytes_ = bench::heapInUse() - bytesBefore_;
    }

    void distances(const float* points, std::size_t count, double* distances) const
    {
        answer(znGeom::MeshClosestPoint(*mesh_, *octree_, triangles_), points, count, distances);
    }
    std::size_t bytes() const { return bytes_; }

protected:
    static void answer(znGeom::MeshClosestPoint closestPoint, const float* points, std::size_t count, double* distances)
    {
        znGeom::MeshCoord coord;
        for (std::size_t i = 0; i < count; ++i)
            distances[i] = closestPoint.compute(znLinear::Point(znLinear::PointFlt(points + 3 * i)), &coord);
    }

    std::unique_ptr<znGeom::CompactMesh> mesh_;
    std::unique_ptr<znGeom::Octree> octree_;
    znGeom::OctreeTris triangles_;

private:
    std::size_t bytesBefore_, bytes_ = 0;
};

/// The same with a tree.
class TreeIndex : public WalkIndex
{
public:
    explicit TreeIndex(const bench::Soup& soup) : WalkIndex(soup), tree_(std::make_unique<znGeom::TriangleTree>(*mesh_))
    {}

    void distances(const float* points, std::size_t count, double* distances) const
    {
        answer(znGeom::MeshClosestPoint(*mesh_, *octree_, triangles_, *tree_), points, count, distances);
    }
    std::size_t bytes() const { return WalkIndex::bytes() + tree_->numBytes(); }

    /// In one call on two threads.
    std::vector<double> distancesAtOnce(const std::vector<znLinear::Point>& points) const
    {
        static znUtil::ThreadPool twoThreads(2);
        std::vector<znGeom::MeshCoord> places(points.size());
        std::vector<double> distances(points.size());
        znGeom::MeshClosestPoint(*mesh_, *octree_, triangles_, *tree_)
            .compute(points.data(), static_cast<int>(points.size()), places.data(), distances.data(), nullptr,
                     twoThreads);
        return distances;
    }

private:
    std::unique_ptr<znGeom::TriangleTree> tree_;
};

std::vector<znLinear::Point> pointsOf(const std::vector<float>& coordinates)
{
    std::vector<znLinear::Point> points;
    for (std::size_t i = 0; i < coordinates.size(); i += 3) points.emplace_back(znLinear::PointFlt(&coordinates[i]));
    return points;
}

bool measureAtOnce(const char* work, bench::Spread spread)
{
    using bench::Input;
    return bench::measure(
        {work,
         "znGeom",
         [=](const Input& input) {
             const auto points = pointsOf(bench::checkedPoints(input, spread));
             return bench::closestAgrees(input, spread, bench::madeOnce<TreeIndex>(input).distancesAtOnce(points));
         },
         [=](benchmark::State& state, const Input& input) {
             const TreeIndex& index = bench::madeOnce<TreeIndex>(input);
             const auto points = pointsOf(bench::queryPoints(input.soup(), spread, bench::numQueries));
             bench::timeWork(
                 state, [&] { return &points; },
                 [&](const std::vector<znLinear::Point>* subject) { return index.distancesAtOnce(*subject); });
         },
         2,
         {"torus_small", "torus"}});
}

[[maybe_unused]] const bool listed[] = {
    bench::measureClosest<TreeIndex, WalkIndex>("znGeom"),
    measureAtOnce("closest_near_at_once", bench::Spread::near),
    measureAtOnce("closest_wide_at_once", bench::Spread::wide),
};

} // namespace

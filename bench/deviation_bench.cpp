// The distances of all vertices of a mesh from another, with the trees made before or not.
#include "bench/deviation.h"

#include "bench/checks.h"
#include "bench/compact.h"
#include "znGeom/analysis/bounds.h"
#include "znGeom/analysis/normals.h"
#include "znGeom/spatial/queries/deviation.h"
#include "znGeom/spatial/trees/octree_partition.h"

#include <cmath>
#include <memory>

namespace bench {

std::vector<float> movedVertices(const Soup& soup)
{
    std::vector<float> moved;
    const float way = static_cast<float>(boxOf(soup).diagonal() / 100);
    for (const float coordinate : soup.positions) moved.push_back(coordinate * 1.01f + way);
    return moved;
}

bool deviationAgrees(const Input& input, const std::vector<float>& distances)
{
    const std::vector<float> points = movedVertices(input.soup());
    std::vector<float> some;
    const std::size_t numPoints = points.size() / 3, step = numPoints / 50;
    for (std::size_t i = 0; i < numPoints; i += step) some.insert(some.end(), &points[3 * i], &points[3 * i] + 3);
    const std::vector<double> wanted = distancesTo(input.soup(), some);
    const double tolerance = 1e-5 * boxOf(input.soup()).diagonal();
    for (std::size_t i = 0; i < wanted.size(); ++i)
        if (std::abs(std::abs(double(distances[i * step])) - wanted[i]) > tolerance) return false;
    return true;
}

} // namespace bench

namespace {

using bench::Input;
using Mesh = std::unique_ptr<znGeom::CompactMesh>;

Mesh movedMesh(const bench::Soup& soup)
{
    bench::Soup moved = soup;
    moved.positions = bench::movedVertices(soup);
    Mesh mesh = bench::toCompact(moved);
    znGeom::meshComputeNormals(*mesh);
    return mesh;
}

class Target
{
public:
    explicit Target(const bench::Soup& soup) : Target(bench::toCompact(soup)) {}
    explicit Target(Mesh mesh) : mesh_(std::move(mesh))
    {
        znGeom::BoundingBox box;
        znGeom::meshBoundingBox(*mesh_, box);
        octree_ = std::make_unique<znGeom::Octree>(mesh_->getNumVertices(), mesh_->getVerticesRaw(), box, true, 16);
        znGeom::computeOctreeTris(*mesh_, *octree_, triangles_);
        tree_ = std::make_unique<znGeom::TriangleTree>(*mesh_);
    }

    std::vector<float> distancesOf(const znGeom::CompactMesh& source) const
    {
        znUtil::Progress progress;
        std::vector<float> distances(static_cast<std::size_t>(source.getNumVertices()));
        znGeom::MeshDeviation(*mesh_, {}, *octree_, triangles_, *tree_, progress)
            .calculate(&source, {}, distances.data(), false, false);
        return distances;
    }

private:
    Mesh mesh_;
    std::unique_ptr<znGeom::Octree> octree_;
    znGeom::OctreeTris triangles_;
    std::unique_ptr<znGeom::TriangleTree> tree_;
};

bool agrees(const Input& input)
{
    const auto distances = bench::madeOnce<Target>(input).distancesOf(*movedMesh(input.soup()));
    return bench::deviationAgrees(input, distances);
}

[[maybe_unused]] const bool listed[] = {
    bench::measure({"deviation", "znGeom", agrees,
                    [](benchmark::State& state, const Input& input) {
                        const Target& target = bench::madeOnce<Target>(input);
                        const Mesh source = movedMesh(input.soup());
                        bench::timeWork(
                            state, [&] { return source.get(); },
                            [&](const znGeom::CompactMesh* mesh) { return target.distancesOf(*mesh); });
                    },
                    3, bench::generatedInputs()}),
    bench::measure({"deviation_made", "znGeom", agrees,
                    [](benchmark::State& state, const Input& input) {
                        const Mesh source = movedMesh(input.soup());
                        bench::timeWork(
                            state, [&] { return bench::toCompact(input.soup()); },
                            [&](Mesh& mesh) { return Target(std::move(mesh)).distancesOf(*source); });
                    },
                    3, bench::generatedInputs()}),
};

} // namespace

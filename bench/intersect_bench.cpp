// Crossing triangles: within a mesh, within two overlapping copies of it, and of the mesh with a moved copy; and all
// tests that a mesh is checked with. On all threads and on one.
#include "bench/compact.h"
#include "bench/crossings.h"
#include "bench/suite.h"
#include "znGeom/foundation/threads.h"
#include "znGeom/spatial/queries/mesh_intersect.h"

#include <cmath>
#include <deque>
#include <memory>

namespace bench {

Soup moved(const Soup& soup)
{
    Soup result = soup;
    const double size = boxOf(soup).diagonal(), cosine = std::cos(0.1), sine = std::sin(0.1);
    for (std::size_t i = 0; i < result.positions.size(); i += 3) {
        const double x = static_cast<double>(result.positions[i]), y = static_cast<double>(result.positions[i + 1]);
        result.positions[i] = static_cast<float>(cosine * x - sine * y + 0.01 * size);
        result.positions[i + 1] = static_cast<float>(sine * x + cosine * y);
        result.positions[i + 2] += static_cast<float>(0.02 * size);
    }
    return result;
}

Soup overlapping(const Soup& soup)
{
    Soup result = soup;
    const Soup second = moved(soup);
    const int numVertices = soup.numVertices();
    result.positions.insert(result.positions.end(), second.positions.begin(), second.positions.end());
    for (const int corner : second.triangles) result.triangles.push_back(corner + numVertices);
    return result;
}

} // namespace bench

namespace {

using bench::Input;
using znGeom::CompactMesh;
using znUtil::ThreadPool;

using Pairs = std::deque<znGeom::MeshIntersectPair>;

std::unique_ptr<Pairs> crossings(const CompactMesh& mesh, ThreadPool& pool)
{
    auto result = std::make_unique<Pairs>();
    znUtil::Progress progress;
    znGeom::MeshIntersect(mesh, pool).selfIntersect(progress, *result);
    return result;
}

std::unique_ptr<Pairs> crossingsWith(const CompactMesh& mesh, const CompactMesh& other)
{
    auto onFirst = std::make_unique<Pairs>();
    Pairs onSecond;
    znUtil::Progress progress;
    znGeom::MeshIntersect(mesh).intersect(other, {}, progress, *onFirst, onSecond);
    return onFirst;
}

struct Overlapping
{
    std::unique_ptr<CompactMesh> mesh;
    explicit Overlapping(const bench::Soup& soup) : mesh(bench::toCompact(bench::overlapping(soup))) {}
};

using PoolOf = ThreadPool& (*)();

bool measureClean(const char* work, PoolOf pool)
{
    return bench::measure({work, "znGeom", [](const Input&) { return true; },
                           [=](benchmark::State& state, const Input& input) {
                               const auto mesh = bench::toCompact(input.soup());
                               bench::timeWork(
                                   state, [&] { return mesh.get(); },
                                   [=](const CompactMesh* subject) { return crossings(*subject, pool()); });
                           }});
}

bool measureOverlapping(const char* work, PoolOf pool)
{
    return bench::measure({work, "znGeom", [](const Input&) { return true; },
                           [=](benchmark::State& state, const Input& input) {
                               const CompactMesh& mesh = *bench::madeOnce<Overlapping>(input).mesh;
                               bench::timeWork(
                                   state, [&] { return &mesh; },
                                   [=](const CompactMesh* subject) { return crossings(*subject, pool()); });
                           }});
}

void runMoved(benchmark::State& state, const Input& input)
{
    const auto mesh = bench::toCompact(input.soup()), other = bench::toCompact(bench::moved(input.soup()));
    bench::timeWork(
        state, [&] { return mesh.get(); }, [&](const CompactMesh* subject) { return crossingsWith(*subject, *other); });
}

[[maybe_unused]] const bool listed[] = {
    measureClean("self_intersect", ThreadPool::get),
    measureClean("self_intersect_one_thread", ThreadPool::getSingleThreadedPool),
    measureOverlapping("self_intersect_overlapping", ThreadPool::get),
    measureOverlapping("self_intersect_overlapping_one_thread", ThreadPool::getSingleThreadedPool),
    bench::measure({"intersect", "znGeom", [](const Input&) { return true; }, runMoved}),
};

} // namespace

bench::Crossings bench::crossingsWithin(const Soup& soup)
{
    const auto mesh = toCompact(soup);
    Crossings result;
    const std::unique_ptr<Pairs> pairs = crossings(*mesh, ThreadPool::get());
    for (std::size_t i = 0; i < pairs->size(); i += 2)
        result.emplace_back((*pairs)[i].start.triangle, (*pairs)[i + 1].start.triangle);
    return result;
}

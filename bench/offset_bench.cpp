// Offset shells: the shell built, the queries which of its vertices are too close, and the pruning, each by itself; and
// all of it as one call.
#include "bench/compact.h"
#include "bench/offset.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/analysis/boundaries.h"
#include "znGeom/analysis/bounds.h"
#include "znGeom/scopes/convert_rep.h"
#include "znGeom/shells/internal/offset_nearness.h"
#include "znGeom/shells/internal/offset_pruning.h"
#include "znGeom/shells/offset.h"

#include <filesystem>

namespace {

using bench::Soup;

/// A mesh with what an offset is made from.
struct Source
{
    std::unique_ptr<znGeom::CompactMesh> mesh;
    znGeom::MeshAdjTris adjTris;
    znGeom::MeshAdjVertices adjVertices;
    znGeom::MeshBoundaries boundaries;
    std::unique_ptr<znGeom::Octree> octree;

    explicit Source(const Soup& soup) : mesh(bench::toCompact(soup))
    {
        znGeom::meshAdjTris(*mesh, adjTris);
        znGeom::meshAdjVertices(*mesh, adjTris, adjVertices);
        znGeom::meshComputeBoundary(*mesh, adjTris, adjVertices, boundaries);
        znGeom::BoundingBox box;
        znGeom::meshBoundingBox(*mesh, box);
        octree = std::make_unique<znGeom::Octree>(mesh->getNumVertices(), mesh->getVerticesRaw(), box, true, 16);
    }
};

/// A shell under construction.
struct Build
{
    Source& source;
    double distance;
    std::unique_ptr<znGeom::MeshConvertRep> whole;
    znGeom::TopoMesh* topology = nullptr;
    znGeom::internal::OffsetShell shell;
    zn::vector<znLinear::Point> points;
    znGeom::BitVector tooClose, kept;

    void makeShell()
    {
        znGeom::BitVector triangles(source.mesh->getNumTriangles()), vertices(source.mesh->getNumVertices());
        triangles.setAllBits();
        vertices.setAllBits();
        whole = std::make_unique<znGeom::MeshConvertRep>(*source.mesh, triangles, vertices, source.adjTris);
        topology = &whole->extract();
        shell = znGeom::internal::makeOffsetShell(*topology, source.boundaries, distance);
        for (const znGeom::TopoMeshVertex copy : shell.copies) points.append(copy.point());
    }
    void query() { tooClose = znGeom::internal::findTooClose(*source.octree, points, distance); }
    void prune() { znGeom::internal::pruneOffset(*topology, shell, tooClose, 0, kept); }
};

class Nearness
{
public:
    explicit Nearness(const Soup& soup) : m_source(soup) {}

    int countNearer(const std::vector<double>& points, double distance) const
    {
        zn::vector<znLinear::Point> queries(m_source.mesh->getNumVertices());
        for (int i = 0; i < queries.size(); ++i) queries[i] = znLinear::Point(points.data() + 3 * std::ptrdiff_t(i));
        return znGeom::internal::findTooClose(*m_source.octree, queries, distance,
                                              znUtil::ThreadPool::getSingleThreadedPool())
            .getNumSetBits();
    }

private:
    Source m_source;
};

/// \param before, work  stages of a build; the second is timed
void measureStage(const std::string& name, void (*before)(Build&), void (*work)(Build&))
{
    for (const bench::OffsetInput& input : bench::offsetInputs()) {
        const auto run = [&input, before, work](benchmark::State& state) {
            const Soup soup = input.make();
            Source source(soup);
            std::unique_ptr<Build> build;
            bench::timeWork(
                state,
                [&] {
                    build = std::make_unique<Build>(Build{source, input.distance(soup), {}, {}, {}, {}, {}, {}});
                    before(*build);
                    return build.get();
                },
                [work](Build* fresh) {
                    work(*fresh);
                    return fresh->kept.getNumSetBits();
                });
        };
        bench::measureAlone(name, "znGeom/" + input.name, run, 5);
    }
}

void runWhole(benchmark::State& state, const bench::OffsetInput& input)
{
    const Soup soup = input.make();
    Source source(soup);
    bench::timeWork(
        state, [&] { return &source; },
        [&](Source* subject) {
            znGeom::MeshOffset offset(*subject->mesh, *subject->octree, subject->boundaries, subject->adjTris,
                                      input.distance(soup));
            return std::unique_ptr<znGeom::CompactMesh>(offset.calculate(true));
        });
}

[[maybe_unused]] const bool listed = [] {
    for (const bench::OffsetInput& input : bench::offsetInputs())
        bench::measureAlone(
            "offset_shell", "znGeom/" + input.name, [&input](benchmark::State& state) { runWhole(state, input); }, 5);
    measureStage(
        "offset_build", [](Build&) {}, [](Build& build) { build.makeShell(); });
    measureStage(
        "offset_pruning",
        [](Build& build) {
            build.makeShell();
            build.query();
        },
        [](Build& build) { build.prune(); });
    return bench::measureOffsetNearness<Nearness>("znGeom");
}();

} // namespace

namespace bench {

const std::vector<OffsetInput>& offsetInputs()
{
    static const std::vector<OffsetInput> present = [] {
        std::vector<OffsetInput> list;
        const std::filesystem::path folder = ZNGEOM_BENCH_MESHES;
        for (const auto& [name, file] : {std::pair{"bunny", "stanford-bunny.obj"}, {"armadillo", "armadillo.obj"}})
            for (const auto& [percent, part] : {std::pair{"_half_percent", 0.005}, {"_two_percent", 0.02}})
                if (const std::filesystem::path path = folder / file; std::filesystem::exists(path))
                    list.push_back({std::string(name) + percent, [path] { return readObjFile(path); }, part});
        return list;
    }();
    return present;
}

std::vector<double> movedVertices(const Soup& soup, double distance)
{
    Source source(soup);
    Build build{source, distance, {}, {}, {}, {}, {}, {}};
    build.makeShell();
    std::vector<double> points;
    for (const znLinear::Point& point : build.points) points.insert(points.end(), {point.x, point.y, point.z});
    return points;
}

int countTooClose(const Soup& soup, const std::vector<double>& points, double distance)
{
    return Nearness(soup).countNearer(points, distance);
}

} // namespace bench

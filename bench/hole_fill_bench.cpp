// Filling all holes of a surface, with all that it needs: adjacency and boundaries, the region taken out and merged.
#include "bench/compact.h"
#include "bench/hole_fill.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/analysis/boundaries.h"
#include "znGeom/analysis/census.h"
#include "znGeom/repair/hole_fill.h"

#include <filesystem>
#include <string>

namespace bench {
namespace {

/// Without the triangles whose first corner lies beyond a part of the box's width.
Soup cutOff(const Soup& soup, float part)
{
    const Box box = boxOf(soup);
    const float limit = box.low[0] + part * (box.high[0] - box.low[0]);
    Soup result{soup.positions, {}};
    for (std::size_t i = 0; i < soup.triangles.size(); i += 3)
        if (soup.positions[3 * static_cast<std::size_t>(soup.triangles[i])] < limit)
            result.triangles.insert(result.triangles.end(), &soup.triangles[i], &soup.triangles[i] + 3);
    return result;
}

znGeom::MeshEdgeCensus edgesOf(const Soup& soup)
{
    const auto mesh = toCompact(soup);
    znGeom::MeshEdgeSides sides;
    znGeom::meshEdgeSides(*mesh, sides);
    return znGeom::meshCountEdges(*mesh, sides);
}

} // namespace

const std::vector<HolesInput>& holesInputs()
{
    static const std::vector<HolesInput> present = [] {
        std::vector<HolesInput> list = {{"one_large", [] { return cutOff(bumpyTorus(187, 187), 0.93f); }},
                                        {"many_small", [] { return punched(bumpyTorus(187, 187)); }}};
        const std::filesystem::path folder = ZNGEOM_BENCH_MESHES;
        for (const auto& [name, file] : {std::pair{"bunny", "stanford-bunny.obj"},
                                         {"plane", "plane_holes.obj"},
                                         {"tower", "tower_holes.obj"},
                                         {"beetle", "beetle.obj"}}) {
            const std::filesystem::path path = folder / file;
            if (std::filesystem::exists(path)) list.push_back({name, [path] { return readObjFile(path); }});
        }
        return list;
    }();
    return present;
}

bool closesHoles(const Soup& before, const Soup& after)
{
    const znGeom::MeshEdgeCensus old = edgesOf(before), now = edgesOf(after);
    return now.nonManifold <= old.nonManifold &&
           (now.boundary == 0 || (old.nonManifold > 0 && now.boundary < old.boundary));
}

} // namespace bench

namespace {

template <int quality>
class Filling
{
public:
    explicit Filling(const bench::Soup& soup) : m_mesh(bench::toCompact(soup)) {}

    int run()
    {
        znGeom::MeshAdjTris adjTris;
        znGeom::MeshAdjVertices adjVertices;
        znGeom::MeshBoundaries boundaries;
        znGeom::meshAdjTris(*m_mesh, adjTris);
        znGeom::meshAdjVertices(*m_mesh, adjTris, adjVertices);
        znGeom::meshComputeBoundary(*m_mesh, adjTris, adjVertices, boundaries);
        zn::list<int> holes;
        for (int i = 0; i < boundaries.size(); ++i) holes.append(i);
        znUtil::Progress progress;
        return znGeom::meshHoleFill(*m_mesh, adjTris, adjVertices, boundaries, holes,
                                    static_cast<znGeom::HoleQuality>(quality), progress);
    }
    bench::Soup result() const { return bench::toSoup(*m_mesh); }

private:
    std::unique_ptr<znGeom::CompactMesh> m_mesh;
};

[[maybe_unused]] const bool listed[] = {
    bench::measureHoleFill<Filling<znGeom::HoleRefined>>("hole_refine", "znGeom"),
    bench::measureHoleFill<Filling<znGeom::HoleFaired>>("hole_fill", "znGeom"),
};

} // namespace

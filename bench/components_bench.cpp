// The connected components, with the component of each vertex. The adjacency that both sides start from exists already.
#include "bench/checks.h"
#include "bench/compact.h"
#include "bench/suite.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/analysis/components.h"

#include <memory>

namespace {

using bench::Input;

struct Subject
{
    std::unique_ptr<znGeom::CompactMesh> mesh;
    znGeom::MeshAdjTris adjTris;

    explicit Subject(const bench::Soup& soup) : mesh(bench::toCompact(soup)) { znGeom::meshAdjTris(*mesh, adjTris); }
};

struct Components
{
    znGeom::Array<int> ofVertices;
    int count = 0;
};

Components components(const Subject& subject)
{
    Components result;
    result.count = znGeom::meshComponents(*subject.mesh, subject.adjTris, &result.ofVertices);
    return result;
}

bool countAgrees(const Input& input)
{
    return components(Subject(input.soup())).count == bench::components(input.soup());
}

void run(benchmark::State& state, const Input& input)
{
    const Subject subject(input.soup());
    bench::timeWork(
        state, [&] { return &subject; }, [](const Subject* given) { return components(*given); });
}

[[maybe_unused]] const bool listed = bench::measure({"components", "znGeom", countAgrees, run});

} // namespace

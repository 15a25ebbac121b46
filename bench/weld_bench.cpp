// Welding a mesh that has three vertices of its own for each triangle.
#include "bench/checks.h"
#include "bench/compact.h"
#include "bench/suite.h"
#include "znGeom/editing/weld.h"

#include <memory>

namespace {

using bench::Input;

bool weld(znGeom::CompactMesh& mesh)
{
    znUtil::Progress progress;
    znGeom::meshCompact(mesh, progress);
    return true;
}

bool weldingAgrees(const Input& input)
{
    const auto mesh = bench::toCompact(input.blownUp());
    weld(*mesh);
    return bench::sameSurface(input.blownUp(), bench::toSoup(*mesh), bench::distinctPositions(input.blownUp()), 0);
}

void runWelding(benchmark::State& state, const Input& input)
{
    std::unique_ptr<znGeom::CompactMesh> mesh;
    bench::timeWork(
        state,
        [&] {
            mesh = bench::toCompact(input.blownUp());
            return mesh.get();
        },
        [](znGeom::CompactMesh* subject) { return weld(*subject); });
}

[[maybe_unused]] const bool listed = bench::measure({"weld", "znGeom", weldingAgrees, runWelding});

} // namespace

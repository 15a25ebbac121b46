// Duplicate triangles, edges and vertices that are not manifold, and consistent winding, on surfaces on which only the
// winding is wrong.
#include "bench/checks.h"
#include "bench/compact.h"
#include "bench/suite.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/editing/duplicate_triangles.h"
#include "znGeom/repair.h"

#include <memory>
#include <string>
#include <vector>

namespace {

using bench::Input;
using znGeom::CompactMesh;

/// A mesh with the adjacency that its users have anyway.
struct Subject
{
    std::unique_ptr<CompactMesh> mesh;
    znGeom::MeshAdjTris adjTris;

    explicit Subject(const bench::Soup& soup) : mesh(bench::toCompact(soup)) { znGeom::meshAdjTris(*mesh, adjTris); }
};

std::unique_ptr<znGeom::MeshDuplicateTrisResult> duplicates(const Subject& subject)
{
    auto result = std::make_unique<znGeom::MeshDuplicateTrisResult>();
    znGeom::meshDuplicateTris(*subject.mesh, *result);
    return result;
}

std::unique_ptr<znGeom::MeshManifoldResult> manifold(const Subject& subject)
{
    auto result = std::make_unique<znGeom::MeshManifoldResult>();
    znGeom::meshManifold(*subject.mesh, subject.adjTris, *result);
    return result;
}

bool isFine(const znGeom::MeshDuplicateTrisResult& result) { return !result; }
bool isFine(const znGeom::MeshManifoldResult& result) { return result.isManifold(); }

template <class Check>
bool measureCheck(const char* work, Check check)
{
    return bench::measure({work, "znGeom", [=](const Input& input) { return isFine(*check(Subject(input.soup()))); },
                           [=](benchmark::State& state, const Input& input) {
                               const Subject subject(input.soup());
                               bench::timeWork(
                                   state, [&] { return &subject; },
                                   [=](const Subject* given) { return check(*given); });
                           },
                           0, bench::generatedInputs()});
}

bool orient(CompactMesh& mesh)
{
    znGeom::MeshAdjTris adjTris;
    znGeom::meshAdjTris(mesh, adjTris);
    return znGeom::meshMakeOriented(mesh, adjTris);
}

bool orientingAgrees(const Input& input)
{
    const auto mesh = bench::toCompact(bench::partlyTurnedOver(input.soup()));
    return orient(*mesh) && bench::isConsistentlyWound(bench::toSoup(*mesh).triangles);
}

void runOrienting(benchmark::State& state, const Input& input)
{
    const bench::Soup soup = bench::partlyTurnedOver(input.soup());
    std::unique_ptr<CompactMesh> mesh;
    bench::timeWork(
        state,
        [&] {
            mesh = bench::toCompact(soup);
            return mesh.get();
        },
        [](CompactMesh* subject) { return orient(*subject); });
}

/// All that a mesh is checked for, from its arrays on.
bool isClean(const CompactMesh& mesh)
{
    znGeom::MeshCharacteristics tests(mesh);
    return tests.checkGoodTriangles() && tests.checkManifold() && tests.checkOriented() &&
           tests.checkNonIntersecting() && tests.checkGoodAngles(2.0);
}

void runCheck(benchmark::State& state, const Input& input)
{
    const auto mesh = bench::toCompact(input.soup());
    bench::timeWork(
        state, [&] { return mesh.get(); }, [](const CompactMesh* subject) { return isClean(*subject); });
}

[[maybe_unused]] const bool listed[] = {
    bench::measure({"check", "znGeom", [](const Input& input) { return isClean(*bench::toCompact(input.soup())); },
                    runCheck, 0, bench::generatedInputs()}),
    measureCheck("duplicate_tris", duplicates),
    measureCheck("manifold", manifold),
    bench::measure({"orient", "znGeom", orientingAgrees, runOrienting, 0, bench::generatedInputs()}),
};

} // namespace

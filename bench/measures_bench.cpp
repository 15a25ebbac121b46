// Normals, area and bounding box. Peers: another library's normals, and reading the arrays on all threads or on one.
#include "bench/checks.h"
#include "bench/compact.h"
#include "bench/streams.h"
#include "bench/suite.h"
#include "znGeom/analysis.h"

#include <cmath>
#include <memory>

namespace {

using bench::Input;
using znGeom::CompactMesh;

/// The room for normals exists from the first iteration on, as it does on the other side.
bool computeNormals(CompactMesh& mesh)
{
    znGeom::meshComputeNormals(mesh);
    return true;
}

float area(const CompactMesh& mesh) { return znGeom::meshArea(mesh, znGeom::MeshChannelVertices); }

znGeom::BoundingBox boundingBox(const CompactMesh& mesh)
{
    znGeom::BoundingBox box;
    znGeom::meshBoundingBox(mesh, box);
    return box;
}

bool normalsAgree(const Input& input)
{
    const auto mesh = bench::toCompact(input.soup());
    computeNormals(*mesh);
    return bench::areVertexNormals(input.soup(), mesh->getNormalsRaw());
}

bool areaAgrees(const Input& input)
{
    const double wanted = bench::areaOf(input.soup());
    return std::abs(static_cast<double>(area(*bench::toCompact(input.soup()))) - wanted) < 1e-5 * wanted;
}

bool boxAgrees(const Input& input)
{
    const bench::Box wanted = bench::boxOf(input.soup());
    const znGeom::BoundingBox box = boundingBox(*bench::toCompact(input.soup()));
    return box.minX == wanted.low[0] && box.minY == wanted.low[1] && box.minZ == wanted.low[2] &&
           box.maxX == wanted.high[0] && box.maxY == wanted.high[1] && box.maxZ == wanted.high[2];
}

template <class Work>
bool measureWork(const char* name, bool (*agrees)(const Input&), Work work)
{
    return bench::measure({name, "znGeom", agrees, [=](benchmark::State& state, const Input& input) {
                               const auto mesh = bench::toCompact(input.soup());
                               work(*mesh);
                               bench::timeWork(
                                   state, [&] { return mesh.get(); },
                                   [=](CompactMesh* subject) { return work(*subject); });
                           }});
}

template <class Read>
bool measureMemory(const char* name, const char* who, Read read)
{
    return bench::measure({name, who, [](const Input&) { return true; },
                           [=](benchmark::State& state, const Input& input) {
                               bench::timeWork(
                                   state, [&] { return &input.soup(); },
                                   [=](const bench::Soup* soup) { return read(*soup); });
                           }});
}

[[maybe_unused]] const bool listed[] = {
    measureWork("normals", normalsAgree, computeNormals),
    measureWork("area", areaAgrees, area),
    measureWork("bounding_box", boxAgrees, boundingBox),
    measureMemory("area", "memory_all_threads",
                  [](const bench::Soup& soup) {
                      return bench::readOnAllThreads(soup.triangles) ^ bench::readOnAllThreads(soup.positions);
                  }),
    measureMemory(
        "area", "memory_one_thread",
        [](const bench::Soup& soup) { return bench::readOnce(soup.triangles) ^ bench::readOnce(soup.positions); }),
    measureMemory("bounding_box", "memory_all_threads",
                  [](const bench::Soup& soup) { return bench::readOnAllThreads(soup.positions); }),
    measureMemory("bounding_box", "memory_one_thread",
                  [](const bench::Soup& soup) { return bench::readOnce(soup.positions); }),
};

} // namespace

#include "znGeom/editing/weld.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "znGeom/editing/internal/vertex_order.h"
#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"

namespace znGeom {

IMeshVertexEqualityChecker::~IMeshVertexEqualityChecker() = default;

bool DefaultMeshVertexEqualityChecker::areEqual(const float* a, const float* b) const
{
    return a[0] == b[0] && a[1] == b[1] && a[2] == b[2];
}

namespace {

bool equalComponents(const float* a, const float* b, int count) { return std::equal(a, a + count, b); }

/// The channels that tell vertices apart.
struct WeldChannels
{
    const float* positions;
    const float* normals = nullptr; ///< null unless the mesh has normals that were not computed from its geometry
    const float* uvs = nullptr;     ///< null unless normals take part: UVs alone keep nothing apart

    explicit WeldChannels(const CompactMesh& mesh) : positions(mesh.getVerticesRaw())
    {
        if (mesh.getNormalsComputed()) return;
        normals = mesh.getNormalsRaw();
        if (normals) uvs = mesh.getUVsRaw();
    }

    zn::vector<internal::VertexKey> sortKeys() const
    {
        zn::vector<internal::VertexKey> keys;
        for (int i = 0; i < 3; ++i) keys.append({positions + i, 3});
        for (int i = 0; normals && i < 3; ++i) keys.append({normals + i, 3});
        for (int i = 0; uvs && i < 2; ++i) keys.append({uvs + i, 2});
        return keys;
    }

    const float* position(int vertex) const { return positions + 3 * static_cast<std::ptrdiff_t>(vertex); }

    /// Exact equality of the normals and UVs that take part.
    bool sameBesidesPosition(int a, int b) const
    {
        const auto at = [](const float* values, int stride, int vertex) {
            return values + static_cast<std::ptrdiff_t>(stride) * vertex;
        };
        return (!normals || equalComponents(at(normals, 3, a), at(normals, 3, b), 3)) &&
               (!uvs || equalComponents(at(uvs, 2, a), at(uvs, 2, b), 2));
    }
};

/// Numbers the runs of same vertices in sorted order. Every vertex is compared with the first one of the run before
/// it; `isSame(place, first)` tells whether the vertex at `place` is the same as vertex `first`.
/// \return the number of runs
template <typename IsSame>
int numberRuns(const internal::VertexOrder& order, Remap& remap, const IsSame& isSame)
{
    int* images = remap.data();
    int count = 1, first = order.vertex(0);
    images[first] = 0;
    for (int place = 1; place < order.count; ++place) {
        const int vertex = order.vertex(place);
        if (!isSame(place, first)) {
            first = vertex;
            ++count;
        }
        images[vertex] = count - 1;
    }
    return count;
}

/// Moves records to their new places, in ascending order of the old ones, so that of merged ones the last stays.
template <typename Record>
void moveRecords(Record* records, int numRecords, const Remap& remap)
{
    const auto moved = std::make_unique_for_overwrite<Record[]>(static_cast<size_t>(remap.range));
    const int* images = remap.data();
    for (int i = 0; i < numRecords; ++i) moved[static_cast<size_t>(images[i])] = records[i];
    std::copy_n(moved.get(), remap.range, records);
}

void remapStripsAndFans(CompactMesh& mesh, const Remap& remap, MeshModification& modification)
{
    remap(mesh.getTriStripPoints(), mesh.getNumTriStripPoints());
    remap(mesh.getTriFanPoints(), mesh.getNumTriFanPoints());
    if (mesh.getNumTriStrips() > 0 || mesh.getNumTriFans() > 0) modification.stripsAndFansModified();
}

/// Applies a map that merges vertices to all channels that follow it, and reports the change to the mesh.
void applyWeld(CompactMesh& mesh, Remap& remap, bool moveNormals, znOS::StopWatch& watch)
{
    MeshRemap meshRemap(&remap, nullptr);
    MeshModification modification(&mesh, MeshModification::TopologyChanged, &meshRemap);
    const int numVertices = mesh.getNumVertices();
    const auto logStage = [&watch](const char* stage) {
        debugChannel().print("  remapped %s: %f s\n", stage, watch.clear());
        watch.start();
    };

    moveRecords(mesh.getVertices(), numVertices, remap);
    logStage("vertices");
    if (moveNormals) {
        moveRecords(mesh.getNormals(), numVertices, remap);
        modification.normalsModified();
        logStage("normals");
    }
    if (mesh.getUVs()) {
        moveRecords(mesh.getUVs(), numVertices, remap);
        modification.uvsModified();
    }
    remapStripsAndFans(mesh, remap, modification);
    mesh.resizeVertexArray(remap.range);
    MeshTriangle* triangles = mesh.getTriangles();
    for (int i = 0; i < mesh.getNumTriangles(); ++i) remap(triangles[i].corners, 3);

    modification.triangleNormalsValid();
    mesh.modified(modification);
    logStage("triangles");
}

/// The whole of welding; `makeTest(channels, order)` gives the test that `numberRuns` uses.
template <typename MakeTest>
void weld(CompactMesh& mesh, znUtil::Progress& progress, Remap& remap, const MakeTest& makeTest)
{
    const int numVertices = mesh.getNumVertices();
    if (numVertices == 0) {
        remap.resize(0, 0);
        return;
    }
    debugChannel().print("meshCompact: %d vertices, %d triangles\n", numVertices, mesh.getNumTriangles());
    znOS::StopWatch watch;
    const WeldChannels channels(mesh);
    remap.resize(numVertices, numVertices);

    znUtil::Progress phase;
    progress.subPhase(0.8, phase);
    int count = 0;
    {
        const internal::VertexOrder order =
            internal::sortVertices(numVertices, channels.sortKeys(), znUtil::ThreadPool::get());
        debugChannel().print("  sorted vertices: %f s\n", watch.clear());
        watch.start();
        progress.subPhase(0.2, phase);
        count = numberRuns(order, remap, makeTest(channels, order));
    }
    debugChannel().print("  initialized remap: %f s\n", watch.clear());
    watch.start();

    if (count == numVertices) {
        remap.setSequential();
    } else {
        remap.range = count;
        applyWeld(mesh, remap, channels.normals != nullptr, watch);
    }
    phase.set(1.0);
}

} // namespace

void meshCompact(CompactMesh& mesh, znUtil::Progress& progress)
{
    Remap remap;
    meshCompact(mesh, progress, remap);
}

void meshCompact(CompactMesh& mesh, znUtil::Progress& progress, Remap& remap)
{
    // With the default checker the sort has answered every question already.
    weld(mesh, progress, remap, [](const WeldChannels&, const internal::VertexOrder& order) {
        return [&order](int place, int) { return order.sameAsBefore(place); };
    });
}

void meshCompact(CompactMesh& mesh, znUtil::Progress& progress, Remap& remap, IMeshVertexEqualityChecker& checker)
{
    weld(mesh, progress, remap, [&checker](const WeldChannels& channels, const internal::VertexOrder& order) {
        return [&](int place, int first) {
            const int vertex = order.vertex(place);
            return checker.areEqual(channels.position(first), channels.position(vertex)) &&
                   channels.sameBesidesPosition(first, vertex);
        };
    });
}

} // namespace znGeom

#include "znGeom/analysis/bounds.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"
#include "znGeom/foundation/threads/parallel_reduce.h"

namespace znGeom {

using znUtil::Slice;
using znUtil::ThreadPool;

namespace {

/// The box of the vertices of a slice. Eight of them are taken at a time, each number with a minimum and a maximum of
/// its own, in a form that compilers turn into vector instructions; which way they are joined makes no difference.
BoundingBox boxOfAll(const float* vertices, Slice slice)
{
    constexpr int numVertices = 8, numLanes = 3 * numVertices;
    float low[numLanes], high[numLanes];
    std::fill_n(low, numLanes, BoundingBox::largest);
    std::fill_n(high, numLanes, -BoundingBox::largest);
    vertices += 3 * std::ptrdiff_t{slice.begin};
    int left = slice.size();
    for (; left >= numVertices; left -= numVertices, vertices += numLanes) {
        for (int i = 0; i < numLanes; ++i) low[i] = vertices[i] < low[i] ? vertices[i] : low[i];
        for (int i = 0; i < numLanes; ++i) high[i] = vertices[i] > high[i] ? vertices[i] : high[i];
    }

    BoundingBox box;
    for (int i = 0; i < numLanes; i += 3) {
        BoundingBox lanes;
        lanes.minX = low[i], lanes.minY = low[i + 1], lanes.minZ = low[i + 2];
        lanes.maxX = high[i], lanes.maxY = high[i + 1], lanes.maxZ = high[i + 2];
        box.extend(lanes);
    }
    for (; left > 0; --left, vertices += 3) box.extend(vertices);
    return box;
}

/// The box of those vertices of a slice that are in the set.
BoundingBox boxOfSelected(const float* vertices, const BitVector& selection, Slice slice)
{
    BoundingBox box;
    const std::uint32_t* words = selection.getWords();
    const int end = std::min(slice.end, selection.getSize());
    for (int first = slice.begin; first < end; first = (first | 31) + 1) {
        std::uint32_t left = words[first >> 5] >> (first & 31);
        if (end - first < 32) left &= (1u << (end - first)) - 1;
        for (; left != 0; left &= left - 1) box.extend(vertices + 3 * (std::ptrdiff_t{first} + std::countr_zero(left)));
    }
    return box;
}

} // namespace

void meshBoundingBox(const PointMesh& mesh, BoundingBox& box) { meshBoundingBox(mesh, nullptr, box); }

void meshBoundingBox(const PointMesh& mesh, const BitVector* selection, BoundingBox& box)
{
    znOS::StopWatch watch;
    const float* vertices = mesh.getVerticesRaw();
    box = znUtil::parallelReduce(
        ThreadPool::get(), mesh.getNumVertices(), BoundingBox(),
        [=](Slice slice) { return selection ? boxOfSelected(vertices, *selection, slice) : boxOfAll(vertices, slice); },
        [](BoundingBox& all, const BoundingBox& part) { all.extend(part); });
    // Where vertices have zeros of both signs, which one came first would depend on the number of threads.
    for (float* side : {&box.minX, &box.minY, &box.minZ, &box.maxX, &box.maxY, &box.maxZ}) *side += 0.0f;
    debugChannel().print("meshBoundingBox: %d vertices  %f s\n", mesh.getNumVertices(), watch.stop());
}

void meshBoundingBox(const PointMesh& mesh, double* min, double* max)
{
    BoundingBox box;
    meshBoundingBox(mesh, box);
    znLinear::Point(box.minPt()).get(min);
    znLinear::Point(box.maxPt()).get(max);
}

void arrangementBoundingBox(const zn::list<MeshPlacement>& placements, BoundingBox& box)
{
    znOS::StopWatch watch;
    box.setInvalid();
    for (const MeshPlacement& placement : placements) {
        if (!placement.mesh) continue;
        BoundingBox placed;
        meshBoundingBox(*placement.mesh, placed);
        placed.transform(placement.matrix);
        box.extend(placed);
    }
    debugChannel().print("arrangementBoundingBox: %d meshes  %f s\n", placements.size(), watch.stop());
}

void meshTriBoundingBox(const MeshVertex* vertices, const MeshTriangle& triangle, BoundingBox& box)
{
    box.setInvalid();
    for (const int corner : triangle.corners) box.extend(vertices[corner].asPointFlt());
}

void meshTriBoundingBoxes(const MeshVertex* vertices, const MeshTriangle* triangles, int count, BoundingBox* boxes)
{
    for (int i = 0; i < count; ++i) meshTriBoundingBox(vertices, triangles[i], boxes[i]);
}

void meshComputeNeighbourBBoxes(const CompactMesh& mesh, const MeshAdjTris& adjTris, BoundingBox* perVertex)
{
    const MeshVertex* vertices = mesh.getVertices();
    const MeshTriangle* triangles = mesh.getTriangles();
    znUtil::parallelFor(ThreadPool::get(), mesh.getNumVertices(), [&](Slice slice, int) {
        for (int v = slice.begin; v < slice.end; ++v) {
            const int* around = adjTris.triIndices(v);
            const int count = adjTris.numTris(v);
            BoundingBox box;
            for (int i = 0; i < count; ++i)
                for (const int corner : triangles[around[i]].corners) box.extend(vertices[corner].asPointFlt());
            perVertex[v] = box;
        }
    });
}

} // namespace znGeom

#include "znGeom/analysis/triangle_components.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "znGeom/analysis/components.h"
#include "znGeom/foundation/containers/disjoint_sets.h"
#include "znGeom/foundation/threads/internal/pieces.h"

namespace znGeom {

namespace {

/// Numbers components by size.
/// \param labels     per triangle something that tells its component from others
/// \param numLabels  labels lie below it
MeshTriangleComponents sortedBySize(zn::vector<int> labels, int numLabels)
{
    zn::vector<int> numberOf(numLabels, -1), sizes;
    for (int& label : labels) {
        int& number = numberOf[label];
        if (number < 0) {
            number = sizes.size();
            sizes.append(0);
        }
        label = number;
        ++sizes[number];
    }

    MeshTriangleComponents result;
    zn::vector<int> order(sizes.size()), rank(sizes.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&sizes](int a, int b) { return sizes[a] > sizes[b]; });
    for (const int number : order) {
        rank[number] = result.count();
        result.sizes.append(sizes[number]);
    }
    for (int& number : labels) number = rank[number];
    result.ofTriangle.swap(labels);
    return result;
}

} // namespace

bool meshEdgeComponents(const CompactMesh& mesh, const MeshEdgeSides& sides, znUtil::Progress& progress,
                        MeshTriangleComponents& result)
{
    const int numTriangles = mesh.getNumTriangles();
    zn::DisjointSets sets(numTriangles);
    const auto unite = [&](int begin, int end) {
        for (int edge = begin; edge < end; ++edge) {
            const std::span<const int> around = sides.sides(edge);
            for (const int side : around.subspan(1)) sets.unite(around.front() / 3, side / 3);
        }
    };
    if (!internal::forEachPiece(sides.getNumEdges(), progress, unite)) return false;
    zn::vector<int> labels(numTriangles);
    for (int triangle = 0; triangle < numTriangles; ++triangle) labels[triangle] = sets.find(triangle);
    result = sortedBySize(std::move(labels), numTriangles);
    return true;
}

bool meshVertexComponents(const CompactMesh& mesh, const MeshAdjTris& adjTris, znUtil::Progress& progress,
                          MeshTriangleComponents& result)
{
    if (progress.cancelled()) return false;
    Array<int> ofVertex;
    const int count = meshComponents(mesh, adjTris, &ofVertex);
    if (progress.cancelled()) return false;
    const int* componentOf = ofVertex.read();
    const MeshTriangle* triangles = mesh.getTriangles();
    zn::vector<int> labels(mesh.getNumTriangles());
    for (int triangle = 0; triangle < labels.size(); ++triangle) labels[triangle] = componentOf[triangles[triangle][0]];
    result = sortedBySize(std::move(labels), count);
    progress.set(1);
    return true;
}

} // namespace znGeom

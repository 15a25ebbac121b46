#include "znGeom/editing/extract.h"

#include <algorithm>
#include <cstddef>

#include "znGeom/analysis/adjacency.h"
#include "znGeom/editing/internal/extract_part.h"
#include "znGeom/editing/partition.h"
#include "znGeom/foundation/mesh/bit_runs.h"
#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"

namespace znGeom {

namespace {

using internal::Part;

template <int Width>
void gather(const float* source, const Part& part, float* target)
{
    for (int i = 0; i < part.numVertices; ++i, target += Width)
        std::copy_n(source + Width * static_cast<std::ptrdiff_t>(part.vertices[i]), Width, target);
}

void copyValues(const MeshAttributes& source, const Part& part, MeshAttributes& target)
{
    const float* from = source.asFloat();
    float* to = target.asFloat();
    switch (source.getNumComponents()) {
    case 1:
        gather<1>(from, part, to);
        break;
    case 2:
        gather<2>(from, part, to);
        break;
    case 3:
        gather<3>(from, part, to);
        break;
    case 4:
        gather<4>(from, part, to);
        break;
    default:
        break;
    }
    target.invalidateRange();
}

void copyAttributes(CompactMesh& target, const CompactMesh& source, const Part& part, MeshModification& modification)
{
    for (int i = 0; const MeshAttributes* attributes = source.getAttributes(i); ++i) {
        const znString::CString& name = attributes->getName();
        MeshAttributes* copy = target.getAttributes(name);
        if (!equal(name, PointMesh::VerticesName)) {
            target.deleteAttributes(name);
            copy = target.allocAttributes(name, attributes->getNumComponents());
            copy->setStoreable(attributes->isStoreable());
            modification.vertexAttribsModified(name);
        }
        copyValues(*attributes, part, *copy);
    }
    target.setNormalsComputed(source.getNormalsComputed());
}

void copyTriangles(CompactMesh& target, const CompactMesh& source, const Part& part, int* newVertices)
{
    for (int i = 0; i < part.numVertices; ++i) newVertices[part.vertices[i]] = i;
    target.resizeTriangleArray(part.numTriangles);
    const MeshTriangle* from = source.getTriangles();
    MeshTriangle* to = target.getTriangles();
    for (int i = 0; i < part.numTriangles; ++i) {
        const auto [a, b, c] = from[part.triangles[i]].corners;
        to[i] = {{newVertices[a], newVertices[b], newVertices[c]}};
    }
}

void extract(CompactMesh& target, const CompactMesh& source, const Part& part)
{
    zn::vector<int> newVertices(source.getNumVertices(), -1);
    internal::extractPart(target, source, part, newVertices.data());
}

} // namespace

void internal::extractPart(CompactMesh& target, const CompactMesh& source, const Part& part, int* newVertices)
{
    debugChannel().print("meshExtract: vertices(%d) triangles(%d)\n", part.numVertices, part.numTriangles);
    znOS::StopWatch watch;
    MeshModification modification(&target, MeshModification::TopologyChanged);
    target.resizeVertexArray(part.numVertices);
    copyAttributes(target, source, part, modification);
    copyTriangles(target, source, part, newVertices);
    target.modified(modification);
    debugChannel().print("  copied triangles: %f s\n", watch.stop());
}

void meshExtract(CompactMesh& target, const CompactMesh& source, const MeshSubset& subset)
{
    extract(target, source, {subset.numVertices, subset.vertices, subset.numTriangles, subset.triangles});
}

void meshExtract(CompactMesh& target, const CompactMesh& source)
{
    const zn::vector<int> vertices = listMembers(source.getSelectedVertices(), source.getNumVertices());
    const zn::vector<int> triangles = listMembers(source.getSelectedTriangles(), source.getNumTriangles());
    extract(target, source, {vertices.size(), vertices.data(), triangles.size(), triangles.data()});
}

void meshSplit(const CompactMesh& mesh, int parts, zn::vector<CompactMesh*>& result)
{
    MeshAdjTris adjTris;
    meshAdjTris(mesh, adjTris);
    zn::list<zn::Reference<MeshSubset>> subsets;
    MeshPartition(mesh, adjTris, parts).compute(subsets);
    for (const zn::Reference<MeshSubset>& subset : subsets) {
        result.append(new CompactMesh);
        meshExtract(*result.back(), mesh, *subset);
    }
    debugChannel().print("meshSplit: s\n"); // the line has never shown its time, and who parses it expects none
}

} // namespace znGeom

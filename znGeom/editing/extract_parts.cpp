#include "znGeom/editing/extract_parts.h"

#include "znGeom/analysis/adjacency.h"
#include "znGeom/editing/internal/extract_part.h"
#include "znGeom/foundation/containers/stamp_table.h"

namespace znGeom {

namespace {

ArrayOfSets gatherTriangles(const int* partOf, int numTriangles, int numParts)
{
    zn::vector<int> pairs; // part and triangle in turn
    pairs.reserve(2 * numTriangles);
    for (int triangle = 0; triangle < numTriangles; ++triangle) {
        if (partOf[triangle] < 0) continue;
        pairs.append(partOf[triangle]);
        pairs.append(triangle);
    }
    ArrayOfSets result;
    result.assignFromPairs(numParts, pairs.size() / 2, pairs.data());
    return result;
}

ArrayOfSets gatherVertices(const CompactMesh& mesh, const int* partOf, int numParts)
{
    MeshAdjTris adjTris;
    meshAdjTris(mesh, adjTris);
    ArrayOfSets partsOf;
    partsOf.start.resize(mesh.getNumVertices());
    int* start = partsOf.start.write();
    zn::vector<int> parts;
    zn::StampTable seen(numParts);
    for (int vertex = 0; vertex < mesh.getNumVertices(); ++vertex) {
        start[vertex] = parts.size();
        const auto stamp = seen.next();
        for (const int triangle : adjTris.around(vertex))
            if (partOf[triangle] >= 0 && seen.mark(partOf[triangle], stamp)) parts.append(partOf[triangle]);
    }
    partsOf.elements.assign(parts.data(), parts.size());
    ArrayOfSets result;
    result.assignInverse(numParts, partsOf);
    return result;
}

zn::vector<int> toVector(std::span<const int> values) { return {values.data(), values.data() + values.size()}; }

} // namespace

MeshExtractParts::MeshExtractParts(const CompactMesh& mesh, const int* partOf, int numParts)
    : m_mesh(&mesh), m_triangles(gatherTriangles(partOf, mesh.getNumTriangles(), numParts)),
      m_vertices(gatherVertices(mesh, partOf, numParts)), m_newVertices(mesh.getNumVertices())
{}

void MeshExtractParts::extract(int part, CompactMesh& target)
{
    const std::span<const int> ofVertices = vertices(part), ofTriangles = triangles(part);
    internal::extractPart(target, *m_mesh,
                          {static_cast<int>(ofVertices.size()), ofVertices.data(), static_cast<int>(ofTriangles.size()),
                           ofTriangles.data()},
                          m_newVertices.data());
}

bool meshExtractComponents(const CompactMesh& mesh, const MeshTriangleComponents& components,
                           znUtil::Progress& progress, zn::vector<MeshPart>& parts)
{
    if (progress.cancelled()) return false;
    MeshExtractParts source(mesh, components.ofTriangle.data(), components.count());
    zn::vector<MeshPart> result(components.count());
    int numCopied = 0;
    for (int i = 0; i < result.size(); ++i) {
        if (progress.cancelled()) return false;
        source.extract(i, result[i].mesh);
        result[i].vertices = toVector(source.vertices(i));
        result[i].triangles = toVector(source.triangles(i));
        numCopied += components.sizes[i];
        progress.set(static_cast<double>(numCopied) / mesh.getNumTriangles());
    }
    if (progress.cancelled()) return false;
    parts.swap(result);
    return true;
}

} // namespace znGeom

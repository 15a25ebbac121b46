#include "znGeom/analysis/boundaries.h"

#include "znGeom/foundation/mesh/bit_runs.h"

namespace znGeom {

namespace {

/// Whether any triangle for which `counts` is true has the directed edge.
template <typename Counts>
bool anyHasDirectedEdge(const MeshTriangle* triangles, const MeshAdjTris& adjTris, int from, int to,
                        const Counts& counts)
{
    // Such a triangle is in the sets of both ends: search the smaller one. Walking the rim of a large fan would
    // otherwise search its hub at each step.
    const int end = adjTris.numTris(to) < adjTris.numTris(from) ? to : from;
    for (const int triangle : adjTris.around(end))
        if (counts(triangle) && hasDirectedEdge(triangles[triangle], from, to)) return true;
    return false;
}

bool isBorderVertex(int vertex, const MeshAdjTris& adjTris, const MeshAdjVertices& adjVertices)
{
    return adjVertices.numNeighbours(vertex) != adjTris.numTris(vertex);
}

BitVector findBorderVertices(int numVertices, const MeshAdjTris& adjTris, const MeshAdjVertices& adjVertices)
{
    BitVector border(numVertices);
    const int *start = adjTris.table().start.read(), *offsets = adjVertices.offsets, *data = adjVertices.data;
    const int numEntries = adjTris.table().elements.size();
    for (int v = 0; v < numVertices; ++v) {
        const int end = v + 1 < numVertices ? start[v + 1] : numEntries;
        if (data[offsets[v]] != end - start[v]) border.setBit(v);
    }
    return border;
}

/// Walks borders and gathers what they pass.
class LoopCollector
{
public:
    explicit LoopCollector(int numVertices) : m_visited(numVertices) {}

    /// \param step  `bool step(int vertex, int& next)`
    template <typename Step>
    void walkFrom(int start, const Step& step)
    {
        if (m_visited.isSet(start)) return;
        m_visited.setBit(start);
        const int before = m_vertices.size();
        int current = start, next = -1;
        while (step(current, next)) {
            m_vertices.append(current);
            if (m_visited.isSet(next)) break;
            m_visited.setBit(next);
            current = next;
        }
        if (m_vertices.size() > before) m_lengths.append(m_vertices.size() - before);
    }

    void publish(MeshBoundaries& result) const
    {
        MeshSequence loops(m_vertices, m_lengths);
        MeshBoundaries built(loops);
        result.swap(built);
    }

private:
    BitVector m_visited;
    zn::vector<int> m_vertices, m_lengths;
};

/// One step along the border of a region.
struct RegionStep
{
    const MeshTriangle* triangles;
    const MeshAdjTris& adjTris;
    const MeshAdjVertices& adjVertices;
    const ArrayOfSets& vertexRegions;
    const int* regionOf;
    int region;

    bool operator()(int vertex, int& next) const
    {
        const auto inRegion = [this](int triangle) { return regionOf[triangle] == region; };
        for (const int triangle : adjTris.around(vertex)) {
            if (!inRegion(triangle)) continue;
            next = Boundary::findEdge(vertex, triangles[triangle]);
            if (vertexRegions.getSetSize(next) <= 1 && !isBorderVertex(next, adjTris, adjVertices)) continue;
            if (!anyHasDirectedEdge(triangles, adjTris, next, vertex, inRegion)) return true;
        }
        return false;
    }
};

} // namespace

int Boundary::findEdge(int vertex, const MeshTriangle& triangle)
{
    const int corner = cornerOf(triangle, vertex);
    return corner < 0 ? -1 : triangle[cornerAfter(corner)];
}

bool Boundary::hasEdge(const CompactMesh& mesh, const MeshAdjTris& adjTris, int from, int to)
{
    return anyHasDirectedEdge(mesh.getTriangles(), adjTris, from, to, [](int) { return true; });
}

bool Boundary::walkBoundary(int vertex, int& next, const CompactMesh& mesh, const MeshAdjTris& adjTris,
                            const MeshAdjVertices& adjVertices)
{
    const MeshTriangle* triangles = mesh.getTriangles();
    for (const int triangle : adjTris.around(vertex)) {
        next = findEdge(vertex, triangles[triangle]);
        if (isBorderVertex(next, adjTris, adjVertices) && !hasEdge(mesh, adjTris, next, vertex)) return true;
    }
    return false;
}

void meshComputeBoundary(const CompactMesh& mesh, const MeshAdjTris& adjTris, const MeshAdjVertices& adjVertices,
                         MeshBoundaries& result)
{
    const int numVertices = mesh.getNumVertices();
    const BitVector border = findBorderVertices(numVertices, adjTris, adjVertices);

    // A step ends at a border vertex, so only the neighbours of border vertices can begin a walk; whether the beginning
    // itself is one plays no part. All others would be visited in vain: a walk that comes to one of them ends there
    // anyway.
    BitVector starts(numVertices);
    forEachSetBit(border, [&](int v) { starts.setBits(adjVertices.numNeighbours(v), adjVertices.neighbours(v)); });

    LoopCollector loops(numVertices);
    const auto step = [&](int vertex, int& next) {
        return Boundary::walkBoundary(vertex, next, mesh, adjTris, adjVertices);
    };
    forEachSetBit(starts, [&](int v) { loops.walkFrom(v, step); });
    loops.publish(result);
}

void meshComputeSubsetBoundary(const CompactMesh& mesh, const MeshSubset& subset, int region,
                               const MeshAdjTris& adjTris, const MeshAdjVertices& adjVertices,
                               const ArrayOfSets& vertexRegions, const Remap& triangleRegions, MeshBoundaries& result)
{
    const RegionStep step{mesh.getTriangles(), adjTris, adjVertices, vertexRegions, triangleRegions.data(), region};
    LoopCollector loops(mesh.getNumVertices());
    for (int i = 0; i < subset.numVertices; ++i) loops.walkFrom(subset.vertices[i], step);
    loops.publish(result);
}

} // namespace znGeom

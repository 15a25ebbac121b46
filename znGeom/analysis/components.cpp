#include "znGeom/analysis/components.h"

#include <algorithm>
#include <memory>
#include <numeric>
#include <utility>

#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"
#include "znGeom/topology/topo_walks.h"

namespace znGeom {

namespace {

/// The vertices as a forest, one tree per component. No vertex has a parent above itself: the root of a tree is its
/// lowest vertex.
class VertexForest
{
public:
    explicit VertexForest(const CompactMesh& mesh)
        : m_numVertices(mesh.getNumVertices()), m_numTriangles(mesh.getNumTriangles()),
          m_triangles(mesh.getTriangles()),
          m_parents(std::make_unique_for_overwrite<int[]>(static_cast<size_t>(m_numVertices)))
    {
        int* parents = m_parents.get();
        std::iota(parents, parents + m_numVertices, 0);
        for (int t = 0; t < m_numTriangles; ++t) {
            const auto [a, b, c] = m_triangles[t].corners;
            if (parents[a] == parents[b] && parents[b] == parents[c]) continue;
            join(join(root(a), root(b)), root(c));
        }
    }

    /// The number of trees that triangles made.
    int countTrees(const MeshAdjTris& adjTris) const
    {
        int count = 0;
        for (int v = 0; v < m_numVertices; ++v) count += m_parents[size_t(v)] == v && adjTris.numTris(v) > 0;
        return count;
    }

    /// \param labels  one per vertex
    void label(int numTrees, int* labels)
    {
        std::fill_n(labels, m_numVertices, -1);
        for (int t = 0, numLabelled = 0; t < m_numTriangles && numLabelled < numTrees; ++t) {
            int& rootLabel = labels[root(m_triangles[t][0])];
            if (rootLabel < 0) rootLabel = numLabelled++;
        }
        // The parent comes before the child and has its label already.
        for (int v = 0; v < m_numVertices; ++v) labels[v] = labels[m_parents[size_t(v)]];
    }

private:
    int root(int vertex)
    {
        int* parents = m_parents.get();
        while (parents[vertex] != vertex) vertex = parents[vertex] = parents[parents[vertex]];
        return vertex;
    }

    int join(int rootA, int rootB)
    {
        const auto [low, high] = std::minmax(rootA, rootB);
        return m_parents[size_t(high)] = low;
    }

    int m_numVertices, m_numTriangles;
    const MeshTriangle* m_triangles;
    std::unique_ptr<int[]> m_parents;
};

} // namespace

int meshComponents(const CompactMesh& mesh, const MeshAdjTris& adjTris, Array<int>* vertexComponents)
{
    debugChannel().print("meshComponents(): %d triangles\n", mesh.getNumTriangles());
    znOS::StopWatch watch;
    VertexForest forest(mesh);
    const int count = forest.countTrees(adjTris);
    if (vertexComponents) {
        vertexComponents->resize(mesh.getNumVertices());
        forest.label(count, vertexComponents->write());
    }
    debugChannel().print("   %d components: %f s\n", count, watch.stop());
    return count;
}

int meshComponents(TopoMesh& mesh)
{
    BitVector seen(mesh.faceNumbers());
    zn::vector<TopoMeshFace> open;
    const auto see = [&](TopoMeshFace face) {
        if (seen.isSet(face.number())) return;
        seen.setBit(face.number());
        open.append(face);
    };
    int count = 0;
    for (const TopoMeshFace first : facesOf(mesh)) {
        if (seen.isSet(first.number())) continue;
        ++count;
        for (see(first); !open.empty();) {
            const TopoMeshFace face = open.back();
            open.eraseBack();
            for (const TopoMeshEdge side : sidesOf(face))
                if (side->twin) see(side->twin->face);
        }
    }
    return count;
}

} // namespace znGeom

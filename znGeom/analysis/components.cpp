#include "znGeom/analysis/components.h"

#include <algorithm>

#include "znGeom/foundation/containers/disjoint_sets.h"
#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"
#include "znGeom/topology/topo_walks.h"

namespace znGeom {

namespace {

/// The vertices of a mesh, those of one triangle in one set.
zn::DisjointSets uniteCorners(const CompactMesh& mesh)
{
    zn::DisjointSets sets(mesh.getNumVertices());
    const MeshTriangle* triangles = mesh.getTriangles();
    for (int t = 0; t < mesh.getNumTriangles(); ++t) {
        const auto [a, b, c] = triangles[t].corners;
        if (sets.lower(a) == sets.lower(b) && sets.lower(b) == sets.lower(c)) continue;
        sets.unite(sets.unite(a, b), c);
    }
    return sets;
}

/// The number of sets that triangles made.
int countComponents(const zn::DisjointSets& sets, const MeshAdjTris& adjTris)
{
    int count = 0;
    for (int v = 0; v < sets.size(); ++v) count += sets.lower(v) == v && adjTris.numTris(v) > 0;
    return count;
}

/// \param labels  one per vertex
void labelComponents(const CompactMesh& mesh, zn::DisjointSets& sets, int numComponents, int* labels)
{
    std::fill_n(labels, sets.size(), -1);
    const MeshTriangle* triangles = mesh.getTriangles();
    for (int t = 0, numLabelled = 0; numLabelled < numComponents && t < mesh.getNumTriangles(); ++t) {
        int& label = labels[sets.find(triangles[t][0])];
        if (label < 0) label = numLabelled++;
    }
    // The lower member comes first and has its label already.
    for (int v = 0; v < sets.size(); ++v) labels[v] = labels[sets.lower(v)];
}

} // namespace

int meshComponents(const CompactMesh& mesh, const MeshAdjTris& adjTris, Array<int>* vertexComponents)
{
    debugChannel().print("meshComponents(): %d triangles\n", mesh.getNumTriangles());
    znOS::StopWatch watch;
    zn::DisjointSets sets = uniteCorners(mesh);
    const int count = countComponents(sets, adjTris);
    if (vertexComponents) {
        vertexComponents->resize(mesh.getNumVertices());
        labelComponents(mesh, sets, count, vertexComponents->write());
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

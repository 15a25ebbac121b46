#include "znGeom/parameterize/cut_surface.h"

#include <algorithm>

#include "znGeom/foundation/containers/checked_size.h"
#include "znGeom/parameterize/internal/capped_surface.h"
#include "znGeom/parameterize/internal/cut_graph.h"

namespace znGeom::cutSurface {

namespace {

using znUtil::Progress;

/// Gives each group of corners but the first one at its vertex a vertex of its own.
/// \param originals  receives the old vertex of each new one
void assignVertices(zn::DisjointSets& groups, int numVertices, MeshTriangle* triangles, zn::vector<int>& originals)
{
    zn::vector<bool> isTaken(numVertices, false);
    zn::vector<int> images(groups.size());
    for (int corner = 0; corner < groups.size(); ++corner) {
        int& vertex = triangles[corner / 3][corner % 3];
        const int lowest = groups.find(corner);
        if (lowest != corner) {
            vertex = images[lowest];
        } else if (!isTaken[vertex]) {
            isTaken[vertex] = true;
            images[corner] = vertex;
        } else {
            originals.append(vertex);
            vertex = images[corner] = zn::checkedSize(std::int64_t{numVertices} + originals.size() - 1);
        }
    }
}

/// Appends copies of vertices, with all their channels and the mark of the selection.
void appendCopies(CompactMesh& mesh, const zn::vector<int>& originals)
{
    const int numOld = mesh.getNumVertices();
    mesh.resizeVertexArray(numOld + originals.size());
    for (int i = 0; i < mesh.getNumAttributes(); ++i) {
        MeshAttributes& channel = *mesh.getAttributes(i);
        const std::ptrdiff_t numComponents = channel.getNumComponents();
        float* const values = channel.asFloat();
        float* next = values + numComponents * numOld;
        for (const int vertex : originals) next = std::copy_n(values + numComponents * vertex, numComponents, next);
        channel.invalidateRange();
    }
    BitVector& selected = mesh.getSelectedVertices();
    if (selected.getSize() != numOld) return;
    selected.resize(mesh.getNumVertices());
    for (int i = 0; i < originals.size(); ++i)
        if (selected.isSet(originals[i])) selected.setBit(numOld + i);
}

void tellOfCut(CompactMesh& mesh)
{
    MeshModification modification(&mesh, MeshModification::TopologyChanged);
    for (int i = 0; i < mesh.getNumAttributes(); ++i)
        modification.vertexAttribsModified(mesh.getAttributes(i)->getName());
    modification.triangleNormalsValid();
    mesh.modified(modification);
}

} // namespace

bool makeDisk(CompactMesh& mesh)
{
    Progress progress;
    zn::vector<int> originals;
    return makeDisk(mesh, originals, progress);
}

bool makeDisk(CompactMesh& mesh, zn::vector<int>& originals, Progress& progress)
{
    internal::CappedSurface surface;
    zn::vector<bool> isOpen;
    Progress phase;
    progress.subPhase(0.4, phase);
    if (!surface.build(mesh, phase)) return false;
    progress.subPhase(0.5, phase);
    if (!internal::findCut(surface, phase, isOpen) || progress.cancelled()) return false;
    originals.clear();
    progress.subPhase(0.1, phase);
    if (std::find(isOpen.begin(), isOpen.end(), true) != isOpen.end()) {
        zn::DisjointSets groups = surface.cornerGroups(isOpen);
        assignVertices(groups, mesh.getNumVertices(), mesh.getTriangles(), originals);
        appendCopies(mesh, originals);
        tellOfCut(mesh);
    }
    phase.set(1.0);
    return true;
}

} // namespace znGeom::cutSurface

#include "znGeom/editing/mesh_swap.h"

namespace znGeom {

namespace {

/// Names each channel of a mesh as rewritten.
void nameChannels(const CompactMesh& mesh, MeshModification& modification)
{
    zn::set<znString::CString> names;
    mesh.getAttributeNames(names);
    for (const znString::CString& name : names) modification.vertexAttribsModified(name);
    if (mesh.getNumPolys() > 0) modification.polysModified();
    if (mesh.getNumTriStrips() > 0 || mesh.getNumTriFans() > 0) modification.stripsAndFansModified();
    if (mesh.getTriangleNormals()) modification.triangleNormalsModified();
    if (mesh.getNumLines() > 0) modification.linesModified();
    if (mesh.getNumLineStrips() > 0) modification.lineStripsModified();
}

} // namespace

void meshSwap(CompactMesh& a, CompactMesh& b)
{
    a.swap(b);
    MeshModification ofA(&a, MeshModification::TopologyChanged), ofB(&b, MeshModification::TopologyChanged);
    for (MeshModification* modification : {&ofA, &ofB}) {
        nameChannels(a, *modification);
        nameChannels(b, *modification);
    }
    a.modified(ofA);
    b.modified(ofB);
}

} // namespace znGeom

#include "apps/zngeom/editing/positions_only.h"

namespace tool {

void keepPositionsOnly(LoadedMesh& loaded, const std::string& work)
{
    znGeom::CompactMesh& mesh = loaded.mesh;
    // What was read is no longer kept.
    std::erase_if(loaded.notes, [](const std::string& note) { return note.ends_with(", kept per face corner"); });
    const std::string notKept = ": not kept by " + work;
    if (mesh.getNormals() || !loaded.cornerNormals.empty()) loaded.notes.push_back("normals" + notKept);
    if (mesh.getUVs() || !loaded.cornerUVs.empty()) loaded.notes.push_back("texture coordinates" + notKept);
    if (!loaded.groups.ofTriangle.empty()) loaded.notes.push_back("groups" + notKept);
    mesh.deleteNormals();
    mesh.deleteUVs();
    mesh.resizePolyArrays(0, 0);
    loaded.cornerNormals.clear();
    loaded.cornerUVs.clear();
    loaded.groups = {};
}

} // namespace tool

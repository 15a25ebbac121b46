#include "apps/zngeom/shells/polygon_mesh.h"

#include "apps/zngeom/editing/positions_only.h"
#include "znGeom/scopes/convert_polygons.h"
#include "znGeom/topology/topo_walks.h"

namespace tool {

void takePolygons(LoadedMesh& loaded, const std::string& work, znGeom::TopoMesh& result)
{
    znGeom::meshConvertPolygons(loaded.mesh, result);
    keepPositionsOnly(loaded, work);
}

void putPolygons(const znGeom::TopoMesh& mesh, LoadedMesh& loaded, const zn::vector<bool>& reversed)
{
    loaded.keepsPolygons = true;
    loaded.numFaces = mesh.numFaces();
    loaded.numPolygons = 0;
    for (const znGeom::TopoMeshFace face : znGeom::facesOf(mesh)) loaded.numPolygons += face.numVertices() > 3 ? 1 : 0;
    znGeom::meshConvertPolygons(mesh, loaded.mesh, reversed);
}

int countFaces(const znGeom::CompactMesh& mesh)
{
    return mesh.getNumPolys() > 0 ? mesh.getNumPolys() : mesh.getNumTriangles();
}

Scene sceneOfFaces(const znGeom::CompactMesh& mesh)
{
    Scene scene;
    scene.mesh = &mesh;
    scene.showsPolygons = true;
    scene.markings.resize(2);
    scene.markings[0].name = "vertices";
    scene.markings[0].count = static_cast<std::size_t>(mesh.getNumVertices());
    scene.markings[1].name = "faces";
    scene.markings[1].count = static_cast<std::size_t>(countFaces(mesh));
    return scene;
}

} // namespace tool

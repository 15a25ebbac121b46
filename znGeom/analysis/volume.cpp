#include "znGeom/analysis/volume.h"

namespace znGeom {

double meshVolume(const CompactMesh& mesh)
{
    if (mesh.getNumTriangles() == 0) return 0;
    const MeshVertex* vertices = mesh.getVertices();
    const MeshTriangle* triangles = mesh.getTriangles();
    const znLinear::Point origin = vertices[triangles[0][0]].asPoint();
    double sixfold = 0; // of a tetrahedron this is the parallelepiped at one of its corners
    for (int i = 0; i < mesh.getNumTriangles(); ++i) {
        const auto corner = [&](int which) { return vertices[triangles[i][which]].asPoint() - origin; };
        sixfold += dot(corner(0), cross(corner(1), corner(2)));
    }
    return sixfold / 6;
}

} // namespace znGeom

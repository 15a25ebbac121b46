#include <memory>
#include <vector>

#include "znGeom/topology/subdivide.h"
#include "znGeom/topology/topo_walks.h"

namespace znGeom {

using namespace znLinear;

namespace {

using Vertices = zn::vector<TopoMeshVertex>;

/// Each triangle comes next to one before it, so that all twins are found.
std::unique_ptr<TopoMesh> makeOctahedron(const Point& centre, const Normal (&axes)[3], double radius)
{
    auto mesh = std::make_unique<TopoMesh>();
    const auto corner = [&](const Normal& axis, double sign) {
        return mesh->allocVertex(centre + axis.asVector() * (sign * radius));
    };
    const TopoMeshVertex a = corner(axes[0], 1), b = corner(axes[0], -1), p = corner(axes[1], 1),
                         q = corner(axes[1], -1), s = corner(axes[2], 1), t = corner(axes[2], -1);
    const TopoMeshVertex triangles[][3] = {{p, s, a}, {s, q, a}, {q, t, a}, {t, p, a},
                                           {s, p, b}, {p, t, b}, {t, q, b}, {q, s, b}};
    for (const auto& [first, second, third] : triangles) mesh->allocTriangle(first, second, third);
    return mesh;
}

/// Makes a quad at each corner of each face of a closed mesh. \return the new vertices: the centres of the faces, then
/// the middles of the edges
Vertices split(TopoMesh& mesh)
{
    zn::vector<TopoMeshFace> faces;
    zn::vector<TopoMeshEdge> edges, spokes;
    for (const TopoMeshFace face : facesOf(mesh)) faces.append(face);
    for (const TopoMeshEdge e : edgesOf(mesh))
        if (e < e->twin) edges.append(e);

    Vertices created;
    for (const TopoMeshFace face : faces) {
        const TopoMeshVertex centre = mesh.subdivideFace(face, face.centroid());
        for (const TopoMeshEdge spoke : fanOf(centre)) spokes.append(spoke);
        created.append(centre);
    }
    for (const TopoMeshEdge e : edges) {
        const TopoMeshFace left = e->face, right = e->twin->face;
        const TopoMeshVertex leftCentre = e->prev->origin, rightCentre = e->twin->prev->origin;
        const Vector ends = e->origin->point.asVector() + endOf(e)->point.asVector();
        const TopoMeshVertex middle = mesh.subdivideEdge(e, (ends / 2.0).asPoint());
        mesh.subdivideFace(left, leftCentre, middle);
        mesh.subdivideFace(right, rightCentre, middle);
        created.append(middle);
    }
    for (const TopoMeshEdge spoke : spokes) mesh.deleteEdge(spoke);
    return created;
}

} // namespace

TopoMesh* constructSubdividedOctahedron(const ParamPlane& plane, int levels, double radius)
{
    const Point centre = plane.origin;
    std::unique_ptr<TopoMesh> mesh =
        makeOctahedron(centre, {Normal(plane.first), Normal(plane.second), plane.third()}, radius);
    for (int level = 0; level < levels; ++level)
        for (const TopoMeshVertex vertex : split(*mesh)) {
            Vector outward = vertex->point - centre;
            outward.normalize();
            mesh->setPoint(vertex, centre + radius * outward);
        }
    return mesh.release();
}

} // namespace znGeom

#include "znGeom/spatial/queries/point_inside.h"

#include "znGeom/analysis/bounds.h"
#include "znGeom/analysis/normals.h"

namespace znGeom {

using namespace znLinear;

namespace {

BoundingBox boxOf(const CompactMesh& mesh)
{
    BoundingBox box;
    meshBoundingBox(mesh, box);
    return box;
}

/// The mean of the normals of a triangle's corners by the weights of a place; not of unit length.
Vector normalAt(const CompactMesh& mesh, const MeshCoord& coord)
{
    const MeshTriangle& triangle = mesh.getTriangles()[coord.triangle];
    const MeshNormal* const normals = mesh.getNormals();
    if (!normals) return meshTriNormal(mesh.getVerticesRaw(), triangle.corners).asVector();
    const Vector corners[] = {normals[triangle[0]].asVector(), normals[triangle[1]].asVector(),
                              normals[triangle[2]].asVector()};
    return combine(3, coord.weights, corners);
}

} // namespace

MeshPtInside::MeshPtInside(const CompactMesh& mesh, const Octree& octree, const OctreeTris& octreeTris,
                           double tolerance)
    : m_mesh(&mesh), m_closest(mesh, octree, octreeTris), m_box(boxOf(mesh)), m_tolerance(tolerance)
{}

MeshPtInside::MeshPtInside(const CompactMesh& mesh, const Octree& octree, const OctreeTris& octreeTris,
                           const TriangleTree& tree, double tolerance)
    : m_mesh(&mesh), m_closest(mesh, octree, octreeTris, tree), m_box(boxOf(mesh)), m_tolerance(tolerance)
{}

MeshPtInside::Result MeshPtInside::evaluate(const Point& point)
{
    if (!m_box.contains(BoundingBox(&point.x))) return Outside;
    MeshCoord coord;
    const double distance = m_closest.compute(point, &coord);
    if (m_tolerance > distance) return OnSurface;
    // Without a triangle there is nothing to be inside of.
    if (coord.triangle < 0) return Outside;
    const Point place = coord.evaluate(m_mesh->getVertices(), m_mesh->getTriangles());
    return dot(place - point, normalAt(*m_mesh, coord)) < 0 ? Outside : Inside;
}

} // namespace znGeom

#include "znGeom/scopes/convert_polygons.h"

#include <algorithm>

#include "znGeom/topology/topo_walks.h"
#include "znGeom/topology/twin.h"

namespace znGeom {

namespace {

/// The vertices of a flat mesh in a half-edge one.
class Corners
{
public:
    Corners(const CompactMesh& mesh, TopoMesh& result) : m_result(result)
    {
        m_vertices.reserve(mesh.getNumVertices());
        for (int v = 0; v < mesh.getNumVertices(); ++v)
            m_vertices.append(result.allocVertex(mesh.getVertices()[v].asPoint()));
    }

    void addFace(const int* corners, int count)
    {
        if (count < 3) return;
        m_face.clear();
        for (int i = 0; i < count; ++i) m_face.append(m_vertices[corners[i]]);
        m_result.allocFace(m_face);
    }

private:
    TopoMesh& m_result;
    zn::vector<TopoMeshVertex> m_vertices, m_face;
};

/// The corners of faces in a flat mesh, face by face.
struct FaceCorners
{
    zn::vector<int> points, lengths;
    bool allTriangles = true;

    void add(TopoMeshFace face, bool isReversed, const zn::vector<int>& indexOf)
    {
        const int first = points.size();
        const TopoMeshEdge begin = face->edge;
        TopoMeshEdge e = begin;
        do {
            points.append(indexOf[e->origin.number()]);
            e = isReversed ? e->prev : e->next;
        } while (e != begin);
        lengths.append(points.size() - first);
        allTriangles = allTriangles && lengths.back() == 3;
    }

    void publish(CompactMesh& mesh) const
    {
        mesh.resizeTriangleArray(points.size() - 2 * lengths.size());
        int* corner = mesh.getTrianglesRaw();
        for (int face = 0, first = 0; face < lengths.size(); first += lengths[face++])
            for (int i = 2; i < lengths[face]; ++i)
                for (const int place : {0, i - 1, i}) *corner++ = points[first + place];
        if (allTriangles) return;
        mesh.resizePolyArrays(points.size(), lengths.size());
        std::copy(points.begin(), points.end(), mesh.getPolyPoints());
        std::copy(lengths.begin(), lengths.end(), mesh.getPolyLengths());
    }
};

} // namespace

void meshConvertPolygons(const CompactMesh& mesh, TopoMesh& result)
{
    Corners corners(mesh, result);
    const int* points = mesh.getPolyPoints();
    for (int face = 0; face < mesh.getNumPolys(); ++face) {
        corners.addFace(points, mesh.getPolyLengths()[face]);
        points += mesh.getPolyLengths()[face];
    }
    const int numTriangles = mesh.getNumPolys() > 0 ? 0 : mesh.getNumTriangles();
    for (int t = 0; t < numTriangles; ++t) corners.addFace(mesh.getTriangles()[t].corners, 3);
    meshTwin(result);
}

void meshConvertPolygons(const TopoMesh& mesh, CompactMesh& result, const zn::vector<bool>& reversed)
{
    CompactMesh fresh;
    fresh.resizeVertexArray(mesh.numVertices());
    zn::vector<int> indexOf(mesh.vertexNumbers());
    int numMet = 0;
    for (const TopoMeshVertex vertex : verticesOf(mesh)) {
        indexOf[vertex.number()] = numMet;
        fresh.getVertices()[numMet++].set(&vertex->point.x);
    }
    FaceCorners faces;
    for (const TopoMeshFace face : facesOf(mesh))
        faces.add(face, !reversed.empty() && reversed[face.number()], indexOf);
    faces.publish(fresh);
    result.swap(fresh);
}

} // namespace znGeom

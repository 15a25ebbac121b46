/// Between plain arrays and CGAL's half-edge mesh.
#pragma once

#include "bench/generate.h"

#include <CGAL/Surface_mesh.h>

#include <cstddef>

namespace bench {

/// Room reserved, then vertex by vertex, as its manual shows.
template <class Point>
void addVertices(const Soup& soup, CGAL::Surface_mesh<Point>& mesh)
{
    using Size = typename CGAL::Surface_mesh<Point>::size_type;
    const auto numFaces = static_cast<Size>(soup.numTriangles());
    mesh.reserve(static_cast<Size>(soup.numVertices()), numFaces + numFaces / 2, numFaces);
    for (std::size_t i = 0; i < soup.positions.size(); i += 3)
        mesh.add_vertex(Point(static_cast<double>(soup.positions[i]), static_cast<double>(soup.positions[i + 1]),
                              static_cast<double>(soup.positions[i + 2])));
}

/// The vertex at a corner of the triangles, counted through.
template <class Point>
auto vertexAt(const Soup& soup, const CGAL::Surface_mesh<Point>&, std::size_t corner)
{
    using Mesh = CGAL::Surface_mesh<Point>;
    return typename Mesh::Vertex_index(static_cast<typename Mesh::size_type>(soup.triangles[corner]));
}

/// Vertices, then face by face.
template <class Point>
void addSoup(const Soup& soup, CGAL::Surface_mesh<Point>& mesh)
{
    addVertices(soup, mesh);
    for (std::size_t i = 0; i < soup.triangles.size(); i += 3)
        mesh.add_face(vertexAt(soup, mesh, i), vertexAt(soup, mesh, i + 1), vertexAt(soup, mesh, i + 2));
}

/// A mesh without removed elements.
template <class Point>
Soup toSoup(const CGAL::Surface_mesh<Point>& mesh)
{
    Soup soup;
    for (const auto vertex : mesh.vertices())
        for (int axis = 0; axis < 3; ++axis) soup.positions.push_back(static_cast<float>(mesh.point(vertex)[axis]));
    for (const auto face : mesh.faces())
        for (const auto vertex : mesh.vertices_around_face(mesh.halfedge(face)))
            soup.triangles.push_back(static_cast<int>(vertex.idx()));
    return soup;
}

} // namespace bench

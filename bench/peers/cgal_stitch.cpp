// CGAL sews borders together whose vertices are in the same places. It makes a half-edge mesh first.
#include "bench/stitch.h"

#include <CGAL/Polygon_mesh_processing/stitch_borders.h>
#include <CGAL/Simple_cartesian.h>
#include <CGAL/Surface_mesh.h>

namespace {

using Point = CGAL::Simple_cartesian<double>::Point_3;
using Mesh = CGAL::Surface_mesh<Point>;

class Stitching
{
public:
    explicit Stitching(const bench::Soup& soup) : m_soup(soup) {}

    std::size_t run()
    {
        const auto numFaces = static_cast<Mesh::size_type>(m_soup.numTriangles());
        m_mesh.reserve(static_cast<Mesh::size_type>(m_soup.numVertices()), numFaces + numFaces / 2, numFaces);
        for (std::size_t i = 0; i < m_soup.positions.size(); i += 3)
            m_mesh.add_vertex(Point(static_cast<double>(m_soup.positions[i]),
                                    static_cast<double>(m_soup.positions[i + 1]),
                                    static_cast<double>(m_soup.positions[i + 2])));
        const auto corner = [this](std::size_t i) {
            return Mesh::Vertex_index(static_cast<Mesh::size_type>(m_soup.triangles[i]));
        };
        for (std::size_t i = 0; i < m_soup.triangles.size(); i += 3)
            m_mesh.add_face(corner(i), corner(i + 1), corner(i + 2));
        return CGAL::Polygon_mesh_processing::stitch_borders(m_mesh);
    }

    bench::Soup result()
    {
        m_mesh.collect_garbage();
        bench::Soup soup;
        for (const auto vertex : m_mesh.vertices())
            for (int axis = 0; axis < 3; ++axis)
                soup.positions.push_back(static_cast<float>(m_mesh.point(vertex)[axis]));
        for (const auto face : m_mesh.faces())
            for (const auto vertex : m_mesh.vertices_around_face(m_mesh.halfedge(face)))
                soup.triangles.push_back(static_cast<int>(vertex.idx()));
        return soup;
    }

private:
    const bench::Soup& m_soup;
    Mesh m_mesh;
};

[[maybe_unused]] const bool listed = bench::measureStitch<Stitching>("stitch", "CGAL", true);

} // namespace

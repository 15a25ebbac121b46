// One step of CGAL's Catmull-Clark subdivision, which changes the mesh in place.
#include "bench/subdivide.h"

#include <CGAL/Simple_cartesian.h>
#include <CGAL/Surface_mesh.h>
#include <CGAL/subdivision_method_3.h>

#include <memory>
#include <vector>

namespace {

using Point = CGAL::Simple_cartesian<double>::Point_3;
using Mesh = CGAL::Surface_mesh<Point>;

class Subdividing
{
public:
    explicit Subdividing(const bench::Quads& quads)
    {
        const auto numQuads = static_cast<Mesh::size_type>(quads.corners.size() / 4);
        m_mesh.reserve(static_cast<Mesh::size_type>(quads.positions.size() / 3), 2 * numQuads, numQuads);
        for (std::size_t i = 0; i < quads.positions.size(); i += 3)
            m_mesh.add_vertex(Point(quads.positions[i], quads.positions[i + 1], quads.positions[i + 2]));
        const auto at = [&](std::size_t corner) {
            return Mesh::Vertex_index(static_cast<Mesh::size_type>(quads.corners[corner]));
        };
        for (std::size_t i = 0; i < quads.corners.size(); i += 4)
            m_mesh.add_face(at(i), at(i + 1), at(i + 2), at(i + 3));
    }

    std::size_t run()
    {
        CGAL::Subdivision_method_3::CatmullClark_subdivision(m_mesh, CGAL::parameters::number_of_iterations(1));
        return m_mesh.number_of_faces();
    }
    std::vector<double> positions() const
    {
        std::vector<double> all;
        for (const auto vertex : m_mesh.vertices())
            for (int axis = 0; axis < 3; ++axis) all.push_back(m_mesh.point(vertex)[axis]);
        return all;
    }

private:
    Mesh m_mesh;
};

[[maybe_unused]] const bool listed = bench::measureSubdivision<Subdividing>("CGAL");

} // namespace

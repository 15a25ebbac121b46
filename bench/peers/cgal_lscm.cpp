// CGAL's least squares conformal map with its default solver, a sparse direct one, on a half-edge mesh that is there.
#include "bench/flatten.h"
#include "bench/peers/cgal_mesh.h"

#include <CGAL/Polygon_mesh_processing/measure.h>
#include <CGAL/Simple_cartesian.h>
#include <CGAL/Surface_mesh.h>
#include <CGAL/Surface_mesh_parameterization/LSCM_parameterizer_3.h>
#include <CGAL/Surface_mesh_parameterization/parameterize.h>

#include <memory>

namespace {

using Kernel = CGAL::Simple_cartesian<double>;
using Mesh = CGAL::Surface_mesh<Kernel::Point_3>;
namespace flattening = CGAL::Surface_mesh_parameterization;

class Flattening
{
public:
    explicit Flattening(const bench::Soup& soup)
    {
        bench::addSoup(soup, m_mesh);
        m_uvs = m_mesh.add_property_map<Mesh::Vertex_index, Kernel::Point_2>("v:uv").first;
    }

    int run()
    {
        const auto border = CGAL::Polygon_mesh_processing::longest_border(m_mesh).first;
        return static_cast<int>(
            flattening::parameterize(m_mesh, flattening::LSCM_parameterizer_3<Mesh>(), border, m_uvs));
    }

    std::vector<float> uvs() const
    {
        std::vector<float> result;
        for (const auto vertex : m_mesh.vertices())
            for (int axis = 0; axis < 2; ++axis) result.push_back(static_cast<float>(m_uvs[vertex][axis]));
        return result;
    }

private:
    Mesh m_mesh;
    Mesh::Property_map<Mesh::Vertex_index, Kernel::Point_2> m_uvs;
};

[[maybe_unused]] const bool listed = bench::measureFlatten<Flattening>("CGAL");

} // namespace

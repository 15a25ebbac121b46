// CGAL fills all holes of a surface, which it first makes a half-edge mesh of. It leaves out faces at edges with more
// than two sides.
#include "bench/hole_fill.h"
#include "bench/peers/cgal_mesh.h"

#include <CGAL/Polygon_mesh_processing/border.h>
#include <CGAL/Polygon_mesh_processing/triangulate_hole.h>
#include <CGAL/Simple_cartesian.h>
#include <CGAL/Surface_mesh.h>

#include <iterator>
#include <vector>

namespace {

using Point = CGAL::Simple_cartesian<double>::Point_3;
using Mesh = CGAL::Surface_mesh<Point>;
namespace processing = CGAL::Polygon_mesh_processing;

class FillingBase
{
public:
    explicit FillingBase(const bench::Soup& soup) : m_soup(soup) {}

    bench::Soup result() const { return bench::toSoup(m_mesh); }

protected:
    std::vector<Mesh::Halfedge_index> build()
    {
        bench::addSoup(m_soup, m_mesh);
        std::vector<Mesh::Halfedge_index> holes;
        processing::extract_boundary_cycles(m_mesh, std::back_inserter(holes));
        return holes;
    }

    const bench::Soup& m_soup;
    Mesh m_mesh;
    std::vector<Mesh::Face_index> m_faces;
    std::vector<Mesh::Vertex_index> m_vertices;
};

struct Refining : FillingBase
{
    using FillingBase::FillingBase;
    std::size_t run()
    {
        for (const auto hole : build())
            processing::triangulate_and_refine_hole(m_mesh, hole, std::back_inserter(m_faces),
                                                    std::back_inserter(m_vertices));
        return m_faces.size();
    }
};

struct Fairing : FillingBase
{
    using FillingBase::FillingBase;
    std::size_t run()
    {
        for (const auto hole : build())
            processing::triangulate_refine_and_fair_hole(m_mesh, hole, std::back_inserter(m_faces),
                                                         std::back_inserter(m_vertices));
        return m_faces.size();
    }
};

[[maybe_unused]] const bool listed[] = {
    bench::measureHoleFill<Refining>("hole_refine", "CGAL"),
    bench::measureHoleFill<Fairing>("hole_fill", "CGAL"),
};

} // namespace

// CGAL sews borders together whose vertices are in the same places. It makes a half-edge mesh first.
#include "bench/peers/cgal_mesh.h"
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
        bench::addSoup(m_soup, m_mesh);
        return CGAL::Polygon_mesh_processing::stitch_borders(m_mesh);
    }

    bench::Soup result()
    {
        m_mesh.collect_garbage();
        return bench::toSoup(m_mesh);
    }

private:
    const bench::Soup& m_soup;
    Mesh m_mesh;
};

[[maybe_unused]] const bool listed = bench::measureStitch<Stitching>("stitch", "CGAL", true);

} // namespace

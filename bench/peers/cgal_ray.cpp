// CGAL's ray against triangle, triangle by triangle.
#include "bench/ray.h"

#include <CGAL/Simple_cartesian.h>
#include <CGAL/intersections.h>

namespace {

using Kernel = CGAL::Simple_cartesian<double>;

class CgalTriangles
{
public:
    explicit CgalTriangles(const bench::Soup& soup)
    {
        for (std::size_t i = 0; i < soup.triangles.size(); i += 3) {
            const auto corner = [&](std::size_t at) {
                return pointAt(&soup.positions[3 * static_cast<std::size_t>(soup.triangles[i + at])]);
            };
            triangles_.emplace_back(corner(0), corner(1), corner(2));
        }
    }

    std::size_t countHits(const float* from, const float* to) const
    {
        const Kernel::Ray_3 ray(pointAt(from), pointAt(to));
        std::size_t count = 0;
        for (const Kernel::Triangle_3& triangle : triangles_) count += CGAL::do_intersect(ray, triangle);
        return count;
    }

private:
    static Kernel::Point_3 pointAt(const float* p) { return {double(p[0]), double(p[1]), double(p[2])}; }
    std::vector<Kernel::Triangle_3> triangles_;
};

[[maybe_unused]] const bool listed = bench::measureRays<CgalTriangles>("CGAL");

} // namespace

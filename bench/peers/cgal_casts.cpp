// CGAL's casts: the tree of boxes over triangles.
#include "bench/casts.h"

#include <CGAL/AABB_traits.h>
#include <CGAL/AABB_tree.h>
#include <CGAL/AABB_triangle_primitive.h>
#include <CGAL/Simple_cartesian.h>

#include <cmath>
#include <vector>

namespace {

using Kernel = CGAL::Simple_cartesian<double>;
using Triangles = std::vector<Kernel::Triangle_3>;
using Primitive = CGAL::AABB_triangle_primitive<Kernel, Triangles::const_iterator>;
using Tree = CGAL::AABB_tree<CGAL::AABB_traits<Kernel, Primitive>>;

Kernel::Point_3 pointAt(const float* p) { return {double(p[0]), double(p[1]), double(p[2])}; }

Triangles trianglesOf(const bench::Soup& soup)
{
    const auto corner = [&](std::size_t at) {
        return pointAt(&soup.positions[3 * static_cast<std::size_t>(soup.triangles[at])]);
    };
    Triangles triangles;
    triangles.reserve(soup.triangles.size() / 3);
    for (std::size_t i = 0; i < soup.triangles.size(); i += 3)
        triangles.emplace_back(corner(i), corner(i + 1), corner(i + 2));
    return triangles;
}

class AabbCasts
{
public:
    explicit AabbCasts(const bench::Soup& soup)
        : triangles_(trianglesOf(soup)), tree_(triangles_.begin(), triangles_.end())
    {
        tree_.build();
    }

    void cast(const float* from, const float* to, std::size_t count, bool nearest, double* params) const
    {
        for (std::size_t i = 0; i < count; ++i, from += 3, to += 3) {
            const Kernel::Point_3 origin = pointAt(from), target = pointAt(to);
            const Kernel::Ray_3 ray(origin, target);
            params[i] = nearest ? nearestOn(ray, origin, target) : tree_.do_intersect(ray) ? 0 : -1;
        }
    }

private:
    double nearestOn(const Kernel::Ray_3& ray, const Kernel::Point_3& origin, const Kernel::Point_3& target) const
    {
        const auto hit = tree_.first_intersection(ray);
        if (!hit) return -1;
        const Kernel::Point_3* place = boost::get<Kernel::Point_3>(&hit->first);
        if (!place) return 0;
        return std::sqrt(CGAL::squared_distance(origin, *place) / CGAL::squared_distance(origin, target));
    }

    Triangles triangles_;
    Tree tree_;
};

[[maybe_unused]] const bool listed = bench::measureCasts<AabbCasts>("CGAL");

} // namespace

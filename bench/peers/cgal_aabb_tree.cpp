// CGAL's nearest points: the tree of boxes over triangles, with the search tree that gives it a first guess.
#include "bench/closest.h"

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

Kernel::Point_3 pointAt(const float* position)
{
    return {static_cast<double>(position[0]), static_cast<double>(position[1]), static_cast<double>(position[2])};
}

Triangles trianglesOf(const bench::Soup& soup)
{
    const auto cornerAt = [&](std::size_t corner) {
        return pointAt(&soup.positions[3 * static_cast<std::size_t>(soup.triangles[corner])]);
    };
    Triangles triangles;
    triangles.reserve(soup.triangles.size() / 3);
    for (std::size_t i = 0; i < soup.triangles.size(); i += 3)
        triangles.emplace_back(cornerAt(i), cornerAt(i + 1), cornerAt(i + 2));
    return triangles;
}

/// The triangles themselves are the primitives: it answers faster from them than from its half-edge mesh.
class AabbIndex
{
public:
    explicit AabbIndex(const bench::Soup& soup)
        : bytesBefore_(bench::heapInUse()), triangles_(trianglesOf(soup)), tree_(triangles_.begin(), triangles_.end())
    {
        tree_.build();
        tree_.accelerate_distance_queries();
        tree_.closest_point(pointAt(soup.positions.data())); // What it makes at the first query is made here.
        bytes_ = bench::heapInUse() - bytesBefore_;
    }

    std::size_t bytes() const { return bytes_; }

    void distances(const float* points, std::size_t count, double* distances) const
    {
        for (std::size_t i = 0; i < count; ++i) {
            const Kernel::Point_3 point = pointAt(points + 3 * i);
            distances[i] = std::sqrt(CGAL::squared_distance(point, tree_.closest_point(point)));
        }
    }

private:
    std::size_t bytesBefore_, bytes_ = 0;
    Triangles triangles_;
    Tree tree_;
};

[[maybe_unused]] const bool listed = bench::measureClosest<AabbIndex>("CGAL");

} // namespace

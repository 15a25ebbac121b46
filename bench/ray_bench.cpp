// The ray primitive as it stands, triangle by triangle.
#include "bench/ray.h"
#include "znGeom/spatial/shapes/ray.h"

namespace {

class Triangles
{
public:
    explicit Triangles(const bench::Soup& soup) : soup_(soup) {}

    std::size_t countHits(const float* from, const float* to) const
    {
        const double direction[3] = {double(to[0] - from[0]), double(to[1] - from[1]), double(to[2] - from[2])};
        std::size_t count = 0;
        for (std::size_t i = 0; i < soup_.triangles.size(); i += 3) {
            double t = 0, u = 0, v = 0;
            count += znGeom::intersectRayTriangle(direction, from, corner(i), corner(i + 1), corner(i + 2), t, u, v) &&
                     t > 0;
        }
        return count;
    }

private:
    const float* corner(std::size_t i) const
    {
        return &soup_.positions[3 * static_cast<std::size_t>(soup_.triangles[i])];
    }
    const bench::Soup& soup_;
};

[[maybe_unused]] const bool listed = bench::measureRays<Triangles>("znGeom");

} // namespace

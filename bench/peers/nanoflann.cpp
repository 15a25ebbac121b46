// nanoflann: the nearest vertex of each moved vertex, by its tree over the vertices.
#include "bench/offset.h"

#include <nanoflann.hpp>

#include <cstddef>
#include <string>
#include <vector>

namespace {

/// What it reads positions from.
struct Positions
{
    std::vector<float> numbers;

    std::size_t kdtree_get_point_count() const { return numbers.size() / 3; }
    float kdtree_get_pt(std::size_t point, std::size_t axis) const { return numbers[3 * point + axis]; }
    template <class Box>
    bool kdtree_get_bbox(Box&) const
    {
        return false;
    }
};

using Tree =
    nanoflann::KDTreeSingleIndexAdaptor<nanoflann::L2_Simple_Adaptor<float, Positions>, Positions, 3, std::size_t>;

class Nearest
{
public:
    explicit Nearest(const bench::Soup& soup) : positions_{soup.positions}, tree_(3, positions_) { tree_.buildIndex(); }

    int countNearer(const std::vector<double>& points, double distance) const
    {
        // Its distances are in float.
        const float limit = static_cast<float>(distance * distance * (1 - 1e-4));
        int count = 0;
        for (std::size_t i = 0; i < points.size(); i += 3) {
            const float query[3] = {static_cast<float>(points[i]), static_cast<float>(points[i + 1]),
                                    static_cast<float>(points[i + 2])};
            std::size_t vertex = 0;
            float distance2 = 0;
            tree_.knnSearch(query, 1, &vertex, &distance2);
            count += distance2 < limit;
        }
        return count;
    }

private:
    Positions positions_;
    Tree tree_;
};

std::string version()
{
    return std::to_string(NANOFLANN_VERSION >> 8) + "." + std::to_string(NANOFLANN_VERSION >> 4 & 15) + "." +
           std::to_string(NANOFLANN_VERSION & 15);
}

[[maybe_unused]] const bool listed =
    bench::usesPeer("nanoflann", version()) && bench::measureOffsetNearness<Nearest>("nanoflann");

} // namespace

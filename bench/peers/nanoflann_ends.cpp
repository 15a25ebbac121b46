// nanoflann: its tree over the ends of segments, and what lies around each end.
#include "bench/merge.h"
#include "bench/suite.h"

#include <nanoflann.hpp>

#include <cstddef>
#include <vector>

namespace {

struct Ends
{
    std::vector<bench::LooseSegment> segments = bench::looseSegments();

    const float* end(std::size_t i) const
    {
        const bench::LooseSegment& segment = segments[i / 2];
        return i % 2 == 0 ? segment.start.data() : segment.end.data();
    }
    std::size_t kdtree_get_point_count() const { return 2 * segments.size(); }
    float kdtree_get_pt(std::size_t point, std::size_t axis) const { return end(point)[axis]; }
    template <class Box>
    bool kdtree_get_bbox(Box&) const
    {
        return false;
    }
};

using Tree = nanoflann::KDTreeSingleIndexAdaptor<nanoflann::L2_Simple_Adaptor<float, Ends>, Ends, 3, std::size_t>;

void runSearches(benchmark::State& state)
{
    const Ends ends;
    bench::timeWork(
        state, [&] { return &ends; },
        [](const Ends* subject) {
            Tree tree(3, *subject);
            tree.buildIndex();
            std::size_t numFound = 0;
            std::vector<std::pair<std::size_t, float>> found;
            for (std::size_t i = 0; i < subject->kdtree_get_point_count(); ++i)
                numFound += tree.radiusSearch(subject->end(i), bench::joiningTolerance * bench::joiningTolerance, found,
                                              nanoflann::SearchParams());
            return numFound;
        });
}

[[maybe_unused]] const bool listed = bench::measureAlone("merge_segments", "nanoflann", runSearches, 3);

} // namespace

#include "apps/zngeom/planar/spaced_stroke.h"

#include <algorithm>
#include <limits>

#include "apps/zngeom/frame/failure.h"
#include "apps/zngeom/frame/pacer.h"
#include "znGeom/foundation/linear/range.h"
#include "znGeom/planar/strokes/flt_interpolate_2d.h"
#include "znGeom/planar/strokes/smooth_2d.h"

namespace tool {

namespace {

using znLinear::Point2Flt;
using Points = std::vector<Point2Flt>;

Points smooth(const Points& samples, const StrokeOptions& options, znUtil::Progress& progress)
{
    znLinear::Range2d box;
    for (const Point2Flt& sample : samples) box.include(znLinear::Point2(sample));
    // No stroke that settles on its samples leaves them so far behind.
    const double margin = 10 * std::max({box.x.size(), box.y.size(), std::numeric_limits<double>::min()});
    znGeom::Smooth2D filter(static_cast<float>(options.mass), static_cast<float>(options.drag), options.numSteps);
    Points smoothed;
    Pacer pacer(progress, samples.size());
    for (std::size_t i = 0; i < samples.size(); ++i) {
        pacer.at(i);
        filter.add_point(samples[i]);
        for (Point2Flt point; filter.interpolate(point);) {
            if (!box.contains(znLinear::Point2(point), margin))
                throw Failure(
                    "the smoothed stroke swings ever further; use a greater --mass, more --drag or fewer --steps");
            smoothed.push_back(point);
        }
    }
    return smoothed;
}

Points space(const Points& path, double spacing, znUtil::Progress& progress)
{
    constexpr std::size_t mostPoints = 10'000'000;
    znGeom::FltInterpolate2D walk;
    Points points;
    Pacer pacer(progress, path.size());
    for (std::size_t i = 0; i < path.size(); ++i) {
        walk.add_point(path[i]);
        for (Point2Flt point; walk.interpolate(static_cast<float>(spacing), point, nullptr); points.push_back(point)) {
            pacer.at(i);
            if (points.size() == mostPoints)
                throw Failure("the stroke has more than ten million points at this spacing");
        }
    }
    return points;
}

} // namespace

SpacedStroke spaceStroke(const Points& samples, const StrokeOptions& options, znUtil::Progress& progress)
{
    Phases phases(progress);
    SpacedStroke stroke;
    if (options.isSmooth) stroke.smoothed = smooth(samples, options, phases.next(0.5));
    const Points& path = options.isSmooth ? stroke.smoothed : samples;
    stroke.points = space(path, options.spacing, phases.next(options.isSmooth ? 0.5 : 1));
    return stroke;
}

double lengthOf(const Points& points)
{
    double length = 0;
    for (std::size_t i = 1; i < points.size(); ++i)
        length += distance(znLinear::Point2(points[i - 1]), znLinear::Point2(points[i]));
    return length;
}

} // namespace tool

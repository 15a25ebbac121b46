// Smooths a stroke of a trembling hand, spaces points along it, and draws both: stroke [STROKE.svg]
#include <znGeom/znGeom.h>

#include <cmath>
#include <cstdio>
#include <vector>

namespace {

using znLinear::Point2Flt;

/// An eight, drawn faster and slower, with a tremor.
std::vector<Point2Flt> drawByHand()
{
    std::vector<Point2Flt> samples;
    for (int i = 0; i <= 120; ++i) {
        const double angle = 2 * M_PI * (i / 120.0 + 0.01 * std::sin(0.4 * i)), tremor = 4 * std::sin(2.5 * i);
        samples.emplace_back(float(250 + 200 * std::sin(angle) + tremor), float(150 - 110 * std::sin(2 * angle)));
    }
    return samples;
}

} // namespace

int main(int argc, char** argv)
{
    const std::vector<Point2Flt> samples = drawByHand();
    const zn::Reference<znGeom::Interpolate2D> stroke = new znGeom::SmoothInterpolate2D(6, 2.0f, 0.9f);
    std::vector<Point2Flt> dabs;
    for (const Point2Flt& sample : samples) {
        stroke->add_point(sample);
        for (Point2Flt point; stroke->interpolate(10, point, nullptr);) dabs.push_back(point);
    }

    double least = 1e9, greatest = 0;
    for (size_t i = 1; i < dabs.size(); ++i) {
        const double way = znLinear::distance(znLinear::Point2(dabs[i - 1]), znLinear::Point2(dabs[i]));
        least = std::min(least, way), greatest = std::max(greatest, way);
    }
    std::printf("%zu samples, %zu points, %.2f to %.2f apart\n", samples.size(), dabs.size(), least, greatest);

    std::FILE* svg = std::fopen(argc > 1 ? argv[1] : "stroke.svg", "w");
    if (!svg) return 1;
    std::fprintf(svg, "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 500 300'>\n<polyline points='");
    for (const Point2Flt& sample : samples) std::fprintf(svg, "%.1f,%.1f ", double(sample.x), double(sample.y));
    std::fprintf(svg, "' fill='none' stroke='#a5aab2'/>\n");
    for (const Point2Flt& dab : dabs)
        std::fprintf(svg, "<circle cx='%.1f' cy='%.1f' r='3' fill='#c83c28'/>\n", double(dab.x), double(dab.y));
    std::fprintf(svg, "</svg>\n");
    return std::fclose(svg) == 0 && dabs.size() > 50 && greatest < 10.01 ? 0 : 1;
}

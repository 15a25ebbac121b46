// Puts a frame around handwriting: the convex hull of its strokes, and the smallest rectangle around them.
#include <znGeom/znGeom.h>

#include <cmath>
#include <cstdio>

namespace {

/// A row of loops that climbs to the right, as a pen draws them.
znGeom::Polyline2d makeLoops(int count)
{
    znGeom::Polyline2d stroke;
    for (int i = 0; i <= 40 * count; ++i) {
        const double t = i * 2 * M_PI / 40;
        const double x = t - 2 * std::sin(t), y = 2 * std::cos(t);
        stroke.appendVertex({0.8 * x - 0.6 * y, 0.6 * x + 0.8 * y});
    }
    return stroke;
}

} // namespace

int main()
{
    const znGeom::Polyline2d word = makeLoops(5);
    znGeom::Polyline2d underline;
    underline.appendVertex({1.8, -2.4});
    underline.appendVertex({26.6, 16.2});
    const zn::vector<const znGeom::Polyline2d*> strokes{&word, &underline};

    zn::vector<znLinear::Point> hull;
    if (!znGeom::convexHull2d(strokes, hull)) return 1;
    std::printf("%d vertices, of which %d are corners of the hull\n",
                word.getNumVertices() + underline.getNumVertices(), hull.size());

    znGeom::Rect2 rect;
    float ratio = 0;
    znGeom::minAreaBound(strokes, 0.5, rect, ratio);
    const znLinear::Vector2 base = rect.c1 - rect.c0;
    const double height = distance(rect.c0, rect.c2), degrees = std::atan2(base.dy, base.dx) * 180 / M_PI;
    std::printf("framed by %.2f times %.2f, turned by %.2f degrees; the widest choice has %.2f times the area\n",
                base.length(), height, degrees, double(ratio));
    return std::fabs(degrees - 36.87) < 0.01 ? 0 : 1; // along the line on which it is written
}

#include "apps/zngeom/picture/painter.h"

#include <cmath>

#include "apps/zngeom/picture/rings.h"

namespace tool {

namespace {

constexpr Colour front{205, 211, 219}, back{188, 158, 124};

// Marks lie in front of the surface by some pixels, so that it doesn't swallow half of them.
constexpr double aheadOfSurface = 0.3, outlineAhead = 0.8, lineAhead = 3, pointAhead = 10;
constexpr double outlineWidth = 0.6, thinWidth = 1.6, lineWidth = 3.4, pointRadius = 5, rimWidth = 1.3;

Spot nearer(Spot spot, double by)
{
    spot.depth -= by;
    return spot;
}

constexpr std::size_t mostTested = 1000;

/// How dark the outline of a triangle is: where it would take much of the triangle, as bright as that.
double outlineLight(const SeenTriangle& seen)
{
    constexpr double darkest = 0.6, lowest = 4, highest = 14;
    double longest = 0;
    for (int i = 0; i < 3; ++i) {
        const Spot &a = seen.corners[i], &b = seen.corners[znGeom::cornerAfter(i)];
        longest = std::max(longest, std::hypot(b.x - a.x, b.y - a.y));
    }
    const double height = longest > 0 ? 2 * seen.area / longest : 0;
    return 1 - (1 - darkest) * std::clamp((height - lowest) / (highest - lowest), 0.0, 1.0);
}

/// Which sides of the triangles run within a polygon.
std::vector<unsigned char> findDiagonals(const znGeom::CompactMesh& mesh)
{
    constexpr unsigned char first = 1, last = 4; // sides 0 and 2
    std::vector<unsigned char> diagonals;
    for (int face = 0; face < mesh.getNumPolys(); ++face) {
        const int numTriangles = mesh.getPolyLengths()[face] - 2;
        for (int i = 0; i < numTriangles; ++i)
            diagonals.push_back(static_cast<unsigned char>((i > 0 ? first : 0) | (i + 1 < numTriangles ? last : 0)));
    }
    return diagonals;
}

/// \param diagonals  bits for the sides that get no outline
void paintTriangle(Canvas& canvas, const SeenTriangle& seen, const Colour& colour, double ahead, unsigned diagonals)
{
    const auto corner = [&](int i, double by) { return nearer(seen.corners[i], by); };
    canvas.fillTriangle(corner(0, ahead), corner(1, ahead), corner(2, ahead), colour);
    const double light = outlineLight(seen);
    if (light == 1) return;
    for (int i = 0; i < 3; ++i)
        if ((diagonals >> i & 1) == 0)
            canvas.drawLine(corner(i, outlineAhead), corner(znGeom::cornerAfter(i), outlineAhead), outlineWidth,
                            shaded(colour, light));
}

/// Makes a triangle visible that covers next to no pixels.
void paintDot(Canvas& canvas, const SeenTriangle& seen, const Colour& colour)
{
    constexpr double radius = 1.8;
    const auto [a, b, c] = seen.corners;
    const double width = std::max({a.x, b.x, c.x}) - std::min({a.x, b.x, c.x});
    const double height = std::max({a.y, b.y, c.y}) - std::min({a.y, b.y, c.y});
    if (std::max(width, height) > 2 * radius) return;
    const Spot middle{(a.x + b.x + c.x) / 3, (a.y + b.y + c.y) / 3, (a.depth + b.depth + c.depth) / 3};
    canvas.fillDisc(nearer(middle, radius), radius, colour);
}

void paintPoint(Canvas& canvas, const Spot& spot, const Colour& colour, Canvas::Hidden hidden)
{
    canvas.fillDisc(nearer(spot, pointAhead), pointRadius + rimWidth, ink, hidden);
    canvas.fillDisc(nearer(spot, pointAhead + 1), pointRadius, colour, hidden);
}

Canvas::Hidden whenHidden(const Marking& marking)
{
    return marking.isAside ? Canvas::Hidden::Away : Canvas::Hidden::Faint;
}

} // namespace

Painter::Painter(const Scene& scene)
    : m_scene(scene), m_isMarked(static_cast<std::size_t>(scene.mesh->getNumTriangles()))
{
    for (const Marking& marking : scene.markings)
        for (const int triangle : marking.triangles) m_isMarked[static_cast<std::size_t>(triangle)] = true;
    if (scene.showsPolygons) m_diagonals = findDiagonals(*scene.mesh);
}

void Painter::paint(Canvas& canvas, const View& view, const Frame& frame) const
{
    canvas.clipTo(frame);
    const Projection projection(*m_scene.mesh, view);
    paintSurface(canvas, projection);
    for (const Marking& marking : m_scene.markings) paintMarkedTriangles(canvas, projection, marking);
    for (const Marking& marking : m_scene.markings) {
        if (!marking.triangles.empty()) paintHiddenTriangles(canvas, view, marking);
        paintLines(canvas, view, marking);
        paintPoints(canvas, view, marking);
        if (!marking.isAside) paintRings(canvas, view, frame, *m_scene.mesh, marking);
    }
}

void Painter::paintSurface(Canvas& canvas, const Projection& projection) const
{
    projection.forEachTriangle([&](int triangle, const SeenTriangle& seen) {
        if (m_isMarked[static_cast<std::size_t>(triangle)]) return;
        const Colour colour = shaded(seen.isFront ? front : back, 0.6 + 0.43 * seen.light);
        paintTriangle(canvas, seen, colour, 0, diagonalsOf(triangle));
    });
}

/// In front of what they repeat, and bright enough to be told apart also in the shade.
void Painter::paintMarkedTriangles(Canvas& canvas, const Projection& projection, const Marking& marking) const
{
    constexpr std::size_t mostDots = 50000;
    SeenTriangle seen;
    for (const int triangle : marking.triangles) {
        if (!projection.see(triangle, seen)) continue;
        const Colour colour = shaded(marking.colour, 0.78 + 0.26 * seen.light);
        paintTriangle(canvas, seen, colour, aheadOfSurface, diagonalsOf(triangle));
        if (marking.triangles.size() <= mostDots) paintDot(canvas, seen, colour);
    }
}

void Painter::paintHiddenTriangles(Canvas& canvas, const View& view, const Marking& marking) const
{
    const std::vector<MarkedThing> things = markedThings(*m_scene.mesh, marking, mostTested);
    const auto isVisible = [&](const MarkedThing& thing) { return canvas.shows(view.at(middleOf(thing)), lineAhead); };
    if (std::any_of(things.begin(), things.end(), isVisible)) return;
    for (const MarkedThing& thing : things)
        canvas.fillTriangle(view.at(thing[0]), view.at(thing[1]), view.at(thing[2]), marking.colour,
                            Canvas::Hidden::Faint);
}

void Painter::paintLines(Canvas& canvas, const View& view, const Marking& marking) const
{
    const double width = marking.isAside ? thinWidth : lineWidth;
    for (const auto& [from, to] : marking.lines)
        canvas.drawLine(nearer(view.at(from), lineAhead), nearer(view.at(to), lineAhead), width, marking.colour,
                        whenHidden(marking));
}

void Painter::paintPoints(Canvas& canvas, const View& view, const Marking& marking) const
{
    for (const znLinear::Point& point : marking.points)
        paintPoint(canvas, view.at(point), marking.colour, whenHidden(marking));
}

void paintSample(Canvas& canvas, const Frame& frame, const Marking& marking)
{
    const double left = frame.left, right = frame.right, top = frame.top, bottom = frame.bottom;
    const double x = (left + right) / 2, y = (top + bottom) / 2;
    if (!marking.triangles.empty()) canvas.fillFrame(frame, marking.colour);
    if (!marking.lines.empty())
        canvas.drawLine({left, y, 0}, {right, y, 0}, marking.isAside ? thinWidth : lineWidth, marking.colour);
    if (!marking.points.empty()) paintPoint(canvas, {x, y, 0}, marking.colour, Canvas::Hidden::Away);
}

} // namespace tool

#include "apps/zngeom/picture/canvas.h"

#include <array>
#include <cmath>
#include <limits>
#include <numbers>

namespace tool {

namespace {

constexpr float farthest = std::numeric_limits<float>::infinity();

/// The first sample whose middle is not below a coordinate, limited to a range.
int firstFrom(double coordinate, int low, int high)
{
    return static_cast<int>(std::clamp(std::ceil(coordinate - 0.5), double(low), double(high)));
}

double crossing(const Spot& a, const Spot& b, double y)
{
    return b.y > a.y ? a.x + (y - a.y) * ((b.x - a.x) / (b.y - a.y)) : a.x;
}

} // namespace

/// The depth over a triangle; where the triangle is seen edge-on, within the range of its corners.
struct Canvas::DepthPlane
{
    double x0, y0, depth0, alongX = 0, alongY = 0, least, most;

    DepthPlane(const Spot& a, const Spot& b, const Spot& c)
        : x0(a.x), y0(a.y), depth0(a.depth), least(std::min({a.depth, b.depth, c.depth})),
          most(std::max({a.depth, b.depth, c.depth}))
    {
        const double bx = b.x - a.x, by = b.y - a.y, cx = c.x - a.x, cy = c.y - a.y;
        const double area = bx * cy - by * cx;
        if (area == 0) return;
        alongX = ((b.depth - a.depth) * cy - (c.depth - a.depth) * by) / area;
        alongY = ((c.depth - a.depth) * bx - (b.depth - a.depth) * cx) / area;
    }

    double at(double x, double y) const
    {
        return std::clamp(depth0 + alongX * (x - x0) + alongY * (y - y0), least, most);
    }
};

Canvas::Canvas(int width, int height, int samples, const Colour& background)
    : m_width(width * samples), m_height(height * samples), m_samples(samples), m_clip{0, 0, m_width, m_height},
      m_depths(static_cast<std::size_t>(m_width) * static_cast<std::size_t>(m_height), farthest),
      m_colours(m_depths.size(), background)
{}

void Canvas::clipTo(const Frame& frame)
{
    const auto samples = [this](int pixels, int most) { return std::clamp(pixels * m_samples, 0, most); };
    m_clip.left = samples(frame.left, m_width), m_clip.top = samples(frame.top, m_height);
    m_clip.right = std::max(samples(frame.right, m_width), m_clip.left);
    m_clip.bottom = std::max(samples(frame.bottom, m_height), m_clip.top);
}

void Canvas::fillFrame(const Frame& frame, const Colour& colour)
{
    const Frame former = m_clip;
    clipTo(frame);
    for (int y = m_clip.top; y < m_clip.bottom; ++y) {
        const std::size_t row = static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width);
        for (int x = m_clip.left; x < m_clip.right; ++x) {
            m_depths[row + static_cast<std::size_t>(x)] = farthest;
            m_colours[row + static_cast<std::size_t>(x)] = colour;
        }
    }
    m_clip = former;
}

void Canvas::fillTriangle(const Spot& a, const Spot& b, const Spot& c, const Colour& colour, Hidden hidden)
{
    const double scale = m_samples;
    fillScaled({a.x * scale, a.y * scale, a.depth}, {b.x * scale, b.y * scale, b.depth},
               {c.x * scale, c.y * scale, c.depth}, colour, hidden);
}

/// From the top down, between the side over the whole height and the two others.
void Canvas::fillScaled(const Spot& a, const Spot& b, const Spot& c, const Colour& colour, Hidden hidden)
{
    const Spot *top = &a, *middle = &b, *low = &c;
    if (middle->y < top->y) std::swap(top, middle);
    if (low->y < middle->y) std::swap(middle, low);
    if (middle->y < top->y) std::swap(top, middle);
    const int end = firstFrom(low->y, m_clip.top, m_clip.bottom);
    int row = firstFrom(top->y, m_clip.top, m_clip.bottom);
    if (row == end || std::max({a.x, b.x, c.x}) < m_clip.left || std::min({a.x, b.x, c.x}) > m_clip.right) return;

    const DepthPlane plane(a, b, c);
    for (; row < end; ++row) {
        const double y = row + 0.5;
        const double whole = crossing(*top, *low, y);
        const double part = y < middle->y ? crossing(*top, *middle, y) : crossing(*middle, *low, y);
        fillRow(row, std::min(whole, part), std::max(whole, part), plane, colour, hidden);
    }
}

void Canvas::fillRow(int row, double from, double to, const DepthPlane& plane, const Colour& colour, Hidden hidden)
{
    const int end = firstFrom(to, m_clip.left, m_clip.right);
    const std::size_t start = static_cast<std::size_t>(row) * static_cast<std::size_t>(m_width);
    for (int x = firstFrom(from, m_clip.left, m_clip.right); x < end; ++x) {
        const std::size_t sample = start + static_cast<std::size_t>(x);
        const float depth = static_cast<float>(plane.at(x + 0.5, row + 0.5));
        if (depth <= m_depths[sample]) {
            m_depths[sample] = depth;
            m_colours[sample] = colour;
        } else if (hidden == Hidden::Faint && (x + row) % 3 == 0) {
            m_colours[sample] = colour;
        }
    }
}

void Canvas::drawLine(const Spot& a, const Spot& b, double width, const Colour& colour, Hidden hidden)
{
    const double dx = b.x - a.x, dy = b.y - a.y, length = std::hypot(dx, dy), radius = width / 2;
    if (radius * m_samples > 1) {
        fillDisc(a, radius, colour, hidden);
        fillDisc(b, radius, colour, hidden);
    }
    if (!(length > 0)) return;
    const double sideX = -dy / length * radius, sideY = dx / length * radius;
    const Spot a1{a.x + sideX, a.y + sideY, a.depth}, a2{a.x - sideX, a.y - sideY, a.depth};
    const Spot b1{b.x + sideX, b.y + sideY, b.depth}, b2{b.x - sideX, b.y - sideY, b.depth};
    fillTriangle(a1, a2, b1, colour, hidden);
    fillTriangle(a2, b2, b1, colour, hidden);
}

void Canvas::fillDisc(const Spot& centre, double radius, const Colour& colour, Hidden hidden)
{
    constexpr int numSides = 16;
    const auto rim = [&](int side) -> Spot {
        const double angle = 2 * std::numbers::pi * side / numSides;
        return {centre.x + radius * std::cos(angle), centre.y + radius * std::sin(angle), centre.depth};
    };
    for (int side = 2; side < numSides; ++side) fillTriangle(rim(0), rim(side - 1), rim(side), colour, hidden);
}

bool Canvas::shows(const Spot& spot, double slack) const
{
    if (!(spot.x >= 0 && spot.x < getWidth() && spot.y >= 0 && spot.y < getHeight())) return false;
    return spot.depth - slack <= double(m_depths[firstSample(static_cast<int>(spot.x), static_cast<int>(spot.y))]);
}

Colour Canvas::meanOf(int x, int y) const
{
    int red = 0, green = 0, blue = 0;
    for (int i = 0; i < m_samples; ++i) {
        const std::size_t row = firstSample(x, y) + static_cast<std::size_t>(i) * static_cast<std::size_t>(m_width);
        for (int j = 0; j < m_samples; ++j) {
            const Colour& sample = m_colours[row + static_cast<std::size_t>(j)];
            red += sample.red, green += sample.green, blue += sample.blue;
        }
    }
    const int count = m_samples * m_samples;
    const auto mean = [count](int sum) { return static_cast<std::uint8_t>((sum + count / 2) / count); };
    return {mean(red), mean(green), mean(blue)};
}

Image Canvas::image() const
{
    Image result{getWidth(), getHeight(), {}};
    result.pixels.reserve(static_cast<std::size_t>(result.width) * static_cast<std::size_t>(result.height));
    for (int y = 0; y < result.height; ++y)
        for (int x = 0; x < result.width; ++x) result.pixels.push_back(meanOf(x, y));
    return result;
}

} // namespace tool

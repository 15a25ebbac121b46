#include "apps/zngeom/planar/rectangle_layout.h"

#include <algorithm>
#include <cmath>

#include "apps/zngeom/frame/pacer.h"
#include "apps/zngeom/frame/report.h"
#include "znGeom/planar/shapes/pack.h"

namespace tool {

namespace {

using znLinear::Point2;
using znLinear::Range2d;

double largerSide(const Point2& size) { return std::max(size.x, size.y); }

double largestSide(const std::vector<Point2>& sizes)
{
    double largest = 0;
    for (const Point2& size : sizes) largest = std::max(largest, largerSide(size));
    return largest;
}

/// Cells for rectangles whose largest side is 1, and for a margin in the same unit.
class Cells
{
public:
    Cells(const std::vector<Point2>& sizes, double unit, double margin) : m_margin(margin)
    {
        m_cells.reserve(static_cast<int>(sizes.size()));
        for (const Point2& size : sizes)
            m_cells.append(Range2d({0, 0}, {size.x / unit + margin, size.y / unit + margin}));
    }

    /// Finds their places.
    void pack(int iterations, znUtil::Progress& progress)
    {
        scale(startingScale());
        const auto before = *largest();
        m_result = znGeom::pack(m_cells, iterations, progress);
        checkCancelled(progress);
        const Range2d& after = m_cells[m_largest];
        const double side = largerSide(before.size());
        m_scale *= side > 0 ? largerSide(after.size()) / side : 1;
    }

    double scaleOfAll() const { return m_scale; }
    /// The margin as it has become.
    double margin() const { return m_margin * m_scale; }
    int tries() const { return m_result.attempts; }
    Range2d place(int cell) const
    {
        const Range2d& range = m_cells[cell];
        const Point2 middle = range.mid();
        const double half = margin() / 2;
        return {{std::min(range.x.min + half, middle.x), std::min(range.y.min + half, middle.y)},
                {std::max(range.x.max - half, middle.x), std::max(range.y.max - half, middle.y)}};
    }

private:
    /// A packing never grows its items: they begin with the area of the square, or as wide as it.
    double startingScale() const
    {
        double area = 0, side = 0;
        for (const Range2d& cell : m_cells) {
            area += cell.area();
            side = std::max(side, largerSide(cell.size()));
        }
        const double widest = side > 0 ? 1 / side : 1;
        return area > 0 ? std::min(1 / std::sqrt(area), widest) : widest;
    }

    void scale(double factor)
    {
        m_scale *= factor;
        for (Range2d& cell : m_cells) cell = Range2d({0, 0}, {cell.x.max * factor, cell.y.max * factor});
    }

    const Range2d* largest()
    {
        const auto isSmaller = [](const Range2d& a, const Range2d& b) {
            return largerSide(a.size()) < largerSide(b.size());
        };
        const Range2d* const found = std::max_element(m_cells.begin(), m_cells.end(), isSmaller);
        m_largest = static_cast<int>(found - m_cells.begin());
        return found;
    }

    zn::vector<Range2d> m_cells;
    double m_margin, m_scale = 1;
    int m_largest = 0;
    znGeom::PackResult m_result;
};

RectangleLayout layoutOf(const Cells& cells, std::size_t count, double unit)
{
    RectangleLayout layout;
    layout.scale = cells.scaleOfAll() / unit;
    layout.tries = cells.tries();
    for (std::size_t i = 0; i < count; ++i) {
        layout.places.push_back(cells.place(static_cast<int>(i)));
        layout.density += layout.places.back().area();
    }
    return layout;
}

} // namespace

RectangleLayout layOut(const std::vector<Point2>& sizes, int iterations, double margin, znUtil::Progress& progress)
{
    progress.setCaption("packing");
    const double largest = largestSide(sizes), unit = largest > 0 ? largest : 1;
    // How large a margin is beside the sizes shows only when their scale is known, which depends on it.
    constexpr int mostRounds = 40;
    double beside = 0;
    for (int round = 0; round < mostRounds; ++round) {
        Cells cells(sizes, unit, beside);
        cells.pack(iterations, progress);
        if (cells.margin() >= margin) return layoutOf(cells, sizes.size(), unit);
        beside = 1.002 * margin / cells.scaleOfAll();
    }
    throw Failure("a margin of " + shownNumber(margin) + " leaves no room for " + std::to_string(sizes.size()) +
                  " rectangles");
}

} // namespace tool

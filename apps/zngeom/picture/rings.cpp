#include "apps/zngeom/picture/rings.h"

#include <cmath>
#include <limits>
#include <numbers>

namespace tool {

namespace {

constexpr int cellSize = 28;
constexpr double smallSize = 9, ringRadius = 13, ringWidth = 2.2;
constexpr std::size_t mostThings = 20000;

/// The rectangle that things of a marking take up.
struct Extent
{
    double left = std::numeric_limits<double>::max(), top = left, right = -left, bottom = -left;

    void add(const Spot& spot)
    {
        left = std::min(left, spot.x), right = std::max(right, spot.x);
        top = std::min(top, spot.y), bottom = std::max(bottom, spot.y);
    }
    bool isEmpty() const { return left > right; }
    double size() const { return std::max(right - left, bottom - top); }
    Spot middle() const { return {(left + right) / 2, (top + bottom) / 2, -double(std::numeric_limits<float>::max())}; }
};

/// A frame in cells, each with the extent of the things whose middle is in it.
class Cells
{
public:
    explicit Cells(const Frame& frame)
        : m_frame(frame), m_columns(frame.width() / cellSize + 1), m_rows(frame.height() / cellSize + 1),
          m_extents(static_cast<std::size_t>(m_columns) * static_cast<std::size_t>(m_rows))
    {}

    void add(const Extent& thing)
    {
        const Spot middle = thing.middle();
        const bool isInside = middle.x >= m_frame.left && middle.x < m_frame.right && middle.y >= m_frame.top &&
                              middle.y < m_frame.bottom;
        if (!isInside) return;
        Extent& cell = at(static_cast<int>(middle.x - m_frame.left) / cellSize,
                          static_cast<int>(middle.y - m_frame.top) / cellSize);
        cell.add({thing.left, thing.top, 0});
        cell.add({thing.right, thing.bottom, 0});
    }

    template <typename Visit>
    void forEachLonely(const Visit& visit)
    {
        for (int row = 0; row < m_rows; ++row)
            for (int column = 0; column < m_columns; ++column) {
                const Extent around = extentAround(column, row);
                if (!at(column, row).isEmpty() && around.size() < smallSize) visit(around.middle());
            }
    }

private:
    Extent& at(int column, int row) { return m_extents[static_cast<std::size_t>(row * m_columns + column)]; }

    Extent extentAround(int column, int row)
    {
        Extent around;
        for (int y = std::max(row - 1, 0); y <= std::min(row + 1, m_rows - 1); ++y)
            for (int x = std::max(column - 1, 0); x <= std::min(column + 1, m_columns - 1); ++x) {
                const Extent& cell = at(x, y);
                if (cell.isEmpty()) continue;
                around.add({cell.left, cell.top, 0});
                around.add({cell.right, cell.bottom, 0});
            }
        return around;
    }

    Frame m_frame;
    int m_columns, m_rows;
    std::vector<Extent> m_extents;
};

void paintRing(Canvas& canvas, const Spot& centre, const Colour& colour)
{
    constexpr int numSides = 24;
    const auto rim = [&](int side) -> Spot {
        const double angle = 2 * std::numbers::pi * side / numSides;
        return {centre.x + ringRadius * std::cos(angle), centre.y + ringRadius * std::sin(angle), centre.depth};
    };
    for (int side = 0; side < numSides; ++side) canvas.drawLine(rim(side), rim(side + 1), ringWidth, colour);
}

} // namespace

void paintRings(Canvas& canvas, const View& view, const Frame& frame, const znGeom::CompactMesh& mesh,
                const Marking& marking)
{
    if (!marking.points.empty()) return; // discs are large enough
    Cells cells(frame);
    for (const MarkedThing& thing : markedThings(mesh, marking, mostThings)) {
        Extent extent;
        for (const znLinear::Point& corner : thing) extent.add(view.at(corner));
        cells.add(extent);
    }
    cells.forEachLonely([&](const Spot& centre) { paintRing(canvas, centre, marking.colour); });
}

} // namespace tool

#include "apps/zngeom/picture/checkerboard.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace tool {

namespace {

using Piece = std::vector<BoardSpot>;
using Axis = double BoardSpot::*;

BoardSpot between(const BoardSpot& a, const BoardSpot& b, double part)
{
    const auto mix = [part](double from, double to) { return from + part * (to - from); };
    return {{mix(a.spot.x, b.spot.x), mix(a.spot.y, b.spot.y), mix(a.spot.depth, b.spot.depth)},
            mix(a.u, b.u),
            mix(a.v, b.v)};
}

/// What lies on one side of a line of the board (Sutherland and Hodgman 1974).
/// \param side  1 to keep what is above the level, -1 for what is below
Piece keepSide(const Piece& piece, Axis axis, double level, double side)
{
    Piece kept;
    for (std::size_t i = 0; i < piece.size(); ++i) {
        const BoardSpot &here = piece[i], &next = piece[(i + 1) % piece.size()];
        const double height = side * (here.*axis - level), nextHeight = side * (next.*axis - level);
        if (height >= 0) kept.push_back(here);
        if ((height < 0) != (nextHeight < 0)) kept.push_back(between(here, next, height / (height - nextHeight)));
    }
    return kept;
}

/// Calls `visit(part, cell)` with the parts of a piece between the lines of the board across an axis.
template <typename Visit>
void forEachStrip(const Piece& piece, Axis axis, const Visit& visit)
{
    const auto [low, high] = std::minmax_element(
        piece.begin(), piece.end(), [axis](const BoardSpot& a, const BoardSpot& b) { return a.*axis < b.*axis; });
    const double first = std::floor((*low).*axis), last = std::floor((*high).*axis);
    for (double cell = first; cell <= last; ++cell) {
        const bool isWhole = first == last;
        const Piece part = isWhole ? piece : keepSide(keepSide(piece, axis, cell, 1), axis, cell + 1, -1);
        if (part.size() >= 3) visit(part, static_cast<long>(cell));
    }
}

} // namespace

void fillWithBoard(Canvas& canvas, const std::array<BoardSpot, 3>& triangle, const Colour& even, const Colour& odd)
{
    forEachStrip({triangle.begin(), triangle.end()}, &BoardSpot::u, [&](const Piece& strip, long column) {
        forEachStrip(strip, &BoardSpot::v, [&](const Piece& part, long row) {
            const Colour& colour = (column + row) % 2 == 0 ? even : odd;
            for (std::size_t i = 1; i + 1 < part.size(); ++i)
                canvas.fillTriangle(part[0].spot, part[i].spot, part[i + 1].spot, colour);
        });
    });
}

} // namespace tool

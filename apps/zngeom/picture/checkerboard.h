/// A checkerboard on triangles.
#pragma once

#include <array>

#include "apps/zngeom/picture/canvas.h"

namespace tool {

/// A corner of a triangle in a picture, and its place on the board, whose cells have sides of 1.
struct BoardSpot
{
    Spot spot;
    double u = 0, v = 0;
};

/// Fills a triangle with the cells of the board that it covers, each in one of two colours.
void fillWithBoard(Canvas& canvas, const std::array<BoardSpot, 3>& triangle, const Colour& even, const Colour& odd);

} // namespace tool

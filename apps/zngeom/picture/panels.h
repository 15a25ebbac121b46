/// The parts of a picture.
#pragma once

#include <vector>

#include "apps/zngeom/picture/canvas.h"

namespace tool {

constexpr int panelGap = 8; ///< pixels between panels and around them

/// One large panel on the left and the others below one another on its right; one alone takes everything.
std::vector<Frame> divideByWeight(const Frame& whole, std::size_t count);

/// Equal panels in rows of two.
std::vector<Frame> divideInPairs(const Frame& whole, std::size_t count);

/// Draws the border of a panel, within it.
void outlinePanel(Canvas& canvas, const Frame& frame, const Colour& colour);

/// Draws a rectangle in front of everything.
void outline(Canvas& canvas, const Spot& corner, const Spot& opposite, double width, const Colour& colour);

} // namespace tool

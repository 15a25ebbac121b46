/// Words in pictures.
#pragma once

#include <string>

#include "apps/zngeom/picture/canvas.h"

namespace tool {

/// The height of a line of small letters, in pixels, and the width of each letter with the gap that follows it.
constexpr int letterHeight = 18, letterWidth = 12;

/// Draws small letters, digits, blanks and a few signs; anything else leaves a gap.
/// \param left, top  of the line, in pixels
void drawText(Canvas& canvas, int left, int top, const std::string& text, const Colour& colour);

} // namespace tool

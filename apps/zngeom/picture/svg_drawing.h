/// `tool::SvgDrawing`: outlines in the plane as a picture of lines.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "apps/zngeom/picture/colour.h"
#include "znGeom/foundation/linear/point.h"
#include "znGeom/foundation/linear/range.h"

namespace tool {

/// Checks, before any work is done, that a path ends in .svg; fails if not.
void checkSvgName(const std::string& path);

/// How a shape is drawn.
struct SvgStyle
{
    std::optional<Colour> line = ink;
    std::optional<Colour> fill;
    double width = 1; ///< of lines, in pixels of the picture
    double opacity = 1;
};

/// A drawing in the coordinates of what is drawn, which stand in the file with all their digits; y is upward. What
/// comes later lies above. Coordinates are finite.
class SvgDrawing
{
public:
    /// \param bounds  what is shown, with a small margin around; may be flat
    /// \param pixels  the longer side of the picture
    explicit SvgDrawing(const znLinear::Range2d& bounds, double pixels = 800);

    void polyline(const std::vector<znLinear::Point2>& points, bool isClosed, const SvgStyle& style);
    void rectangle(const znLinear::Range2d& rectangle, const SvgStyle& style);
    /// \param radius  in pixels
    void dot(const znLinear::Point2& centre, double radius, const Colour& colour);
    /// Centred on a place.
    /// \param size  of the letters, in pixels
    void label(const znLinear::Point2& centre, const std::string& text, double size, const Colour& colour = ink);

    /// The whole file.
    std::string text() const;

private:
    znLinear::Range2d m_shown;
    double m_unitsPerPixel = 1;
    std::string m_shapes;
};

} // namespace tool

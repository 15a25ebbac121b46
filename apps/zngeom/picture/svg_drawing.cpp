#include "apps/zngeom/picture/svg_drawing.h"

#include <algorithm>
#include <charconv>

#include "apps/zngeom/frame/failure.h"

namespace tool {

namespace {

using znLinear::Point2;
using znLinear::Range2d;

std::string asText(double value)
{
    char digits[32];
    return {digits, std::to_chars(digits, digits + sizeof digits, value).ptr};
}

std::string attribute(const char* name, const std::string& value)
{
    return std::string(" ") + name + "=\"" + value + '"';
}

std::string asText(const std::optional<Colour>& colour)
{
    if (!colour) return "none";
    return "rgb(" + std::to_string(colour->red) + ',' + std::to_string(colour->green) + ',' +
           std::to_string(colour->blue) + ')';
}

/// Widths in the units of the drawing: not every viewer knows lines that keep theirs.
std::string attributesOf(const SvgStyle& style, double unitsPerPixel)
{
    std::string text = attribute("stroke", asText(style.line)) + attribute("fill", asText(style.fill));
    if (style.line) text += attribute("stroke-width", asText(style.width * unitsPerPixel));
    if (style.opacity < 1) text += attribute("opacity", asText(style.opacity));
    return text;
}

std::string escaped(const std::string& text)
{
    std::string safe;
    for (const char letter : text) {
        if (letter == '&')
            safe += "&amp;";
        else if (letter == '<')
            safe += "&lt;";
        else if (letter == '>')
            safe += "&gt;";
        else if (static_cast<unsigned char>(letter) >= ' ')
            safe += letter;
    }
    return safe;
}

/// Flat bounds get some room, so that there is something to show them in.
Range2d widened(Range2d bounds)
{
    const double size = std::max(bounds.x.size(), bounds.y.size());
    const double margin = size > 0 ? size / 50 : 1;
    return {Point2(bounds.x.min - margin, bounds.y.min - margin), Point2(bounds.x.max + margin, bounds.y.max + margin)};
}

} // namespace

void checkSvgName(const std::string& path)
{
    if (!path.ends_with(".svg")) throw Failure(path + ": drawings are written as .svg");
}

SvgDrawing::SvgDrawing(const Range2d& bounds, double pixels) : m_shown(widened(bounds))
{
    m_unitsPerPixel = std::max(m_shown.x.size(), m_shown.y.size()) / pixels;
}

void SvgDrawing::polyline(const std::vector<Point2>& points, bool isClosed, const SvgStyle& style)
{
    std::string places;
    for (const Point2& point : points) places += (places.empty() ? "" : " ") + asText(point.x) + ',' + asText(point.y);
    m_shapes += (isClosed ? "<polygon" : "<polyline") + attribute("points", places) +
                attributesOf(style, m_unitsPerPixel) + "/>\n";
}

void SvgDrawing::rectangle(const Range2d& rectangle, const SvgStyle& style)
{
    m_shapes += "<rect" + attribute("x", asText(rectangle.x.min)) + attribute("y", asText(rectangle.y.min)) +
                attribute("width", asText(rectangle.x.size())) + attribute("height", asText(rectangle.y.size())) +
                attributesOf(style, m_unitsPerPixel) + "/>\n";
}

void SvgDrawing::dot(const Point2& centre, double radius, const Colour& colour)
{
    m_shapes += "<circle" + attribute("cx", asText(centre.x)) + attribute("cy", asText(centre.y)) +
                attribute("r", asText(radius * m_unitsPerPixel)) + attribute("fill", asText(colour)) + "/>\n";
}

void SvgDrawing::label(const Point2& centre, const std::string& text, double size, const Colour& colour)
{
    const std::string place = "translate(" + asText(centre.x) + ',' + asText(centre.y) + ") scale(" +
                              asText(m_unitsPerPixel) + ',' + asText(-m_unitsPerPixel) + ')';
    m_shapes += "<text" + attribute("transform", place) + attribute("font-size", asText(size)) +
                attribute("font-family", "sans-serif") + attribute("text-anchor", "middle") +
                attribute("dominant-baseline", "central") + attribute("fill", asText(colour)) + '>' + escaped(text) +
                "</text>\n";
}

std::string SvgDrawing::text() const
{
    const double width = m_shown.x.size(), height = m_shown.y.size();
    const std::string box =
        asText(m_shown.x.min) + ' ' + asText(-m_shown.y.max) + ' ' + asText(width) + ' ' + asText(height);
    return "<svg xmlns=\"http://www.w3.org/2000/svg\"" + attribute("width", asText(width / m_unitsPerPixel)) +
           attribute("height", asText(height / m_unitsPerPixel)) + attribute("viewBox", box) +
           ">\n<style>polygon,polyline,rect{stroke-linejoin:round;stroke-linecap:round}</style>\n<g "
           "transform=\"scale(1,-1)\">\n" +
           m_shapes + "</g>\n</svg>\n";
}

} // namespace tool

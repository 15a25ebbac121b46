#include "apps/zngeom/planar/dabs.h"

#include <algorithm>
#include <cmath>

#include "apps/zngeom/frame/pacer.h"

namespace tool {

namespace {

/// How much of each pixel is covered, from 0 to 255.
class Cover
{
public:
    explicit Cover(const Image& image) : m_width(image.width), m_height(image.height), m_parts(image.pixels.size()) {}

    /// \return whether the disc touches the picture
    bool add(double x, double y, double radius)
    {
        const double reach = radius + 0.5;
        const Rows columns = rowsWithin(x - reach, x + reach, m_width),
                   rows = rowsWithin(y - reach, y + reach, m_height);
        for (int row = rows.first; row < rows.end; ++row) {
            const double dy = row + 0.5 - y;
            for (int column = columns.first; column < columns.end; ++column) {
                const double part = std::clamp(reach - std::hypot(column + 0.5 - x, dy), 0.0, 1.0);
                std::uint8_t& covered = m_parts[static_cast<std::size_t>(row) * static_cast<std::size_t>(m_width) +
                                                static_cast<std::size_t>(column)];
                covered = std::max(covered, static_cast<std::uint8_t>(std::lround(255 * part)));
            }
        }
        return columns.first < columns.end && rows.first < rows.end;
    }

    int part(std::size_t pixel) const { return m_parts[pixel]; }

private:
    struct Rows
    {
        int first, end;
    };
    /// Those whose middles lie between two places.
    static Rows rowsWithin(double from, double to, int count)
    {
        const auto inside = [count](double value) {
            return static_cast<int>(std::clamp(std::ceil(value - 0.5), 0.0, static_cast<double>(count)));
        };
        return {inside(from), inside(to)};
    }

    int m_width, m_height;
    std::vector<std::uint8_t> m_parts;
};

std::uint8_t mixed(std::uint8_t under, std::uint8_t over, int part)
{
    return static_cast<std::uint8_t>((under * (255 - part) + over * part + 127) / 255);
}

} // namespace

std::size_t paintDabs(Image& image, const std::vector<znLinear::Point2Flt>& places, double radius, const Colour& colour,
                      znUtil::Progress& progress)
{
    Cover cover(image);
    std::size_t numTouching = 0;
    for (const znLinear::Point2Flt& place : places) {
        checkCancelled(progress);
        numTouching += cover.add(double(place.x), double(place.y), radius);
    }
    for (std::size_t i = 0; i < image.pixels.size(); ++i) {
        Colour& pixel = image.pixels[i];
        const int part = cover.part(i);
        pixel = {mixed(pixel.red, colour.red, part), mixed(pixel.green, colour.green, part),
                 mixed(pixel.blue, colour.blue, part)};
    }
    return numTouching;
}

} // namespace tool

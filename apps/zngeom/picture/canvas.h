/// `tool::Canvas`: triangles, lines and discs with a depth for each sample, several samples for each pixel.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "apps/zngeom/picture/colour.h"

namespace tool {

/// A place in a picture, in pixels from its upper left corner. The depth has any unit and grows away from the viewer.
struct Spot
{
    double x = 0, y = 0, depth = 0;
};

/// A rectangle of whole pixels, `right` and `bottom` excluded.
struct Frame
{
    int left = 0, top = 0, right = 0, bottom = 0;

    int width() const { return right - left; }
    int height() const { return bottom - top; }
};

/// Eight bits for each of red, green and blue, row by row from the top.
struct Image
{
    int width = 0, height = 0;
    std::vector<Colour> pixels;
};

/// What is nearer hides what is farther; at the same depth what is drawn later hides what was drawn before. Coordinates
/// may lie anywhere, but must be finite.
class Canvas
{
public:
    /// Whether a mark that something hides still shows through it, faintly.
    enum class Hidden { Away, Faint };

    /// \param samples  per pixel along each side; 1 draws without antialiasing
    Canvas(int width, int height, int samples, const Colour& background = white);

    int getWidth() const { return m_width / m_samples; }
    int getHeight() const { return m_height / m_samples; }

    /// Nothing outside is touched from now on.
    void clipTo(const Frame& frame);
    /// Fills a frame in front of everything so far, and forgets the depths there: what comes next is drawn upon it.
    void fillFrame(const Frame& frame, const Colour& colour);

    void fillTriangle(const Spot& a, const Spot& b, const Spot& c, const Colour& colour, Hidden hidden = Hidden::Away);
    /// With round ends.
    /// \param width  in pixels
    void drawLine(const Spot& a, const Spot& b, double width, const Colour& colour, Hidden hidden = Hidden::Away);
    /// \param radius  in pixels
    void fillDisc(const Spot& centre, double radius, const Colour& colour, Hidden hidden = Hidden::Away);

    /// Whether a spot lies on the canvas, and behind nothing or little.
    /// \param slack  how far behind it may be
    bool shows(const Spot& spot, double slack) const;
    /// Of the first sample of a pixel.
    Colour colourAt(int x, int y) const { return m_colours[firstSample(x, y)]; }

    /// Each pixel is the mean of its samples.
    Image image() const;

private:
    struct DepthPlane;

    std::size_t firstSample(int x, int y) const
    {
        return static_cast<std::size_t>(y * m_samples) * static_cast<std::size_t>(m_width) +
               static_cast<std::size_t>(x * m_samples);
    }
    void fillScaled(const Spot& a, const Spot& b, const Spot& c, const Colour& colour, Hidden hidden);
    void fillRow(int row, double from, double to, const DepthPlane& plane, const Colour& colour, Hidden hidden);
    Colour meanOf(int x, int y) const;

    int m_width, m_height, m_samples; ///< sizes in samples
    Frame m_clip;                     ///< in samples
    std::vector<float> m_depths;
    std::vector<Colour> m_colours;
};

} // namespace tool

/// `tool::Painter`: a mesh and its markings in one part of a picture.
#pragma once

#include "apps/zngeom/picture/marking.h"
#include "apps/zngeom/picture/projection.h"

namespace tool {

/// Fronts are grey, backs are brown. Triangles, or polygons, that are large enough get an outline. A lonely small mark
/// gets a ring. Marked lines and points show faintly through what hides them, as do triangles of a kind that is hidden
/// altogether.
class Painter
{
public:
    /// \param scene  must outlive this
    explicit Painter(const Scene& scene);

    /// Draws within a frame of the canvas what the view puts there.
    void paint(Canvas& canvas, const View& view, const Frame& frame) const;

private:
    void paintSurface(Canvas& canvas, const Projection& projection) const;
    void paintMarkedTriangles(Canvas& canvas, const Projection& projection, const Marking& marking) const;
    void paintHiddenTriangles(Canvas& canvas, const View& view, const Marking& marking) const;
    void paintLines(Canvas& canvas, const View& view, const Marking& marking) const;
    void paintPoints(Canvas& canvas, const View& view, const Marking& marking) const;

    const Scene& m_scene;
    unsigned diagonalsOf(int triangle) const
    {
        return m_diagonals.empty() ? 0 : m_diagonals[static_cast<std::size_t>(triangle)];
    }

    std::vector<bool> m_isMarked;           ///< per triangle
    std::vector<unsigned char> m_diagonals; ///< per triangle, bits for the sides that get no outline; empty for none
};

/// What the legend shows beside the name of a marking.
void paintSample(Canvas& canvas, const Frame& frame, const Marking& marking);

} // namespace tool

/// `tool::Painter`: a mesh and its markings in one part of a picture.
#pragma once

#include "apps/zngeom/picture/marking.h"
#include "apps/zngeom/picture/projection.h"

namespace tool {

/// Fronts are grey, backs are brown. Triangles that are large enough get an outline. A lonely small mark gets a ring.
/// Marked lines and points show faintly through what hides them, as do triangles of a kind that is hidden altogether.
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
    std::vector<bool> m_isMarked; ///< per triangle
};

/// What the legend shows beside the name of a marking.
void paintSample(Canvas& canvas, const Frame& frame, const Marking& marking);

} // namespace tool

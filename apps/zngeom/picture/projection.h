/// `tool::Projection`: all vertices of a mesh in one view.
#pragma once

#include <vector>

#include "apps/zngeom/picture/view.h"

namespace tool {

/// A triangle in a picture.
struct SeenTriangle
{
    Spot corners[3];
    bool isFront = false; ///< wound counter-clockwise as it is seen
    double light = 0;     ///< from 0, for a lamp from the upper left, whichever side is seen
    double area = 0;      ///< of the picture, in square pixels
};

class Projection
{
public:
    Projection(const znGeom::CompactMesh& mesh, const View& view);

    /// Calls `visit(triangle, seen)` for the triangles whose corners are all finite.
    template <typename Visit>
    void forEachTriangle(const Visit& visit) const
    {
        SeenTriangle seen;
        for (int triangle = 0; triangle < m_mesh.getNumTriangles(); ++triangle)
            if (see(triangle, seen)) visit(triangle, seen);
    }

    /// False for a triangle with a corner that is not finite.
    bool see(int triangle, SeenTriangle& seen) const;

private:
    const znGeom::CompactMesh& m_mesh;
    std::vector<Spot> m_spots;
    std::vector<bool> m_isFinite;
    bool m_allFinite = true;
};

} // namespace tool

/// `tool::View`: how a place in space becomes a spot in a picture.
#pragma once

#include "apps/zngeom/picture/canvas.h"
#include "znGeom/foundation/linear/bounding_box.h"
#include "znGeom/foundation/mesh/compact_mesh.h"

namespace tool {

/// The look at a mesh along one direction, without perspective. The depth has the unit of the picture, pixels.
class View
{
public:
    /// Vertices at the middle of the picture, one unit for each pixel.
    /// \param towards  from the mesh to the viewer, of any length; not parallel to `up`
    /// \param up       what is up in the picture, as far as that is possible
    View(const znLinear::Vector& towards, const znLinear::Vector& up, const znLinear::Point& middle);

    Spot at(const znGeom::MeshVertex& vertex) const { return at(vertex.asPoint()); }
    Spot at(const znLinear::Point& point) const;
    /// A direction of the mesh in the picture's axes: to the right, down, and to the viewer.
    znLinear::Vector turned(const znLinear::Vector& direction) const;
    double getScale() const { return m_scale; }
    const znLinear::Vector& towards() const { return m_towards; }

    /// Makes what a rectangle holds as large as it can be, in the middle of a frame.
    /// \param corner, opposite  of the rectangle, in the picture as it is
    void zoom(const Spot& corner, const Spot& opposite, const Frame& frame);

private:
    znLinear::Vector m_right, m_down, m_towards;
    znLinear::Point m_middle;
    double m_scale = 1, m_x = 0, m_y = 0;
};

/// Shows the finite vertices that triangles use as large as a frame allows, with a margin. A mesh that has none, or
/// no extent, is shown somehow.
void fitToFrame(View& view, const znGeom::CompactMesh& mesh, const Frame& frame);

} // namespace tool

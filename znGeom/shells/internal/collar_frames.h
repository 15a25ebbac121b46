/// The frames of the places of a path.
#pragma once

#include "znGeom/shells/collar.h"
#include "znGeom/shells/internal/collar_path.h"

namespace znGeom::internal {

/// A place with its frame.
struct FramedPlace
{
    MeshCollar::Point point;
    zn::vector<TopoMeshFace> faces; ///< on a border those at its vertex or at both ends of its edge, else its own
    znLinear::Vector acrossPath;    ///< the one of the frame's two directions that lies in the surface
};

/// \param cornerAngle  see `MeshCollar::Params`
zn::vector<FramedPlace> frameBorder(const BorderPath& path, double cornerAngle);

/// The places have faces.
zn::vector<FramedPlace> frameCurve(const zn::vector<TopoMeshPoint>& places);

/// The curvature of the surface across the path.
double curvatureAcross(const FramedPlace& place);

} // namespace znGeom::internal

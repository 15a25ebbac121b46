/// `znGeom::MeshLayPolyline`: curves on a surface from polylines in space.
#pragma once

#include "znGeom/curves/surface_curves.h"
#include "znGeom/foundation/containers/impl_base.h"
#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/threads/progress.h"

namespace znGeom {

class MeshLayPolylineImpl;

/// A polyline as it was laid on a surface.
struct MeshLaidPolyline
{
    zn::Reference<MeshCurve> curve; ///< null where it could not be laid, and after a cancel
    int lostPoint = -1;             ///< the first point without a nearest place: it is not finite
    int lostPiece = -1;             ///< the first piece that does not arrive: piece i begins at point i
    int farthestPoint = -1;         ///< the point that lay farthest from the surface,
    double farthestDistance = 0;    ///< and how far, in world units
};

/// Lays polylines on a surface: each point goes to its nearest place, and each piece is traced over the triangles, from
/// crossing to crossing, in the plane through its two places that stands upright on the surface there. The result can
/// be cut along.
///
/// Mesh and adjacency are borrowed and must not change. Making one builds search trees, n log n; a piece costs as much
/// as the triangles that it crosses. One thread at a time; a copy shares the working memory.
class ZNGEOM_API MeshLayPolyline
{
public:
    /// \param adjTris  built from the mesh by `meshAdjTris`
    MeshLayPolyline(const CompactMesh& mesh, const MeshAdjTris& adjTris);
    MeshLayPolyline(const MeshLayPolyline& other) = default;
    MeshLayPolyline& operator=(const MeshLayPolyline&) = delete;

    /// \param closed  joins the last point to the first by one more piece
    ///
    /// The plane contains the sum of the surface's normals at the two places or, where that does not lead to the end,
    /// the one or the other. A piece sets out towards its end and, if it does not arrive, the other way. It does not
    /// arrive where its planes lead to the boundary, to an edge of more than two triangles, or back to its beginning,
    /// and where there are none: between two places one above the other. Points that repeat the one before are dropped.
    MeshLaidPolyline operator()(const zn::vector<znLinear::Point>& points, bool closed) const;
    /// \param progress  advanced; after a cancel there is no curve, and nothing is told as lost
    MeshLaidPolyline operator()(const zn::vector<znLinear::Point>& points, bool closed,
                                znUtil::Progress& progress) const;

private:
    zn::ImplPointer<MeshLayPolylineImpl> m_impl;
};

} // namespace znGeom

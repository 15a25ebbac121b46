/// Curves on a surface: as surface coordinates, as vertex numbers, and as line strips of a mesh.
#pragma once

#include <deque>
#include <utility>

#include "znGeom/analysis/mesh_sequence.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_adjacency.h"
#include "znGeom/foundation/mesh/mesh_coord.h"

namespace znGeom {

/// Places on a mesh in order along a curve. Neighbouring places lie in a common triangle, corners and sides included,
/// where the curve is to be cut along; nothing checks that.
class ZNGEOM_API MeshCurve : public zn::ReferenceCount
{
public:
    std::deque<MeshCoord> coords;
    bool closed; ///< the last place is joined to the first, which is not repeated

    MeshCurve(const std::deque<MeshCoord>& places, bool isClosed) : coords(places), closed(isClosed) {}
    ~MeshCurve() override;

    /// The length of its segments in space, in world units.
    double length(const CompactMesh& mesh) const;
};

/// A strip of vertices as places on the mesh: each at a corner of the first triangle around its vertex.
///
/// \param adjTris  built from the mesh; each vertex of the strip has a triangle
/// \return never null. `closed` is always set, since a strip does not say whether it is: the caller corrects it
ZNGEOM_API zn::Reference<MeshCurve> meshConvertLine(const CompactMesh& mesh, const MeshAdjTris& adjTris,
                                                    const MeshSequence& sequence, int strip);

/// A mesh of the vertices of one strip, or of all: positions, line strips, and lines; no triangles.
///
/// Vertices are numbered as the strips first meet them, and a vertex that is met again keeps its number. Each
/// consecutive pair of a strip gives a line; if `closed`, so do its last and its first vertex.
///
/// \return never null. Linear in the vertices of `mesh`
ZNGEOM_API zn::Reference<CompactMesh> meshExtractLine(const CompactMesh& mesh, const MeshSequence& sequence, int strip,
                                                      bool closed);
ZNGEOM_API zn::Reference<CompactMesh> meshExtractLines(const CompactMesh& mesh, const MeshSequence& sequence,
                                                       bool closed);

/// A mesh of a curve: a vertex for each of its places, one line strip, and lines. The line that closes a closed curve
/// is not in the strip.
///
/// \return never null
ZNGEOM_API zn::Reference<CompactMesh> meshExtractLine(const CompactMesh& mesh, const MeshCurve& curve);

/// The place on the surface at weightA * a + weightB * b, for two places that have a triangle in common.
///
/// \param weightA, weightB  used as given: where they don't add up to 1 the point is off the line through `a` and `b`
/// \param tolerance         a distance: a place nearer to a corner or a side of its triangle counts as lying on it, and
///                          then belongs to the triangles on the other side as well
/// \return the orthogonal projection on the common triangle, with weights that may leave [0, 1]; invalid, with the
///         triangle -1, where the two have none
///
/// Works on a small half-edge mesh of the triangles around both: constant for bounded valence.
ZNGEOM_API MeshCoord meshCoordInterpolate(const CompactMesh& mesh, const MeshAdjTris& adjTris, double weightA,
                                          const MeshCoord& a, double weightB, const MeshCoord& b, double tolerance);

} // namespace znGeom

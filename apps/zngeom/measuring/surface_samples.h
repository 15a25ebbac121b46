/// `tool::SurfaceSamples`: points of triangles at most a distance apart.
#pragma once

#include "znGeom/foundation/mesh/compact_mesh.h"

namespace tool {

/// The points of a lattice on each triangle of a mesh whose neighbours are at most a distance apart, without the
/// corners, triangle by triangle. A side of two triangles is on the lattice of both.
class SurfaceSamples
{
public:
    /// \param mesh     finite, with vertex normals; borrowed
    /// \param spacing  above 0
    SurfaceSamples(const znGeom::CompactMesh& mesh, double spacing) : m_mesh(mesh), m_spacing(spacing) {}

    /// How many there are, approximately where there are very many. Linear in the triangles.
    double count() const;

    /// Replaces the vertices and normals of `points` by those of the next some hundred thousand points; false when
    /// there are none left.
    bool next(znGeom::CompactMesh& points);

private:
    double partsOf(int triangle) const;

    const znGeom::CompactMesh& m_mesh;
    double m_spacing;
    int m_triangle = 0, m_row = 0; ///< where the next piece begins
};

} // namespace tool

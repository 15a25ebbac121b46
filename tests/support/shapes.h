/// Meshes for tests, the same in every run. Each function replaces vertices and triangles of `mesh`, drops everything
/// else, and notifies no listener. Closed shapes face outward; flat ones lie in z = 0 and face +z.
#pragma once

#include <cstdint>

#include "znGeom/foundation/mesh.h"

namespace znTest {

/// columns x rows vertices one unit apart, row by row, two triangles per cell.
void makeGrid(znGeom::CompactMesh& mesh, int columns, int rows);
inline znGeom::CompactMesh makeGrid(int columns, int rows)
{
    znGeom::CompactMesh mesh;
    makeGrid(mesh, columns, rows);
    return mesh;
}

/// 8 vertices at +-1, 12 triangles.
void makeCube(znGeom::CompactMesh& mesh);

/// An octahedron whose triangles are split in four `levels` times: 4^(levels + 1) + 2 vertices on the sphere.
void makeSphere(znGeom::CompactMesh& mesh, int levels, double radius = 1.0);

/// around x across vertices, about the z axis.
void makeTorus(znGeom::CompactMesh& mesh, int around, int across, double major = 1.0, double minor = 0.4);

/// A strip of `segments` cells closed after half a twist: one side, one boundary loop.
void makeMobiusBand(znGeom::CompactMesh& mesh, int segments);

/// The ring between two circles: two boundary loops.
void makeAnnulus(znGeom::CompactMesh& mesh, int segments, double inner = 1.0, double outer = 2.0);

/// The triangles of `source`, each with three vertices of its own.
void makeSoup(znGeom::CompactMesh& mesh, const znGeom::CompactMesh& source);

/// A wavy sheet as a scanner sees it: noise in the heights, cells that are missing, some vertices that no triangle
/// uses, and a tenth of the triangles with a copy of their first corner.
void makeNoisyScan(znGeom::CompactMesh& mesh, int columns, int rows, std::uint64_t seed = 1);

} // namespace znTest

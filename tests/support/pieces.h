/// A mesh cut along planes into pieces that lie side by side.
#pragma once

#include <vector>

#include "tests/support/random.h"
#include "znGeom/foundation/linear.h"
#include "znGeom/foundation/mesh.h"

namespace znTest {

struct PieceOptions
{
    std::vector<znLinear::Plane> planes; ///< each goes through all of the mesh
    int mostSteps = 1;                   ///< that an edge at a cut may become, on each side by itself
    double shift = 0;                    ///< how far each piece is moved at the most
    bool turnsOver = false;              ///< whether some pieces, never the first, are turned over
};

/// Cuts a mesh; each part between the planes gets vertices of its own.
znGeom::CompactMesh cutIntoPieces(const znGeom::CompactMesh& mesh, const PieceOptions& options, Random& random);

/// Whether stitching may leave pieces apart: a border is shorter than two tolerances, or, where borders don't
/// coincide, a piece is narrower than the tolerance, twice its area by the length of its borders,
/// so that those beside it run beside each other too.
bool areTooSmallToSew(const znGeom::CompactMesh& pieces, double tolerance, bool doCoincide);

/// What stitching must bring back.
struct Figures
{
    int components = 0, borders = 0, euler = 0, flatTriangles = 0;
    bool isOriented = false;
    double volume = 0, area = 0;
};
Figures figuresOf(const znGeom::CompactMesh& mesh);

} // namespace znTest

/// Walks of the command that makes collars.
#pragma once

#include <string>

#include "znGeom/shells/collar.h"

namespace tool {

/// A loop of a mesh's borders, and what the walks on it need. All is borrowed.
struct CollarLoop
{
    const znGeom::CompactMesh& mesh;
    const znGeom::MeshAdjTris& adjTris;
    const znGeom::MeshBoundaries& boundaries;
    int loop;         ///< its number for the library
    std::string name; ///< for messages
};

struct CollarWalk
{
    zn::vector<znGeom::MeshCollar::Point> points;
    bool closed = false;
    double length = 0; ///< of the border
};

/// The whole loop, at its vertices or at so many places at equal steps. Fails where it does not close.
/// \param count  0 for the vertices
CollarWalk walkLoop(const CollarLoop& loop, int count, bool computeCurvature);

/// From one vertex to another, both ends included. Fails where they are not on the loop, or there is no way.
/// \param count  the number of equal steps; 0 for the vertices
CollarWalk walkPart(const CollarLoop& loop, int from, int to, int count, bool computeCurvature);

} // namespace tool

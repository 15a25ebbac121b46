/// What is wrong with a triangle mesh, counted without the library's own algorithms; and ways to break one.
#pragma once

#include "tests/support/random.h"
#include "znGeom/analysis/census.h"
#include "znGeom/foundation/mesh.h"

namespace znTest {

struct Defects
{
    int duplicates = 0;  ///< triangles with the corners of an earlier one
    int degenerate = 0;  ///< triangles that repeat a vertex or a position
    int badEdges = 0;    ///< edges of more than two sides
    int badVertices = 0; ///< vertices of more than one fan
    int unbalanced = 0;  ///< sides that run along an edge as an earlier one does

    int count() const { return duplicates + degenerate + badEdges + badVertices + unbalanced; }
};

Defects countDefects(const znGeom::CompactMesh& mesh);

/// The edges of a mesh, from its arrays.
inline znGeom::MeshEdgeCensus countEdges(const znGeom::CompactMesh& mesh)
{
    znGeom::MeshEdgeSides sides;
    meshEdgeSides(mesh, sides);
    return meshCountEdges(mesh, sides);
}

enum class Damage { Duplicated, Flipped, WeldedAcross, Cut, Noised, NotANumbers, Everything };
inline constexpr Damage allDamages[] = {Damage::Duplicated, Damage::Flipped,     Damage::WeldedAcross, Damage::Cut,
                                        Damage::Noised,     Damage::NotANumbers, Damage::Everything};

/// Breaks about a hundredth of a mesh, at least a few places. Notifies no listener.
void damage(znGeom::CompactMesh& mesh, Damage kind, Random& random);

} // namespace znTest

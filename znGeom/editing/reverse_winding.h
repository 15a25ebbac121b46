/// Turning triangles over.
#pragma once

#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_adjacency.h"

namespace znGeom {

/// Turns a whole mesh over: its triangles, strips and fans.
///
/// \param reverseNormals  whether vertex normals are reversed too; otherwise they stay and are declared valid. Triangle
///                        normals are reversed in any case
///
/// A triangle (a, b, c) becomes (b, a, c). A strip of an odd number of points is reversed, one of four points exchanges
/// the two in the middle, and a longer one of an even number becomes two strips, since reversing it would not turn it
/// over: its first triangle, then the rest as it was, which begins one point later. So there are as many strips more,
/// and twice as many points, as there are such strips; without them nothing is allocated. Strips of fewer than three
/// points stay. A fan keeps its hub and reverses its other points.
///
/// One `TopologyChanged` is reported, which keeps normals, triangle normals, UVs, strips and fans and drops STs.
/// Linear; runs on the calling thread.
ZNGEOM_API void meshReverseWinding(CompactMesh& mesh, bool reverseNormals);

/// Turns the triangles over that are selected on the mesh.
///
/// The normals of these triangles and of their corners are reversed, each once: a vertex that other triangles use as
/// well gets a reversed normal too. Strips and fans are not turned over. The selection stays; it may be larger than the
/// mesh. One `TopologyChanged` is reported, also when nothing is selected, which keeps normals, triangle normals and
/// UVs and drops STs, strips and fans. Linear; runs on the calling thread.
ZNGEOM_API void meshReverseSelectedWinding(CompactMesh& mesh);

/// Turns the shell over to which a triangle belongs: all that is connected to it through vertices.
///
/// \param adjacency  built from the mesh by `meshAdjTris`
///
/// The triangle is added to the mesh's selection of triangles, this is grown as far as it goes, and what it then holds
/// is turned over as by `meshReverseSelectedWinding`: shells in which something was selected before are turned over
/// too. The selection stays as it is then. Linear; runs on the calling thread.
ZNGEOM_API void meshReverseWinding(CompactMesh& mesh, const MeshAdjTris& adjacency, int triangle);

} // namespace znGeom

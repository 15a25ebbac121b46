/// Mesh files: a plain counted text format, and OBJ with an MTL material library.
///
/// These are file filters: no function looks at the mesh that it reads or writes. Numbers in files are the same under
/// every locale. Readers need memory in proportion to the size of the file, whatever its header claims. All run on the
/// calling thread.
#pragma once

#include "znGeom/foundation/containers/list.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_adjacency.h"
#include "znGeom/foundation/text/filename.h"
#include "znGeom/foundation/util/color.h"
#include "znGeom/topology/topo_mesh.h"

namespace znGeom {

/// Reads the plain format: a line with the number of vertices and of faces, then x y z per vertex, then per face the
/// number of corners and the vertex indices, from 0.
///
/// Everything in `mesh`, channels included, is replaced by positions and triangles, and one `TopologyChanged` is
/// announced; a file that does not open changes nothing and announces nothing. The reader trusts the file: a face is
/// three indices whatever its count says (the count is read and dropped), and indices are not checked. The first thing
/// that is not a number ends the reading. Missing numbers are 0, as are counts below 0, and a count is cut down to what
/// the bytes of the file could hold at two bytes a number. Linear in the file's size.
ZNGEOM_API void meshRead(CompactMesh& mesh, const znOS::Filename& file);

/// Reads the plain format with faces of any size into a half-edge mesh, in `double`, and completes its twins.
///
/// What the mesh held stays, and the file's elements come after it. A face of fewer than three corners, or with an
/// index that names no vertex of the file, is left out; where the numbers end, reading ends. `meshTwin` is run, and one
/// change of connectivity is announced after it. A file that does not open changes nothing and announces nothing.
ZNGEOM_API void meshRead(TopoMesh& mesh, const znOS::Filename& file);

/// Writes the plain format: positions with ten significant digits, and the triangles. A file that does not open is left
/// alone, and this is not reported.
ZNGEOM_API void meshWrite(const CompactMesh& mesh, const znOS::Filename& file);
/// The same for a half-edge mesh, in the order of its lists, faces of any size.
ZNGEOM_API void meshWrite(TopoMesh& mesh, const znOS::Filename& file);

/// Reads positions and faces of an OBJ file.
///
/// A byte order mark at the beginning is passed over. Lines "v ", "vn ", "vt " and "f " count, after leading blanks;
/// "#" and "$" start comments; everything else is skipped. Normals and UVs are parsed but not kept. Faces with fewer
/// than three entries are dropped, faces with a vertex index out of range are erased; negative, relative indices count
/// as out of range, and so does the entry that a blank at the end of a face line makes.
///
/// Faces of three corners become the triangles. If any face has more, all faces become the polygons of the mesh, and
/// its triangle list stays as it was (`meshTriangulate` fills an empty one). One `TopologyChanged` is announced. Linear
/// in the file's size.
/// \return false, with the mesh unchanged, when the file does not open; true whatever the file held
ZNGEOM_API bool meshReadObj(CompactMesh& mesh, const znOS::Filename& file);

/// Writes an OBJ file: positions, normals and UVs where the mesh has them, with six significant digits, and the
/// triangles. Without normals and UVs a face line is "f i  j  k ", its last blank included, so that `meshReadObj` does
/// not accept such faces.
/// \return false when the file does not open
ZNGEOM_API bool meshWriteObj(const CompactMesh& mesh, const znOS::Filename& file);

/// Writes an OBJ file with one material per subset, and beside it an MTL file of the same base name with one material
/// per colour: subset s uses "mats", which is colour s. A triangle in no subset is not written, one in two subsets is
/// written twice. A failure to open the MTL file is not reported.
/// \return false when the OBJ file does not open
ZNGEOM_API bool meshWriteObj(const CompactMesh& mesh, const zn::list<zn::Reference<MeshSubset>>& subsets,
                             const zn::list<znUtil::Color>& colours, const znOS::Filename& file);

} // namespace znGeom

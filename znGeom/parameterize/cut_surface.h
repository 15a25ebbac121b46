/// Cutting a surface open until it is a disk.
#pragma once

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/threads/progress.h"

namespace znGeom::cutSurface {

/// Opens edges of a mesh until each of its components is a disk, possibly with holes: it has a border, and no handles.
///
/// A component with handles is cut along a system of short loops: the shortest one that passes through one vertex, from
/// several vertices tried, with borders of the mesh as ways that cost nothing (Erickson, Whittlesey, "Greedy Optimal
/// Homotopy and Homology Generators", 2005). A closed component without handles is slit along a shortest path between
/// two vertices that are far from each other, of two edges or more, with branches to what is farther from it than 0.4
/// of its length. Lengths are those of edges in the mesh's units. Components that are disks already, holes or not, are
/// not cut.
///
/// Vertices keep their numbers, triangles their order. At each vertex of the cut, the triangles on one side, those of
/// the lowest triangle, keep it; those on another side get a copy behind all old vertices, with the values of every
/// channel and the mark of the selection. Where something is cut, vertices at which several fans touch are parted
/// likewise. One `TopologyChanged` is reported if anything was cut, which keeps all channels and the triangle normals;
/// lines and polygons keep the old vertices, strips and fans are dropped.
///
/// \param originals  replaced: for each new vertex, in order, the old one of which it is a copy; empty when nothing was
///                   cut
/// \param progress   advanced, its caption stays; a cancel leaves the mesh and `originals` as they were
/// \return false, with the mesh unchanged, after a cancel and where the mesh is no oriented surface: an edge has three
///         triangles or more, two triangles run along an edge the same way, or a triangle repeats a vertex
///
/// n log n in the edges; on the calling thread but for the search for edges. The same cut in every run.
ZNGEOM_API bool makeDisk(CompactMesh& mesh);
ZNGEOM_API bool makeDisk(CompactMesh& mesh, zn::vector<int>& originals, znUtil::Progress& progress);

} // namespace znGeom::cutSurface

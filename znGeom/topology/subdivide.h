/// Subdivision surfaces, and a sphere of quads.
#pragma once

#include "znGeom/foundation/linear/plane.h"
#include "znGeom/topology/topo_mesh.h"

namespace znGeom {

/// One step of Catmull-Clark subdivision: a new mesh, of quads alone, with one vertex for each vertex, edge and face of
/// the old one and one quad for each of its half-edges.
///
/// \param mesh    polygons of any size, closed or open; it stays as it is
/// \param memory  lends the memory of the new mesh, as for `TopoMesh` itself, and outlives it. May be null
/// \return never null; the caller's to delete. Fully twinned
///
/// The point of a face is the mean of its corners; that of an edge the mean of its ends and of the points of its two
/// faces, on the boundary that of its ends. A vertex P of n faces moves to (F + 2 M + (n - 3) P) / n, with F the mean
/// of the points of its faces and M that of the middles of its edges; on the boundary to (Q + 6 P + R) / 8, with Q and
/// R its neighbours along the boundary, so that the boundary becomes the B-spline of its own vertices. The only corner
/// of a face that nothing else holds there stays, and so does a vertex without faces. Where several boundaries touch at
/// a vertex, all its neighbours along them count alike.
///
/// Vertices: those of the faces, then those of the edges, in the order of the lists, an edge where its first half is;
/// then those of the vertices. Quads: face by face, side by side; that of a side e runs from the point of the face to
/// that of e, to the end of e and to the point of the side after e.
///
/// Linear: flat tables of the old mesh, after which each record of the new one is written once. A quad takes about 350
/// bytes; after k steps there are 4 to the power of k for each one of the first mesh, after the first step that many
/// for each of its corners. Runs on the calling thread. (Catmull, Clark, "Recursively generated B-spline surfaces on
/// arbitrary topological meshes", 1978; the boundary after Nasri, "Polyhedral subdivision methods for free-form
/// surfaces", 1987.)
ZNGEOM_API TopoMesh* computeSubdivMesh(TopoMesh& mesh);
ZNGEOM_API TopoMesh* computeSubdivMesh(TopoMesh& mesh, TopoMemory* memory);

/// A sphere of quads: an octahedron, split `levels` times.
///
/// \param plane   its origin is the centre; its two directions, taken at length 1, and its normal are the axes on which
///                the six corners of the octahedron lie. They should be at right angles. Faces are outward
/// \param levels  below 1: the octahedron itself, of triangles. A level makes a quad of each corner of each face: the
///                first gives 24 quads, each further one four times as many
/// \return never null; the caller's to delete. Closed, and every vertex at `radius` from the centre
///
/// Linear in the result. Vertices that are there keep their places in the list when a level is added.
ZNGEOM_API TopoMesh* constructSubdividedOctahedron(const znLinear::ParamPlane& plane, int levels, double radius);

} // namespace znGeom

/// Where triangles cross each other, and where they cross planes.
#pragma once

#include "znGeom/foundation/linear/point.h"
#include "znGeom/foundation/machine/export.h"

namespace znGeom {

/// Finds the segment along which two triangles cross.
///
/// \param p, q  receive its ends, p before q along the cross product of the normals of the two; untouched on false
/// \return false where they have no segment of a length above 0 in common, so where they only touch at a point; false
/// as
///         well where they lie in one plane, overlapping or not, in planes less than 1e-6 radians apart, and where one
///         of them has no area or a corner that is not finite
///
/// An edge that lies in the other triangle is a segment in common. Where rounding could account for what is found, it
/// is not: a corner that is that close to the other's plane lies on it, and a segment that short is a point. So what
/// merely touches is no crossing, whatever its unit and however it is turned; nor is it one where the segment is
/// shorter than about 1e-14 of the triangles, or more where they are slender.
///
/// By intervals on the line common to both planes, after Möller, "A Fast Triangle-Triangle Intersection Test" (1997).
ZNGEOM_API bool intersect(const znLinear::Point& a0, const znLinear::Point& a1, const znLinear::Point& a2,
                          const znLinear::Point& b0, const znLinear::Point& b1, const znLinear::Point& b2,
                          znLinear::Point& p, znLinear::Point& q);

/// Finds where a triangle meets a plane.
///
/// \param plane      nx, ny, nz and d: the plane is where n . p + d = 0. n need not be of unit length; `tolerance` is
/// then
///                   in the same measure
/// \param tolerance  a corner for which |n . p + d| is less than this lies on the plane
/// \param a, b       the first and the second common point; written as far as the result says
/// \param ta, edgeA  where `a` lies: at (1 - ta) * p_u + ta * p_w for edgeA = (w, u), so that ta moves it from corner u
///                   to corner w. At a corner, both numbers of the edge are that corner's, and ta is 1
/// \param tb, edgeB  the same of `b`
/// \return 0: all corners on one side, strictly; nothing is written. 1: one corner on the plane and the others on one
///         side; `a` is that corner. 2: the triangle crosses the plane, or an edge lies in it, from `a` to `b`. 3: it
///         lies in the plane; nothing is written
///
/// Which point is the first: where two corners lie on the plane, that of the lower number; where one does and the plane
/// passes between the others, that corner; otherwise, when corner k is alone on its side, the one on the edge before k.
ZNGEOM_API int intersect(const double* const plane, const znLinear::Point& p0, const znLinear::Point& p1,
                         const znLinear::Point& p2, double tolerance, znLinear::Point& a, double& ta, int (&edgeA)[2],
                         znLinear::Point& b, double& tb, int (&edgeB)[2]);
/// The same without the places on the edges.
ZNGEOM_API int intersect(const double* const plane, const znLinear::Point& p0, const znLinear::Point& p1,
                         const znLinear::Point& p2, double tolerance, znLinear::Point& a, znLinear::Point& b);

} // namespace znGeom

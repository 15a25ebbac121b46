/// Framed places along a border or a curve of a mesh, from which collars are built: strips that stand on it.
///
///     MeshCollar collar(mesh, adjTris, boundaries);
///     zn::vector<MeshCollar::Point> points;
///     collar.getPoints(from, to, {}, 0, true, points);
///     for (const MeshCollar::Point& point : points) strip.add(point.position, point.position + point.direction *
///     width);
#pragma once

#include "znGeom/analysis/mesh_sequence.h"
#include "znGeom/curves/surface_curves.h"
#include "znGeom/foundation/containers/impl_base.h"
#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/linear/point.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_adjacency.h"
#include "znGeom/foundation/mesh/mesh_coord.h"

namespace znGeom {

class MeshCollarImpl;

/// Walks along borders and curves of a mesh, whose connectivity it reads from a half-edge copy of the region around
/// them. Mesh, adjacency and boundaries are borrowed and must not change; the mesh stays as it is. Any number of
/// threads may call one at a time or at once: nothing is kept from call to call.
///
/// A border runs as its half-edges do, with the surface to its left; a walk that is not forward runs against them.
/// Walks keep to one side of places where borders only touch, and end where neighbouring triangles are wound against
/// one another. A place counts as lying on a vertex or a border edge that is nearer than 1e-6, or than a thousandth of
/// its triangle where that is less.
///
/// There are no points, and the distance is 0, where a place is in no triangle, not on the border with that number, or
/// not reached. Each call is linear in the path; setting up its region takes a bit per vertex and triangle of the mesh.
class ZNGEOM_API MeshCollar
{
public:
    struct Params
    {
        bool computeCurvature = false;
        /// Along a border: as many points as the path has, its vertices and its two ends, at equal steps.
        bool usePathPoints = true;
        /// Otherwise so many; below 1 the path's own points, which are not moved.
        int count = 0;
        /// The turn of a border at a vertex from which on its two edges are framed each by itself. Compared with 1
        /// minus the cosine of the turn: the default is reached at 34 degrees.
        double cornerAngle = 0.17453292519943295;
    };

    /// A place and its frame: two unit vectors at right angles to one another and, on a fine mesh, to the path; zero
    /// where triangles without area leave them undefined.
    struct Point
    {
        znLinear::Point position;
        /// Along a border: to the back of the surface, square to it. Along a curve: in the surface, to the left of the
        /// curve seen from the front.
        znLinear::Vector direction;
        /// Along a border: in the surface, away from the border. Along a curve: to the back of the surface.
        znLinear::Vector normal;
        /// That of the surface across the path, in one over the mesh's unit, without a sign; 0 unless it was asked for.
        double curvature = 0;
    };

    /// \param adjacency   built from the mesh by `meshAdjTris`
    /// \param boundaries  found in it by `meshComputeBoundary`
    MeshCollar(const CompactMesh& mesh, const MeshAdjTris& adjacency, const MeshBoundaries& boundaries);
    /// A copy shares what is borrowed, and must not outlive its source.
    MeshCollar(const MeshCollar& other) = default;
    MeshCollar& operator=(const MeshCollar&) = delete;

    /// The length of the way along a border from `a` to `b`, in world units.
    ///
    /// \param boundary  the number of the loop that both are on
    ///
    /// From a vertex to itself the way is empty. From a place within an edge to itself, or to one before it on the same
    /// edge, it leads round the whole border.
    double getDistance(const MeshCoord& a, const MeshCoord& b, int boundary, bool forward) const;

    /// Points along a border from `a` to `b`.
    ///
    /// \param out  replaced. Where the path is divided into n equal steps these are their n beginnings: the first is
    ///             `a`, and `b`, with which the next path may begin, is not among them
    ///
    /// At a vertex the frame is between those of its two edges; at the ends of the path it is that of the edge on it.
    /// Between two vertices it passes from the frame of the one to that of the other, and beside corners from or to
    /// that of the edge. The surface there is taken to face as the triangles at both vertices do on average.
    void getPoints(const MeshCoord& a, const MeshCoord& b, const Params& params, int boundary, bool forward,
                   zn::vector<Point>& out) const;

    /// A point for each place of a curve, or, between two places near it, for each that lies between and for the two.
    ///
    /// \param params  only `computeCurvature` counts
    /// \param out     replaced; in order along the curve, whichever of `a` and `b` comes first
    ///
    /// The two are looked for on the segments of the curve, the one that closes it included; a part never runs across
    /// the place where a closed curve begins. A place that coincides with one of the curve is not repeated.
    void getPoints(const Params& params, const MeshCurve& curve, zn::vector<Point>& out) const;
    void getPoints(const MeshCoord& a, const MeshCoord& b, const Params& params, const MeshCurve& curve,
                   zn::vector<Point>& out) const;

private:
    zn::ImplPointer<MeshCollarImpl> m_impl;
};

} // namespace znGeom

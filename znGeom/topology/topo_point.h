/// Positions on a half-edge mesh.
#pragma once

#include <cstdint>

#include "znGeom/foundation/containers/reference.h"
#include "znGeom/topology/topo_handles.h"

namespace znGeom {

/// A position on a triangular face: weight i belongs to the origin of half-edge i, counted from the face's `edge`.
struct ZNGEOM_API TopoMeshCoord
{
    double w0 = 0, w1 = 0, w2 = 0;
    TopoMeshFace face;

    /// The weighted sum of the three corners. Not for a null face.
    znLinear::Point evaluate() const;
    /// Becomes the orthogonal projection of a point on the plane of a face; weights may leave [0, 1].
    /// \return false, with the weights 0, when the face has no area or is not a triangle
    bool setFromPoint(TopoMeshFace onFace, const znLinear::Point& point);
};

/// A point on the mesh that knows whether it is at a vertex, on an edge or inside a face.
class ZNGEOM_API TopoMeshPoint : public zn::ReferenceCount
{
public:
    enum Kind : std::int32_t { AtVertex = 0, OnEdge = 1, InFace = 2 };

    TopoMeshCoord coord;
    TopoMeshVertex vertex; ///< set when the point is at a vertex
    TopoMeshEdge edge;     ///< set when it lies on an edge
    znLinear::Point position;
    std::int32_t kind = InFace;

    /// At a vertex; the face to which the coordinate refers may be null.
    TopoMeshPoint(TopoMeshVertex atVertex, TopoMeshFace face);
    /// On an edge of a face: the weights of the edge's origin and of its end.
    TopoMeshPoint(TopoMeshEdge onEdge, TopoMeshFace face, double originWeight, double endWeight);
    /// Classified: if it is nearer to a corner than the tolerance, which is a distance, it is at that vertex;
    /// otherwise, if it is nearer to a side, on that half-edge; otherwise inside. The nearest corner or side counts, of
    /// equally near ones the lowest. Distances come from the weights, so that weights of 0 and 1 decide exactly at any
    /// size.
    TopoMeshPoint(const TopoMeshCoord& position, double tolerance);
    ~TopoMeshPoint() override;
    TopoMeshPoint(const TopoMeshPoint&) = default;
    TopoMeshPoint(TopoMeshPoint&&) = default;
    TopoMeshPoint& operator=(const TopoMeshPoint&) = default;
    TopoMeshPoint& operator=(TopoMeshPoint&&) = default;

    /// How many points the process had made before: an order that addresses don't give. A copy is a point of its own;
    /// assignment moves a point and leaves it the same one.
    std::uint64_t number() const { return m_number.value; }

    /// The same place: the same vertex, the same edge (either half) or face with weights that agree within
    /// `epsilonTol`.
    bool equivalent(const TopoMeshPoint& other) const;
    bool onBoundary() const;
    /// A face that holds both points, or null. Of several, the first among: the coordinate's own face, the face of the
    /// edge, the face of its twin, the faces round the vertex.
    TopoMeshFace adjacent(const TopoMeshPoint& other) const;
    /// The weights of the origin and of the end of the half-edge on which the point lies. Only on an edge.
    void getEdgeWeights(double& originWeight, double& endWeight) const;

private:
    struct ZNGEOM_API Number
    {
        std::uint64_t value;

        Number();
        Number(const Number&) : Number() {}
        Number& operator=(const Number&) { return *this; }
    };

    Number m_number;
};

/// Orders shared points by their creation.
struct TopoMeshPointOrder
{
    bool operator()(const zn::Reference<TopoMeshPoint>& a, const zn::Reference<TopoMeshPoint>& b) const
    {
        return a && b ? a->number() < b->number() : !a && b;
    }
};

} // namespace znGeom

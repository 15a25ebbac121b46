/// The elements of a half-edge mesh: handles, and the records that they name.
#pragma once

#include <compare>
#include <cstdint>
#include <functional>
#include <type_traits>

#include "znGeom/foundation/linear/point.h"
#include "znGeom/topology/topo_metadata.h"

namespace znGeom {

struct TopoMeshVertexRecord;
struct TopoMeshEdgeRecord;
struct TopoMeshFaceRecord;
class TopoMeshEdge;
class TopoMeshFace;

/// What the three kinds of handle share: a pointer to a record, or null for none. Handles are ordered by the creation
/// of what they name, null first, which is the same in every run. A handle is good until its element is deleted; no
/// record is used a second time while its mesh lives, so that a dead handle never names something new.
template <typename Record>
class TopoMeshHandle
{
public:
    constexpr TopoMeshHandle() = default;
    explicit constexpr TopoMeshHandle(Record* record) : m_record(record) {}

    Record* operator->() const { return m_record; }
    Record* record() const { return m_record; }
    explicit operator bool() const { return m_record != nullptr; }
    /// How many elements of this kind the mesh had made before: an index for tables beside the mesh. Not for null.
    int number() const { return TopoBlock::numberOf(m_record); }

    friend bool operator==(TopoMeshHandle a, TopoMeshHandle b) { return a.m_record == b.m_record; }
    friend std::strong_ordering operator<=>(TopoMeshHandle a, TopoMeshHandle b)
    {
        if (!a.m_record || !b.m_record || TopoBlock::of(a.m_record) == TopoBlock::of(b.m_record))
            return std::compare_three_way()(a.m_record, b.m_record);
        return TopoBlock::of(a.m_record)->firstNumber <=> TopoBlock::of(b.m_record)->firstNumber;
    }

private:
    Record* m_record = nullptr;
};

/// A vertex.
class ZNGEOM_API TopoMeshVertex : public TopoMeshHandle<TopoMeshVertexRecord>
{
public:
    using TopoMeshHandle::TopoMeshHandle;

    /// Whether this names a vertex that was not removed. False for null.
    bool isAlive() const;
    /// A copy of the position.
    znLinear::Point point() const;
    /// Whether a boundary half-edge leaves or reaches the vertex, in any of its fans. False for an isolated one. Linear
    /// in the valence.
    bool onBoundary() const;
    /// The number of outgoing half-edges, of all fans, which is the number of faces at the vertex; 0 for an isolated
    /// one. Constant.
    int valence() const;
    /// A face that holds both vertices, or null; the first one in the fan of `edge`, otherwise one of another fan.
    /// Linear in the sides of the faces here.
    TopoMeshFace adjacent(TopoMeshVertex other) const;
};

/// A half-edge: it runs from its origin to the origin of the next one of its face.
class ZNGEOM_API TopoMeshEdge : public TopoMeshHandle<TopoMeshEdgeRecord>
{
public:
    using TopoMeshHandle::TopoMeshHandle;

    /// Whether this names a half-edge that was not removed. False for null.
    bool isAlive() const;
    /// Writes a slot of this half-edge and of its twin, if there is one.
    void setMetadata(int slot, BlindData value) const;
};

/// A face, of three sides or more.
class ZNGEOM_API TopoMeshFace : public TopoMeshHandle<TopoMeshFaceRecord>
{
public:
    using TopoMeshHandle::TopoMeshHandle;

    /// Whether this names a face that was not removed. False for null.
    bool isAlive() const;
    /// The number of corners, which is that of sides. Linear in it.
    int numVertices() const;
    /// The mean of the vertex positions.
    znLinear::Point centroid() const;
    /// The half-edge of this face whose origin is `vertex`, the first one from `edge` on, or null.
    TopoMeshEdge adjacent(TopoMeshVertex vertex) const;
};

struct TopoMeshVertexRecord
{
    znLinear::Point point;
    TopoMeshEdge edge; ///< some outgoing half-edge; null for an isolated vertex
    TopoMeshVertex next, prev;
    [[no_unique_address]] TopoMetadata<TopoMeshVertexRecord, 16> metadata;
    // Kept by the mesh.
    int firstOut = -1;   ///< the number of the half-edge at which the list of all outgoing ones begins; -1 without any
    int numOutgoing = 0; ///< -1 for a removed vertex
    unsigned closedAt = ~0u; ///< the fan of `edge` was closed when so many half-edges had been unpaired or removed
    bool linkedBack = false; ///< whether `outPrev` holds in the list
};

struct TopoMeshEdgeRecord
{
    TopoMeshVertex origin;
    TopoMeshEdge next, prev; ///< around the face; always set
    TopoMeshEdge twin;       ///< null on the boundary
    TopoMeshFace face;       ///< null for a removed half-edge
    [[no_unique_address]] TopoMetadata<TopoMeshEdgeRecord, 20> metadata;
    TopoMeshEdge listNext, listPrev;
    // Kept by the mesh: the neighbours in the list of half-edges that leave the same origin, by number; -1 for none.
    // The way back is laid when it is first needed: a mesh that is only built never touches the older half-edges again.
    int outNext = -1, outPrev = -1;
};

struct TopoMeshFaceRecord
{
    TopoMeshEdge edge; ///< the first half-edge, by which barycentric weights are counted; null for a removed face
    TopoMeshFace next, prev;
};

// One cache line a half-edge and a vertex.
static_assert(sizeof(TopoMeshEdgeRecord) == 64 && sizeof(TopoMeshVertexRecord) == 64);
static_assert(sizeof(TopoMeshVertex) == sizeof(void*) && std::is_trivially_copyable_v<TopoMeshVertex>);

inline bool TopoMeshVertex::isAlive() const { return record() && record()->numOutgoing >= 0; }
inline znLinear::Point TopoMeshVertex::point() const { return record()->point; }
inline int TopoMeshVertex::valence() const { return record()->numOutgoing; }
inline bool TopoMeshEdge::isAlive() const { return record() && record()->face; }
inline bool TopoMeshFace::isAlive() const { return record() && record()->edge; }

/// An element of any kind.
class TopoMeshEntity
{
public:
    enum Kind : int { Vertex = 0, Edge = 1, Face = 2 };

    TopoMeshEntity(TopoMeshVertex vertex) : m_kind(Vertex), m_record(vertex.record()) {}
    TopoMeshEntity(TopoMeshEdge edge) : m_kind(Edge), m_record(edge.record()) {}
    TopoMeshEntity(TopoMeshFace face) : m_kind(Face), m_record(face.record()) {}

    int kind() const { return m_kind; }
    /// The handle as what it is; the caller knows the kind.
    TopoMeshVertex asVertex() const { return TopoMeshVertex(static_cast<TopoMeshVertexRecord*>(m_record)); }
    TopoMeshEdge asEdge() const { return TopoMeshEdge(static_cast<TopoMeshEdgeRecord*>(m_record)); }
    TopoMeshFace asFace() const { return TopoMeshFace(static_cast<TopoMeshFaceRecord*>(m_record)); }
    friend bool operator==(const TopoMeshEntity&, const TopoMeshEntity&) = default;

private:
    int m_kind;
    void* m_record;
};

/// Handles hash by their numbers, so that hashed containers are the same in every run.
template <typename Handle>
struct TopoHandleHash
{
    std::size_t operator()(Handle handle) const { return handle ? static_cast<std::size_t>(handle.number()) + 1 : 0; }
};

} // namespace znGeom

template <>
struct std::hash<znGeom::TopoMeshVertex> : znGeom::TopoHandleHash<znGeom::TopoMeshVertex>
{};
template <>
struct std::hash<znGeom::TopoMeshEdge> : znGeom::TopoHandleHash<znGeom::TopoMeshEdge>
{};
template <>
struct std::hash<znGeom::TopoMeshFace> : znGeom::TopoHandleHash<znGeom::TopoMeshFace>
{};

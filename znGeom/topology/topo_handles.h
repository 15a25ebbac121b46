/// The elements of a half-edge mesh: handles, and the records that they name.
#pragma once

#include <algorithm>
#include <bit>
#include <compare>
#include <functional>
#include <memory>
#include <utility>

#include "znGeom/foundation/linear/point.h"
#include "znGeom/topology/topo_arena.h"

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

    /// A copy of the position.
    znLinear::Point point() const;
    /// Whether a boundary half-edge leaves or reaches the vertex. False for an isolated one.
    bool onBoundary() const;
    /// The number of outgoing half-edges, which is the number of faces at the vertex; 0 for an isolated one.
    int valence() const;
    /// A face that holds both vertices, or null.
    TopoMeshFace adjacent(TopoMeshVertex other) const;
};

/// One value beside an element, a number or a flag, and a word that tells which.
class BlindData
{
public:
    enum Kind : std::uint64_t { Unwritten, Number, Flag };

    constexpr BlindData() = default;
    BlindData(bool flag) : m_value(flag ? 1u : 0u), m_kind(Flag) {}
    BlindData(double number) : m_value(std::bit_cast<std::uint64_t>(number)), m_kind(Number) {}

    /// The value as it was written; 0 and false while nothing was.
    double asDouble() const { return std::bit_cast<double>(m_value); }
    bool asBool() const { return m_value != 0; }
    Kind kind() const { return m_kind; }
    friend bool operator==(const BlindData&, const BlindData&) = default;

private:
    std::uint64_t m_value = 0;
    Kind m_kind = Unwritten;
};

/// The slots of an element. They take memory from the first write on; a slot that was never written reads as zero.
template <int NumSlots>
class TopoMetadata
{
public:
    static constexpr int numSlots = NumSlots;

    /// One slot, to be read or assigned.
    class Slot
    {
    public:
        Slot(TopoMetadata& slots, int slot) : m_slots(slots), m_slot(slot) {}
        Slot& operator=(BlindData value)
        {
            m_slots.block()[m_slot] = value;
            return *this;
        }
        operator BlindData() const { return std::as_const(m_slots)[m_slot]; }
        double asDouble() const { return BlindData(*this).asDouble(); }
        bool asBool() const { return BlindData(*this).asBool(); }

    private:
        TopoMetadata& m_slots;
        int m_slot;
    };

    TopoMetadata() = default;
    TopoMetadata(const TopoMetadata&) = delete;
    TopoMetadata& operator=(const TopoMetadata&) = delete;

    Slot operator[](int slot) { return {*this, slot}; }
    BlindData operator[](int slot) const { return m_block ? m_block[slot] : BlindData(); }
    bool isWritten() const { return m_block != nullptr; }
    /// Becomes what another element has in its slots; nothing, if these were never written.
    void copyFrom(const TopoMetadata& other)
    {
        if (other.m_block)
            std::copy_n(other.m_block, NumSlots, block());
        else if (m_block)
            std::fill_n(m_block, NumSlots, BlindData());
    }

private:
    BlindData* block()
    {
        if (!m_block) {
            m_block = static_cast<BlindData*>(TopoBlock::of(this)->metadata->allocate());
            std::uninitialized_fill_n(m_block, NumSlots, BlindData());
        }
        return m_block;
    }

    BlindData* m_block = nullptr;
};

/// A half-edge: it runs from its origin to the origin of the next one of its face.
class ZNGEOM_API TopoMeshEdge : public TopoMeshHandle<TopoMeshEdgeRecord>
{
public:
    using TopoMeshHandle::TopoMeshHandle;

    /// Writes a slot of this half-edge and of its twin, if there is one.
    void setMetadata(int slot, BlindData value) const;
};

/// A face, of three sides or more.
class ZNGEOM_API TopoMeshFace : public TopoMeshHandle<TopoMeshFaceRecord>
{
public:
    using TopoMeshHandle::TopoMeshHandle;

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
    TopoMetadata<16> metadata;
    // Kept by the mesh.
    int numOutgoing = 0;     ///< more than the fan of `edge` has where fans touch only here
    unsigned closedAt = ~0u; ///< the fan of `edge` was closed when so many half-edges had been unpaired or removed
};

struct TopoMeshEdgeRecord
{
    TopoMeshVertex origin;
    TopoMeshEdge next, prev; ///< around the face; always set
    TopoMeshEdge twin;       ///< null on the boundary
    TopoMeshFace face;
    TopoMetadata<20> metadata;
    TopoMeshEdge listNext, listPrev;
};

struct TopoMeshFaceRecord
{
    TopoMeshEdge edge; ///< the first half-edge, by which barycentric weights are counted
    TopoMeshFace next, prev;
};

// One cache line a half-edge and a vertex.
static_assert(sizeof(TopoMeshEdgeRecord) == 64 && sizeof(TopoMeshVertexRecord) == 64);
static_assert(sizeof(TopoMeshVertex) == sizeof(void*) && std::is_trivially_copyable_v<TopoMeshVertex>);

inline znLinear::Point TopoMeshVertex::point() const { return record()->point; }
inline int TopoMeshVertex::valence() const { return record()->numOutgoing; }

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

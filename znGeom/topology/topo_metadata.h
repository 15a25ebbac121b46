/// `znGeom::TopoMetadata`: the slots of an element of a half-edge mesh.
#pragma once

#include "znGeom/topology/topo_arena.h"

namespace znGeom {

/// The slots of an element. A slot takes memory, 16 bytes an element, from its first write on, for some thousand
/// elements made about the same time; what was never written reads as zero. The object itself is empty: it stands in
/// the element's record, whose address leads to the values.
template <typename Record, int NumSlots>
class TopoMetadata
{
    static_assert(NumSlots <= TopoBlock::maxSlots);

public:
    static constexpr int numSlots = NumSlots;

    /// One slot, to be read or assigned.
    class Slot
    {
    public:
        Slot(TopoMetadata& slots, int slot) : m_slots(slots), m_slot(slot) {}
        Slot& operator=(BlindData value)
        {
            m_slots.set(m_slot, value);
            return *this;
        }
        operator BlindData() const { return m_slots.get(m_slot); }
        double asDouble() const { return m_slots.get(m_slot).asDouble(); }
        bool asBool() const { return m_slots.get(m_slot).asBool(); }

    private:
        TopoMetadata& m_slots;
        int m_slot;
    };

    TopoMetadata() = default;
    TopoMetadata(const TopoMetadata&) = delete;
    TopoMetadata& operator=(const TopoMetadata&) = delete;

    Slot operator[](int slot) { return {*this, slot}; }
    BlindData operator[](int slot) const { return get(slot); }

    BlindData get(int slot) const
    {
        const BlindData* column = TopoBlock::of(this)->columns[slot];
        return column ? column[index()] : BlindData();
    }
    void set(int slot, BlindData value)
    {
        TopoBlock* block = TopoBlock::of(this);
        BlindData* column = block->columns[slot];
        if (!column) column = block->list->addColumn(*block, slot, TopoBlock::numRecords<Record>());
        column[index()] = value;
    }

    /// Whether any slot was written.
    bool isWritten() const
    {
        if (TopoBlock::of(this)->numColumns == 0) return false;
        for (int slot = 0; slot < NumSlots; ++slot)
            if (get(slot).kind() != BlindData::Unwritten) return true;
        return false;
    }
    /// Becomes what another element has in its slots.
    void copyFrom(const TopoMetadata& other)
    {
        for (int slot = 0; slot < NumSlots; ++slot) {
            const BlindData value = other.get(slot);
            if (!(value == get(slot))) set(slot, value);
        }
    }

private:
    int index() const { return TopoBlock::indexOf<Record>(this); }
};

} // namespace znGeom

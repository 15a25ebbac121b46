/// Lists of sequences of integers end to end in flat arrays, and the boundary loops of a mesh, which are one such list.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <numeric>

#include "znGeom/foundation/containers/checked_size.h"
#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/mesh/array.h"

namespace znGeom {

/// Sequences of any lengths: line strips, triangle strips, loops. Indices are trusted; copies are deep.
template <typename T>
class MeshSequenceBase
{
public:
    Array<T> values;        ///< all sequences, one after the other
    Array<int> lengths;     ///< one per sequence
    Array<const T*> firsts; ///< for owners that keep the beginning of each sequence at hand; empty otherwise
    Array<int> tags;        ///< for owners that keep a number with each sequence; empty otherwise

    MeshSequenceBase() = default;
    explicit MeshSequenceBase(const zn::vector<zn::vector<T>>& sequences);
    /// \param sequenceLengths  they add up to the number of values
    MeshSequenceBase(const zn::vector<T>& allValues, const zn::vector<int>& sequenceLengths)
    {
        values.assign(allValues.data(), allValues.size());
        lengths.assign(sequenceLengths.data(), sequenceLengths.size());
    }
    MeshSequenceBase(const MeshSequenceBase&) = default;
    MeshSequenceBase& operator=(const MeshSequenceBase&) = default;
    virtual ~MeshSequenceBase() = default;

    int size() const { return lengths.size(); }
    int getLength(int sequence) const { return lengths[sequence]; }
    /// The first value of a sequence. Adds up the lengths before it: to visit all sequences in turn, walk the values
    /// instead.
    const T* getStart(int sequence) const
    {
        const int* each = lengths.read();
        return values.read() + std::accumulate(each, each + sequence, std::ptrdiff_t{0});
    }

    void swap(MeshSequenceBase& other)
    {
        values.swap(other.values);
        lengths.swap(other.lengths);
        firsts.swap(other.firsts);
        tags.swap(other.tags);
    }
};

template <typename T>
MeshSequenceBase<T>::MeshSequenceBase(const zn::vector<zn::vector<T>>& sequences)
{
    std::int64_t total = 0;
    for (const auto& sequence : sequences) total += sequence.size();
    values.resize(zn::checkedSize(total));
    lengths.resize(sequences.size());
    T* nextValue = values.write();
    int* nextLength = lengths.write();
    for (const auto& sequence : sequences) {
        nextValue = std::copy(sequence.begin(), sequence.end(), nextValue);
        *nextLength++ = sequence.size();
    }
}

/// Sequences of vertex indices.
class ZNGEOM_API MeshSequence : public MeshSequenceBase<int>
{
public:
    using MeshSequenceBase<int>::MeshSequenceBase;
};

/// The boundary loops of a mesh as they were when they were found; see `meshComputeBoundary`. Holds no reference to
/// the mesh. Loop numbers are trusted; every call is constant in time.
class ZNGEOM_API MeshBoundaries : public zn::ReferenceCount
{
public:
    MeshBoundaries() = default;
    /// Takes over the sequences, one per loop; `loops` is then empty.
    explicit MeshBoundaries(MeshSequence& loops) : m_offsets(loops.size())
    {
        m_loops.swap(loops);
        const int* lengths = m_loops.lengths.read();
        std::exclusive_scan(lengths, lengths + size(), m_offsets.write(), 0);
    }

    /// The number of loops.
    int size() const { return m_loops.size(); }
    int getLength(int loop) const { return m_loops.getLength(loop); }
    /// The first vertex of a loop.
    const int* getStart(int loop) const { return m_loops.values.read() + m_offsets[loop]; }
    /// Past its last vertex.
    const int* getEnd(int loop) const { return getStart(loop) + getLength(loop); }

    const MeshSequence& sequence() const { return m_loops; }

    void swap(MeshBoundaries& other)
    {
        m_loops.swap(other.m_loops);
        m_offsets.swap(other.m_offsets);
    }

private:
    MeshSequence m_loops;
    Array<int> m_offsets;
};

} // namespace znGeom

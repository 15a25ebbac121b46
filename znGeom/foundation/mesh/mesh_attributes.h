/// `znGeom::MeshAttributes`: one named channel with the same number of values for each vertex.
#pragma once

#include "znGeom/foundation/mesh/array.h"
#include "znGeom/foundation/mesh/mesh_records.h"
#include "znGeom/foundation/text/c_string.h"

namespace znGeom {

class ZNGEOM_API MeshAttributes
{
public:
    /// Zeros for `numElements` vertices.
    MeshAttributes(const znString::CString& name, int numComponents, int numElements,
                   const zn::Reference<ArrayAllocator>& allocator = nullptr);

    const znString::CString& getName() const { return m_name; }
    /// How many numbers per vertex, 1 to 4.
    int getNumComponents() const { return m_numComponents; }
    /// How many vertices are covered.
    int getNumElements() const { return m_values.size() / m_numComponents; }

    /// All numbers in a row; null when no vertex is covered.
    float* asFloat() { return m_values.write(); }
    const float* asFloat() const { return m_values.read(); }

    /// Typed views; null when the attribute has another number of components.
    MeshFloat1* asFloat1() { return as<MeshFloat1>(); }
    MeshFloat2* asFloat2() { return as<MeshFloat2>(); }
    MeshFloat3* asFloat3() { return as<MeshFloat3>(); }
    MeshFloat4* asFloat4() { return as<MeshFloat4>(); }
    MeshUV* asMeshUV() { return as<MeshUV>(); }
    const MeshFloat1* asFloat1() const { return as<MeshFloat1>(); }
    const MeshFloat2* asFloat2() const { return as<MeshFloat2>(); }
    const MeshFloat3* asFloat3() const { return as<MeshFloat3>(); }
    const MeshFloat4* asFloat4() const { return as<MeshFloat4>(); }
    const MeshUV* asMeshUV() const { return as<MeshUV>(); }

    /// Whether the attribute is written out with the mesh; true at first, and copied with the attribute.
    bool isStoreable() const { return m_storeable; }
    void setStoreable(bool storeable) { m_storeable = storeable; }

    /// The smallest and the largest number of one component, kept until `invalidateRange`. False when no vertex is
    /// covered or every number is NaN. Not to be called while another thread reads the attribute.
    bool getRange(int component, float& min, float& max);
    /// Forgets the kept range; to be called after writing to the numbers.
    void invalidateRange() { m_rangeKnown[0] = m_rangeKnown[1] = m_rangeKnown[2] = m_rangeKnown[3] = false; }

    /// New elements are zero.
    void resize(int numElements);
    /// Exchanges all numbers with an array that covers whole vertices; nothing is copied unless there is an allocator.
    void swapValues(Array<float>& values)
    {
        m_values.swap(values);
        invalidateRange();
    }
    void setAllocator(const zn::Reference<ArrayAllocator>& allocator) { m_values.setAllocator(allocator); }
    size_t getSizeInBytes() const { return sizeof(*this) + m_values.blockBytes(m_values.size()); }

private:
    template <typename Record>
    Record* as()
    {
        return sizeof(Record) == sizeof(float) * size_t(m_numComponents) ? reinterpret_cast<Record*>(asFloat())
                                                                         : nullptr;
    }
    template <typename Record>
    const Record* as() const
    {
        const bool fits = sizeof(Record) == sizeof(float) * size_t(m_numComponents);
        return fits ? reinterpret_cast<const Record*>(asFloat()) : nullptr;
    }

    znString::CString m_name;
    int m_numComponents;
    bool m_storeable = true;
    Array<float> m_values;
    bool m_rangeKnown[4] = {false, false, false, false};
    float m_rangeMin[4] = {}, m_rangeMax[4] = {};
};

} // namespace znGeom

#include "znGeom/foundation/mesh/mesh_attributes.h"

#include <cstdint>
#include <limits>

#include "znGeom/foundation/containers/checked_size.h"

namespace znGeom {

MeshAttributes::MeshAttributes(const znString::CString& name, int numComponents, int numElements,
                               const zn::Reference<ArrayAllocator>& allocator)
    : m_name(name), m_numComponents(numComponents)
{
    m_values.setAllocator(allocator);
    resize(numElements);
}

void MeshAttributes::resize(int numElements)
{
    const int old = m_values.size(), size = zn::checkedSize(std::int64_t{numElements} * m_numComponents);
    m_values.resize(size);
    if (size > old) std::fill_n(m_values.write() + old, size - old, 0.0f);
    invalidateRange();
}

bool MeshAttributes::getRange(int component, float& min, float& max)
{
    float &low = m_rangeMin[component], &high = m_rangeMax[component];
    if (!m_rangeKnown[component]) {
        low = std::numeric_limits<float>::infinity();
        high = -low;
        const float* values = m_values.read();
        for (int i = component; i < m_values.size(); i += m_numComponents) {
            if (values[i] < low) low = values[i];
            if (values[i] > high) high = values[i];
        }
        m_rangeKnown[component] = true;
    }
    if (low > high) return false;
    min = low;
    max = high;
    return true;
}

} // namespace znGeom

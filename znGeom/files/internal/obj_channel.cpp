#include "znGeom/files/internal/obj_channel.h"

#include <algorithm>

namespace znGeom::internal {

void ObjChannel::use(int vertex, int entry, int numVertices)
{
    m_isUsed = true;
    if (m_problem) return;
    if (entry < 0)
        m_problem = "not at every face corner, not kept";
    else if (entry >= count() || vertex >= numVertices)
        m_problem = "face corners name what comes behind them, or nothing, not kept";
    if (m_problem || (vertex >= m_chosen.size() && !m_chosen.reserve(numVertices - m_chosen.size()))) return;
    if (const int known = m_chosen.size(); vertex >= known) {
        std::fill_n(m_chosen.end(), numVertices - known, -1);
        m_chosen.setEnd(m_chosen.begin() + numVertices);
    }

    int& chosen = m_chosen.begin()[vertex];
    if (chosen < 0) chosen = entry;
    if (chosen == entry) return;
    const float* const values = m_values.begin() + std::ptrdiff_t(entry) * m_width;
    if (!std::equal(values, values + m_width, m_values.begin() + std::ptrdiff_t(chosen) * m_width))
        m_problem = "several at one vertex, not kept";
}

void ObjChannel::publish(LoadContext& context, int numVertices, GrowingArray<float>& result)
{
    if (count() == 0) return;
    if (!m_isUsed) m_problem = "used by no face, not kept";
    if (!m_problem && !result.reserve(std::int64_t(numVertices) * m_width)) m_problem = "too many, not kept";
    if (m_problem) {
        context.note(std::string(m_name) + ": " + m_problem);
        return;
    }
    float* out = result.end();
    for (int vertex = 0; vertex < numVertices; ++vertex, out += m_width) {
        const int chosen = vertex < m_chosen.size() ? m_chosen.begin()[vertex] : -1;
        if (chosen < 0)
            std::fill_n(out, m_width, 0.0f);
        else
            std::copy_n(m_values.begin() + std::ptrdiff_t(chosen) * m_width, m_width, out);
    }
    result.setEnd(out);
    m_values.clear();
    m_chosen.clear();
}

} // namespace znGeom::internal

#include "znGeom/files/internal/corner_channel.h"

#include <algorithm>

namespace znGeom::internal {

/// Whether the corner names what is there, and there is room.
bool CornerChannel::accepts(int vertex, int entry, int numVertices)
{
    if (entry < 0)
        m_problem = "not at every face corner, not kept";
    else if (entry >= count() || vertex < 0 || vertex >= numVertices)
        m_problem = "face corners name what comes after them, or nothing, not kept";
    else if (m_isPerCorner ? !m_ofCorner.reserve(1)
                           : vertex >= m_chosen.size() && !m_chosen.reserve(numVertices - m_chosen.size()))
        m_problem = "too many, not kept";
    return !m_problem;
}

void CornerChannel::use(int vertex, int entry, int numVertices)
{
    m_isUsed = true;
    if (m_problem || !accepts(vertex, entry, numVertices)) return;
    if (!m_isPerCorner) {
        if (const int known = m_chosen.size(); vertex >= known) {
            std::fill_n(m_chosen.end(), numVertices - known, -1);
            m_chosen.setEnd(m_chosen.begin() + numVertices);
        }
        int& chosen = m_chosen.begin()[vertex];
        if (chosen < 0) chosen = entry;
        m_isPerCorner = chosen != entry && !std::equal(valuesOf(entry), valuesOf(entry) + m_width, valuesOf(chosen));
    }
    if (!m_isPerCorner)
        ++m_numCorners;
    else if (!m_ofCorner.append(&entry, 1))
        m_problem = "too many, not kept";
}

void CornerChannel::gatherCorners(const FaceList& faces, float* out) const
{
    const int* const corners = faces.corners();
    const auto put = [&](int corner) {
        const int entry =
            corner < m_numCorners ? m_chosen.begin()[corners[corner]] : m_ofCorner.begin()[corner - m_numCorners];
        out = std::copy_n(valuesOf(entry), m_width, out);
    };
    int first = 0;
    for (const FaceRun& run : faces.runs())
        for (int face = 0; face < run.numFaces; ++face, first += run.numCorners)
            for (int i = 2; i < run.numCorners; ++i) {
                put(first);
                put(first + i - 1);
                put(first + i);
            }
}

void CornerChannel::publish(LoadContext& context, int numVertices, GrowingArray<float>& result)
{
    if (count() == 0) return;
    if (!m_isUsed) m_problem = "used by no face, not kept";
    if (isPerCorner()) {
        context.note(std::string(m_name) + ": several at one vertex, kept per face corner");
        return;
    }
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

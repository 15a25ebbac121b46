#include "znGeom/files/internal/obj_groups.h"

#include <algorithm>

namespace znGeom::internal {

void ObjGroups::begin(std::string_view name, int firstFace)
{
    const int group = name.empty() ? -1 : numberOf(name);
    if (!m_stretches.empty() && m_stretches.back().firstFace == firstFace)
        m_stretches.back().group = group;
    else
        m_stretches.append({firstFace, group});
}

int ObjGroups::numberOf(std::string_view name)
{
    const std::string key(name);
    const auto found = m_numbers.find(key);
    if (found != m_numbers.end()) return found->second;
    m_numbers[key] = m_names.size();
    m_names.append(key);
    return m_names.size() - 1;
}

void ObjGroups::publish(const FaceList& faces, MeshGroups& result) const
{
    if (m_names.empty()) return;
    result.names = m_names;
    result.ofTriangle = zn::vector<int>(faces.numCorners() - 2 * faces.numFaces());
    int face = 0, group = -1, next = 0, *out = result.ofTriangle.data();
    for (const FaceRun& run : faces.runs()) {
        for (int i = 0; i < run.numFaces; ++i, ++face) {
            for (; next < m_stretches.size() && m_stretches[next].firstFace <= face; ++next)
                group = m_stretches[next].group;
            out = std::fill_n(out, run.numCorners - 2, group);
        }
    }
}

} // namespace znGeom::internal

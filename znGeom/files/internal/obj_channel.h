/// `znGeom::internal::ObjChannel`: the normals or the texture coordinates of an OBJ file.
#pragma once

#include "znGeom/files/internal/growing_array.h"
#include "znGeom/files/internal/load_context.h"

namespace znGeom::internal {

/// A list of entries that face corners point to. It becomes a channel when at each vertex all corners agree; that is
/// found out as the faces come, so that corners need not be kept.
class ObjChannel
{
public:
    /// \param width  numbers per entry
    ObjChannel(const char* name, int width) : m_name(name), m_width(width) {}

    int width() const { return m_width; }
    int count() const { return m_values.size() / m_width; }
    bool add(const float* values) { return m_values.append(values, m_width); }

    /// A face corner at a vertex points to an entry; to none when it is below 0.
    /// \param numVertices  so far
    void use(int vertex, int entry, int numVertices);

    /// One entry per vertex, zeros where no face uses the vertex; or nothing, and a note why.
    void publish(LoadContext& context, int numVertices, GrowingArray<float>& result);

private:
    const char* m_name;
    int m_width;
    GrowingArray<float> m_values;
    GrowingArray<int> m_chosen;      ///< per vertex, -1 for none yet
    const char* m_problem = nullptr; ///< why it becomes no channel
    bool m_isUsed = false;
};

} // namespace znGeom::internal

/// `znGeom::internal::CornerChannel`: normals or texture coordinates that a file has per face corner.
#pragma once

#include "znGeom/files/internal/face_list.h"
#include "znGeom/files/internal/growing_array.h"
#include "znGeom/files/internal/load_context.h"

namespace znGeom::internal {

/// A list of entries that face corners point to. It becomes a channel when all corners agree at each vertex, and values
/// per corner otherwise. That is found out as the faces arrive: corners are kept from the first disagreement on.
class CornerChannel
{
public:
    /// \param width  numbers per entry
    CornerChannel(const char* name, int width) : m_name(name), m_width(width) {}

    int width() const { return m_width; }
    int count() const { return m_values.size() / m_width; }
    bool add(const float* values) { return m_values.append(values, m_width); }

    /// A face corner at a vertex points to an entry; to none when it is below 0. To be called for all corners of the
    /// faces that are taken, in their order.
    /// \param numVertices  so far
    void use(int vertex, int entry, int numVertices);

    /// Whether corners pointed to entries, all of them.
    bool isComplete() const { return m_isUsed && !m_problem; }
    /// One entry per vertex, zeros where no face uses the vertex; or nothing, and a note saying why.
    void publish(LoadContext& context, int numVertices, GrowingArray<float>& result);
    /// Whether the corners at some vertex disagree; `publish` then gives nothing, and `cornerValues` one value per
    /// triangle corner, three in a row per triangle of the fans of all faces.
    bool isPerCorner() const { return m_isPerCorner && !m_problem; }
    template <typename Value>
    zn::vector<Value> cornerValues(const FaceList& faces) const
    {
        zn::vector<Value> values(3 * (faces.numCorners() - 2 * faces.numFaces()));
        gatherCorners(faces, reinterpret_cast<float*>(values.data()));
        return values;
    }

private:
    void gatherCorners(const FaceList& faces, float* out) const;
    bool accepts(int vertex, int entry, int numVertices);
    const float* valuesOf(int entry) const { return m_values.begin() + std::ptrdiff_t(entry) * m_width; }

    const char* m_name;
    int m_width;
    GrowingArray<float> m_values;
    GrowingArray<int> m_chosen;   ///< per vertex, -1 for none yet
    int m_numCorners = 0;         ///< up to the first disagreement; these have what was chosen for their vertices
    GrowingArray<int> m_ofCorner; ///< the entries of all further corners
    bool m_isPerCorner = false;
    const char* m_problem = nullptr; ///< why it does not become a channel
    bool m_isUsed = false;
};

} // namespace znGeom::internal

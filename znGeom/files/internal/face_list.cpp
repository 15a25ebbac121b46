#include "znGeom/files/internal/face_list.h"

#include <algorithm>

namespace znGeom::internal {

bool FaceList::reserve(std::int64_t numCorners)
{
    if (m_hasPolygons) {
        m_corners.setEnd(m_corners.begin() + m_numCorners);
        return m_corners.reserve(numCorners);
    }
    m_triangles.setEnd(m_triangles.begin() + m_numCorners / 3);
    return m_triangles.reserve(numCorners / 3 + 1);
}

int* FaceList::corners() { return m_hasPolygons ? m_corners.begin() : reinterpret_cast<int*>(m_triangles.begin()); }

void FaceList::add(int numCorners)
{
    if (numCorners != 3 && !m_hasPolygons) becomePolygons(m_numCorners + numCorners);
    m_numCorners += numCorners;
    ++m_numFaces;
    if (m_runs.empty() || m_runs.back().numCorners != numCorners) m_runs.append({numCorners, 0});
    ++m_runs.back().numFaces;
}

bool FaceList::append(const int* corners, int numCorners)
{
    if (!reserve(numCorners)) return false;
    std::copy_n(corners, numCorners, end());
    add(numCorners);
    return true;
}

/// Keeps the room that was made, and the corners that are in it.
void FaceList::becomePolygons(int numCorners)
{
    m_corners.reserve(3 * m_triangles.capacity());
    std::copy_n(reinterpret_cast<const int*>(m_triangles.begin()), numCorners, m_corners.begin());
    m_triangles.clear();
    m_hasPolygons = true;
}

int FaceList::numPolygons() const
{
    int count = 0;
    for (const FaceRun& run : m_runs) count += run.numCorners > 3 ? run.numFaces : 0;
    return count;
}

void FaceList::eraseFrom(int end)
{
    const int* face = corners();
    int* kept = corners();
    for (FaceRun& run : m_runs) {
        const int numFaces = run.numFaces;
        for (int i = 0; i < numFaces; ++i, face += run.numCorners) {
            if (*std::max_element(face, face + run.numCorners) < end)
                kept = std::copy_n(face, run.numCorners, kept);
            else
                --run.numFaces, --m_numFaces;
        }
    }
    m_numCorners = static_cast<int>(kept - corners());
}

void FaceList::publishPolygons(CompactMesh& mesh)
{
    if (!m_hasPolygons) becomePolygons(m_numCorners);
    m_corners.setEnd(end());
    Array<int> lengths(m_numFaces), points = m_corners.take();
    int* length = lengths.write();
    for (const FaceRun& run : m_runs) length = std::fill_n(length, run.numFaces, run.numCorners);
    mesh.takePolys(points, lengths);
    clear();
}

void FaceList::publishTriangles(CompactMesh& mesh)
{
    if (m_hasPolygons) {
        mesh.copyTriangles(m_numFaces, m_corners.begin());
    } else {
        m_triangles.setEnd(m_triangles.begin() + m_numFaces);
        Array<MeshTriangle> triangles = m_triangles.take();
        mesh.takeTriangles(triangles);
    }
    clear();
}

void FaceList::clear() { *this = FaceList(); }

} // namespace znGeom::internal

/// `znGeom::internal::FaceList`: the faces of a file as they come.
#pragma once

#include <cstdint>

#include "znGeom/files/internal/growing_array.h"
#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/mesh/compact_mesh.h"

namespace znGeom::internal {

/// Consecutive faces with the same number of corners. Most files are one run.
struct FaceRun
{
    int numCorners;
    int numFaces;
};

/// Faces of any size, one after the other. As long as all are triangles they are stored where a mesh can take them
/// over; the first face that is not a triangle moves them, once.
class FaceList
{
public:
    /// Makes room for that many more corners; false when they might be too many.
    bool reserve(std::int64_t numCorners);
    /// Where to put the corners of the next face, within the room that was made.
    int* end() { return corners() + m_numCorners; }
    /// Takes the corners at the end as a face.
    void add(int numCorners);
    /// Makes room, copies and takes; false when there would be too many.
    bool append(const int* corners, int numCorners);

    int numCorners() const { return m_numCorners; }
    int numFaces() const { return m_numFaces; }
    /// How many have more than three corners.
    int numPolygons() const;
    const int* corners() const { return const_cast<FaceList*>(this)->corners(); }
    int* corners();
    const zn::vector<FaceRun>& runs() const { return m_runs; }

    /// Drops the faces with a corner of `end` or above.
    void eraseFrom(int end);

    /// All faces, to become the polygons of a mesh; the list is empty then.
    void publishPolygons(CompactMesh& mesh);
    /// All faces, none of them larger than a triangle, to become the triangles of a mesh; the list is empty then.
    void publishTriangles(CompactMesh& mesh);

private:
    void becomePolygons(int numCorners);
    void clear();

    GrowingArray<MeshTriangle> m_triangles; ///< while there is nothing else
    GrowingArray<int> m_corners;            ///< afterwards
    bool m_hasPolygons = false;
    int m_numCorners = 0, m_numFaces = 0;
    zn::vector<FaceRun> m_runs;
};

} // namespace znGeom::internal

#include "znGeom/spatial/queries/ray_pick.h"

#include "znGeom/foundation/mesh/bit_vector.h"
#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"
#include "znGeom/spatial/shapes/ray.h"
#include "znGeom/spatial/trees/octree_traversal.h"

namespace znGeom {

using namespace znLinear;

namespace {

/// What a pick has looked at so far.
class Pick
{
public:
    Pick(const CompactMesh& mesh, const MeshAdjTris& adjTris, const Line& line)
        : m_mesh(mesh), m_adjTris(adjTris), m_line(line)
    {
        m_seenVertices.resize(mesh.getNumVertices());
        m_seenTriangles.resize(mesh.getNumTriangles());
    }

    /// The first triangle around some vertices that is hit; -1 for none.
    int firstHit(const int* begin, const int* end, PointFlt& hit)
    {
        for (const int* vertex = begin; vertex != end; ++vertex) {
            if (m_seenVertices[*vertex]) continue;
            m_seenVertices.setBit(*vertex);
            for (const int triangle : m_adjTris.around(*vertex)) {
                if (m_seenTriangles[triangle]) continue;
                m_seenTriangles.setBit(triangle);
                if (meshRayTriIntersect(m_mesh, triangle, m_line, hit)) return triangle;
            }
        }
        return -1;
    }

private:
    const CompactMesh& m_mesh;
    const MeshAdjTris& m_adjTris;
    const Line& m_line;
    BitVector m_seenVertices, m_seenTriangles;
};

} // namespace

bool meshRayTriIntersect(const CompactMesh& mesh, int triangle, const Line& line, PointFlt& hit)
{
    const PointFlt origin(line.point);
    const MeshTriangle& corners = mesh.getTriangles()[triangle];
    const MeshVertex* const vertices = mesh.getVertices();
    double t = 0, u = 0, v = 0;
    if (!intersectRayTriangle(&line.direction.dx, &origin.x, &vertices[corners[0]].x, &vertices[corners[1]].x,
                              &vertices[corners[2]].x, t, u, v))
        return false;
    hit = PointFlt(line.eval(t));
    return true;
}

bool meshRayTriIntersect(const CompactMesh& mesh, int triangle, const Line& line, Point& hit)
{
    PointFlt narrowed;
    if (!meshRayTriIntersect(mesh, triangle, line, narrowed)) return false;
    hit = Point(narrowed);
    return true;
}

bool meshRayIntersect(const CompactMesh& mesh, const Octree& octree, const MeshAdjTris& adjTris, const Frustum& frustum,
                      PointFlt& hit, int* triangle)
{
    znOS::StopWatch watch;
    const Line line = frustum.getRay();
    Pick pick(mesh, adjTris, line);
    for (OctreeIntersectIt it(octree, frustum); it.valid(); it.next()) {
        const OctreeNode& leaf = *it.get().node;
        const int found =
            pick.firstHit(octree.pointIndices() + leaf.firstPoint, octree.pointIndices() + leaf.endPoint, hit);
        if (found < 0) continue;
        if (triangle) *triangle = found;
        debugChannel().print("meshRayIntersect:  (%f,%f,%f) %f s\n", double(hit.x), double(hit.y), double(hit.z),
                             watch.stop());
        return true;
    }
    debugChannel().print("meshRayIntersect:  no intersection %f s\n", watch.stop());
    return false;
}

} // namespace znGeom

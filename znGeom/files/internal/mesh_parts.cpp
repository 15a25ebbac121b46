#include "znGeom/files/internal/mesh_parts.h"

#include <algorithm>
#include <limits>

namespace znGeom::internal {

namespace {

/// A polygon becomes the triangles of its fan from the first corner.
void writeFans(const CompactMesh& mesh, int* out)
{
    const int* corner = mesh.getPolyPoints();
    for (int i = 0; i < mesh.getNumPolys(); ++i) {
        const int length = mesh.getPolyLengths()[i];
        for (int side = 2; side < length; ++side, out += 3) {
            out[0] = corner[0];
            out[1] = corner[side - 1];
            out[2] = corner[side];
        }
        corner += length;
    }
}

/// What was read of a channel, if there is a value for every vertex.
void moveChannel(GrowingArray<float>& values, MeshAttributes& channel)
{
    Array<float> exact = values.take();
    channel.swapValues(exact);
}

} // namespace

bool MeshParts::addFace(const int* corners, int numCorners)
{
    if (numCorners >= 3) return faces.append(corners, numCorners) || m_context.tooLarge();
    ++m_numSmallFaces;
    return true;
}

bool MeshParts::addTriangle(int a, int b, int c)
{
    const int corners[] = {a, b, c};
    return addFace(corners, 3);
}

bool MeshParts::publish(CompactMesh& mesh)
{
    if (!checkCorners() || !m_context.checkCancelled()) return false;
    m_context.result().numFaces = faces.numFaces();
    m_context.result().numPolygons = faces.numPolygons();
    CompactMesh fresh;
    if (!publishFaces(fresh)) return false;
    publishChannels(fresh);
    if (m_numSmallFaces > 0)
        m_context.note("faces of one or two corners: " + std::to_string(m_numSmallFaces) + ", left out");
    mesh.swap(fresh);
    return true;
}

bool MeshParts::checkCorners()
{
    const int* const begin = faces.corners();
    const int* const end = begin + faces.numCorners();
    const auto isOut = [count = unsigned(numVertices())](int corner) { return unsigned(corner) >= count; };
    const int* const found = std::find_if(begin, end, isOut);
    return found == end || failForCorner(found - begin);
}

bool MeshParts::failForCorner(std::int64_t position)
{
    std::int64_t face = 0, firstCorner = 0;
    for (const FaceRun& run : faces.runs()) {
        const std::int64_t numCorners = std::int64_t(run.numFaces) * run.numCorners;
        if (position < firstCorner + numCorners) {
            face += (position - firstCorner) / run.numCorners;
            break;
        }
        face += run.numFaces;
        firstCorner += numCorners;
    }
    const std::int64_t corner = std::int64_t(faces.corners()[position]) + m_firstNumber;
    return m_context.malformed("face " + std::to_string(face + 1) + " names vertex " + std::to_string(corner) +
                               ", the file has " + std::to_string(numVertices()) +
                               (m_firstNumber == 0 ? ", counted from 0" : ""));
}

void MeshParts::publishChannels(CompactMesh& mesh)
{
    const int count = numVertices();
    Array<float> vertices = positions.take();
    mesh.takeVertices(vertices);
    if (normals.size() > 0 && normals.size() == 3 * count) {
        mesh.allocNormalArray();
        mesh.setNormalsComputed(false);
        moveChannel(normals, *mesh.getAttributes(PointMesh::NormalsName));
    }
    if (uvs.size() > 0 && uvs.size() == 2 * count) {
        mesh.allocUVArray();
        moveChannel(uvs, *mesh.getAttributes(PointMesh::UVsName));
    }
}

bool MeshParts::publishFaces(CompactMesh& mesh)
{
    if (faces.numPolygons() == 0) {
        faces.publishTriangles(mesh);
        return true;
    }
    const int numTriangles = faces.numCorners() - 2 * faces.numFaces();
    if (numTriangles > std::numeric_limits<int>::max() / 3) return m_context.tooLarge();
    faces.publishPolygons(mesh);
    mesh.resizeTriangleArray(numTriangles);
    writeFans(mesh, mesh.getTrianglesRaw());
    return true;
}

} // namespace znGeom::internal

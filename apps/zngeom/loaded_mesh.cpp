#include "apps/zngeom/loaded_mesh.h"

#include <algorithm>

#include "apps/zngeom/failure.h"
#include "znGeom/editing/triangles.h"

namespace tool {

namespace {

[[noreturn]] void failForCorner(std::size_t face, long long corner, std::size_t numVertices, int firstNumber)
{
    const std::string names = "face " + std::to_string(face + 1) + " names vertex " +
                              std::to_string(corner + firstNumber) + ", the file has " + std::to_string(numVertices);
    throw Failure(names + (firstNumber == 0 ? ", counted from 0" : ""));
}

void copyChannels(const MeshParts& parts, znGeom::CompactMesh& mesh)
{
    mesh.resizeVertexArray(static_cast<int>(parts.numVertices()));
    std::copy(parts.positions.begin(), parts.positions.end(), mesh.getVerticesRaw());
    if (!parts.normals.empty()) {
        mesh.allocNormalArray();
        mesh.setNormalsComputed(false);
        std::copy(parts.normals.begin(), parts.normals.end(), mesh.getNormalsRaw());
    }
    if (!parts.uvs.empty()) {
        mesh.allocUVArray();
        std::copy(parts.uvs.begin(), parts.uvs.end(), mesh.getUVsRaw());
    }
}

void copyFaces(const MeshParts& parts, znGeom::CompactMesh& mesh)
{
    const int numFaces = static_cast<int>(parts.faceLengths.size());
    if (std::all_of(parts.faceLengths.begin(), parts.faceLengths.end(), [](int length) { return length == 3; })) {
        mesh.copyTriangles(numFaces, parts.faceCorners.data());
        return;
    }
    mesh.resizePolyArrays(static_cast<int>(parts.faceCorners.size()), numFaces);
    std::copy(parts.faceLengths.begin(), parts.faceLengths.end(), mesh.getPolyLengths());
    std::copy(parts.faceCorners.begin(), parts.faceCorners.end(), mesh.getPolyPoints());
    znGeom::meshTriangulate(mesh);
}

} // namespace

void MeshParts::addFace(const int* corners, std::size_t numCorners)
{
    if (numCorners < 3) {
        ++smallFaces;
        return;
    }
    faceLengths.push_back(static_cast<int>(std::min(numCorners, maxElements + 1)));
    faceCorners.insert(faceCorners.end(), corners, corners + numCorners);
}

void checkCorners(const MeshParts& parts, int firstNumber)
{
    const std::size_t numVertices = parts.numVertices();
    auto corner = parts.faceCorners.begin();
    for (std::size_t face = 0; face < parts.faceLengths.size(); ++face) {
        for (const auto end = corner + parts.faceLengths[face]; corner != end; ++corner)
            if (*corner < 0 || static_cast<std::size_t>(*corner) >= numVertices)
                failForCorner(face, *corner, numVertices, firstNumber);
    }
}

void buildMesh(const MeshParts& parts, int firstNumber, LoadedMesh& result)
{
    if (parts.numVertices() > maxElements || parts.faceCorners.size() > maxElements)
        throw Failure("the mesh is larger than " + std::to_string(maxElements) + " vertices or face corners");
    checkCorners(parts, firstNumber);

    copyChannels(parts, result.mesh);
    copyFaces(parts, result.mesh);
    result.numFaces = static_cast<int>(parts.faceLengths.size());
    result.numPolygons = static_cast<int>(
        std::count_if(parts.faceLengths.begin(), parts.faceLengths.end(), [](int length) { return length > 3; }));
    result.notes = parts.lost;
    if (parts.smallFaces > 0)
        result.notes.push_back("faces of one or two corners: " + std::to_string(parts.smallFaces) + ", left out");
}

} // namespace tool

/// What the readers of the tool give back, and how they make a mesh of it.
#pragma once

#include <climits>
#include <cstddef>
#include <string>
#include <vector>

#include "znGeom/foundation/mesh/compact_mesh.h"

namespace tool {

/// A mesh has no more vertices and face corners than this: loops over 3 * count are counted in `int`.
constexpr std::size_t maxElements = INT_MAX / 3;

/// What a reader found in a file, in the file's own order.
struct MeshParts
{
    std::vector<float> positions;  ///< three per vertex
    std::vector<float> normals;    ///< three per vertex, or nothing
    std::vector<float> uvs;        ///< two per vertex, or nothing
    std::vector<int> faceLengths;  ///< the number of corners of each face, three or more
    std::vector<int> faceCorners;  ///< vertex indices from 0, all faces in a row; not checked yet
    std::size_t smallFaces = 0;    ///< how many faces were left out because they have one or two corners
    std::vector<std::string> lost; ///< what else the file has and the tool doesn't keep, a line each

    std::size_t numVertices() const { return positions.size() / 3; }
    /// Counts a face of one or two corners instead of taking it.
    void addFace(const int* corners, std::size_t numCorners);
};

/// A mesh from a file. Where any face has more than three corners all faces stand in the polygon description as well,
/// and the triangles are their fans.
struct LoadedMesh
{
    znGeom::CompactMesh mesh;
    int numFaces = 0;               ///< as in the file
    int numPolygons = 0;            ///< those of more than three corners
    std::vector<std::string> notes; ///< what the file has and the mesh doesn't
};

/// Fails for a face corner that names no vertex.
/// \param firstNumber  what the file format calls its first vertex, 0 or 1; for the words of the failure
void checkCorners(const MeshParts& parts, int firstNumber);

/// Checks the corners and builds the mesh; normals count as supplied. Fails for more than a mesh can hold.
/// \param result  its mesh must be empty
void buildMesh(const MeshParts& parts, int firstNumber, LoadedMesh& result);

} // namespace tool

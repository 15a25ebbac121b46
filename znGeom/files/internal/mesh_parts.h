/// `znGeom::internal::MeshParts`: what a reader found in a file, in the file's own order.
#pragma once

#include <limits>

#include "znGeom/files/internal/face_list.h"
#include "znGeom/files/internal/growing_array.h"
#include "znGeom/files/internal/load_context.h"

namespace znGeom::internal {

class MeshParts
{
public:
    /// The number that a format gives its first vertex, for failure messages.
    explicit MeshParts(LoadContext& context, int firstNumber = 0) : m_context(context), m_firstNumber(firstNumber) {}

    int numVertices() const { return positions.size() / 3; }
    /// \param position  three numbers
    bool addVertex(const float* position)
    {
        return (numVertices() < mostVertices && positions.append(position, 3)) || m_context.tooLarge();
    }
    /// \param corners  vertex indices from 0, not checked yet; a face of one or two is counted but not taken
    bool addFace(const int* corners, int numCorners);
    bool addTriangle(int a, int b, int c);

    /// Checks all corners and gives everything to the mesh, whatever it held before.
    bool publish(CompactMesh& mesh);

    GrowingArray<float> positions; ///< three per vertex
    GrowingArray<float> normals;   ///< three per vertex, or nothing
    GrowingArray<float> uvs;       ///< two per vertex, or nothing
    FaceList faces;

private:
    bool failForCorner(std::int64_t position);
    bool checkCorners();
    void publishChannels(CompactMesh& mesh);
    bool publishFaces(CompactMesh& mesh);

    /// Loops over three times a count use an `int` as counter.
    static constexpr int mostVertices = std::numeric_limits<int>::max() / 3;

    LoadContext& m_context;
    int m_firstNumber;
    std::int64_t m_numSmallFaces = 0;
};

} // namespace znGeom::internal

#include "znGeom/analysis/areas.h"

#include <cmath>
#include <cstring>

#include "znGeom/foundation/linear/tolerance.h"
#include "znGeom/foundation/threads/parallel_reduce.h"

namespace znGeom {

using znLinear::AffineMatrix;
using znLinear::Point;
using znLinear::Vector;
using znLinear::Vector2Flt;

namespace {

const MeshUV* textureCoordinates(const CompactMesh& mesh, MeshChannel channel)
{
    return channel == MeshChannelUVs ? mesh.getUVs() : channel == MeshChannelSTs ? mesh.getSTs() : nullptr;
}

bool isLinearIdentity(const AffineMatrix& matrix)
{
    return matrix.row(0) == Vector::x && matrix.row(1) == Vector::y && matrix.row(2) == Vector::z;
}

/// The sum of `area(triangle)` over the triangles, in a fixed pattern: four sums take turns, so that none need wait for
/// another, and are added in order at the end.
template <typename Area>
inline double sumOf(const MeshTriangle* triangles, int count, const Area& area)
{
    constexpr int numSums = 4;
    double sums[numSums] = {};
    int i = 0;
    for (; count - i >= numSums; i += numSums)
        for (int k = 0; k < numSums; ++k) sums[k] += area(triangles[i + k]);
    double sum = sums[0];
    for (int k = 1; k < numSums; ++k) sum += sums[k];
    for (; i < count; ++i) sum += area(triangles[i]);
    return sum;
}

struct TriangleEdges
{
    Vector first, second;

    TriangleEdges(const MeshVertex* vertices, const MeshTriangle& triangle)
        : first(vertices[triangle[1]].asPoint() - vertices[triangle[0]].asPoint()),
          second(vertices[triangle[2]].asPoint() - vertices[triangle[0]].asPoint())
    {}
};

double doubleArea(const MeshVertex* vertices, const MeshTriangle& triangle)
{
    const TriangleEdges edges(vertices, triangle);
    return cross(edges.first, edges.second).length();
}

#if defined(__x86_64__)

/// Four numbers that are worked on at once.
using Double4 = double __attribute__((vector_size(32)));
using Float4 = float __attribute__((vector_size(16)));

/// A vertex in three places; the fourth number is any number. Arrays of vertices have room for one more behind the
/// last.
[[gnu::target("avx2")]] inline void load(const MeshVertex& vertex, Double4& result)
{
    Float4 narrow;
    std::memcpy(&narrow, static_cast<const void*>(&vertex), sizeof narrow);
#if defined(__clang__)
    result = __builtin_convertvector(narrow, Double4);
#else
    result = __builtin_ia32_cvtps2pd256(narrow); // the form above becomes four instructions here
#endif
}

/// The squares of z, x and y, in this order, of the vector that stands on a triangle and is twice as long as its area.
[[gnu::target("avx2")]] inline void squareNormal(const MeshVertex* vertices, const MeshTriangle& triangle,
                                                 Double4& squares)
{
    Double4 origin, first, second;
    load(vertices[triangle[0]], origin);
    load(vertices[triangle[1]], first);
    load(vertices[triangle[2]], second);
    first -= origin;
    second -= origin;
    const Double4 normal = first * __builtin_shufflevector(second, second, 1, 2, 0, 3) -
                           __builtin_shufflevector(first, first, 1, 2, 0, 3) * second;
    squares = normal * normal;
}

/// The lengths of four vectors whose components' squares are given as above.
[[gnu::target("avx2")]] inline void lengthsOf(const Double4 (&squares)[4], Double4& lengths)
{
    const Double4 zy01 = __builtin_shufflevector(squares[0], squares[1], 0, 4, 2, 6);
    const Double4 zy23 = __builtin_shufflevector(squares[2], squares[3], 0, 4, 2, 6);
    const Double4 x01 = __builtin_shufflevector(squares[0], squares[1], 1, 5, 3, 7);
    const Double4 x23 = __builtin_shufflevector(squares[2], squares[3], 1, 5, 3, 7);
    const Double4 x = __builtin_shufflevector(x01, x23, 0, 1, 4, 5);
    const Double4 y = __builtin_shufflevector(zy01, zy23, 2, 3, 6, 7);
    const Double4 z = __builtin_shufflevector(zy01, zy23, 0, 1, 4, 5);
    lengths = x + y + z;
    for (int i = 0; i < 4; ++i) lengths[i] = std::sqrt(lengths[i]);
}

/// To the last bit what `sumOf` makes of `doubleArea`.
[[gnu::target("avx2")]] double doubleAreaByFours(const MeshVertex* vertices, const MeshTriangle* triangles, int count)
{
    Double4 sums{};
    int i = 0;
    for (; count - i >= 4; i += 4) {
        Double4 squares[4], lengths;
        for (int k = 0; k < 4; ++k) squareNormal(vertices, triangles[i + k], squares[k]);
        lengthsOf(squares, lengths);
        sums += lengths;
    }
    double sum = sums[0] + sums[1] + sums[2] + sums[3];
    for (; i < count; ++i) sum += doubleArea(vertices, triangles[i]);
    return sum;
}

#endif

/// Twice the area of consecutive triangles as they stand.
double doubleAreaInSpace(const MeshVertex* vertices, const MeshTriangle* triangles, int count)
{
#if defined(__x86_64__)
    static const bool hasWideRegisters = __builtin_cpu_supports("avx2") != 0;
    if (hasWideRegisters) return doubleAreaByFours(vertices, triangles, count);
#endif
    return sumOf(triangles, count, [vertices](const MeshTriangle& triangle) { return doubleArea(vertices, triangle); });
}

/// The same under a matrix. Edges are transformed and not points: a mesh far from the origin loses no digits to the
/// translation.
double doubleAreaPlaced(const AffineMatrix& matrix, const MeshVertex* vertices, const MeshTriangle* triangles,
                        int count)
{
    return sumOf(triangles, count, [&matrix, vertices](const MeshTriangle& triangle) {
        const TriangleEdges edges(vertices, triangle);
        return cross(edges.first * matrix, edges.second * matrix).length();
    });
}

/// The same in the plane of texture coordinates.
double doubleAreaInPlane(const MeshUV* coordinates, const MeshTriangle* triangles, int count)
{
    return sumOf(triangles, count, [coordinates](const MeshTriangle& triangle) {
        const MeshUV &a = coordinates[triangle[0]], &b = coordinates[triangle[1]], &c = coordinates[triangle[2]];
        return double(std::fabs(cross(Vector2Flt(b.u - a.u, b.v - a.v), Vector2Flt(c.u - a.u, c.v - a.v))));
    });
}

} // namespace

float meshArea(const CompactMesh& mesh, MeshChannel channel)
{
    MeshPlacement placement;
    placement.mesh = &mesh;
    return meshArea(placement, channel);
}

float meshArea(const MeshPlacement& placement, MeshChannel channel)
{
    if (!placement.mesh) return 0;
    const MeshUV* coordinates = textureCoordinates(*placement.mesh, channel);
    if (channel != MeshChannelVertices && !coordinates) return 0;
    const AffineMatrix matrix(placement.matrix);
    const bool isIdentity = isLinearIdentity(matrix);
    const MeshVertex* vertices = placement.mesh->getVertices();
    const auto areaOf = [&](const MeshTriangle* triangles, int count) {
        if (coordinates) return 0.5 * doubleAreaInPlane(coordinates, triangles, count);
        if (isIdentity) return 0.5 * doubleAreaInSpace(vertices, triangles, count);
        return 0.5 * doubleAreaPlaced(matrix, vertices, triangles, count);
    };
    const MeshTriangle* triangles = placement.mesh->getTriangles();
    return static_cast<float>(znUtil::parallelReduce(
        znUtil::ThreadPool::get(), placement.mesh->getNumTriangles(), 0.0,
        [&](znUtil::Slice slice) { return areaOf(triangles + slice.begin, slice.size()); },
        [](double& sum, double part) { sum += part; }));
}

float meshArea(const zn::list<MeshPlacement>& placements, MeshChannel channel, zn::vector<float>& fractions)
{
    fractions.clear();
    if (channel > MeshChannelSTs || channel == 1) return 0;
    float total = 0;
    for (const MeshPlacement& placement : placements) {
        fractions.append(meshArea(placement, channel));
        total += fractions.back();
    }
    if (znLinear::epsilonTolFlt > std::fabs(total)) return 0;
    const float scale = 1.0f / total;
    for (float& fraction : fractions) fraction *= scale;
    return total;
}

void testDeterminants(const zn::list<MeshPlacement>& placements, zn::vector<bool>& mirrored)
{
    mirrored.clear();
    for (const MeshPlacement& placement : placements) mirrored.append(AffineMatrix(placement.matrix).det3x3() < 0);
}

} // namespace znGeom

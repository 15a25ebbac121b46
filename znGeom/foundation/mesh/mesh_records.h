/// The element records of a mesh: plain data, whose arrays are read as flat `float` and `int` arrays.
#pragma once

#include <cmath>
#include <type_traits>

#include "znGeom/foundation/linear/affine_matrix.h"
#include "znGeom/foundation/linear/point.h"

namespace znGeom {

struct MeshVertex
{
    float x, y, z;

    znLinear::Point asPoint() const { return {double(x), double(y), double(z)}; }
    znLinear::PointFlt asPointFlt() const { return {x, y, z}; }
    void set(float x_, float y_, float z_) { x = x_, y = y_, z = z_; }
    void set(const float* values) { set(values[0], values[1], values[2]); }
    void set(const double* values)
    {
        set(znLinear::narrow(values[0]), znLinear::narrow(values[1]), znLinear::narrow(values[2]));
    }
};

/// Whether all three coordinates are numbers and not infinite.
inline bool isFinite(const MeshVertex& vertex)
{
    return std::isfinite(vertex.x) && std::isfinite(vertex.y) && std::isfinite(vertex.z);
}

struct MeshNormal
{
    float x, y, z;

    znLinear::Vector asVector() const { return {double(x), double(y), double(z)}; }
    void set(float x_, float y_, float z_) { x = x_, y = y_, z = z_; }
    MeshNormal& operator=(const znLinear::Normal& n)
    {
        return set(znLinear::narrow(n.dx), znLinear::narrow(n.dy), znLinear::narrow(n.dz)), *this;
    }
};

struct MeshUV
{
    float u, v;

    void set(float u_, float v_) { u = u_, v = v_; }
    void set(const double& u_, const double& v_) { u = znLinear::narrow(u_), v = znLinear::narrow(v_); }
};

/// Three vertex indices, counter-clockwise seen from the front.
struct MeshTriangle
{
    int corners[3];

    constexpr int& operator[](int corner) { return corners[corner]; }
    constexpr const int& operator[](int corner) const { return corners[corner]; }
};

/// The corner of a triangle after a corner, and the one before it: 0, 1, 2, 0, ...
constexpr int cornerAfter(int corner) { return corner == 2 ? 0 : corner + 1; }
constexpr int cornerBefore(int corner) { return corner == 0 ? 2 : corner - 1; }

/// The first corner of a triangle that holds a vertex; -1 when none does.
constexpr int cornerOf(const MeshTriangle& triangle, int vertex)
{
    return triangle[0] == vertex ? 0 : triangle[1] == vertex ? 1 : triangle[2] == vertex ? 2 : -1;
}

constexpr bool hasVertex(const MeshTriangle& triangle, int vertex)
{
    return triangle[0] == vertex || triangle[1] == vertex || triangle[2] == vertex;
}

/// Whether the triangle runs from one vertex straight to another.
constexpr bool hasDirectedEdge(const MeshTriangle& triangle, int from, int to)
{
    return (triangle[0] == from && triangle[1] == to) || (triangle[1] == from && triangle[2] == to) ||
           (triangle[2] == from && triangle[0] == to);
}

/// Whether a corner repeats the vertex of another one.
constexpr bool repeatsVertex(const MeshTriangle& triangle)
{
    return triangle[0] == triangle[1] || triangle[1] == triangle[2] || triangle[2] == triangle[0];
}

/// Two vertex indices.
struct MeshLine
{
    int ends[2];

    int& operator[](int end) { return ends[end]; }
    const int& operator[](int end) const { return ends[end]; }
};

/// The colour of one vertex, 0 to 1.
struct MeshColour
{
    float red, green, blue, alpha;
};

/// Typed views of attributes of 1 to 4 components.
struct MeshFloat1
{
    float x;
};
struct MeshFloat2
{
    float x, y;
};
struct MeshFloat3
{
    float x, y, z;
};
struct MeshFloat4
{
    float x, y, z, w;
};

static_assert(sizeof(MeshVertex) == 12 && sizeof(MeshNormal) == 12 && sizeof(MeshUV) == 8 &&
              sizeof(MeshTriangle) == 12);
static_assert(sizeof(MeshLine) == 8 && sizeof(MeshColour) == 16 && sizeof(MeshFloat4) == 16);
static_assert(std::is_trivial_v<MeshVertex> && std::is_trivial_v<MeshUV> && std::is_trivial_v<MeshTriangle>);
static_assert(std::is_trivially_copyable_v<MeshNormal>);

/// What a surface measure is taken on. On value 1 no area exists.
enum MeshChannel : int { MeshChannelVertices = 0, MeshChannelUVs = 2, MeshChannelSTs = 3 };

class CompactMesh;

/// One instance of a mesh in an arrangement; the mesh is not owned and may be null.
struct MeshPlacement
{
    znLinear::AffineMatrixFlt matrix;
    const CompactMesh* mesh = nullptr;
};

} // namespace znGeom

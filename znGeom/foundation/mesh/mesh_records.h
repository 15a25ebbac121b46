/// The element records of a mesh: plain data, whose arrays are read as flat `float` and `int` arrays.
#pragma once

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
    void set(const double* values) { set(float(values[0]), float(values[1]), float(values[2])); }
};

struct MeshNormal
{
    float x, y, z;

    znLinear::Vector asVector() const { return {double(x), double(y), double(z)}; }
    void set(float x_, float y_, float z_) { x = x_, y = y_, z = z_; }
    MeshNormal& operator=(const znLinear::Normal& n) { return set(float(n.dx), float(n.dy), float(n.dz)), *this; }
};

struct MeshUV
{
    float u, v;

    void set(float u_, float v_) { u = u_, v = v_; }
    void set(const double& u_, const double& v_) { u = float(u_), v = float(v_); }
};

/// Three vertex indices, counter-clockwise seen from the front.
struct MeshTriangle
{
    int corners[3];

    int& operator[](int corner) { return corners[corner]; }
    const int& operator[](int corner) const { return corners[corner]; }
};

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

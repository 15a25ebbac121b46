#include "znGeom/analysis/edges.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "znGeom/analysis/normals.h"
#include "znGeom/foundation/mesh/bit_runs.h"
#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"
#include "znGeom/foundation/threads/parallel_reduce.h"

namespace znGeom {

using znLinear::Normal;
using znLinear::PointFlt;
using znLinear::Vector2Flt;
using znLinear::VectorFlt;
using znUtil::Slice;
using znUtil::ThreadPool;

namespace {

/// The largest of what `measure(slice)` gives for the slices of [0, count), and 0.
template <typename Measure>
auto largestOfSlices(int count, const Measure& measure)
{
    using Number = decltype(measure(Slice(0, 0, 1)));
    return znUtil::parallelReduce(ThreadPool::get(), count, Number(0), measure,
                                  [](Number& largest, Number found) { largest = std::max(largest, found); });
}

/// The root of the largest number that `length2` gives for a side of a triangle.
template <typename Length2>
double longestSide(const CompactMesh& mesh, const Length2& length2)
{
    const MeshTriangle* triangles = mesh.getTriangles();
    const float largest = largestOfSlices(mesh.getNumTriangles(), [&](Slice slice) {
        float best = 0;
        for (int i = slice.begin; i < slice.end; ++i)
            for (int side = 0; side < 3; ++side) {
                // A comparison that NaN never wins.
                const float candidate = length2(triangles[i], side);
                if (candidate > best) best = candidate;
            }
        return best;
    });
    return std::sqrt(double(largest));
}

/// A triangle turned so that one of its corners comes first.
MeshTriangle rotated(const MeshTriangle& triangle, int corner)
{
    return {{triangle[corner], triangle[cornerAfter(corner)], triangle[cornerBefore(corner)]}};
}

/// A triangle turned so that a vertex of it comes first.
MeshTriangle startingAt(int vertex, const MeshTriangle& triangle)
{
    return rotated(triangle, triangle[0] == vertex ? 0 : triangle[1] == vertex ? 1 : 2);
}

/// Whether a triangle at the first corner of another one has a further corner of it.
bool shareSide(const MeshTriangle& triangle, const MeshTriangle& other)
{
    const auto isOther = [&](int vertex) { return vertex != triangle[0] && hasVertex(other, vertex); };
    return isOther(triangle[1]) || isOther(triangle[2]);
}

/// Calls `visit(triangle)` for the triangles of both of two vertices that have a number above `previous`, ascending and
/// each once, by way of the vertex that has fewer.
template <typename Visit>
void forEachAtBoth(int a, int b, int previous, const MeshTriangle* triangles, const MeshAdjTris& adjTris,
                   const Visit& visit)
{
    if (adjTris.numTris(b) < adjTris.numTris(a)) std::swap(a, b);
    for (const int triangle : adjTris.around(a)) {
        if (triangle <= previous) continue; // a triangle that names a vertex twice is listed twice in a row
        previous = triangle;
        if (hasVertex(triangles[triangle], b)) visit(triangle);
    }
}

/// What the cosine of an angle between two unit normals must exceed for the angle to be certainly smaller than one
/// whose cosine is `cosine`, rounding included: most pairs need no more than this test.
double certainlySmaller(double cosine) { return cosine + 1e-12; }

/// The largest angle between the triangles of a slice and their neighbours of higher number.
class SharpestFold
{
public:
    SharpestFold(const CompactMesh& mesh, const MeshAdjTris& adjTris)
        : m_vertices(mesh.getVerticesRaw()), m_triangles(mesh.getTriangles()), m_adjTris(adjTris)
    {}

    double find(Slice slice)
    {
        for (int i = slice.begin; i < slice.end; ++i)
            for (int corner = 0; corner < 3; ++corner) lookAround(i, rotated(m_triangles[i], corner));
        return m_largest;
    }

private:
    /// Normals differ in their last bits by the corner that comes first; each side is looked across from both its ends.
    void lookAround(int index, const MeshTriangle& triangle)
    {
        constexpr int few = 32;
        const int at = triangle[0];
        Normal normal; // computed when it is needed
        const auto compareTo = [&](int neighbour) {
            if (!normal.isValid()) normal = meshTriNormal(m_vertices, triangle.corners);
            compare(normal, meshTriNormal(m_vertices, startingAt(at, m_triangles[neighbour]).corners));
        };
        if (m_adjTris.numTris(at) <= few) {
            for (const int neighbour : m_adjTris.around(at))
                if (neighbour > index && shareSide(triangle, m_triangles[neighbour])) compareTo(neighbour);
        } else {
            for (const int other : {triangle[1], triangle[2]})
                if (other != at) forEachAtBoth(at, other, index, m_triangles, m_adjTris, compareTo);
        }
    }

    void compare(const Normal& a, const Normal& b)
    {
        const double cosine = dot(a, b);
        if (cosine > certainlySmaller(m_cosine)) return;
        const double radians = angle(a, b);
        if (!(radians > m_largest)) return;
        m_largest = radians;
        m_cosine = cosine;
    }

    const float* m_vertices;
    const MeshTriangle* m_triangles;
    const MeshAdjTris& m_adjTris;
    double m_largest = 0, m_cosine = 1;
};

using Edges = zn::vector<MeshDihedralAnglesResult::Edge>;

/// Finds the sharp edges between the triangles of a slice and their neighbours of higher number.
class SharpEdges
{
public:
    /// \param limit  the smallest angle between normals that counts
    SharpEdges(const CompactMesh& mesh, const MeshAdjTris& adjTris, double limit)
        : m_vertices(mesh.getVerticesRaw()), m_triangles(mesh.getTriangles()), m_adjTris(adjTris), m_limit(limit),
          m_flatEnough(certainlySmaller(std::cos(std::clamp(limit, 0.0, std::numbers::pi))))
    {}

    Edges find(Slice slice) const
    {
        Edges found;
        for (int i = slice.begin; i < slice.end; ++i) {
            const Normal normal = meshTriNormal(m_vertices, m_triangles[i].corners);
            for (int corner = 0; corner < 3; ++corner)
                findOnSide(i, normal, {m_triangles[i][corner], m_triangles[i][cornerAfter(corner)]}, found);
        }
        return found;
    }

private:
    void findOnSide(int index, const Normal& normal, const MeshDihedralAnglesResult::Edge& side, Edges& found) const
    {
        forEachAtBoth(side.first, side.second, index, m_triangles, m_adjTris, [&](int neighbour) {
            const MeshTriangle other = startingAt(side.first, m_triangles[neighbour]);
            if (other[2] != side.second) return;
            if (!isSharp(normal, meshTriNormal(m_vertices, other.corners))) return;
            // A triangle that begins there more than once counts as often.
            for (const int vertex : other.corners)
                if (vertex == side.first) found.append(side);
        });
    }

    bool isSharp(const Normal& a, const Normal& b) const
    {
        return !(dot(a, b) > m_flatEnough) && angle(a, b) >= m_limit;
    }

    const float* m_vertices;
    const MeshTriangle* m_triangles;
    const MeshAdjTris& m_adjTris;
    double m_limit, m_flatEnough;
};

} // namespace

double meshLongestEdge(const CompactMesh& mesh)
{
    const MeshVertex* vertices = mesh.getVertices();
    return longestSide(mesh, [vertices](const MeshTriangle& triangle, int side) {
        const auto corner = [&](int i) { return vertices[triangle[i]].asPointFlt(); };
        if (side < 2) return (corner(side) - corner(side + 1)).length2();
        // The root of dz, where the other sides take its square: kept on purpose, not a slip to be mended. Search radii
        // come from this number, and a search must keep finding what it has always found.
        const VectorFlt d = corner(0) - corner(2);
        return static_cast<float>(double(d.dx * d.dx + d.dy * d.dy) + std::sqrt(double(d.dz)));
    });
}

double meshLongestEdge2D(const CompactMesh& mesh, const float* uvs)
{
    const MeshUV* coordinates = reinterpret_cast<const MeshUV*>(uvs);
    return longestSide(mesh, [coordinates](const MeshTriangle& triangle, int side) {
        const MeshUV &from = coordinates[triangle[side]], &to = coordinates[triangle[cornerAfter(side)]];
        return Vector2Flt(to.u - from.u, to.v - from.v).length2();
    });
}

double meshMaxDihedralAngle(const CompactMesh& mesh, const MeshAdjTris& adjTris)
{
    return largestOfSlices(mesh.getNumTriangles(),
                           [&](Slice slice) { return SharpestFold(mesh, adjTris).find(slice); });
}

void MeshDihedralAnglesResult::getAdjacentTriangles(const CompactMesh& mesh, const MeshAdjTris& adjTris,
                                                    zn::vector<int>& triangles) const
{
    const MeshTriangle* all = mesh.getTriangles();
    BitVector marked(mesh.getNumTriangles());
    for (const auto& [from, to] : edges)
        forEachAtBoth(from, to, -1, all, adjTris, [&marked](int triangle) { marked.setBit(triangle); });
    triangles.clear();
    triangles.reserve(marked.getNumSetBits());
    forEachSetBit(marked, [&triangles](int triangle) { triangles.append(triangle); });
}

void meshFindAnglesLessThan(const CompactMesh& mesh, const MeshAdjTris& adjTris, double degrees,
                            MeshDihedralAnglesResult& result)
{
    znOS::StopWatch watch;
    const SharpEdges sharp(mesh, adjTris, std::numbers::pi - degrees / 180.0 * std::numbers::pi);
    result.edges = znUtil::parallelReduce(
        ThreadPool::get(), mesh.getNumTriangles(), Edges(), [&](Slice slice) { return sharp.find(slice); },
        [](Edges& all, Edges& found) { all.empty() ? all.swap(found) : all.append(found); });
    debugChannel().print("   meshFindAnglesLessThan: %f s\n", watch.stop());
}

} // namespace znGeom

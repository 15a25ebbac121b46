#include "znGeom/analysis/curvature.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>
#include <vector>

#include "znGeom/foundation/linear/tolerance.h"
#include "znGeom/foundation/machine/clones.h"
#include "znGeom/foundation/mesh/mesh_transform.h"
#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"

namespace znGeom {

using namespace znLinear;
using znUtil::Slice;
using znUtil::ThreadPool;

namespace {

/// The surface that is measured: the mesh, perhaps with vertices and normals placed elsewhere.
struct Surface
{
    const CompactMesh& mesh;
    const MeshVertex* vertices;
    const MeshNormal* normals; ///< null when there are none
    const MeshAdjTris& adjTris;
    const MeshAdjVertices& adjVertices;

    /// Also true of vertices that have neither neighbours nor triangles.
    bool isInterior(int vertex) const { return adjVertices.numNeighbours(vertex) == adjTris.numTris(vertex); }
};

/// The cotangents of a triangle's angles, corner by corner.
struct Cotangents
{
    double at[3];
};

/// Triangles that are processed together, coordinate by coordinate.
struct TriangleBlock
{
    static constexpr int width = 16;
    double corners[9][width];
    double cotangents[3][width];
};

ZNGEOM_CLONES void computeCotangents(TriangleBlock& block)
{
    for (int i = 0; i < TriangleBlock::width; ++i) {
        double e[3][3], length2[3] = {};
        for (int side = 0; side < 3; ++side)
            for (int axis = 0; axis < 3; ++axis) {
                const double to = block.corners[3 * ((side + 1) % 3) + axis][i];
                e[side][axis] = to - block.corners[3 * side + axis][i];
            }
        for (int side = 0; side < 3; ++side)
            length2[side] = e[side][0] * e[side][0] + e[side][1] * e[side][1] + e[side][2] * e[side][2];
        for (int corner = 0; corner < 3; ++corner) {
            const int in = (corner + 2) % 3;
            const double d = e[in][0] * e[corner][0] + e[in][1] * e[corner][1] + e[in][2] * e[corner][2];
            block.cotangents[corner][i] = -d / std::sqrt(length2[in] * length2[corner] - d * d);
        }
    }
}

class ComputeCotangents : public znUtil::ThreadedAlg
{
public:
    ComputeCotangents(const Surface& surface, Cotangents* cotangents) : m_surface(surface), m_cotangents(cotangents) {}

    void execute(int threadIndex, int numThreads) override
    {
        const Slice slice(m_surface.mesh.getNumTriangles(), threadIndex, numThreads);
        TriangleBlock block{};
        for (int first = slice.begin; first < slice.end; first += TriangleBlock::width) {
            const int count = std::min(TriangleBlock::width, slice.end - first);
            gather(first, count, block);
            computeCotangents(block);
            for (int i = 0; i < count; ++i)
                m_cotangents[first + i] = {block.cotangents[0][i], block.cotangents[1][i], block.cotangents[2][i]};
        }
    }

private:
    void gather(int first, int count, TriangleBlock& block) const
    {
        const MeshTriangle* const triangles = m_surface.mesh.getTriangles() + first;
        for (int i = 0; i < count; ++i)
            for (int corner = 0; corner < 3; ++corner) {
                const MeshVertex& vertex = m_surface.vertices[triangles[i][corner]];
                block.corners[3 * corner][i] = double(vertex.x);
                block.corners[3 * corner + 1][i] = double(vertex.y);
                block.corners[3 * corner + 2][i] = double(vertex.z);
            }
    }

    const Surface& m_surface;
    Cotangents* m_cotangents;
};

/// One triangle of a fan, as seen from the vertex in its middle.
struct FanTriangle
{
    int after, before; ///< the corners next to the vertex
    double cotangent, cotangentAfter, cotangentBefore;
    Vector fromAfter, fromBefore; ///< from these corners to the vertex
};

/// The triangles around an interior vertex. Keeps its memory from vertex to vertex.
class Fan
{
public:
    void gather(const Surface& surface, const Cotangents* cotangents, int vertex)
    {
        const MeshTriangle* const triangles = surface.mesh.getTriangles();
        const Point middle = surface.vertices[vertex].asPoint();
        m_fan.resize(static_cast<size_t>(surface.adjTris.numTris(vertex)));
        FanTriangle* next = m_fan.data();
        for (const int number : surface.adjTris.around(vertex)) {
            const MeshTriangle& triangle = triangles[number];
            const Cotangents& at = cotangents[number];
            const int corner = cornerOf(triangle, vertex), after = cornerAfter(corner), before = cornerBefore(corner);
            *next++ = {triangle[after],
                       triangle[before],
                       at.at[corner],
                       at.at[after],
                       at.at[before],
                       middle - surface.vertices[triangle[after]].asPoint(),
                       middle - surface.vertices[triangle[before]].asPoint()};
        }
        order();
    }

    /// The sum of the angles at the vertex.
    double angleSum() const
    {
        double sum = 0;
        for (const FanTriangle& t : m_fan)
            sum +=
                std::acos(dot(t.fromAfter, t.fromBefore) / std::sqrt(t.fromAfter.length2() * t.fromBefore.length2()));
        return sum;
    }

    /// The sum of the vectors along the edges, each times the cotangents of the angles opposite.
    Vector weightedEdges() const
    {
        Vector sum;
        for (size_t i = 0; i < m_fan.size(); ++i) {
            const FanTriangle& u = m_fan[i + 1 < m_fan.size() ? i + 1 : 0];
            sum += m_fan[i].fromBefore * (m_fan[i].cotangentAfter + u.cotangentBefore);
        }
        return sum;
    }

    /// The part of the surface that is nearer to the vertex than to others, with halves and quarters of obtuse
    /// triangles in its place.
    double mixedArea() const
    {
        double area = 0;
        for (const FanTriangle& t : m_fan) {
            if (t.cotangent < 0 || t.cotangentAfter < 0 || t.cotangentBefore < 0)
                area += cross(t.fromAfter, t.fromBefore).length() * (t.cotangent < 0 ? 0.25 : 0.125);
            else
                area += (t.fromAfter.length2() * t.cotangentBefore + t.fromBefore.length2() * t.cotangentAfter) * 0.125;
        }
        return area;
    }

private:
    /// Brings after each triangle the one that begins where it ends. Where none does, the next one stays.
    void order()
    {
        for (size_t i = 0; i + 1 < m_fan.size(); ++i) {
            size_t next = i + 1;
            while (next < m_fan.size() && m_fan[next].after != m_fan[i].before) ++next;
            if (next < m_fan.size() && next != i + 1) std::swap(m_fan[i + 1], m_fan[next]);
        }
    }

    std::vector<FanTriangle> m_fan;
};

class InteriorCurvature : public znUtil::ThreadedAlg
{
public:
    InteriorCurvature(const Surface& surface, const Cotangents* cotangents, MeshCurvature type, float* output)
        : m_surface(surface), m_cotangents(cotangents), m_type(type), m_output(output)
    {}

    void execute(int threadIndex, int numThreads) override
    {
        const Slice slice(m_surface.mesh.getNumVertices(), threadIndex, numThreads);
        Fan fan;
        for (int vertex = slice.begin; vertex < slice.end; ++vertex)
            m_output[vertex] = isMeasured(vertex) ? static_cast<float>(measure(vertex, fan)) : 0.0f;
    }

private:
    bool isMeasured(int vertex) const
    {
        return m_surface.adjVertices.numNeighbours(vertex) >= 2 && m_surface.isInterior(vertex) &&
               m_type >= MeanCurvature && m_type <= MaxCurvature;
    }

    double measure(int vertex, Fan& fan) const
    {
        fan.gather(m_surface, m_cotangents, vertex);
        const double area = fan.mixedArea();
        const double mean = m_type != GaussianCurvature ? meanOf(vertex, fan, area) : 0;
        if (m_type == MeanCurvature) return mean;
        const double gaussian = (2 * std::numbers::pi - fan.angleSum()) / area;
        if (m_type == GaussianCurvature) return gaussian;
        return principalOf(mean, gaussian);
    }

    double meanOf(int vertex, const Fan& fan, double area) const
    {
        const Vector edges = fan.weightedEdges();
        double length = edges.length();
        // What is shorter has no direction that normals could agree with.
        if (!(epsilonTol > length) && m_surface.normals &&
            dot(edges / length, m_surface.normals[vertex].asVector()) < 0)
            length = -length;
        return length / (4 * area);
    }

    double principalOf(double mean, double gaussian) const
    {
        double discriminant = mean * mean - gaussian;
        if (!(discriminant > 0)) discriminant = gaussian - mean * mean;
        double larger = std::sqrt(discriminant) + mean;
        double smaller = mean + mean - larger;
        if (std::fabs(smaller) > std::fabs(larger)) std::swap(smaller, larger);
        return m_type == MaxCurvature ? larger : smaller;
    }

    const Surface& m_surface;
    const Cotangents* m_cotangents;
    MeshCurvature m_type;
    float* m_output;
};

/// One of two sweeps over the vertices that are not interior: the first gives those on borders the mean of their
/// interior neighbours, the second those with two neighbours or fewer the mean of neighbours that have more. Neither
/// reads what it writes.
class BoundaryCurvature : public znUtil::ThreadedAlg
{
public:
    BoundaryCurvature(const Surface& surface, bool isFirst, float* output)
        : m_surface(surface), m_isFirst(isFirst), m_output(output)
    {}

    void execute(int threadIndex, int numThreads) override
    {
        const Slice slice(m_surface.mesh.getNumVertices(), threadIndex, numThreads);
        for (int vertex = slice.begin; vertex < slice.end; ++vertex) {
            const int n = m_surface.adjVertices.numNeighbours(vertex);
            if ((m_isFirst ? n == 2 : n > 2) || m_surface.isInterior(vertex)) continue;
            m_output[vertex] = meanAround(vertex);
        }
    }

private:
    float meanAround(int vertex) const
    {
        float sum = 0;
        int count = 0;
        for (const int neighbour : m_surface.adjVertices.around(vertex)) {
            if (m_isFirst ? !m_surface.isInterior(neighbour) : m_surface.adjVertices.numNeighbours(neighbour) <= 2)
                continue;
            sum += m_output[neighbour];
            ++count;
        }
        return count > 0 ? sum / static_cast<float>(count) : 0.0f;
    }

    const Surface& m_surface;
    bool m_isFirst;
    float* m_output;
};

/// Copies of vertices and normals, placed by a matrix.
class PlacedVertices
{
public:
    PlacedVertices(const CompactMesh& mesh, const AffineMatrixFlt& matrix)
    {
        const int count = mesh.getNumVertices();
        m_vertices.assign(mesh.getVertices(), mesh.getVertices() + count);
        meshTransform(reinterpret_cast<float*>(m_vertices.data()), count, matrix);
        if (!mesh.getNormals()) return;
        m_normals.assign(mesh.getNormals(), mesh.getNormals() + count);
        meshTransformNormals(reinterpret_cast<float*>(m_normals.data()), count, matrix);
    }

    const MeshVertex* vertices() const { return m_vertices.data(); }
    const MeshNormal* normals() const { return m_normals.empty() ? nullptr : m_normals.data(); }

private:
    std::vector<MeshVertex> m_vertices;
    std::vector<MeshNormal> m_normals;
};

void measureCurvature(const Surface& surface, MeshCurvature type, float* output, ThreadPool& pool)
{
    znOS::StopWatch watch;
    const size_t numTriangles = static_cast<size_t>(surface.mesh.getNumTriangles());
    const auto cotangents = std::make_unique_for_overwrite<Cotangents[]>(numTriangles);
    ComputeCotangents computeCotangents(surface, cotangents.get());
    pool.run(computeCotangents);
    debugChannel().print(" cotangents computed in: %f s\n", watch.clear());
    watch.start();
    InteriorCurvature interior(surface, cotangents.get(), type, output);
    pool.run(interior);
    debugChannel().print("  interior curvature computed: %f s\n", watch.clear());
    watch.start();
    for (const bool isFirst : {true, false}) {
        BoundaryCurvature boundary(surface, isFirst, output);
        pool.run(boundary);
    }
    debugChannel().print("  boundary curvature computed: %f s\n", watch.clear());
}

} // namespace

void meshCurvature(const CompactMesh& mesh, const MeshAdjTris& adjTris, const MeshAdjVertices& adjVertices,
                   const AffineMatrixFlt& matrix, MeshCurvature type, float* output, ThreadPool& pool)
{
    debugChannel().print("meshCurvature:  vertices %d  triangles %d\n", mesh.getNumVertices(), mesh.getNumTriangles());
    if (equivalent(matrix, AffineMatrixFlt::Identity, epsilonTolFlt)) {
        measureCurvature({mesh, mesh.getVertices(), mesh.getNormals(), adjTris, adjVertices}, type, output, pool);
        return;
    }
    const PlacedVertices placed(mesh, matrix);
    measureCurvature({mesh, placed.vertices(), placed.normals(), adjTris, adjVertices}, type, output, pool);
}

} // namespace znGeom

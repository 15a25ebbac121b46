#include "znGeom/analysis/curvature.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

#include "znGeom/analysis/internal/corner_terms.h"
#include "znGeom/foundation/linear/tolerance.h"
#include "znGeom/foundation/machine/clones.h"
#include "znGeom/foundation/mesh/mesh_transform.h"
#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"
#include "znGeom/foundation/threads/parallel_for.h"

namespace znGeom {

using namespace znLinear;
using internal::Terms;
using internal::TriangleBlock;
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

/// Runs of triangles, and the vertices that each of them reaches: from them it is seen which runs may touch a window of
/// vertices.
class TriangleRuns
{
public:
    TriangleRuns(const CompactMesh& mesh, ThreadPool& pool)
        : m_numTriangles(mesh.getNumTriangles()), m_reach(static_cast<size_t>((m_numTriangles + length - 1) / length))
    {
        const int* const corners = mesh.getTrianglesRaw();
        znUtil::parallelFor(pool, count(), [&](Slice slice, int) {
            for (int run = slice.begin; run < slice.end; ++run)
                m_reach[static_cast<size_t>(run)] = reachOf(corners + 3 * begin(run), 3 * (end(run) - begin(run)));
        });
    }

    int count() const { return static_cast<int>(m_reach.size()); }
    int begin(int run) const { return run * length; }
    int end(int run) const { return std::min(begin(run) + length, m_numTriangles); }
    bool mayTouch(int run, Slice window) const
    {
        const Reach& reach = m_reach[static_cast<size_t>(run)];
        return reach.lowest < window.end && reach.highest >= window.begin;
    }
    /// Whether runs reach into one or two windows, as they do where the order of triangles follows that of vertices.
    bool areShort(int windowSize) const
    {
        std::int64_t numWindows = 0;
        for (const Reach& reach : m_reach) numWindows += reach.highest / windowSize - reach.lowest / windowSize + 1;
        return numWindows <= 2 * static_cast<std::int64_t>(m_reach.size());
    }

private:
    static constexpr int length = 256;

    struct Reach
    {
        int lowest, highest;
    };

    ZNGEOM_CLONES static Reach reachOf(const int* corners, int count)
    {
        int lowest = corners[0], highest = corners[0];
        for (int i = 0; i < count; ++i) {
            lowest = std::min(lowest, corners[i]);
            highest = std::max(highest, corners[i]);
        }
        return {lowest, highest};
    }

    int m_numTriangles;
    std::vector<Reach> m_reach;
};

constexpr bool contains(Slice window, int vertex) { return vertex >= window.begin && vertex < window.end; }

/// Computes the quantity at interior vertices; others get 0 and are noted, in a list for each thread.
///
/// Each thread has a slice of the vertices, and goes through it window by window, so that the sums stay in the cache.
/// For each window it looks for the triangles that touch it; what they add is summed up in their order.
template <class Terms>
class InteriorCurvature : public znUtil::ThreadedAlg
{
public:
    static constexpr int windowSize = 1 << 14;

    InteriorCurvature(const Surface& surface, const TriangleRuns& runs, MeshCurvature type, float* output,
                      std::vector<int>* borders)
        : m_surface(surface), m_triangles(surface.mesh.getTriangles()), m_runs(runs),
          m_windowSize(runs.areShort(windowSize) ? windowSize : surface.mesh.getNumVertices()), m_type(type),
          m_output(output), m_borders(borders)
    {}

    void execute(int threadIndex, int numThreads) override
    {
        const Slice slice(m_surface.mesh.getNumVertices(), threadIndex, numThreads);
        const int numWindows = (slice.size() + m_windowSize - 1) / std::max(m_windowSize, 1);
        std::vector<double> sums;
        for (int i = 0; i < numWindows; ++i) {
            Slice window(slice.size(), i, numWindows);
            window.begin += slice.begin, window.end += slice.begin;
            sums.assign(static_cast<size_t>(window.size()) * Terms::count, 0.0);
            sumUp(window, sums.data());
            measure(window, sums.data(), m_borders[threadIndex]);
        }
    }

private:
    void sumUp(Slice window, double* sums) const
    {
        TriangleBlock block;
        for (int run = 0; run < m_runs.count(); ++run)
            if (m_runs.mayTouch(run, window))
                for (int t = m_runs.begin(run); t < m_runs.end(run); ++t) {
                    const MeshTriangle& triangle = m_triangles[t];
                    if (!contains(window, triangle[0]) && !contains(window, triangle[1]) &&
                        !contains(window, triangle[2]))
                        continue;
                    block.append(triangle, m_surface.vertices);
                    if (block.isFull()) addBlock(window, block, sums);
                }
        addBlock(window, block, sums);
    }

    static void addBlock(Slice window, TriangleBlock& block, double* sums)
    {
        internal::compute(Terms(), block);
        for (int i = 0; i < block.count; ++i)
            for (int corner = 0; corner < 3; ++corner) {
                const int vertex = (*block.triangles[i])[corner];
                if (!contains(window, vertex)) continue;
                double* const ofVertex = sums + static_cast<std::ptrdiff_t>(vertex - window.begin) * Terms::count;
                for (int term = 0; term < Terms::count; ++term)
                    ofVertex[term] += block.terms[corner][Terms::first + term][i];
            }
        block.count = 0;
    }

    void measure(Slice window, const double* sums, std::vector<int>& borders) const
    {
        for (int vertex = window.begin; vertex < window.end; ++vertex, sums += Terms::count) {
            const bool isInterior = m_surface.isInterior(vertex);
            if (!isInterior) borders.push_back(vertex);
            m_output[vertex] =
                isInterior && isMeasured(vertex) ? static_cast<float>(measure(vertex, sums - Terms::first)) : 0.0f;
        }
    }

    bool isMeasured(int vertex) const
    {
        return m_surface.adjVertices.numNeighbours(vertex) >= 2 && m_type >= MeanCurvature && m_type <= MaxCurvature;
    }

    double measure(int vertex, const double* terms) const
    {
        if constexpr (!Terms::hasEdges)
            return gaussianOf(terms);
        else if constexpr (!Terms::hasAngles)
            return meanOf(vertex, terms);
        else
            return principalOf(meanOf(vertex, terms), gaussianOf(terms));
    }

    static double gaussianOf(const double* terms)
    {
        return (2 * std::numbers::pi - terms[internal::Angle]) / terms[internal::Area];
    }

    double meanOf(int vertex, const double* terms) const
    {
        const Vector edges(terms[internal::EdgeX], terms[internal::EdgeY], terms[internal::EdgeZ]);
        double length = edges.length();
        // What is shorter has no direction that normals could agree with.
        if (!(epsilonTol > length) && m_surface.normals && dot(edges, m_surface.normals[vertex].asVector()) < 0)
            length = -length;
        return length / (4 * terms[internal::Area]);
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
    const MeshTriangle* m_triangles;
    const TriangleRuns& m_runs;
    int m_windowSize;
    MeshCurvature m_type;
    float* m_output;
    std::vector<int>* m_borders;
};

/// One of two sweeps over the vertices that are not interior: the first gives those on borders the mean of their
/// interior neighbours, the second those with two neighbours or fewer the mean of neighbours that have more. Neither
/// reads what it writes.
class BoundaryCurvature : public znUtil::ThreadedAlg
{
public:
    BoundaryCurvature(const Surface& surface, const std::vector<int>* borders, bool isFirst, float* output)
        : m_surface(surface), m_borders(borders), m_isFirst(isFirst), m_output(output)
    {}

    void execute(int threadIndex, int) override
    {
        for (const int vertex : m_borders[threadIndex]) {
            const int n = m_surface.adjVertices.numNeighbours(vertex);
            if (m_isFirst ? n == 2 : n > 2) continue;
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
    const std::vector<int>* m_borders; ///< a list for each thread
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

using BorderLists = std::vector<std::vector<int>>;

template <class Terms>
void measureInterior(const Surface& surface, MeshCurvature type, float* output, BorderLists& borders, ThreadPool& pool)
{
    znOS::StopWatch watch;
    const TriangleRuns runs(surface.mesh, pool);
    debugChannel().print(" cotangents computed in: %f s\n", watch.clear());
    watch.start();
    InteriorCurvature<Terms> interior(surface, runs, type, output, borders.data());
    pool.run(interior);
    debugChannel().print("  interior curvature computed: %f s\n", watch.clear());
}

void measureBoundary(const Surface& surface, const BorderLists& borders, float* output, ThreadPool& pool)
{
    znOS::StopWatch watch;
    for (const bool isFirst : {true, false}) {
        BoundaryCurvature boundary(surface, borders.data(), isFirst, output);
        pool.run(boundary);
    }
    debugChannel().print("  boundary curvature computed: %f s\n", watch.clear());
}

void measureCurvature(const Surface& surface, MeshCurvature type, float* output, ThreadPool& pool)
{
    BorderLists borders(static_cast<size_t>(pool.getNumThreads()));
    if (type == MeanCurvature)
        measureInterior<Terms<internal::Area, internal::EdgeZ>>(surface, type, output, borders, pool);
    else if (type == GaussianCurvature)
        measureInterior<Terms<internal::Angle, internal::Area>>(surface, type, output, borders, pool);
    else
        measureInterior<Terms<internal::Angle, internal::EdgeZ>>(surface, type, output, borders, pool);
    measureBoundary(surface, borders, output, pool);
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

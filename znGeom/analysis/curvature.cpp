#include "znGeom/analysis/curvature.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>
#include <vector>

#include "znGeom/foundation/linear/tolerance.h"
#include "znGeom/foundation/machine/clones.h"
#include "znGeom/foundation/machine/huge_pages.h"
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

/// What a triangle adds to the sums at each of its corners.
enum Term : int {
    Angle, ///< at the corner
    Area,  ///< the part of the triangle that belongs to the corner
    EdgeX,
    EdgeY,
    EdgeZ, ///< the sum of the two edges to the corner, each times the cotangent of the angle opposite
    numTerms
};

/// The terms that a quantity is computed from.
template <Term firstTerm, Term lastTerm>
struct Terms
{
    static constexpr int first = firstTerm, count = lastTerm + 1 - firstTerm;
    static constexpr bool hasAngles = first == Angle, hasEdges = lastTerm == EdgeZ;
};

/// Triangles that are processed together, number by number.
struct TriangleBlock
{
    static constexpr int width = 32;
    float corners[3][3][width];
    double terms[3][numTerms][width];
};

/// What all terms of a triangle are made of.
struct TriangleMeasures
{
    double edges[3][3]; ///< from each corner to the next
    double dots[3];     ///< of the two edges that leave a corner
    double doubleArea;
};

inline TriangleMeasures measuresOf(const TriangleBlock& block, int i)
{
    TriangleMeasures m;
    for (int corner = 0; corner < 3; ++corner)
        for (int axis = 0; axis < 3; ++axis)
            m.edges[corner][axis] =
                double(block.corners[(corner + 1) % 3][axis][i]) - double(block.corners[corner][axis][i]);
    for (int corner = 0; corner < 3; ++corner) {
        const double *const out = m.edges[corner], *const in = m.edges[(corner + 2) % 3];
        m.dots[corner] = -(in[0] * out[0] + in[1] * out[1] + in[2] * out[2]);
    }
    const double *const u = m.edges[0], *const v = m.edges[1];
    const double x = u[1] * v[2] - u[2] * v[1], y = u[2] * v[0] - u[0] * v[2], z = u[0] * v[1] - u[1] * v[0];
    m.doubleArea = std::sqrt(x * x + y * y + z * z);
    return m;
}

/// The part of a triangle that is nearest to each corner; where it is obtuse, half of it belongs to the corner there
/// and a quarter to each of the others.
inline void setAreas(const TriangleMeasures& m, TriangleBlock& block, int i)
{
    const double d0 = m.dots[0], d1 = m.dots[1], d2 = m.dots[2];
    const double scale = 0.125 / m.doubleArea;
    const bool isObtuse = (d0 < 0) | (d1 < 0) | (d2 < 0);
    // The square of an edge is the sum of the dots at its ends; it is weighed with the cotangent of the angle opposite.
    const double part01 = (d0 + d1) * d2, part12 = (d1 + d2) * d0, part20 = (d2 + d0) * d1;
    block.terms[0][Area][i] = isObtuse ? m.doubleArea * (d0 < 0 ? 0.25 : 0.125) : (part01 + part20) * scale;
    block.terms[1][Area][i] = isObtuse ? m.doubleArea * (d1 < 0 ? 0.25 : 0.125) : (part12 + part01) * scale;
    block.terms[2][Area][i] = isObtuse ? m.doubleArea * (d2 < 0 ? 0.25 : 0.125) : (part20 + part12) * scale;
}

/// The angle of (x, y) from the x axis where y is not negative, to about the last bit. Unlike `std::atan2` it has no
/// branches, and gives the same bits everywhere.
inline double angleOf(double x, double y)
{
    const double width = std::fabs(x);
    const double most = y > width ? y : width, least = y > width ? width : y;
    // Above half of 45 degrees, measured from there.
    const bool isSteep = least > 0.41421356237309503 * most;
    const double tangent = (isSteep ? least - most : least) / (isSteep ? least + most : most);
    const double s = tangent * tangent;
    // The best polynomial of its degree for the arctangent where its argument is at most that of half of 45 degrees.
    double sum = -0.019176885636589053;
    sum = sum * s + 0.039231657085083686;
    sum = sum * s - 0.050854496960392584;
    sum = sum * s + 0.05858148904795124;
    sum = sum * s - 0.0666451144646022;
    sum = sum * s + 0.07692183190760651;
    sum = sum * s - 0.09090904578121085;
    sum = sum * s + 0.11111111015256292;
    sum = sum * s - 0.14285714284666542;
    sum = sum * s + 0.1999999999999552;
    sum = sum * s - 0.3333333333333333;
    const double angle = (isSteep ? std::numbers::pi / 4 : 0) + (tangent + tangent * (s * sum));
    const double upright = y > width ? std::numbers::pi / 2 - angle : angle;
    return x < 0 ? std::numbers::pi - upright : upright;
}

inline void setAngles(const TriangleMeasures& m, TriangleBlock& block, int i)
{
    const double first = angleOf(m.dots[0], m.doubleArea), second = angleOf(m.dots[1], m.doubleArea);
    block.terms[0][Angle][i] = first;
    block.terms[1][Angle][i] = second;
    block.terms[2][Angle][i] = std::numbers::pi - (first + second);
}

inline void setEdges(const TriangleMeasures& m, TriangleBlock& block, int i)
{
    const double scale = 1 / m.doubleArea;
    for (int axis = 0; axis < 3; ++axis) {
        const double from0 = m.edges[0][axis] * (m.dots[2] * scale), from1 = m.edges[1][axis] * (m.dots[0] * scale),
                     from2 = m.edges[2][axis] * (m.dots[1] * scale);
        block.terms[0][EdgeX + axis][i] = from2 - from0;
        block.terms[1][EdgeX + axis][i] = from0 - from1;
        block.terms[2][EdgeX + axis][i] = from1 - from2;
    }
}

ZNGEOM_CLONES void compute(Terms<Angle, Area>, TriangleBlock& block)
{
    for (int i = 0; i < TriangleBlock::width; ++i) {
        const TriangleMeasures m = measuresOf(block, i);
        setAreas(m, block, i);
        setAngles(m, block, i);
    }
}

ZNGEOM_CLONES void compute(Terms<Area, EdgeZ>, TriangleBlock& block)
{
    for (int i = 0; i < TriangleBlock::width; ++i) {
        const TriangleMeasures m = measuresOf(block, i);
        setAreas(m, block, i);
        setEdges(m, block, i);
    }
}

ZNGEOM_CLONES void compute(Terms<Angle, EdgeZ>, TriangleBlock& block)
{
    for (int i = 0; i < TriangleBlock::width; ++i) {
        const TriangleMeasures m = measuresOf(block, i);
        setAreas(m, block, i);
        setAngles(m, block, i);
        setEdges(m, block, i);
    }
}

/// Sums up at each vertex what its triangles add, in their order. Each thread has a slice of the vertices and looks for
/// triangles that touch it.
template <class Terms>
class SumAtVertices : public znUtil::ThreadedAlg
{
public:
    SumAtVertices(const Surface& surface, double* sums) : m_surface(surface), m_sums(sums) {}

    void execute(int threadIndex, int numThreads) override
    {
        const Slice slice(m_surface.mesh.getNumVertices(), threadIndex, numThreads);
        std::fill(m_sums + size_t(slice.begin) * Terms::count, m_sums + size_t(slice.end) * Terms::count, 0.0);
        const MeshTriangle* const triangles = m_surface.mesh.getTriangles();
        const int numTriangles = m_surface.mesh.getNumTriangles();
        TriangleBlock block{};
        const MeshTriangle* gathered[TriangleBlock::width];
        int count = 0;
        for (int t = 0; t < numTriangles; ++t) {
            if (!touches(slice, triangles[t])) continue;
            gather(triangles[t], block, count);
            gathered[count++] = &triangles[t];
            if (count < TriangleBlock::width) continue;
            addBlock(slice, gathered, count, block);
            count = 0;
        }
        addBlock(slice, gathered, count, block);
    }

private:
    static bool contains(const Slice& slice, int vertex) { return vertex >= slice.begin && vertex < slice.end; }

    static bool touches(const Slice& slice, const MeshTriangle& triangle)
    {
        return contains(slice, triangle[0]) || contains(slice, triangle[1]) || contains(slice, triangle[2]);
    }

    void gather(const MeshTriangle& triangle, TriangleBlock& block, int at) const
    {
        for (int corner = 0; corner < 3; ++corner) {
            const MeshVertex& vertex = m_surface.vertices[triangle[corner]];
            block.corners[corner][0][at] = vertex.x;
            block.corners[corner][1][at] = vertex.y;
            block.corners[corner][2][at] = vertex.z;
        }
    }

    void addBlock(const Slice& slice, const MeshTriangle* const* triangles, int count, TriangleBlock& block)
    {
        compute(Terms(), block);
        for (int i = 0; i < count; ++i)
            for (int corner = 0; corner < 3; ++corner) {
                const int vertex = (*triangles[i])[corner];
                if (!contains(slice, vertex)) continue;
                double* const sums = m_sums + size_t(vertex) * Terms::count;
                for (int term = 0; term < Terms::count; ++term)
                    sums[term] += block.terms[corner][Terms::first + term][i];
            }
    }

    const Surface& m_surface;
    double* m_sums;
};

/// Computes the quantity at interior vertices from their sums; others get 0 and are noted, in a list for each thread.
template <class Terms>
class InteriorCurvature : public znUtil::ThreadedAlg
{
public:
    InteriorCurvature(const Surface& surface, const double* sums, MeshCurvature type, float* output,
                      std::vector<int>* borders)
        : m_surface(surface), m_sums(sums), m_type(type), m_output(output), m_borders(borders)
    {}

    void execute(int threadIndex, int numThreads) override
    {
        const Slice slice(m_surface.mesh.getNumVertices(), threadIndex, numThreads);
        for (int vertex = slice.begin; vertex < slice.end; ++vertex) {
            const bool isInterior = m_surface.isInterior(vertex);
            if (!isInterior) m_borders[threadIndex].push_back(vertex);
            m_output[vertex] = isInterior && isMeasured(vertex) ? static_cast<float>(measure(vertex)) : 0.0f;
        }
    }

private:
    bool isMeasured(int vertex) const
    {
        return m_surface.adjVertices.numNeighbours(vertex) >= 2 && m_type >= MeanCurvature && m_type <= MaxCurvature;
    }

    double measure(int vertex) const
    {
        const double* const terms = m_sums + size_t(vertex) * Terms::count - Terms::first;
        if constexpr (!Terms::hasEdges)
            return gaussianOf(terms);
        else if constexpr (!Terms::hasAngles)
            return meanOf(vertex, terms);
        else
            return principalOf(meanOf(vertex, terms), gaussianOf(terms));
    }

    static double gaussianOf(const double* terms) { return (2 * std::numbers::pi - terms[Angle]) / terms[Area]; }

    double meanOf(int vertex, const double* terms) const
    {
        const Vector edges(terms[EdgeX], terms[EdgeY], terms[EdgeZ]);
        double length = edges.length();
        // What is shorter has no direction that normals could agree with.
        if (!(epsilonTol > length) && m_surface.normals && dot(edges, m_surface.normals[vertex].asVector()) < 0)
            length = -length;
        return length / (4 * terms[Area]);
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
    const double* m_sums;
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
    const size_t numSums = static_cast<size_t>(surface.mesh.getNumVertices()) * Terms::count;
    const auto sums = std::make_unique_for_overwrite<double[]>(numSums);
    znUtil::adviseHugePages(sums.get(), numSums * sizeof(double));
    SumAtVertices<Terms> sumAtVertices(surface, sums.get());
    pool.run(sumAtVertices);
    debugChannel().print(" cotangents computed in: %f s\n", watch.clear());
    watch.start();
    InteriorCurvature<Terms> interior(surface, sums.get(), type, output, borders.data());
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
        measureInterior<Terms<Area, EdgeZ>>(surface, type, output, borders, pool);
    else if (type == GaussianCurvature)
        measureInterior<Terms<Angle, Area>>(surface, type, output, borders, pool);
    else
        measureInterior<Terms<Angle, EdgeZ>>(surface, type, output, borders, pool);
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

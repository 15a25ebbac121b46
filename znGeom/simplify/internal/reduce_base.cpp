#include "znGeom/simplify/internal/reduce_base.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

#include "znGeom/editing/select.h"
#include "znGeom/foundation/mesh/bit_runs.h"
#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"
#include "znGeom/foundation/threads/parallel_for.h"
#include "znGeom/foundation/threads/parallel_sort.h"
#include "znGeom/planar/shapes/plane_fit.h"
#include "znGeom/simplify/internal/vertex_removal.h"

namespace znGeom::internal {

using znLinear::Plane;
using znLinear::Point;
using znUtil::Progress;
using znUtil::Slice;
using znUtil::ThreadPool;

namespace {

constexpr double largestDouble = std::numeric_limits<double>::max();

/// How far the points of a vertex and its neighbours are from a plane through them.
double flatnessOf(const MeshVertex* vertices, int vertex, std::span<const int> neighbours, std::vector<Point>& points)
{
    if (neighbours.size() < 3) return largestDouble;
    points.clear();
    for (const int neighbour : neighbours) points.push_back(vertices[neighbour].asPoint());
    points.push_back(vertices[vertex].asPoint());
    Plane plane;
    fit(static_cast<int>(points.size()), points.data(), plane);
    double farthest = 0;
    for (const Point& point : points) {
        const double away = distance(point, plane);
        if (!(away <= largestDouble)) return largestDouble;
        farthest = std::max(farthest, away);
    }
    return farthest;
}

/// How many of the candidates that are left go into the next batch: all of them, unless that makes it too large. The
/// last two share what is left, so that none is small.
int nextBatchSize(int numLeft)
{
    constexpr int usual = 65536, largest = 98304;
    return numLeft <= largest ? numLeft : usual;
}

} // namespace

MeshReduceBase::MeshReduceBase(CompactMesh& mesh) : m_mesh(mesh), m_initialCount(mesh.getNumVertices()) {}
MeshReduceBase::~MeshReduceBase() = default;

bool MeshReduceBase::afterRemoval() { return true; }
void MeshReduceBase::beginIteration(int, int, Progress&) {}
void MeshReduceBase::endIteration() {}
void MeshReduceBase::beginBatch(int, int) {}
void MeshReduceBase::endBatch() {}
bool MeshReduceBase::acceptRemoval(int, const std::vector<TrianglePoints>&) { return true; }
bool MeshReduceBase::isCandidate(int) { return true; }
void MeshReduceBase::beforeMerge() {}
void MeshReduceBase::afterMerge(const Array<int>&) {}

void MeshReduceBase::run(Progress& progress)
{
    /// An iteration that removes a smaller part of the vertices is the last.
    constexpr double leastPart = 0.01;
    znOS::StopWatch watch;
    double part = 1;
    while (!(part < leastPart) && wantsMore(m_mesh.getNumVertices())) {
        computeFlatness();
        std::deque<int> queue = chooseCandidates(m_mesh.getNumVertices());
        if (queue.empty()) break;
        const int numRemoved = runIteration(queue, progress);
        part = static_cast<double>(numRemoved) / m_mesh.getNumVertices();
        if (progress.cancelled()) break;
    }
    debugChannel().print("MeshReduce: reduced from %d vertices to %d vertices: %f s\n", m_initialCount,
                         m_mesh.getNumVertices(), watch.stop());
}

void MeshReduceBase::computeFlatness()
{
    znOS::StopWatch watch;
    const zn::Reference<MeshAdjVertices> adjVertices = m_cache.getAdjVertices(m_mesh);
    m_flatness.resize(m_mesh.getNumVertices());
    double* const result = m_flatness.write();
    znUtil::parallelFor(ThreadPool::get(), m_mesh.getNumVertices(),
                        [&, vertices = std::as_const(m_mesh).getVertices()](Slice slice, int) {
                            std::vector<Point> points;
                            for (int v = slice.begin; v < slice.end; ++v)
                                result[v] = flatnessOf(vertices, v, adjVertices->around(v), points);
                        });
    debugChannel().print("MeshReduce: flatness computed in %f s\n", watch.stop());
}

/// Equally flat ones by their numbers.
zn::vector<int> MeshReduceBase::orderByFlatness() const
{
    using Flat = std::pair<double, int>;
    zn::vector<Flat> flats(m_mesh.getNumVertices());
    for (int v = 0; v < flats.size(); ++v) flats[v] = {m_flatness[v], v};
    znUtil::parallelSort(flats.begin(), flats.end(), std::less<Flat>());
    zn::vector<int> order(flats.size());
    for (int i = 0; i < order.size(); ++i) order[i] = flats[i].second;
    return order;
}

/// \param count  the vertices of the mesh: with each candidate there is one less
std::deque<int> MeshReduceBase::chooseCandidates(int count)
{
    const zn::Reference<MeshAdjTris> adjTris = m_cache.getAdjTris(m_mesh);
    const zn::Reference<MeshAdjVertices> adjVertices = m_cache.getAdjVertices(m_mesh);
    BitVector blocked(m_mesh.getNumVertices());
    std::deque<int> queue;
    for (const int v : orderByFlatness()) {
        const int numNeighbours = adjVertices->numNeighbours(v);
        if (blocked[v] || numNeighbours < 3 || adjTris->numTris(v) != numNeighbours || !isCandidate(v)) continue;
        queue.push_back(v);
        for (const int neighbour : adjVertices->around(v)) blocked.setBit(neighbour);
        if (!wantsMore(--count)) break;
    }
    return queue;
}

/// Takes the candidates from the queue, batch by batch. \return how many were removed
int MeshReduceBase::runIteration(std::deque<int>& queue, Progress& progress)
{
    const int total = static_cast<int>(queue.size());
    int numRemoved = 0;
    beginIteration(m_numIterations++, total, progress);
    while (!queue.empty()) {
        const int size = nextBatchSize(static_cast<int>(queue.size()));
        BitVector batch(m_mesh.getNumVertices());
        for (int i = 0; i < size; ++i, queue.pop_front()) batch.setBit(queue.front());
        Array<int> remap;
        beginBatch(size, total);
        const int removedNow = runBatch(batch, remap);
        endBatch();
        numRemoved += removedNow;
        if (progress.cancelled()) break;
        if (removedNow > 0)
            for (int& vertex : queue) vertex = remap[vertex];
    }
    endIteration();
    return numRemoved;
}

/// Removes what it can of a batch and merges the result. An attempt in which more than a third failed is done over
/// without these: a failure leaves more in the scope than it needs.
/// \return how many were removed; 0 leaves the mesh as it was
int MeshReduceBase::runBatch(BitVector& batch, Array<int>& remap)
{
    for (;;) {
        // The change that a merge reports makes the cache drop what it holds.
        const zn::Reference<MeshAdjTris> adjTris = m_cache.getAdjTris(m_mesh);
        const int size = batch.getNumSetBits();
        selectAround(batch, *adjTris);
        MeshModifyRep scope(m_mesh, *adjTris, &m_memory);
        const int numRemoved = removeAll(scope, batch);
        const bool isWorthIt = numRemoved * 3 / 2 >= size || batch.getNumSetBits() == size;
        if (numRemoved > 0 && isWorthIt) {
            beforeMerge();
            scope.merge(remap, nullptr);
            afterMerge(remap);
        }
        m_mesh.clearSelection();
        if (numRemoved == 0 || isWorthIt) return numRemoved;
    }
}

/// Selects two rings of triangles, so that all that a removal touches is inside.
void MeshReduceBase::selectAround(const BitVector& batch, const MeshAdjTris& adjTris)
{
    m_mesh.getSelectedVertices() = batch;
    MeshSelect select(m_mesh, adjTris);
    for (int ring = 0; ring < 2; ++ring) {
        select.selectAllTrianglesFromVertices();
        select.selectVerticesFromTriangles();
    }
}

/// Takes those that can't be removed from the batch. \return how many were removed
int MeshReduceBase::removeAll(MeshModifyRep& scope, BitVector& batch)
{
    VertexRemoval removal(scope, scope.extract());
    int numRemoved = 0;
    for (const int v : listMembers(batch, batch.getSize())) {
        const TopoMeshVertex vertex = scope.getTopoMeshVertex(v);
        const Point position = vertex.point();
        bool removed = removal.remove(vertex);
        if (removed && !acceptRemoval(v, removal.touchedTriangles())) {
            removal.undo();
            removed = false;
        }
        if (!removed) {
            batch.clearBit(v);
            continue;
        }
        ++numRemoved;
        m_removed.push_back(position);
        if (!afterRemoval()) break;
    }
    return numRemoved;
}

} // namespace znGeom::internal

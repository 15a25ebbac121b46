#include "znGeom/editing/partition.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <numeric>

namespace znGeom {

namespace {

/// A set of indices that finds its lowest member: bits, and above them levels of bits that tell which words are not
/// zero.
class LowestFirst
{
public:
    /// \param size  at least 1
    explicit LowestFirst(int size)
    {
        do {
            size = (size - 1) / 64 + 1;
            m_levels.append(zn::vector<std::uint64_t>(size, 0));
        } while (size > 1);
    }

    void insert(int index)
    {
        for (auto& level : m_levels) {
            level[index >> 6] |= std::uint64_t{1} << (index & 63);
            index >>= 6;
        }
    }

    void erase(int index)
    {
        for (auto& level : m_levels) {
            std::uint64_t& word = level[index >> 6];
            word &= ~(std::uint64_t{1} << (index & 63));
            if (word != 0) return;
            index >>= 6;
        }
    }

    bool empty() const { return m_levels.back()[0] == 0; }

    int lowest() const
    {
        int index = 0;
        for (int level = m_levels.size() - 1; level >= 0; --level)
            index = 64 * index + std::countr_zero(m_levels[level][index]);
        return index;
    }

private:
    zn::vector<zn::vector<std::uint64_t>> m_levels;
};

/// The triangles that share edges, found through the triangles around vertices.
class EdgeNeighbours
{
public:
    EdgeNeighbours(const CompactMesh& mesh, const MeshAdjTris& adjTris)
        : m_triangles(mesh.getTriangles()), m_adjTris(adjTris)
    {}

    /// Calls `visit(neighbour)` for each other triangle on each edge of a triangle. Two triangles visit each other
    /// equally often.
    template <typename Visit>
    void forEach(int triangle, const Visit& visit) const
    {
        const MeshTriangle& corners = m_triangles[triangle];
        for (int slot = 0; slot < 3; ++slot) {
            const int a = corners[slot], b = corners[cornerAfter(slot)], third = corners[cornerBefore(slot)];
            if (a == b || a == third) continue; // a triangle that names a vertex twice has one edge, named twice
            if (m_adjTris.numTris(a) < m_adjTris.numTris(b))
                visitAround(a, b, triangle, visit);
            else
                visitAround(b, a, triangle, visit);
        }
    }

private:
    template <typename Visit>
    void visitAround(int vertex, int other, int triangle, const Visit& visit) const
    {
        int previous = -1; // a triangle that names the vertex twice is listed twice in a row
        for (const int neighbour : m_adjTris.around(vertex)) {
            if (neighbour != triangle && neighbour != previous && hasVertex(m_triangles[neighbour], other))
                visit(neighbour);
            previous = neighbour;
        }
    }

    const MeshTriangle* m_triangles;
    const MeshAdjTris& m_adjTris;
};

/// Gives triangles to parts, one part after the other.
class PartGrower
{
public:
    PartGrower(const CompactMesh& mesh, const MeshAdjTris& adjTris)
        : m_neighbours(mesh, adjTris), m_partOf(mesh.getNumTriangles(), -1), m_numLeft(mesh.getNumTriangles(), 0),
          m_waiting(numClasses, LowestFirst(mesh.getNumTriangles()))
    {
        m_taken.reserve(m_partOf.size());
        for (int t = 0; t < m_partOf.size(); ++t) {
            m_neighbours.forEach(t, [this, t](int) { ++m_numLeft[t]; });
            m_waiting[classOf(t)].insert(t);
        }
    }

    /// Takes so many more triangles.
    void grow(int part, int size)
    {
        int next = m_taken.size();
        const int end = next + size;
        // What was taken last is passed as well, so that all counts are true when the next part begins.
        while (next < end) {
            if (next == m_taken.size()) take(findSeed(), part);
            m_neighbours.forEach(m_taken[next++], [this, part, end](int neighbour) {
                if (m_partOf[neighbour] >= 0) return;
                loseNeighbour(neighbour);
                if (m_taken.size() < end) take(neighbour, part);
            });
        }
    }

    const zn::vector<int>& partOf() const { return m_partOf; }

private:
    /// Triangles wait by the number of neighbours that are left to them, three or more together.
    static constexpr int numClasses = 4;
    int classOf(int triangle) const { return std::min(m_numLeft[triangle], numClasses - 1); }

    void take(int triangle, int part)
    {
        m_waiting[classOf(triangle)].erase(triangle);
        m_partOf[triangle] = part;
        m_taken.append(triangle);
    }

    void loseNeighbour(int triangle)
    {
        const int before = classOf(triangle);
        --m_numLeft[triangle];
        if (classOf(triangle) == before) return;
        m_waiting[before].erase(triangle);
        m_waiting[classOf(triangle)].insert(triangle);
    }

    int findSeed() const
    {
        int fewest = 0;
        while (m_waiting[fewest].empty()) ++fewest;
        return m_waiting[fewest].lowest();
    }

    EdgeNeighbours m_neighbours;
    zn::vector<int> m_partOf;  ///< -1 while waiting
    zn::vector<int> m_numLeft; ///< edge neighbours of a waiting triangle that wait too, and taken ones not yet passed
    zn::vector<LowestFirst> m_waiting;
    zn::vector<int> m_taken;
};

zn::vector<int> assignParts(const CompactMesh& mesh, const MeshAdjTris& adjTris, int numParts)
{
    PartGrower grower(mesh, adjTris);
    int numLeft = mesh.getNumTriangles();
    for (int part = 0; part < numParts; ++part) {
        const int partsLeft = numParts - part;
        const int size = numLeft / partsLeft + (numLeft % partsLeft != 0);
        grower.grow(part, size);
        numLeft -= size;
    }
    return grower.partOf();
}

using IndexLists = zn::vector<zn::vector<int>>;

IndexLists listTriangles(const zn::vector<int>& partOf, int numParts)
{
    IndexLists triangles(numParts);
    for (int t = 0; t < partOf.size(); ++t) triangles[partOf[t]].append(t);
    return triangles;
}

IndexLists listVertices(const CompactMesh& mesh, const MeshAdjTris& adjTris, const zn::vector<int>& partOf,
                        int numParts)
{
    IndexLists vertices(numParts);
    for (int v = 0; v < mesh.getNumVertices(); ++v)
        for (const int triangle : adjTris.around(v)) {
            zn::vector<int>& list = vertices[partOf[triangle]];
            if (list.empty() || list.back() != v) list.append(v);
        }
    return vertices;
}

zn::Reference<MeshSubset> makeSubset(const zn::vector<int>& vertices, const zn::vector<int>& triangles)
{
    return new MeshSubset(vertices.size(), vertices.data(), triangles.size(), triangles.data());
}

} // namespace

class MeshPartitionImpl : public zn::ImplBase
{
public:
    MeshPartitionImpl(const CompactMesh& mesh, const MeshAdjTris& adjTris, int parts)
        : m_mesh(mesh), m_adjTris(adjTris), m_parts(parts)
    {}

    void compute(zn::list<zn::Reference<MeshSubset>>& subsets) const
    {
        subsets.clear();
        if (m_mesh.getNumTriangles() == 0) {
            if (m_mesh.getNumPolys() > 0) subsets.append(makeSubset(allVertices(), {}));
            return;
        }
        const int numParts = std::clamp(m_parts, 1, m_mesh.getNumTriangles());
        const zn::vector<int> partOf = assignParts(m_mesh, m_adjTris, numParts);
        const IndexLists vertices = listVertices(m_mesh, m_adjTris, partOf, numParts);
        const IndexLists triangles = listTriangles(partOf, numParts);
        for (int part = 0; part < numParts; ++part) subsets.append(makeSubset(vertices[part], triangles[part]));
    }

private:
    zn::vector<int> allVertices() const
    {
        zn::vector<int> all(m_mesh.getNumVertices());
        std::iota(all.begin(), all.end(), 0);
        return all;
    }

    const CompactMesh& m_mesh;
    const MeshAdjTris& m_adjTris;
    int m_parts;
};

MeshPartition::MeshPartition(const CompactMesh& mesh, const MeshAdjTris& adjTris, int parts)
    : m_impl(new MeshPartitionImpl(mesh, adjTris, parts))
{}

void MeshPartition::compute(zn::list<zn::Reference<MeshSubset>>& subsets) { m_impl->compute(subsets); }

void meshTriSubsetMembership(const CompactMesh& mesh, const zn::list<zn::Reference<MeshSubset>>& subsets,
                             Remap& membership)
{
    membership.resize(0, 0); // or entries from before would stay
    membership.resize(mesh.getNumTriangles(), subsets.size());
    int* subsetOf = membership.data();
    int number = 0;
    for (const zn::Reference<MeshSubset>& subset : subsets) {
        for (int i = 0; i < subset->numTriangles; ++i) subsetOf[subset->triangles[i]] = number;
        ++number;
    }
}

void meshVertSubsetMembership(const CompactMesh& mesh, const zn::list<zn::Reference<MeshSubset>>& subsets,
                              ArrayOfSets& membership)
{
    zn::vector<int> lastSubset(mesh.getNumVertices(), -1), pairs;
    int number = 0;
    for (const zn::Reference<MeshSubset>& subset : subsets) {
        for (int i = 0; i < subset->numVertices; ++i) {
            const int vertex = subset->vertices[i];
            if (lastSubset[vertex] == number) continue;
            lastSubset[vertex] = number;
            pairs.append(vertex);
            pairs.append(number);
        }
        ++number;
    }
    membership.assignFromPairs(mesh.getNumVertices(), pairs.size() / 2, pairs.data());
}

} // namespace znGeom

#include "znGeom/topology/internal/triangle_builder.h"

#include <algorithm>
#include <array>
#include <new>
#include <utility>

#include "znGeom/foundation/containers/checked_size.h"
#include "znGeom/foundation/machine/prefetch.h"
#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"
#include "znGeom/topology/internal/flat_table.h"
#include "znGeom/topology/internal/fresh_elements.h"
#include "znGeom/topology/internal/pair_by_ends.h"

namespace znGeom::internal {

namespace {

/// The half-edges of triangle t are 3 * t, 3 * t + 1 and 3 * t + 2.
int nextOf(int edge) { return edge % 3 == 2 ? edge - 2 : edge + 1; }

/// The connectivity of triangles, by the numbers that the elements will have; -1 for none.
class FlatTopology
{
public:
    /// What a vertex knows; as in its record.
    struct Vertex
    {
        int edge = -1;
        int firstOut = -1;
        int numOutgoing = 0;
        bool fanIsClosed = false;
    };

    FlatTopology(int numVertices, const MeshTriangle* triangles, int numTriangles)
        : m_numEdges(3 * numTriangles), m_origins(reinterpret_cast<const int*>(triangles)), m_vertices(numVertices),
          m_twins(m_numEdges), m_outNexts(m_numEdges)
    {
        std::fill_n(m_twins.begin(), m_numEdges, -1);
    }

    const zn::vector<Vertex>& vertices() const { return m_vertices; }
    int origin(int edge) const { return m_origins[edge]; }
    int end(int edge) const { return m_origins[nextOf(edge)]; }
    int twin(int edge) const { return m_twins[edge]; }
    int outNext(int edge) const { return m_outNexts[edge]; }

    /// Pairs what `TopoMesh::allocTriangle` pairs.
    void addTriangles()
    {
        for (int first = 0; first < m_numEdges; first += 3) {
            prefetch(first);
            pairWithOpen(first, first + 1);
            pairWithOpen(first + 1, first + 2);
            pairWithOpen(first + 2, first);
            for (int e = first; e < first + 3; ++e) attach(e);
        }
    }

    /// Pairs what `meshTwin` pairs.
    void completePairs()
    {
        const auto visitOpen = [this](const auto& take) {
            for (int e = 0; e < m_numEdges; ++e) {
                if (twin(e) >= 0) continue;
                take(std::min(origin(e), end(e)), std::max(origin(e), end(e)), e);
            }
        };
        pairByEnds<int>(m_vertices.size(), visitOpen, [this](int first, int second) { setTwins(first, second); });
    }

private:
    /// Starts loading what triangles further on will ask for: in a mesh in no particular order these loads take most
    /// of the time.
    void prefetch(int edge) const
    {
        constexpr int toVertex = 48, toEdge = 24;
        for (int e = edge + toVertex; e < std::min(edge + toVertex + 3, m_numEdges); ++e)
            znUtil::prefetch(&m_vertices[origin(e)]);
        for (int e = edge + toEdge; e < std::min(edge + toEdge + 3, m_numEdges); ++e) {
            const int out = m_vertices[origin(e)].edge;
            if (out < 0) continue;
            znUtil::prefetch(&m_twins[out]);
            znUtil::prefetch(&m_origins[out]);
        }
    }

    int nextAround(int edge) const
    {
        if (twin(edge) < 0) return -1;
        const int next = nextOf(twin(edge));
        return origin(next) == origin(edge) ? next : -1;
    }

    int fanEnd(int edge) const
    {
        int last = edge;
        for (int step = nextAround(edge); step >= 0 && step != edge; step = nextAround(step)) last = step;
        return last;
    }

    int openEnd(Vertex& vertex) const
    {
        if (vertex.edge < 0 || vertex.fanIsClosed) return -1;
        if (twin(vertex.edge) < 0) return vertex.edge;
        vertex.edge = fanEnd(vertex.edge);
        if (twin(vertex.edge) < 0) return vertex.edge;
        vertex.fanIsClosed = true;
        return -1;
    }

    void pairWithOpen(int edge, int next)
    {
        if (twin(edge) >= 0) return;
        const int back = openEnd(m_vertices[origin(next)]);
        if (back >= 0 && back != edge && end(back) == origin(edge)) setTwins(back, edge);
    }

    void setTwins(int a, int b)
    {
        m_twins[a] = b;
        m_twins[b] = a;
    }

    void attach(int edge)
    {
        Vertex& vertex = m_vertices[origin(edge)];
        m_outNexts[edge] = vertex.firstOut;
        vertex.firstOut = edge;
        if (vertex.edge < 0) vertex.edge = edge;
        ++vertex.numOutgoing;
    }

    int m_numEdges;
    const int* m_origins; ///< by half-edge
    zn::vector<Vertex> m_vertices;
    Table<int> m_twins, m_outNexts;
};

/// Writes the records.
class TriangleBuilder
{
public:
    TriangleBuilder(TopoMesh& mesh, int numVertices, int numTriangles)
        : m_fresh(mesh, numVertices, 3 * numTriangles, numTriangles)
    {}

    void writeVertices(const zn::vector<FlatTopology::Vertex>& vertices, const MeshVertex* positions,
                       const zn::vector<int>& members) const
    {
        for (int v = 0; v < m_fresh.numVertices(); ++v) {
            const FlatTopology::Vertex& from = vertices[v];
            TopoMeshVertexRecord& record = m_fresh.makeVertex(v);
            record.point = positions[members[v]].asPoint();
            record.edge = m_fresh.edge(from.edge);
            record.firstOut = from.firstOut;
            record.numOutgoing = from.numOutgoing;
            if (from.fanIsClosed) record.closedAt = m_fresh.numOpenings();
            record.linkedBack = true;
        }
    }

    /// From the last triangle to the first: of those that leave a vertex, the newest begin the list.
    void writeTriangles(const FlatTopology& topology) const
    {
        constexpr int ahead = 16;
        zn::vector<int> newer(m_fresh.numVertices(), -1); // by vertex, the half-edge that was written last
        Sides sides = sidesOf(m_fresh.numFaces() - 1), after;
        for (int t = m_fresh.numFaces() - 1; t >= 0; --t) {
            if (t >= ahead)
                for (int side = 0; side < 3; ++side) znUtil::prefetch(&newer[topology.origin(3 * (t - ahead) + side)]);
            const Sides before = sidesOf(t - 1);
            const TopoMeshFace face = m_fresh.makeFace(t, sides[0]);
            const TopoMeshEdge row[] = {before[2], sides[0], sides[1], sides[2], after[0]};
            for (int side = 0; side < 3; ++side) {
                const int e = 3 * t + side;
                auto* const record = new (sides[side].record()) TopoMeshEdgeRecord;
                record->origin = m_fresh.vertex(topology.origin(e));
                record->next = sides[cornerAfter(side)];
                record->prev = sides[cornerAfter(cornerAfter(side))];
                record->twin = m_fresh.edge(topology.twin(e));
                record->face = face;
                record->listPrev = row[side];
                record->listNext = row[side + 2];
                record->outNext = topology.outNext(e);
            }
            for (int side = 2; side >= 0; --side)
                sides[side]->outPrev = std::exchange(newer[topology.origin(3 * t + side)], 3 * t + side);
            after = sides;
            sides = before;
        }
    }

private:
    using Sides = std::array<TopoMeshEdge, 3>;

    /// Null before the first triangle.
    Sides sidesOf(int t) const
    {
        if (t < 0) return {};
        return {m_fresh.edge(3 * t), m_fresh.edge(3 * t + 1), m_fresh.edge(3 * t + 2)};
    }

    FreshElements m_fresh;
};

} // namespace

void buildTriangles(TopoMesh& mesh, const MeshVertex* positions, const zn::vector<int>& members,
                    const MeshTriangle* triangles, int numTriangles)
{
    zn::checkedSize(3 * std::int64_t{numTriangles});
    FlatTopology topology(members.size(), triangles, numTriangles);
    topology.addTriangles();
    znOS::StopWatch watch;
    topology.completePairs();
    debugChannel().print("meshTwin: %d vertices: %f s\n", members.size(), watch.stop());
    const TriangleBuilder builder(mesh, members.size(), numTriangles);
    builder.writeVertices(topology.vertices(), positions, members);
    builder.writeTriangles(topology);
}

} // namespace znGeom::internal

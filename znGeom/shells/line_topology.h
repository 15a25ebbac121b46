/// `znGeom::MeshLineTopology`: which stretches of closed polylines run side by side.
///
///     MeshLineTopology::TopologyAlg topology(lines);
///     if (topology.compute(tolerance))
///         for (MeshLineTopology::EdgeIterator it(topology); it.valid(); it.next())
///             if (const auto edge = *it; edge.isLinear()) sew(edge, edge.getTwin());
#pragma once

#include <compare>
#include <memory>

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/linear/point.h"
#include "znGeom/foundation/mesh/bit_vector.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/threads/thread_pool.h"

namespace znGeom {

/// The polylines, divided into stretches: the edges. An edge that runs beside another within the tolerance has it for
/// its twin. Points are the samples at which edges end, one for each place of a polyline; a vertex is a set of points
/// that the pairs bring together. The names are handles, good until the algorithm that made them computes again or is
/// destroyed; those of one computation are ordered, edges along the polylines, points by their samples.
class ZNGEOM_API MeshLineTopology
{
    struct Records;

    /// What the handles share: a record of one computation, or none.
    class ZNGEOM_API Handle
    {
    public:
        Handle() = default;
        explicit operator bool() const { return m_records != nullptr; }
        int index() const { return m_index; }

    protected:
        Handle(const Records* records, int index) : m_records(records), m_index(index) {}

        const Records* m_records = nullptr;
        int m_index = -1;
    };

public:
    class Edge;
    class Vertex;

    /// A sample of a polyline.
    class ZNGEOM_API Point : public Handle
    {
    public:
        using Handle::Handle;
        /// Its number among the points of all line strips, counted from strip to strip.
        int getSample() const;
        Vertex getVertex() const;
        friend bool operator==(const Point& a, const Point& b) { return a.m_index == b.m_index; }
        friend auto operator<=>(const Point& a, const Point& b) { return a.m_index <=> b.m_index; }

    private:
        friend class Edge;
        Point(const Records* records, int index) : Handle(records, index) {}
    };

    class ZNGEOM_API Vertex : public Handle
    {
    public:
        using Handle::Handle;
        /// The first edge that ends or begins here.
        Edge getFirstEdge() const;
        /// The mean of its points.
        znLinear::Point getPosition() const;
        /// How many ends of edges are here.
        int getDegree() const;
        friend bool operator==(const Vertex& a, const Vertex& b) { return a.m_index == b.m_index; }
        friend auto operator<=>(const Vertex& a, const Vertex& b) { return a.m_index <=> b.m_index; }

    private:
        friend class Point;
        Vertex(const Records* records, int index) : Handle(records, index) {}
    };

    class ZNGEOM_API Edge : public Handle
    {
    public:
        using Handle::Handle;
        /// The line strip it is a stretch of.
        int getBoundary() const;
        Vertex getFirstVertex() const { return getFirstPoint().getVertex(); }
        Vertex getSecondVertex() const { return getSecondPoint().getVertex(); }
        /// The stretch that runs beside this one; none where nothing does.
        Edge getTwin() const;
        /// The next one along the strip, which comes back to its first.
        Edge getNextOnBoundary() const;
        Edge getPrevOnBoundary() const;
        /// Whether this is a whole strip beside a whole strip.
        bool isCircular() const;
        /// Whether it has a twin and at least one of the two is not a whole strip.
        bool isLinear() const;
        /// Whether it runs the same way as its twin. Boundaries of surfaces that continue each other run opposite ways.
        bool isTwinReversed() const;
        /// Where it begins and ends, in the direction of the strip; the same point for a whole strip.
        Point getFirstPoint() const;
        Point getSecondPoint() const;
        /// In the units of the mesh.
        double getLength() const;
        friend bool operator==(const Edge& a, const Edge& b) { return a.m_index == b.m_index; }
        friend auto operator<=>(const Edge& a, const Edge& b) { return a.m_index <=> b.m_index; }

    private:
        friend class Vertex;
        friend class MeshLineTopology;
        Edge(const Records* records, int index) : Handle(records, index) {}
    };

    /// Finds the edges of a mesh's line strips, all of which are taken for closed: the last point of each is followed
    /// by its first.
    class ZNGEOM_API TopologyAlg
    {
    public:
        /// \param lines  not owned; must outlive this. Points are compared where they are when it computes
        explicit TopologyAlg(const CompactMesh& lines);
        TopologyAlg(const TopologyAlg&) = delete;
        TopologyAlg& operator=(const TopologyAlg&) = delete;
        ~TopologyAlg();

        /// Finds edges and twins.
        ///
        /// \param tolerance  a distance in world units: stretches run beside each other where they are nearer than
        ///                   this. Strips should have a point at least every fifth of it
        /// \return whether any edge has a twin; false without edges for a tolerance that is not finite or not above 0
        ///
        /// Twins run alike or opposite within 60 degrees. Two stretches of one strip must be four tolerances apart
        /// along it, but for the tip of a slit, up to which both of its sides reach. Longer stretches are paired before
        /// shorter ones, and what coincides before what is near; each side of a pair has three points and, if they
        /// don't coincide, the length of the tolerance at least. Strips that are shorter than that stay single edges.
        ///
        /// Practically linear in the points and in what lies within the tolerance of them; on the given pool, with the
        /// same result on every one.
        bool compute(double tolerance, znUtil::ThreadPool& pool = znUtil::ThreadPool::get());

        /// The number of line strips.
        int getNumBoundaries() const;
        Edge getFirstEdgeOnBoundary(int boundary) const;
        int getNumEdges() const;
        int getNumVertices() const;

        /// For each strip whether it runs against the others: turning over those that are set makes twins run opposite
        /// ways, as far as one can. Strips are compared along their twins; a pair that contradicts longer ones has no
        /// say. Of all that are connected so the lowest one stays.
        BitVector getOrientation() const;
        /// The same where strips can only be turned over together with others.
        /// \param groups  for each strip the number of its group, from 0
        BitVector getOrientation(const zn::vector<int>& groups) const;
        /// Whether anything runs beside a strip within the tolerance, if only at one of its points.
        bool hasNeighbour(int boundary) const;
        /// Whether any twins run the same way.
        bool hasReversedTwins() const;

    private:
        friend class MeshLineTopology;
        const CompactMesh& m_lines;
        std::unique_ptr<Records> m_records;
    };

    /// Walks over all edges, strip by strip.
    class EdgeIterator
    {
    public:
        explicit EdgeIterator(const TopologyAlg& topology) : m_topology(&topology) {}
        bool valid() const { return m_index < m_topology->getNumEdges(); }
        void next() { ++m_index; }
        Edge operator*() const { return edgeOf(*m_topology, m_index); }

    private:
        const TopologyAlg* m_topology;
        int m_index = 0;
    };

private:
    static Edge edgeOf(const TopologyAlg& topology, int index);
};

} // namespace znGeom

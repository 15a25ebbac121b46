#include "znGeom/planar/polylines/decimate.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include "znGeom/foundation/linear/line.h"
#include "znGeom/foundation/machine/prefetch.h"
#include "znGeom/planar/polylines/internal/capsule_tree.h"
#include "znGeom/planar/polylines/internal/cost_queue.h"

namespace znGeom {

namespace {

using internal::Capsule;
using internal::CostQueue;
using znLinear::Line;
using znLinear::Point;
using znLinear::Vector;

constexpr double tooMuch = std::numeric_limits<double>::infinity();

/// What costs are compared with.
struct CostLimits
{
    double nothing = 0; ///< up to here a cost is rounding
    double tolerance;   ///< from here on it does not matter how high it is
    double slack;       ///< of capsules and of distances of their ends

    CostLimits(const Polyline& line, double tolerance_) : tolerance(tolerance_)
    {
        const znLinear::Range3d box = line.getBoundingBox();
        const double extent = box.size().length();
        const double away = std::max(box.min().asVector().length(), box.max().asVector().length());
        const double rounding = 1e-13 * extent + 1e-15 * away;
        slack = 1e-14 * extent;
        if (rounding < tolerance) nothing = rounding;
    }
};

/// The greatest distance of vertices from a line, as far as it matters.
class FarthestFrom
{
public:
    /// \param origin  of the coordinates of capsules
    FarthestFrom(const Point& from, const Point& to, const Point& origin, const CostLimits& limits)
        : m_from(from), m_direction(Line(from, to).direction), m_base(from - origin), m_limits(limits),
          m_greatest2(limits.nothing * limits.nothing * (1 - 1e-14)),
          m_tooMuch2(limits.tolerance * limits.tolerance * (1 + 1e-14))
    {}

    /// \return false when the distance is too much, or not a number
    bool include(const Polyline::vertex* vertices, int first, int end)
    {
        for (int i = first; i < end; ++i) {
            const double distance2 = distance2From(vertices[i].point - m_from);
            if (distance2 <= m_greatest2) continue;
            m_greatest2 = distance2 <= m_tooMuch2 ? distance2 : tooMuch;
            m_vertex = i;
            if (m_greatest2 == tooMuch) return false;
        }
        return true;
    }

    /// Whether nothing in a capsule is farther away than what there was.
    bool covers(const Capsule& capsule) const
    {
        const double axis2 = std::max(distance2From(capsule.from - m_base), distance2From(capsule.to - m_base));
        const double bound = (std::sqrt(axis2) + capsule.radius) * (1 + 1e-14) + m_limits.slack;
        return bound * bound <= m_greatest2;
    }

    double cost() const
    {
        const double distance = std::sqrt(m_greatest2);
        return distance <= m_limits.nothing ? 0 : distance < m_limits.tolerance ? distance : tooMuch;
    }

    /// The farthest one, -1 if none is away by more than rounding.
    int vertex() const { return m_vertex; }

private:
    double distance2From(const Vector& offset) const
    {
        return (offset - m_direction * dot(offset, m_direction)).length2();
    }

    Point m_from;
    Vector m_direction, m_base;
    const CostLimits& m_limits;
    double m_greatest2, m_tooMuch2;
    int m_vertex = -1;
};

class Decimation
{
public:
    Decimation(const Polyline& line, double tolerance)
        : m_vertices(&line.getVertex(0)), m_limits(line, tolerance),
          m_tree(internal::capsuleTree(m_vertices, line.getNumVertices())), m_records(line.getNumVertices()),
          m_queue(m_limits.nothing, tolerance)
    {
        const int last = m_records.size() - 1;
        for (int i = 0; i <= last; ++i) m_records[i] = {tooMuch, i - 1, i + 1, -1};
        for (int i = 1; i < last; ++i) price(i, -1);
    }

    void run()
    {
        while (const CostQueue::Entry* front = m_queue.front()) {
            const auto [cost, index] = *front;
            m_queue.popFront();
            znUtil::prefetch(&m_records[m_queue.indexAhead()]);
            znUtil::prefetch(&m_vertices[m_queue.indexAhead()]);
            if (m_records[index].cost == cost) remove(index);
        }
    }

    zn::vector<Polyline::vertex> kept() const
    {
        zn::vector<Polyline::vertex> vertices;
        for (int i = 0; i < m_records.size(); i = m_records[i].after) vertices.append(m_vertices[i]);
        return vertices;
    }

private:
    struct Record
    {
        double cost;       ///< of its removal; -1 when it is done, and `tooMuch` when it never will be
        int before, after; ///< the neighbours that are still there
        int farthest;      ///< the vertex that makes the cost, or -1
    };

    void remove(int index)
    {
        Record& record = m_records[index];
        record.cost = removed;
        m_records[record.before].after = record.after;
        m_records[record.after].before = record.before;
        price(record.before, record.farthest);
        price(record.after, record.farthest);
    }

    /// \param hint  a vertex that may be far away, or -1
    void price(int index, int hint)
    {
        Record& record = m_records[index];
        if (record.before < 0 || record.after == m_records.size()) return;
        FarthestFrom farthest(m_vertices[record.before].point, m_vertices[record.after].point, m_vertices[0].point,
                              m_limits);
        measure(record.before + 1, record.after, {record.farthest, hint}, farthest);
        record.farthest = farthest.vertex();
        const double cost = farthest.cost();
        if (cost == record.cost) return; // its entry stands
        record.cost = cost;
        if (cost != tooMuch) m_queue.add(cost, index);
    }

    void measure(int first, int end, std::initializer_list<int> hints, FarthestFrom& farthest) const
    {
        constexpr int size = internal::verticesPerCapsule;
        const int firstBlock = (first + size - 1) / size, endBlock = end / size;
        if (endBlock <= firstBlock) {
            farthest.include(m_vertices, first, end);
            return;
        }
        for (const int hint : hints)
            if (hint >= first && hint < end && !farthest.include(m_vertices, hint, hint + 1)) return;
        if (!farthest.include(m_vertices, first, firstBlock * size)) return;
        if (!farthest.include(m_vertices, endBlock * size, end)) return;
        m_tree.walk(
            firstBlock, endBlock, [&](const Capsule& capsule) { return farthest.covers(capsule); },
            [&](int block) { return farthest.include(m_vertices, block * size, (block + 1) * size); });
    }

    static constexpr double removed = -1;

    const Polyline::vertex* m_vertices;
    CostLimits m_limits;
    internal::StretchTree<Capsule> m_tree;
    zn::vector<Record> m_records;
    CostQueue m_queue;
};

} // namespace

void decimate(Polyline& line, double tolerance)
{
    if (line.getNumVertices() < 3 || !(tolerance > 0)) return;
    Decimation decimation(line, tolerance);
    decimation.run();
    const zn::vector<Polyline::vertex> kept = decimation.kept();
    line.initialize(kept.size(), kept.data());
}

} // namespace znGeom

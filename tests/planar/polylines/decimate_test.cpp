#include "znGeom/planar/polylines/decimate.h"

#include <cmath>
#include <functional>
#include <limits>
#include <set>

#include <gtest/gtest.h>

#include "tests/support/random.h"
#include "znGeom/foundation/linear/line.h"

using znGeom::Polyline;
using znLinear::Point;
using znLinear::Vector;
using Vertices = zn::vector<Polyline::vertex>;

namespace {

double away(const Point& p, const Point& from, const Point& to)
{
    const Vector along = znLinear::Line(from, to).direction, offset = p - from;
    return (offset - along * dot(offset, along)).length();
}

/// Every cost measured anew over all vertices, every time the least one.
class PlainDecimation
{
public:
    PlainDecimation(const Vertices& vertices, double tolerance) : m_vertices(vertices)
    {
        const znLinear::Range3d box = Polyline(vertices.size(), vertices.data()).getBoundingBox();
        const double rounding = 1e-13 * box.size().length() +
                                1e-15 * std::max(box.min().asVector().length(), box.max().asVector().length());
        m_nothing = rounding < tolerance ? rounding : 0;
        for (int i = 0; i < vertices.size(); ++i) m_kept.append(i);
        std::set<std::pair<double, int>> order;
        zn::vector<double> costs(vertices.size());
        for (int i = 1; i + 1 < m_kept.size(); ++i) order.insert({costs[i] = costAt(i), i});
        while (!order.empty() && order.begin()->first < tolerance) {
            const int place =
                static_cast<int>(std::find(m_kept.begin(), m_kept.end(), order.begin()->second) - m_kept.begin());
            order.erase(order.begin());
            m_kept.erase(m_kept.begin() + place);
            for (const int other : {place - 1, place}) {
                if (other <= 0 || other + 1 >= m_kept.size()) continue;
                const int vertex = m_kept[other];
                order.erase({costs[vertex], vertex});
                order.insert({costs[vertex] = costAt(other), vertex});
            }
        }
    }

    const zn::vector<int>& kept() const { return m_kept; }

private:
    double costAt(int place) const
    {
        const int from = m_kept[place - 1], to = m_kept[place + 1];
        double cost = 0;
        for (int i = from + 1; i < to; ++i)
            cost = std::max(cost, away(m_vertices[i].point, m_vertices[from].point, m_vertices[to].point));
        return cost <= m_nothing ? 0 : cost;
    }

    Vertices m_vertices;
    double m_nothing;
    zn::vector<int> m_kept;
};

Vertices verticesOf(int count, const std::function<Point(int)>& place)
{
    Vertices vertices;
    for (int i = 0; i < count; ++i) vertices.append({place(i), 3.0 * i});
    return vertices;
}

zn::vector<int> keptBy(const Vertices& vertices, double tolerance)
{
    Polyline line(vertices.size(), vertices.data());
    decimate(line, tolerance);
    zn::vector<int> kept;
    for (int i = 0; i < line.getNumVertices(); ++i) {
        kept.append(static_cast<int>(line.getVertex(i).parameter / 3));
        EXPECT_EQ(line.getVertex(i).point, vertices[kept.back()].point) << "the parameter stays with the point";
    }
    return kept;
}

} // namespace

TEST(Decimate, KeepsWhatAPlainCopyKeepsAndStaysNearTheInput)
{
    znTest::Random random(5);
    Point walker;
    const auto walk = [&](int) {
        return walker += Vector(random.real(-1, 1), random.real(-1, 1), random.real(-0.2, 0.2));
    };
    const std::pair<const char*, std::function<Point(int)>> lines[] = {
        {"noise on a wave", [&](int i) { return Point(i * 0.01, std::sin(i * 0.05) + random.real(-0.01, 0.01), 0); }},
        {"walk", walk},
        {"circle", [](int i) { return Point(std::cos(i * 0.01), std::sin(i * 0.01), 1e-3 * i); }},
        {"straight", [](int i) { return Point(0.3 * i, 0.7123 * i, -1.234 * i); }},
        {"straight, far away", [](int i) { return Point(1e6 + 3e-4 * i, 2e6 + 7.123e-4 * i, -1.234e-3 * i); }},
        {"straight, to and fro", [&](int) { return Point() + Vector(0.3, 0.7123, -1.234) * random.real(0, 1); }},
        {"one place", [](int) { return Point(0.1, 0.2, 0.3); }},
        {"zigzag", [](int i) { return Point(0.01 * i, i % 3 * 0.1, 0); }},
        {"cloud", [&](int) { return Point(random.real(0, 1), random.real(0, 1), random.real(0, 1)); }},
        {"cells", [&](int) { return Point(random.below(3), random.below(3), 0); }}};
    for (const auto& [name, place] : lines)
        for (const int count : {3, 31, 700})
            for (const double tolerance : {0.02, 0.3}) {
                const Vertices vertices = verticesOf(count, place);
                const zn::vector<int> kept = keptBy(vertices, tolerance);
                ASSERT_EQ(kept, PlainDecimation(vertices, tolerance).kept()) << name << " " << count;
                for (int k = 0; k + 1 < kept.size(); ++k)
                    for (int i = kept[k] + 1; i < kept[k + 1]; ++i)
                        ASSERT_LT(away(vertices[i].point, vertices[kept[k]].point, vertices[kept[k + 1]].point),
                                  tolerance);
            }
}

TEST(Decimate, LeavesWhatItCannotJudge)
{
    const Vertices straight = verticesOf(50, [](int i) { return Point(i, 0, 0); });
    EXPECT_EQ(keptBy(straight, 1e-9), (zn::vector<int>{0, 49}));
    for (const double tolerance : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN()})
        EXPECT_EQ(keptBy(straight, tolerance).size(), 50);
    EXPECT_EQ(keptBy({{{0, 0, 0}, 0}, {{0, 0, 0}, 3}}, 1).size(), 2);

    // A vertex that is not finite, and the chord on either side of it, judge nothing.
    Polyline broken(straight.size(), straight.data());
    broken.getVertex(20).point.y = std::numeric_limits<double>::quiet_NaN();
    decimate(broken, 1);
    ASSERT_EQ(broken.getNumVertices(), 5);
    for (const auto& [place, parameter] : {std::pair(1, 57.0), {2, 60.0}, {3, 63.0}})
        EXPECT_EQ(broken.getVertex(place).parameter, parameter);
}

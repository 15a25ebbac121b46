#include "tests/support/pieces.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <set>
#include <utility>

#include "znGeom/analysis.h"
#include "znGeom/cache/mesh_cache.h"
#include "znGeom/repair/orient.h"

namespace znTest {

using namespace znGeom;
using znLinear::Point;

namespace {

using Side = std::pair<int, int>;

std::size_t at(int i) { return static_cast<std::size_t>(i); }

struct Triangle
{
    std::array<int, 3> corners;
    int piece = 0;
};

class Cutter
{
public:
    explicit Cutter(const CompactMesh& mesh)
    {
        double length = 0;
        for (int v = 0; v < mesh.getNumVertices(); ++v) m_points.push_back(mesh.getVertices()[v].asPoint());
        for (int t = 0; t < mesh.getNumTriangles(); ++t) {
            const auto& corners = mesh.getTriangles()[t].corners;
            m_triangles.push_back({{corners[0], corners[1], corners[2]}});
            length += distance(m_points[at(corners[0])], m_points[at(corners[1])]);
        }
        m_snap = 1e-3 * length / std::max(1, mesh.getNumTriangles());
    }

    void cut(const znLinear::Plane& plane, int bit)
    {
        std::vector<double> heights;
        for (const Point& p : m_points) {
            const double height = plane.eval(p);
            heights.push_back(std::fabs(height) < m_snap ? 0 : height);
        }
        std::map<Side, int> middles;
        std::vector<Triangle> all;
        for (const Triangle& t : m_triangles) cutTriangle(t, heights, bit, middles, all);
        m_triangles.swap(all);
    }

    /// Vertices of each piece apart, cut edges divided.
    CompactMesh separate(const PieceOptions& options, Random& random)
    {
        std::set<Side> whole;
        for (const Triangle& t : m_triangles) forEachSide(t, [&](Side side) { whole.insert(side); });
        std::map<std::pair<int, int>, int> copies;
        std::vector<Point> points;
        std::map<Side, bool> isCut; // of the new vertices
        for (Triangle& t : m_triangles) {
            const std::array<int, 3> old = t.corners;
            for (int& corner : t.corners) {
                const auto [entry, isNew] = copies.try_emplace({t.piece, corner}, int(points.size()));
                if (isNew) points.push_back(m_points[at(corner)]);
                corner = entry->second;
            }
            for (std::size_t i = 0; i < 3; ++i)
                isCut[{t.corners[i], t.corners[(i + 1) % 3]}] = whole.contains({old[(i + 1) % 3], old[i]});
        }
        m_points.swap(points);
        divideCuts(isCut, options.mostSteps, random);
        return place(options, random);
    }

private:
    template <typename Visit>
    static void forEachSide(const Triangle& t, const Visit& visit)
    {
        for (std::size_t i = 0; i < 3; ++i) visit(Side{t.corners[i], t.corners[(i + 1) % 3]});
    }

    void cutTriangle(const Triangle& t, const std::vector<double>& heights, int bit, std::map<Side, int>& middles,
                     std::vector<Triangle>& all)
    {
        std::vector<int> above, below;
        for (std::size_t i = 0; i < 3; ++i) {
            const int a = t.corners[i], b = t.corners[(i + 1) % 3];
            const double heightA = heights[at(a)], heightB = heights[at(b)];
            if (heightA >= 0) above.push_back(a);
            if (heightA <= 0) below.push_back(a);
            if (heightA * heightB >= 0) continue;
            const Side side = std::minmax(a, b);
            const auto [entry, isNew] = middles.try_emplace(side, int(m_points.size()));
            if (isNew) {
                const double low = heights[at(side.first)], high = heights[at(side.second)];
                m_points.push_back(m_points[at(side.first)] +
                                   (m_points[at(side.second)] - m_points[at(side.first)]) * (low / (low - high)));
            }
            above.push_back(entry->second);
            below.push_back(entry->second);
        }
        for (const bool isAbove : {true, false}) {
            const std::vector<int>& part = isAbove ? above : below;
            if (part.size() < 3 || (!isAbove && above == below)) continue;
            const int piece = t.piece | (isAbove ? bit : 0);
            for (std::size_t i = 2; i < part.size(); ++i) all.push_back({{part[0], part[i - 1], part[i]}, piece});
        }
    }

    /// Divides sides at cuts that have no other side in their own piece. On shorter ones than some hundred steps of a
    /// `float` a place would not be on the side.
    void divideCuts(const std::map<Side, bool>& isCut, int mostSteps, Random& random)
    {
        std::map<Side, std::size_t> owners;
        for (std::size_t i = 0; i < m_triangles.size(); ++i)
            forEachSide(m_triangles[i], [&](Side side) { owners[side] = i; });
        for (const auto& [cut, isOne] : isCut) {
            if (!isOne || isCut.contains({cut.second, cut.first})) continue;
            Side side = cut;
            for (int rest = 1 + random.below(mostSteps); rest > 1; --rest) {
                const double t = 1.0 / rest + random.real(-0.3, 0.3) / rest;
                const Point from = m_points[at(side.first)], to = m_points[at(side.second)];
                if (distance(from, to) < leastLength(from)) continue;
                const int middle = int(m_points.size());
                m_points.push_back(from + (to - from) * t);
                divide(side, middle, owners);
                side = {middle, side.second};
            }
        }
    }

    static double leastLength(const Point& place)
    {
        constexpr double share = 1000 * double(std::numeric_limits<float>::epsilon());
        return share * std::max({std::fabs(place.x), std::fabs(place.y), std::fabs(place.z)});
    }

    void divide(Side side, int middle, std::map<Side, std::size_t>& owners)
    {
        Triangle& first = m_triangles[owners.at(side)];
        Triangle second = first;
        std::replace(first.corners.begin(), first.corners.end(), side.second, middle);
        std::replace(second.corners.begin(), second.corners.end(), side.first, middle);
        const std::size_t kept = owners.at(side);
        forEachSide(first, [&](Side each) { owners[each] = kept; });
        forEachSide(second, [&](Side each) { owners[each] = m_triangles.size(); });
        m_triangles.push_back(second);
    }

    CompactMesh place(const PieceOptions& options, Random& random)
    {
        std::map<int, znLinear::Vector> shifts;
        std::map<int, bool> isTurned;
        for (Triangle& t : m_triangles) {
            if (!shifts.contains(t.piece)) {
                shifts[t.piece] = random.direction() * (options.shift * random.real());
                isTurned[t.piece] = options.turnsOver && shifts.size() > 1 && random.oneIn(2);
            }
            if (isTurned[t.piece]) std::swap(t.corners[0], t.corners[1]);
        }
        CompactMesh mesh;
        mesh.resizeVertexArray(int(m_points.size()));
        mesh.resizeTriangleArray(int(m_triangles.size()));
        for (std::size_t i = 0; i < m_triangles.size(); ++i) {
            const Triangle& t = m_triangles[i];
            for (int corner = 0; corner < 3; ++corner) {
                const int v = t.corners[at(corner)];
                mesh.getTriangles()[i].corners[corner] = v;
                const Point place = m_points[at(v)] + shifts[t.piece];
                mesh.getVertices()[v].set(&place.x);
            }
        }
        return mesh;
    }

    std::vector<Point> m_points;
    std::vector<Triangle> m_triangles;
    double m_snap;
};

} // namespace

CompactMesh cutIntoPieces(const CompactMesh& mesh, const PieceOptions& options, Random& random)
{
    Cutter cutter(mesh);
    for (std::size_t i = 0; i < options.planes.size(); ++i) cutter.cut(options.planes[i], 1 << i);
    return cutter.separate(options, random);
}

bool areTooSmallToSew(const CompactMesh& pieces, double tolerance, bool doCoincide)
{
    SimpleMeshCache cache;
    const zn::Reference<MeshBoundaries> borders = cache.getBoundaries(pieces);
    const auto point = [&](int v) { return pieces.getVertices()[v].asPoint(); };
    Array<int> shells;
    const int numShells = meshComponents(pieces, *cache.getAdjTris(pieces), &shells);
    std::vector<double> areas(at(numShells)), lengths(at(numShells));
    for (int t = 0; t < pieces.getNumTriangles(); ++t) {
        const auto& corners = pieces.getTriangles()[t].corners;
        const Point a = point(corners[0]);
        areas[at(shells[corners[0]])] += cross(point(corners[1]) - a, point(corners[2]) - a).length() / 2;
    }
    for (int border = 0; border < borders->size(); ++border) {
        const int* const vertices = borders->getStart(border);
        double whole = 0;
        for (int i = 0; i < borders->getLength(border); ++i) {
            const double length = distance(point(vertices[i]), point(vertices[(i + 1) % borders->getLength(border)]));
            whole += length;
            lengths[at(shells[vertices[0]])] += length;
        }
        if (whole < 2 * tolerance) return true;
    }
    for (int shell = 0; shell < numShells && !doCoincide; ++shell)
        if (2 * areas[at(shell)] < tolerance * lengths[at(shell)]) return true;
    return false;
}

Figures figuresOf(const CompactMesh& mesh)
{
    Figures figures;
    MeshAdjTris adjTris;
    MeshEdgeSides sides;
    MeshBorderLoops borders;
    znUtil::Progress progress;
    meshAdjTris(mesh, adjTris);
    figures.components = meshComponents(mesh, adjTris, nullptr);
    figures.isOriented = meshOriented(mesh, adjTris);
    meshEdgeSides(mesh, progress, sides);
    meshBorderLoops(mesh, sides, borders);
    figures.borders = borders.size();
    std::vector<Side> all;
    std::vector<int> used;
    for (int t = 0; t < mesh.getNumTriangles(); ++t) {
        const auto& corners = mesh.getTriangles()[t].corners;
        const Point a = mesh.getVertices()[corners[0]].asPoint(), b = mesh.getVertices()[corners[1]].asPoint(),
                    c = mesh.getVertices()[corners[2]].asPoint();
        const double area = cross(b - a, c - a).length() / 2;
        const double longest2 = std::max({(b - a).length2(), (c - b).length2(), (a - c).length2()});
        figures.flatTriangles += !(area > 1e-6 * longest2);
        figures.area += area;
        figures.volume += dot(a.asVector(), cross(b.asVector(), c.asVector())) / 6;
        for (int i = 0; i < 3; ++i) {
            all.push_back(std::minmax(corners[i], corners[(i + 1) % 3]));
            used.push_back(corners[i]);
        }
    }
    const auto countOf = [](auto& items) {
        std::sort(items.begin(), items.end());
        return int(std::unique(items.begin(), items.end()) - items.begin());
    };
    figures.euler = countOf(used) - countOf(all) + mesh.getNumTriangles();
    return figures;
}

} // namespace znTest

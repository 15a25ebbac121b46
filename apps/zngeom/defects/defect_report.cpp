#include "apps/zngeom/defects/defect_report.h"

#include <algorithm>
#include <cmath>

namespace tool {

namespace {

constexpr std::size_t mostShown = 3;

std::string shownCoordinate(double value)
{
    if (std::isnan(value)) return "nan";
    return std::isinf(value) ? value < 0 ? "-infinity" : "infinity" : shownNumber(value);
}

std::string placeOf(const znLinear::Point& point)
{
    return shownCoordinate(point.x) + ' ' + shownCoordinate(point.y) + ' ' + shownCoordinate(point.z);
}

/// Adds one kind of defect after another.
class DefectReporter
{
public:
    DefectReporter(const znGeom::CompactMesh& mesh, Kinds kinds, Report& report)
        : m_mesh(mesh), m_kinds(kinds), m_report(report)
    {}

    template <typename Numbers>
    void addVertices(const char* key, const char* listKey, const Numbers& vertices)
    {
        add(key, listKey, vertices, [&](int vertex) {
            return std::pair("vertex " + std::to_string(vertex), "at " + placeOf(positionOf(vertex)));
        });
    }

    template <typename Numbers>
    void addTriangles(const char* key, const char* listKey, const Numbers& triangles)
    {
        add(key, listKey, triangles, [&](int triangle) {
            const znGeom::MeshTriangle& corners = m_mesh.getTriangles()[triangle];
            std::string names;
            for (const int vertex : corners.corners) names += (names.empty() ? "" : " ") + std::to_string(vertex);
            return std::pair("triangle " + std::to_string(triangle),
                             "of vertices " + names + ", first at " + placeOf(positionOf(corners[0])));
        });
    }

    void addEdges(const char* key, const char* listKey, const std::vector<Edge>& edges)
    {
        add(key, listKey, edges, [&](const Edge& edge) {
            return std::pair("edge " + std::to_string(edge.first) + ' ' + std::to_string(edge.second),
                             "from " + placeOf(positionOf(edge.first)) + " to " + placeOf(positionOf(edge.second)));
        });
    }

    void addCrossings(const std::vector<Crossing>& crossings)
    {
        Report::Value pairs = Report::Value::array();
        for (const Crossing& crossing : crossings) pairs.push_back(crossing.triangles);
        addCount("crossings", crossings.size());
        m_report.addForPrograms("crossing_pairs", std::move(pairs));
        for (std::size_t i = 0; i < std::min(crossings.size(), mostShown); ++i) {
            const auto& [triangles, segment] = crossings[i];
            m_report.addForPeople("  triangles " + std::to_string(triangles[0]) + ' ' + std::to_string(triangles[1]),
                                  "from " + placeOf(segment[0]) + " to " + placeOf(segment[1]));
        }
        addMore(crossings.size());
    }

    void addUnknown(const char* key, const char* listKey, const char* why)
    {
        m_report.addForPrograms(key, nullptr);
        m_report.addForPrograms(listKey, nullptr);
        if (m_kinds == Kinds::All) m_report.addForPeople(labelOf(key), why);
    }

    void addCount(const char* key, std::size_t count)
    {
        m_report.addForPrograms(key, count);
        if (m_kinds == Kinds::All || count > 0) m_report.addForPeople(labelOf(key), std::to_string(count));
    }

private:
    template <typename Items, typename Describe>
    void add(const char* key, const char* listKey, const Items& items, const Describe& describe)
    {
        addCount(key, static_cast<std::size_t>(items.size()));
        Report::Value list = Report::Value::array();
        for (const auto& item : items) {
            if (list.size() < mostShown) {
                const auto [name, place] = describe(item);
                m_report.addForPeople("  " + name, place);
            }
            list.push_back(item);
        }
        addMore(list.size());
        m_report.addForPrograms(listKey, std::move(list));
    }

    void addMore(std::size_t count)
    {
        if (count > mostShown) m_report.addForPeople("  and more", std::to_string(count - mostShown));
    }

    static std::string labelOf(std::string key)
    {
        std::replace(key.begin(), key.end(), '_', ' ');
        return key;
    }

    znLinear::Point positionOf(int vertex) const { return m_mesh.getVertices()[vertex].asPoint(); }

    const znGeom::CompactMesh& m_mesh;
    Kinds m_kinds;
    Report& m_report;
};

void addWinding(const WindingDefects& winding, DefectReporter& reporter)
{
    const bool isOneSided = !winding.oneSided.empty();
    if (isOneSided)
        reporter.addUnknown("flipped_triangles", "flipped_triangle_numbers", "can't be told: the surface is one-sided");
    else
        reporter.addTriangles("flipped_triangles", "flipped_triangle_numbers", winding.flipped);
    reporter.addTriangles("one_sided_triangles", "one_sided_triangle_numbers", winding.oneSided);
}

} // namespace

void addDefects(const znGeom::CompactMesh& mesh, const MeshDefects& defects, Kinds kinds, Report& report)
{
    DefectReporter reporter(mesh, kinds, report);
    reporter.addVertices("non_finite_vertices", "non_finite_vertex_numbers", defects.nonFiniteVertices);
    reporter.addTriangles("degenerate_triangles", "degenerate_triangle_numbers", defects.triangles.repeatedCorners);
    reporter.addTriangles("collapsed_triangles", "collapsed_triangle_numbers", defects.triangles.coincidentCorners);
    reporter.addTriangles("duplicate_triangles", "duplicate_triangle_numbers", defects.triangles.duplicates);
    reporter.addEdges("non_manifold_edges", "non_manifold_edge_vertices", defects.edges);
    if (defects.vertices)
        reporter.addVertices("non_manifold_vertices", "non_manifold_vertex_numbers", *defects.vertices);
    else
        reporter.addUnknown("non_manifold_vertices", "non_manifold_vertex_numbers",
                            "can't be told as long as there are such edges");
    addWinding(defects.winding, reporter);
    if (defects.crossings) {
        reporter.addCrossings(*defects.crossings);
        reporter.addTriangles("crossing_triangles", "crossing_triangle_numbers", defects.crossingTriangles);
    } else {
        reporter.addUnknown("crossings", "crossing_pairs", "not looked for");
        reporter.addUnknown("crossing_triangles", "crossing_triangle_numbers", "not looked for");
    }
    if (defects.folds) {
        reporter.addEdges("folded_edges", "folded_edge_vertices", *defects.folds);
        reporter.addTriangles("folded_triangles", "folded_triangle_numbers", defects.foldedTriangles);
    } else {
        for (const char* key : {"folded_edges", "folded_edge_vertices", "folded_triangles", "folded_triangle_numbers"})
            report.addForPrograms(key, nullptr);
    }
    report.add("boundary_edges", defects.boundary.size());
    report.add("clean", defects.isClean());
    if (!defects.soupNote.empty()) report.addNote(defects.soupNote);
    if (!defects.isClean()) report.setStatus(Report::Status::Broken);
}

} // namespace tool

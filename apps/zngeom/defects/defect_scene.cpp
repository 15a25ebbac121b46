#include "apps/zngeom/defects/defect_scene.h"

#include <cmath>

namespace tool {

namespace {

// Told apart also by those who see red and green alike: by how light they are.
constexpr Colour ofBoundary{46, 92, 184}, ofFlipped{255, 152, 30}, ofOneSided{255, 205, 60}, ofCrossing{152, 72, 196},
    ofCrossingLine{84, 20, 116}, ofFold{0, 158, 150}, ofBadTriangle{36, 160, 60}, ofEdge{220, 30, 45},
    ofVertex{210, 40, 165};

/// Adds a marking for each kind of which there is something.
class SceneMaker
{
public:
    SceneMaker(const znGeom::CompactMesh& mesh, Scene& scene) : m_mesh(mesh), m_scene(scene) { scene.mesh = &mesh; }

    template <typename Numbers>
    void addTriangles(const char* name, const Colour& colour, const Numbers& triangles)
    {
        add({name, 0, colour, {triangles.begin(), triangles.end()}, {}, {}},
            static_cast<std::size_t>(triangles.size()));
    }

    /// Where triangles have no area, their sides are what can be seen of them.
    template <typename Numbers>
    void addAsLines(const char* name, const Colour& colour, const Numbers& triangles)
    {
        Marking marking{name, 0, colour, {}, {}, {}};
        for (const int triangle : triangles)
            for (int i = 0; i < 3; ++i) {
                const znGeom::MeshTriangle& corners = m_mesh.getTriangles()[triangle];
                addLine(corners[i], corners[znGeom::cornerAfter(i)], marking);
            }
        add(std::move(marking), static_cast<std::size_t>(triangles.size()));
    }

    void addEdges(const char* name, const Colour& colour, const std::vector<Edge>& edges, bool isAside = false)
    {
        Marking marking{name, 0, colour, {}, {}, {}, isAside};
        for (const auto& [from, to] : edges) addLine(from, to, marking);
        add(std::move(marking), edges.size());
    }

    void addSegments(const char* name, const Colour& colour, const std::vector<Crossing>& crossings)
    {
        Marking marking{name, 0, colour, {}, {}, {}};
        for (const Crossing& crossing : crossings) marking.lines.push_back(crossing.segment);
        add(std::move(marking), crossings.size());
    }

    void addVertices(const char* name, const Colour& colour, const std::vector<int>& vertices)
    {
        Marking marking{name, 0, colour, {}, {}, {}};
        for (const int vertex : vertices)
            if (isFinite(m_mesh.getVertices()[vertex]))
                marking.points.push_back(m_mesh.getVertices()[vertex].asPoint());
        add(std::move(marking), vertices.size());
    }

private:
    void add(Marking marking, std::size_t count)
    {
        if (count == 0) return;
        marking.count = count;
        m_scene.markings.push_back(std::move(marking));
    }

    void addLine(int from, int to, Marking& marking) const
    {
        const znGeom::MeshVertex &a = m_mesh.getVertices()[from], &b = m_mesh.getVertices()[to];
        if (isFinite(a) && isFinite(b)) marking.lines.push_back({a.asPoint(), b.asPoint()});
    }

    const znGeom::CompactMesh& m_mesh;
    Scene& m_scene;
};

} // namespace

Scene sceneOf(const znGeom::CompactMesh& mesh, const MeshDefects& defects)
{
    Scene scene;
    SceneMaker maker(mesh, scene);
    maker.addEdges("boundary edges", ofBoundary, defects.boundary, true);
    maker.addTriangles("flipped triangles", ofFlipped, defects.winding.flipped);
    maker.addTriangles("one-sided triangles", ofOneSided, defects.winding.oneSided);
    maker.addTriangles("crossing triangles", ofCrossing, defects.crossingTriangles);
    if (defects.crossings) maker.addSegments("crossings", ofCrossingLine, *defects.crossings);
    maker.addTriangles("folded triangles", ofFold, defects.foldedTriangles);
    maker.addTriangles("duplicate triangles", ofBadTriangle, defects.triangles.duplicates);
    maker.addAsLines("degenerate triangles", ofBadTriangle, defects.triangles.repeatedCorners);
    maker.addAsLines("collapsed triangles", ofBadTriangle, defects.triangles.coincidentCorners);
    maker.addEdges("non-manifold edges", ofEdge, defects.edges);
    if (defects.vertices) maker.addVertices("non-manifold vertices", ofVertex, *defects.vertices);
    maker.addVertices("vertices that are not finite", ofVertex, defects.nonFiniteVertices);
    if (!defects.soupNote.empty()) scene.remark = "not welded";
    if (defects.isClean()) scene.remark = "nothing wrong";
    return scene;
}

} // namespace tool

// CGAL builds its half-edge mesh from arrays, and finds its components.
#include "bench/checks.h"
#include "bench/peers/cgal_mesh.h"
#include "bench/suite.h"

#include <CGAL/Polygon_mesh_processing/connected_components.h>
#include <CGAL/Simple_cartesian.h>
#include <CGAL/Surface_mesh.h>
#include <CGAL/version.h>

#include <array>
#include <memory>

namespace {

using Point = CGAL::Simple_cartesian<double>::Point_3;
using Mesh = CGAL::Surface_mesh<Point>;
using VertexIndex = Mesh::Vertex_index;

/// Room reserved, then vertex by vertex and face by face, as its manual shows.
std::unique_ptr<Mesh> build(const bench::Soup& soup)
{
    auto mesh = std::make_unique<Mesh>();
    bench::addSoup(soup, *mesh);
    return mesh;
}

/// The same with all faces in one call, which its manual leaves out. It doesn't link the fans of a vertex where several
/// meet, so that on the ogre, which has three such vertices, the result differs and isn't timed.
std::unique_ptr<Mesh> buildAtOnce(const bench::Soup& soup)
{
    auto mesh = std::make_unique<Mesh>();
    addVertices(soup, *mesh);
    std::vector<std::array<VertexIndex, 3>> faces;
    faces.reserve(soup.triangles.size() / 3);
    for (std::size_t i = 0; i < soup.triangles.size(); i += 3)
        faces.push_back({vertexAt(soup, *mesh, i), vertexAt(soup, *mesh, i + 1), vertexAt(soup, *mesh, i + 2)});
    CGAL::Euler::add_faces(faces, *mesh);
    return mesh;
}

template <class Build>
bool neighboursAgree(const bench::Input& input, Build&& buildMesh)
{
    const auto mesh = buildMesh(input.soup());
    bench::RelationSum neighbours;
    for (const VertexIndex vertex : mesh->vertices())
        for (const auto halfedge : CGAL::halfedges_around_target(vertex, *mesh))
            neighbours.add(vertex.idx(), static_cast<std::int64_t>(mesh->source(halfedge).idx()));
    return neighbours == bench::vertexNeighbours(input.soup());
}

template <class Build>
bool measureBuild(const char* who, Build buildMesh)
{
    return bench::measure({"halfedges", who,
                           [=](const bench::Input& input) { return neighboursAgree(input, buildMesh); },
                           [=](benchmark::State& state, const bench::Input& input) {
                               bench::timeHalfedgeBuild(state, input, buildMesh);
                           }});
}

using FaceComponents = Mesh::Property_map<Mesh::Face_index, std::size_t>;

int components(const Mesh& mesh, FaceComponents ofFaces)
{
    return static_cast<int>(CGAL::Polygon_mesh_processing::connected_components(mesh, ofFaces));
}

struct ComponentsSubject
{
    std::unique_ptr<Mesh> mesh;
    FaceComponents ofFaces;

    explicit ComponentsSubject(const bench::Soup& soup)
        : mesh(build(soup)), ofFaces(mesh->add_property_map<Mesh::Face_index, std::size_t>("f:component").first)
    {}
};

/// It connects across edges alone; where parts touch at a vertex it finds more of them and isn't timed.
bool componentsAgree(const bench::Input& input)
{
    const auto& subject = bench::madeOnce<ComponentsSubject>(input);
    return components(*subject.mesh, subject.ofFaces) == bench::components(input.soup());
}

void runComponents(benchmark::State& state, const bench::Input& input)
{
    const auto& subject = bench::madeOnce<ComponentsSubject>(input);
    bench::timeWork(
        state, [&] { return &subject; },
        [](const ComponentsSubject* given) { return components(*given->mesh, given->ofFaces); });
}

[[maybe_unused]] const bool listed[] = {
    bench::usesPeer("CGAL", CGAL_VERSION_STR),
    measureBuild("CGAL", build),
    measureBuild("CGAL_at_once", buildAtOnce),
    bench::measure({"components", "CGAL", componentsAgree, runComponents}),
};

} // namespace

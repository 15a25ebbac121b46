// OpenMesh's decimater: quadrics to a number of vertices, and within a distance by its Hausdorff module.
#include "bench/reduction.h"
#include "bench/suite.h"

#include <OpenMesh/Core/Mesh/TriMesh_ArrayKernelT.hh>
#include <OpenMesh/Tools/Decimater/DecimaterT.hh>
#include <OpenMesh/Tools/Decimater/ModHausdorffT.hh>
#include <OpenMesh/Tools/Decimater/ModQuadricT.hh>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using bench::Input;
using bench::Soup;
using Mesh = OpenMesh::TriMesh_ArrayKernelT<>;
using Decimater = OpenMesh::Decimater::DecimaterT<Mesh>;
using OpenMesh::VertexHandle;

std::unique_ptr<Mesh> build(const Soup& soup)
{
    auto mesh = std::make_unique<Mesh>();
    for (std::size_t i = 0; i < soup.positions.size(); i += 3)
        mesh->add_vertex(Mesh::Point(soup.positions[i], soup.positions[i + 1], soup.positions[i + 2]));
    for (std::size_t i = 0; i < soup.triangles.size(); i += 3)
        mesh->add_face(VertexHandle(soup.triangles[i]), VertexHandle(soup.triangles[i + 1]),
                       VertexHandle(soup.triangles[i + 2]));
    // Without these, what is removed can't be collected.
    mesh->request_vertex_status();
    mesh->request_edge_status();
    mesh->request_halfedge_status();
    mesh->request_face_status();
    mesh->request_face_normals();
    mesh->update_face_normals();
    return mesh;
}

Soup toSoup(const Mesh& mesh)
{
    Soup soup;
    for (const auto vertex : mesh.vertices())
        for (int axis = 0; axis < 3; ++axis)
            soup.positions.push_back(mesh.point(vertex)[static_cast<std::size_t>(axis)]);
    for (const auto face : mesh.faces())
        for (const auto vertex : mesh.fv_range(face)) soup.triangles.push_back(vertex.idx());
    return soup;
}

std::size_t decimateTo(Mesh& mesh, double fraction)
{
    Decimater decimater(mesh);
    OpenMesh::Decimater::ModQuadricT<Mesh>::Handle quadric;
    decimater.add(quadric);
    decimater.module(quadric).unset_max_err();
    decimater.initialize();
    decimater.decimate_to(static_cast<std::size_t>(static_cast<double>(mesh.n_vertices()) * fraction));
    mesh.garbage_collection();
    return mesh.n_vertices();
}

std::size_t decimateWithin(Mesh& mesh, double tolerance)
{
    Decimater decimater(mesh);
    OpenMesh::Decimater::ModHausdorffT<Mesh>::Handle hausdorff;
    OpenMesh::Decimater::ModQuadricT<Mesh>::Handle quadric;
    decimater.add(hausdorff);
    decimater.add(quadric);
    decimater.module(hausdorff).set_tolerance(tolerance);
    decimater.module(quadric).unset_max_err();
    decimater.initialize();
    decimater.decimate();
    mesh.garbage_collection();
    return mesh.n_vertices();
}

template <class Work>
bool measureWork(const char* work, Work decimate, std::vector<std::string> onInputs = bench::generatedInputs())
{
    return bench::measure({work, "OpenMesh", [](const Input&) { return true; },
                           [=](benchmark::State& state, const Input& input) {
                               std::unique_ptr<Mesh> mesh;
                               bench::timeWork(
                                   state,
                                   [&] {
                                       mesh = build(input.soup());
                                       return mesh.get();
                                   },
                                   [&](Mesh* subject) { return decimate(*subject, input); });
                               bench::countQuality(state, input.soup(), toSoup(*mesh));
                           },
                           1, std::move(onInputs)});
}

[[maybe_unused]] const bool listed[] = {
    measureWork("reduce_half", [](Mesh& mesh, const Input&) { return decimateTo(mesh, 0.5); }),
    measureWork("reduce_tenth", [](Mesh& mesh, const Input&) { return decimateTo(mesh, 0.1); }),
    measureWork("collapse_tenth", [](Mesh& mesh, const Input&) { return decimateTo(mesh, 0.1); },
                {"bunny", "torus_small", "torus"}),
    measureWork("reduce_tolerance",
                [](Mesh& mesh, const Input& input) { return decimateWithin(mesh, bench::toleranceFor(input.soup())); }),
};

} // namespace

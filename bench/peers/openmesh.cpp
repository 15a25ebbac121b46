// OpenMesh builds its half-edge mesh from arrays, gives it normals, and writes it as OBJ.
#include "bench/checks.h"
#include "bench/suite.h"

#include <OpenMesh/Core/IO/MeshIO.hh>
#include <OpenMesh/Core/Mesh/TriMesh_ArrayKernelT.hh>
#include <OpenMesh/Core/System/config.h>
#include <OpenMesh/Core/System/omstream.hh>

#include <filesystem>
#include <memory>
#include <string>

namespace {

using bench::Input;
using Mesh = OpenMesh::TriMesh_ArrayKernelT<>;
using OpenMesh::VertexHandle;

std::unique_ptr<Mesh> build(const bench::Soup& soup)
{
    auto mesh = std::make_unique<Mesh>();
    const auto numFaces = static_cast<std::size_t>(soup.numTriangles());
    mesh->reserve(static_cast<std::size_t>(soup.numVertices()), numFaces + numFaces / 2, numFaces);
    for (std::size_t i = 0; i < soup.positions.size(); i += 3)
        mesh->add_vertex(Mesh::Point(soup.positions[i], soup.positions[i + 1], soup.positions[i + 2]));
    for (std::size_t i = 0; i < soup.triangles.size(); i += 3)
        mesh->add_face(VertexHandle(soup.triangles[i]), VertexHandle(soup.triangles[i + 1]),
                       VertexHandle(soup.triangles[i + 2]));
    return mesh;
}

bool neighboursAgree(const Input& input)
{
    const auto mesh = build(input.soup());
    bench::RelationSum neighbours;
    for (const auto vertex : mesh->vertices())
        for (const auto neighbour : mesh->vv_range(vertex)) neighbours.add(vertex.idx(), neighbour.idx());
    return neighbours == bench::vertexNeighbours(input.soup());
}

void runBuild(benchmark::State& state, const Input& input)
{
    bench::timeWork(
        state, [&] { return &input.soup(); }, [](const bench::Soup* soup) { return build(*soup); });
}

bool write(const Mesh& mesh, const std::string& file)
{
    omlog().disable();
    return OpenMesh::IO::write_mesh(mesh, file, OpenMesh::IO::Options::Default, 6);
}

bool writingAgrees(const Input& input)
{
    const std::string file = bench::temporaryFile("openmesh.obj");
    return write(*build(input.soup()), file) &&
           bench::sameSurface(input.soup(), bench::readObjFile(file), input.soup().numVertices(), 1e-5);
}

void runWriting(benchmark::State& state, const Input& input)
{
    const auto mesh = build(input.soup());
    const std::string file = bench::temporaryFile("openmesh.obj");
    bench::timeWork(
        state, [&] { return std::filesystem::remove(file); }, [&](bool) { return write(*mesh, file); });
}

struct NormalsSubject
{
    std::unique_ptr<Mesh> mesh;

    explicit NormalsSubject(const bench::Soup& soup) : mesh(build(soup))
    {
        mesh->request_face_normals();
        mesh->request_vertex_normals();
    }
};

bool computeNormals(Mesh& mesh)
{
    mesh.update_normals();
    return true;
}

bool normalsAgree(const Input& input)
{
    Mesh& mesh = *bench::madeOnce<NormalsSubject>(input).mesh;
    computeNormals(mesh);
    return bench::areVertexNormals(input.soup(), mesh.vertex_normals()->data());
}

void runNormals(benchmark::State& state, const Input& input)
{
    const auto& mesh = bench::madeOnce<NormalsSubject>(input).mesh;
    bench::timeWork(
        state, [&] { return mesh.get(); }, [](Mesh* subject) { return computeNormals(*subject); });
}

std::string version() { return std::to_string(OM_VERSION >> 16) + "." + std::to_string((OM_VERSION >> 8) & 0xff); }

[[maybe_unused]] const bool listed[] = {
    bench::usesPeer("OpenMesh", version()),
    bench::measure({"halfedges", "OpenMesh", neighboursAgree, runBuild}),
    bench::measure({"normals", "OpenMesh", normalsAgree, runNormals}),
    bench::measure({"write_obj", "OpenMesh", writingAgrees, runWriting}),
};

} // namespace

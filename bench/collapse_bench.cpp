// Collapsing the edges of a half-edge mesh until a tenth of its triangles is left.
#include "bench/compact.h"
#include "bench/reduction.h"
#include "bench/suite.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/scopes.h"
#include "znGeom/simplify.h"
#include "znGeom/topology/topo_walks.h"

#include <memory>

namespace {

using bench::Input;
using bench::Soup;
using znGeom::CompactMesh;

/// A mesh, and all of it as a half-edge mesh.
struct Subject
{
    std::unique_ptr<CompactMesh> mesh;
    znGeom::MeshAdjTris adjTris;
    std::unique_ptr<znGeom::MeshConvertRep> whole;
    znGeom::TopoMesh* topology;
    double factor; ///< borders are held by the length of their edges: all meshes are brought to the same size

    explicit Subject(const Soup& soup) : mesh(bench::toCompact(soup))
    {
        znGeom::BitVector triangles, vertices;
        znGeom::meshAdjTris(*mesh, adjTris);
        triangles.resize(mesh->getNumTriangles());
        vertices.resize(mesh->getNumVertices());
        triangles.setAllBits();
        vertices.setAllBits();
        whole = std::make_unique<znGeom::MeshConvertRep>(*mesh, triangles, vertices, adjTris);
        topology = &whole->extract();
        factor = 1000 / bench::boxOf(soup).diagonal();
        scale(factor);
    }

    Soup result()
    {
        scale(1 / factor);
        const std::unique_ptr<CompactMesh> flat(znGeom::meshConvertRep(*topology));
        return bench::toSoup(*flat);
    }

private:
    void scale(double by)
    {
        for (const znGeom::TopoMeshVertex v : verticesOf(*topology))
            topology->setPoint(v, (v.point().asVector() * by).asPoint());
    }
};

void run(benchmark::State& state, const Input& input)
{
    std::unique_ptr<Subject> subject;
    bench::timeWork(
        state,
        [&] {
            subject = std::make_unique<Subject>(input.soup());
            return subject->topology;
        },
        [](znGeom::TopoMesh* topology) {
            znUtil::Progress progress;
            znGeom::meshReduceByEdgeCollapse(*topology, 0.1, progress);
            return topology->numFaces();
        });
    bench::countQuality(state, input.soup(), subject->result());
}

[[maybe_unused]] const bool listed = bench::measure(
    {"collapse_tenth", "znGeom", [](const Input&) { return true; }, run, 2, {"bunny", "torus_small", "torus"}});

} // namespace

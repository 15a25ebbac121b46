// Measures a torus: how it bends, how far a dented copy is from it, what rays hit, what lies inside.
#include <znGeom/znGeom.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

using znLinear::Point;
using znLinear::Vector;

constexpr int around = 200, across = 80;
constexpr double ring = 1, tube = 0.4;

/// Facing outward.
znGeom::CompactMesh makeTorus()
{
    znGeom::CompactMesh mesh;
    mesh.resizeVertexArray(around * across);
    mesh.resizeTriangleArray(2 * around * across);
    for (int u = 0; u < around; ++u)
        for (int v = 0; v < across; ++v) {
            const double a = 2 * M_PI * u / around, b = 2 * M_PI * v / across, out = ring + tube * std::cos(b);
            const Point at(out * std::cos(a), out * std::sin(a), tube * std::sin(b));
            mesh.getVertices()[u * across + v].set(&at.x);
            const auto number = [](int i, int j) { return i % around * across + j % across; };
            znGeom::MeshTriangle* pair = mesh.getTriangles() + 2 * (u * across + v);
            pair[0] = {{number(u, v), number(u + 1, v), number(u + 1, v + 1)}};
            pair[1] = {{number(u, v), number(u + 1, v + 1), number(u, v + 1)}};
        }
    znGeom::meshComputeNormals(mesh);
    return mesh;
}

/// The largest difference between measured and true mean curvature.
double bend(const znGeom::CompactMesh& mesh)
{
    znGeom::MeshAdjTris adjTris;
    znGeom::MeshAdjVertices adjVertices;
    znGeom::meshAdjTris(mesh, adjTris);
    znGeom::meshAdjVertices(mesh, adjTris, adjVertices);
    std::vector<float> mean(size_t(mesh.getNumVertices()));
    znGeom::meshCurvature(mesh, adjTris, adjVertices, {}, znGeom::MeanCurvature, mean.data());

    double worst = 0;
    for (int vertex = 0; vertex < mesh.getNumVertices(); ++vertex) {
        const double cosine = std::cos(2 * M_PI * (vertex % across) / across);
        const double truth = (ring + 2 * tube * cosine) / (2 * tube * (ring + tube * cosine));
        worst = std::max(worst, std::fabs(double(mean[size_t(vertex)]) - truth));
    }
    return worst;
}

/// What questions about a mesh are put to. One serves any number of threads.
struct Index
{
    const znGeom::CompactMesh& mesh;
    znGeom::BoundingBox box;
    zn::Reference<znGeom::Octree> octree;
    znGeom::OctreeTris octreeTris;
    znGeom::TriangleTree tree;

    explicit Index(const znGeom::CompactMesh& indexed) : mesh(indexed), tree(indexed)
    {
        znGeom::meshBoundingBox(mesh, box);
        octree = new znGeom::Octree(mesh.getNumVertices(), mesh.getVerticesRaw(), box, true, 16);
        znGeom::computeOctreeTris(mesh, *octree, octreeTris);
    }
};

/// How deep the deepest place of a dented copy is.
double measureDent(const Index& whole)
{
    znGeom::CompactMesh dented = whole.mesh;
    for (int vertex = 0; vertex < dented.getNumVertices(); ++vertex) {
        znGeom::MeshVertex& at = dented.getVertices()[vertex];
        const Point moved = at.asPoint() + Vector(0, 0, -0.1) * std::exp(-20 * distance(at.asPoint(), {1, 0, tube}));
        at.set(&moved.x);
    }
    std::vector<float> deviation(size_t(dented.getNumVertices()));
    znUtil::Progress progress;
    znGeom::MeshDeviation(whole.mesh, {}, *whole.octree, whole.octreeTris, whole.tree, progress)
        .calculate(&dented, {}, deviation.data(), false, false);
    return -double(*std::min_element(deviation.begin(), deviation.end()));
}

} // namespace

int main()
{
    const znGeom::CompactMesh mesh = makeTorus();
    const double off = bend(mesh);
    std::printf("mean curvature is right to %.4f\n", off);

    const Index index(mesh);
    const double dent = measureDent(index);
    std::printf("the dent is %.3f deep\n", dent);

    znGeom::RayTracer tracer(*index.octree, index.octreeTris, &mesh, index.tree);
    tracer.setFindNearestHit(true);
    const bool hit = tracer.intersect({3, 0, 0}, {-1, 0, 0});
    std::printf("the ray goes %.3f and hits triangle %d\n", tracer.intersectionDist(),
                tracer.intersectionCoord().triangle);

    znGeom::MeshPtInside inside(mesh, *index.octree, index.octreeTris, index.tree, 0.01);
    const bool inTube = inside.evaluate({1, 0, 0.1}) == znGeom::MeshPtInside::Inside;
    const bool inHole = inside.evaluate({0, 0, 0}) == znGeom::MeshPtInside::Inside;
    std::printf("the tube's middle is %s, the ring's is %s\n", inTube ? "inside" : "outside",
                inHole ? "inside" : "outside");
    return off < 0.01 && dent > 0.09 && dent < 0.11 && hit && inTube && !inHole ? 0 : 1;
}

// Casts using the tree that nearest points are searched in.
#include "bench/casts.h"

#include "bench/compact.h"
#include "znGeom/analysis/bounds.h"
#include "znGeom/foundation/mesh/mesh_transform.h"
#include "znGeom/spatial/queries/ray_tracer.h"
#include "znGeom/spatial/trees/octree_partition.h"

#include <cmath>
#include <memory>

namespace bench {

Casts makeCasts(const Input& input, int count)
{
    return {queryPoints(input.soup(), Spread::wide, count), queryPoints(input.soup(), Spread::near, count)};
}

namespace {

/// After Moller and Trumbore (1997), in `double`.
bool hit(const Soup& soup, std::size_t triangle, const double* from, const double* along, double& param)
{
    double a[3], b[3], c[3];
    const auto at = [&](std::size_t corner, int axis) {
        const int vertex = soup.triangles[triangle + corner];
        return double(soup.positions[3 * static_cast<std::size_t>(vertex) + static_cast<std::size_t>(axis)]);
    };
    for (int axis = 0; axis < 3; ++axis) {
        a[axis] = from[axis] - at(0, axis);
        b[axis] = at(1, axis) - at(0, axis);
        c[axis] = at(2, axis) - at(0, axis);
    }
    const auto triple = [](const double* u, const double* v, const double* w) {
        return u[0] * (v[1] * w[2] - v[2] * w[1]) + u[1] * (v[2] * w[0] - v[0] * w[2]) +
               u[2] * (v[0] * w[1] - v[1] * w[0]);
    };
    const double det = triple(b, along, c);
    const double u = triple(a, along, c) / det, v = triple(along, a, b) / det;
    param = triple(c, a, b) / det;
    return u >= 0 && v >= 0 && u + v <= 1 && param > 0;
}

} // namespace

bool castsAgree(const Input& input, const Casts& casts, const std::vector<double>& params, bool nearest)
{
    std::size_t numWrong = 0, numHits = 0;
    const Soup& soup = input.soup();
    for (std::size_t i = 0; i < casts.count(); ++i) {
        double from[3], along[3], best = HUGE_VAL, param;
        for (std::size_t axis = 0; axis < 3; ++axis) {
            from[axis] = double(casts.from[3 * i + axis]);
            along[axis] = double(casts.to[3 * i + axis]) - from[axis];
        }
        for (std::size_t t = 0; t < soup.triangles.size(); t += 3)
            if (hit(soup, t, from, along, param)) best = std::min(best, param);
        const bool isHit = best < HUGE_VAL;
        numHits += isHit;
        numWrong += isHit != (params[i] >= 0) || (nearest && isHit && std::abs(params[i] - best) > 1e-3 * best);
    }
    return numWrong <= casts.count() / 50 && numHits > casts.count() / 2;
}

void shareOut(std::size_t count, int numThreads, const std::function<void(std::size_t, std::size_t)>& work)
{
    std::vector<std::thread> threads;
    const auto parts = static_cast<std::size_t>(numThreads);
    for (std::size_t part = 1; part < parts; ++part)
        threads.emplace_back(work, count * part / parts, count * (part + 1) / parts);
    work(0, count / parts);
    for (std::thread& thread : threads) thread.join();
}

} // namespace bench

namespace {

/// In a copy that is large enough for every triangle to be seen.
class TracerIndex
{
public:
    explicit TracerIndex(const bench::Soup& soup)
        : mesh_(bench::toCompact(soup)), scale_(std::exp2(std::round(std::log2(1000 / bench::boxOf(soup).diagonal()))))
    {
        znGeom::meshTransform(*mesh_, znLinear::AffineMatrixFlt(static_cast<float>(scale_)));
        znGeom::BoundingBox box;
        znGeom::meshBoundingBox(*mesh_, box);
        octree_ = std::make_unique<znGeom::Octree>(mesh_->getNumVertices(), mesh_->getVerticesRaw(), box, true, 16);
        znGeom::computeOctreeTris(*mesh_, *octree_, triangles_);
        tree_ = std::make_unique<znGeom::TriangleTree>(*mesh_);
    }

    void cast(const float* from, const float* to, std::size_t count, bool nearest, double* params) const
    {
        znGeom::RayTracer tracer(*octree_, triangles_, mesh_.get(), *tree_);
        tracer.setFindNearestHit(nearest);
        for (std::size_t i = 0; i < count; ++i, from += 3, to += 3) {
            const znLinear::Point origin((znLinear::PointFlt(from))), target((znLinear::PointFlt(to)));
            const znLinear::PointFlt scaled((origin.asVector() * scale_).asPoint());
            const bool hit = tracer.intersect(scaled, (target - origin) * scale_);
            params[i] = !hit ? -1 : nearest ? tracer.intersectionDist() : 0;
        }
    }

private:
    std::unique_ptr<znGeom::CompactMesh> mesh_;
    double scale_;
    std::unique_ptr<znGeom::Octree> octree_;
    znGeom::OctreeTris triangles_;
    std::unique_ptr<znGeom::TriangleTree> tree_;
};

[[maybe_unused]] const bool listed = bench::measureCasts<TracerIndex>("znGeom");

} // namespace

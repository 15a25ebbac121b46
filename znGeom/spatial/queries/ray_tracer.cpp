#include "znGeom/spatial/queries/ray_tracer.h"

#include <optional>

#include "znGeom/spatial/queries/internal/ray_search.h"
#include "znGeom/spatial/queries/internal/ray_walk.h"

namespace znGeom {

using namespace znLinear;

namespace {

/// What making a tree costs for each triangle, in the units of `RayWalk::search`.
constexpr double treeCost = 6;

} // namespace

struct RayTracer::Engine
{
    const CompactMesh& mesh;
    const Octree& octree;
    const OctreeTris& octreeTris;
    const TriangleTree* tree; ///< null as long as there is none
    bool isTreeUsable = true;
    double walked = 0;
    zn::Reference<TriangleTree> ownTree;
    std::optional<internal::RayWalk> walk;

    void useTree(const TriangleTree& used)
    {
        tree = &used;
        const internal::PackedTriangles& triangles = used.triangles();
        isTreeUsable = triangles.numTriangles > 0 && triangles.isExact && octree.getRoot().box.contains(triangles.box);
    }

    void search(const internal::RayQuestion& question, internal::NearestHit& hit)
    {
        if (!tree && walked > treeCost * mesh.getNumTriangles()) {
            ownTree = new TriangleTree(mesh);
            useTree(*ownTree);
        }
        if (tree && isTreeUsable && internal::searchAlongRay(tree->triangles(), question, hit)) return;
        if (!walk) walk.emplace(mesh, octree, octreeTris);
        walked += walk->search(question, hit);
    }
};

RayTracer::RayTracer(const Octree& octree, const OctreeTris& octreeTris, const CompactMesh* mesh)
    : m_engine(new Engine{*mesh, octree, octreeTris, nullptr, true, 0, {}, {}})
{}

RayTracer::RayTracer(const Octree& octree, const OctreeTris& octreeTris, const CompactMesh* mesh,
                     const TriangleTree& tree)
    : RayTracer(octree, octreeTris, mesh)
{
    m_engine->useTree(tree);
}

RayTracer::~RayTracer() = default;

bool RayTracer::intersect(const PointFlt& origin, const Vector& direction)
{
    const internal::RayQuestion question{origin, direction, m_findNearest};
    internal::NearestHit hit(question);
    if (question.isUsable()) m_engine->search(question, hit);
    if (m_findNearest) {
        m_distance = hit.param();
        m_coord = hit.coord();
    } else {
        m_distance = static_cast<double>(BoundingBox::largest);
        m_coord = MeshCoord();
    }
    return hit.isHit();
}

} // namespace znGeom

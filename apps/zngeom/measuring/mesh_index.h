/// `tool::MeshIndex`: the trees of a mesh that many questions are put to.
#pragma once

#include <optional>

#include "apps/zngeom/frame/cancel_on_signal.h"
#include "apps/zngeom/frame/pacer.h"
#include "znGeom/analysis/bounds.h"
#include "znGeom/spatial/trees/octree_partition.h"
#include "znGeom/spatial/trees/triangle_tree.h"

namespace tool {

struct MeshIndex
{
    const znGeom::CompactMesh& mesh; ///< must not change
    std::optional<znGeom::Octree> octree;
    znGeom::OctreeTris octreeTris;
    std::optional<znGeom::TriangleTree> tree;

    /// May be cancelled.
    MeshIndex(const znGeom::CompactMesh& indexed, znUtil::Progress& progress) : mesh(indexed)
    {
        constexpr int leafCapacity = 16;
        const EndOnSignal endOnSignal(progress);
        progress.setCaption("indexing");
        znGeom::BoundingBox box;
        znGeom::meshBoundingBox(mesh, box);
        octree.emplace(mesh.getNumVertices(), mesh.getVerticesRaw(), box, true, leafCapacity);
        checkCancelled(progress);
        progress.set(0.2);
        znGeom::computeOctreeTris(mesh, *octree, octreeTris);
        checkCancelled(progress);
        progress.set(0.6);
        tree.emplace(mesh);
        checkCancelled(progress);
        progress.set(1);
    }
};

} // namespace tool

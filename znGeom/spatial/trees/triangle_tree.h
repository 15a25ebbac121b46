/// `znGeom::TriangleTree`: the index with which `MeshClosestPoint` answers fast.
#pragma once

#include <cstddef>
#include <memory>

#include "znGeom/foundation/containers/reference.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/threads/thread_pool.h"

namespace znGeom {

namespace internal {
struct PackedTriangles;
}

/// A tree over the triangles of a mesh for searches for nearest points. It only affects speed: no answer depends on it.
/// Octree and triangle sets do without it, so callers with many queries make it: at about 0.1 us a triangle it has paid
/// for itself after one query for every fifty triangles or so.
///
/// A snapshot of the mesh; immutable, and read by any number of threads. It takes about 45 bytes a triangle.
class ZNGEOM_API TriangleTree : public zn::ReferenceCount
{
public:
    /// \param mesh  not needed afterwards; triangles with a corner that is not finite have no nearest point and are
    ///              left out
    ///
    /// n log n. Takes another 36 bytes a triangle during construction.
    explicit TriangleTree(const CompactMesh& mesh, znUtil::ThreadPool& pool = znUtil::ThreadPool::get());
    ~TriangleTree() override;

    /// The memory that it takes.
    std::size_t numBytes() const;

    /// For the engines.
    const internal::PackedTriangles& triangles() const { return *m_triangles; }

private:
    std::unique_ptr<const internal::PackedTriangles> m_triangles;
};

} // namespace znGeom

/// `tool::TriangleDataKeeper`: what a file says about each triangle, while the mesh changes.
#pragma once

#include <vector>

#include "apps/zngeom/files/loaded_mesh.h"
#include "znGeom/foundation/mesh/mesh_modification.h"
#include "znGeom/foundation/signals/signal.h"

namespace tool {

/// While it lives, the groups of a loaded mesh, and its texture coordinates and normals per corner, follow the
/// triangles that are removed and turned over.
class TriangleDataKeeper : public znRTB::SignalClient
{
public:
    /// \param loaded  must outlive this
    explicit TriangleDataKeeper(LoadedMesh& loaded);

private:
    void follow(const znGeom::MeshModification& modification);
    void remove(const znGeom::Remap& triangles);
    void turn();

    LoadedMesh& m_loaded;
    std::vector<znGeom::MeshTriangle> m_triangles; ///< as they were after the last change
};

} // namespace tool

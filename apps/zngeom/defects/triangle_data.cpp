#include "apps/zngeom/defects/triangle_data.h"

#include <array>

namespace tool {

namespace {

/// Keeps the blocks of some values whose triangles stay.
template <typename Values>
void keep(Values& values, int blockSize, const znGeom::Remap& triangles)
{
    if (values.empty()) return;
    int kept = 0;
    for (int triangle = 0; triangle < triangles.getDomainSize(); ++triangle) {
        if (triangles(triangle) < 0) continue;
        for (int i = 0; i < blockSize; ++i) values[kept * blockSize + i] = values[triangle * blockSize + i];
        ++kept;
    }
    values.setSize(kept * blockSize);
}

/// Gives each corner the value that its vertex had in the triangle; a vertex that is new has come to an old one's
/// place.
template <typename Values>
void permute(Values& values, int triangle, const znGeom::MeshTriangle& before, const znGeom::MeshTriangle& after)
{
    if (values.empty()) return;
    const auto first = values.begin() + 3 * triangle;
    const std::array old{first[0], first[1], first[2]};
    for (int i = 0; i < 3; ++i) {
        const int from = znGeom::cornerOf(before, after[i]);
        first[i] = old[static_cast<std::size_t>(from < 0 ? i : from)];
    }
}

bool isTurned(const znGeom::MeshTriangle& before, const znGeom::MeshTriangle& after)
{
    return hasDirectedEdge(after, before[1], before[0]);
}

} // namespace

TriangleDataKeeper::TriangleDataKeeper(LoadedMesh& loaded)
    : m_loaded(loaded),
      m_triangles(loaded.mesh.getTriangles(), loaded.mesh.getTriangles() + loaded.mesh.getNumTriangles())
{
    loaded.mesh.modifiedSignal().addCallback(
        [this](znGeom::EntityModification& change) { follow(static_cast<const znGeom::MeshModification&>(change)); },
        *this);
}

void TriangleDataKeeper::follow(const znGeom::MeshModification& modification)
{
    const znGeom::CompactMesh& mesh = m_loaded.mesh;
    const znGeom::MeshRemap* remap = modification.getRemap();
    if (remap && remap->triangles()) {
        remove(*remap->triangles());
    } else if (mesh.getNumTriangles() == 0) {
        // No map is sent where everything goes.
        remove(znGeom::Remap(static_cast<int>(m_triangles.size()), 0));
    } else {
        turn();
    }
    m_triangles.assign(mesh.getTriangles(), mesh.getTriangles() + mesh.getNumTriangles());
}

void TriangleDataKeeper::remove(const znGeom::Remap& triangles)
{
    keep(m_loaded.groups.ofTriangle, 1, triangles);
    keep(m_loaded.cornerUVs, 3, triangles);
    keep(m_loaded.cornerNormals, 3, triangles);
}

void TriangleDataKeeper::turn()
{
    for (std::size_t i = 0; i < m_triangles.size(); ++i) {
        const int triangle = static_cast<int>(i);
        const znGeom::MeshTriangle& after = m_loaded.mesh.getTriangles()[triangle];
        permute(m_loaded.cornerUVs, triangle, m_triangles[i], after);
        permute(m_loaded.cornerNormals, triangle, m_triangles[i], after);
        if (m_loaded.cornerNormals.empty() || !isTurned(m_triangles[i], after)) continue;
        for (int corner = 3 * triangle; corner < 3 * triangle + 3; ++corner) {
            znGeom::MeshNormal& normal = m_loaded.cornerNormals[corner];
            normal.set(-normal.x, -normal.y, -normal.z);
        }
    }
}

} // namespace tool

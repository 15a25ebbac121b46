#include "znGeom/editing/delete_selected.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "znGeom/editing/select.h"
#include "znGeom/foundation/mesh/bit_runs.h"
#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"

namespace znGeom {

namespace {

/// The selected vertices that only selected triangles use, or none.
BitVector findUnneededVertices(const CompactMesh& mesh)
{
    const BitVector& selected = mesh.getSelectedVertices();
    BitVector unneeded = selected;
    if (selected.getNumSetBits() == 0) return unneeded;
    zn::vector<bool> needed(mesh.getNumVertices(), false);
    bool* isNeeded = needed.data();
    const MeshTriangle* triangles = mesh.getTriangles();
    forEachClearRun(mesh.getSelectedTriangles(), [isNeeded, triangles](int begin, int end) {
        for (int t = begin; t < end; ++t)
            for (const int corner : triangles[t].corners) isNeeded[corner] = true;
    });
    forEachSetBit(selected, [isNeeded, &unneeded](int v) {
        if (isNeeded[v]) unneeded.clearBit(v);
    });
    return unneeded;
}

/// Moves the records that stay to the front, in their order. Every record is written where the next one that stays
/// belongs, and only those that stay advance that place: a test of each bit would be mispredicted where a selection is
/// ragged.
/// \param finish  called with the first and the end of each few records that were moved, while they are at hand
template <typename Record, typename Finish>
void moveDown(const BitVector& deleted, Record* records, const Finish& finish)
{
    const std::uint32_t* words = deleted.getWords();
    const int size = deleted.getSize();
    Record* next = records;
    for (int first = 0; first < size; first += 32) {
        std::uint32_t word = words[first >> 5];
        const int end = first + std::min(size - first, 32);
        Record* const moved = next;
        for (int i = first; i < end; ++i, word >>= 1) {
            *next = records[i];
            next += ~word & 1u;
        }
        finish(moved, next);
    }
}

template <typename Record>
void moveDown(const BitVector& deleted, Record* records)
{
    moveDown(deleted, records, [](Record*, Record*) {});
}

} // namespace

void MeshDeleteSelected::operator()(const MeshAdjTris& adjTris, const zn::vector<int>& triangles)
{
    BitVector& selected = m_mesh->getSelectedTriangles();
    selected.resize(m_mesh->getNumTriangles());
    selected.clearBits();
    selected.setBits(triangles.size(), triangles.data());
    MeshSelect(*m_mesh, adjTris).selectVerticesFromTriangles();
    (*this)();
}

void MeshDeleteSelected::operator()()
{
    BitVector &triangles = m_mesh->getSelectedTriangles(), &vertices = m_mesh->getSelectedVertices();
    const int numVertices = m_mesh->getNumVertices(), numTriangles = m_mesh->getNumTriangles();
    if (triangles.getNumSetBits() > 0) triangles.resize(numTriangles); // which may take the last set bit
    if (triangles.getNumSetBits() == 0) return;
    vertices.resize(numVertices);
    if (triangles.getNumSetBits() == numTriangles) {
        deleteAll();
        return;
    }

    znOS::StopWatch watch;
    const BitVector deleted = findUnneededVertices(*m_mesh);
    debugChannel().print("meshDeleteSelected:  vertices %d(%d)  triangles %d(%d)\n", vertices.getNumSetBits(),
                         numVertices, triangles.getNumSetBits(), numTriangles);
    deleteVertices(deleted);
    debugChannel().print("  delete vertices: %f s\n", watch.clear());
    watch.start();

    const zn::Reference<Remap> triangleRemap(new Remap);
    deleteTriangles(*triangleRemap);
    debugChannel().print("  delete triangles: %f s\n", watch.stop());

    vertices.resize(0);
    triangles.resize(0);
    MeshRemap remap(m_vertexRemap.get(), triangleRemap.get());
    MeshModification modification(m_mesh, MeshModification::TopologyChanged, &remap);
    if (m_mesh->getUVs()) modification.uvsValid();
    m_mesh->modified(modification);
}

void MeshDeleteSelected::deleteAll()
{
    const int numVertices = m_mesh->getNumVertices();
    debugChannel().print("meshDeleteSelected:  deleting all vertices(%d) and triangles(%d)\n", numVertices,
                         m_mesh->getNumTriangles());
    m_vertexRemap = new Remap(numVertices, 0);
    m_mesh->resizeVertexArray(0);
    m_mesh->resizeTriangleArray(0);
    m_mesh->getSelectedVertices().resize(0);
    m_mesh->getSelectedTriangles().resize(0);
    MeshModification modification(m_mesh, MeshModification::TopologyChanged);
    m_mesh->modified(modification);
}

void MeshDeleteSelected::deleteVertices(const BitVector& deleted)
{
    m_vertexRemap = new Remap;
    m_vertexRemap->setDeleteMap(deleted);
    if (deleted.getNumSetBits() == 0) return;
    moveDown(deleted, m_mesh->getVertices());
    if (MeshUV* uvs = m_mesh->getUVs()) moveDown(deleted, uvs);
    m_mesh->resizeVertexArray(m_vertexRemap->range);
}

void MeshDeleteSelected::deleteTriangles(Remap& triangleRemap)
{
    const BitVector& deleted = m_mesh->getSelectedTriangles();
    triangleRemap.setDeleteMap(deleted);
    const int* newVertices = std::as_const(*m_vertexRemap).data();
    moveDown(deleted, m_mesh->getTriangles(), [newVertices](MeshTriangle* first, MeshTriangle* end) {
        for (MeshTriangle* triangle = first; triangle != end; ++triangle)
            for (int& corner : triangle->corners) corner = newVertices[corner];
    });
    m_mesh->resizeTriangleArray(triangleRemap.range);
}

} // namespace znGeom

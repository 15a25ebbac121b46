/// `znGeom::Remap` and `znGeom::MeshRemap`: maps from old indices to new ones.
#pragma once

#include "znGeom/foundation/mesh/array.h"
#include "znGeom/foundation/mesh/bit_vector.h"

namespace znGeom {

/// A total map from old indices to new ones. -1 means that the old index has no image: it was deleted. Several old
/// indices may map to one new one. Indices are trusted.
class ZNGEOM_API Remap : public zn::ReferenceCount
{
public:
    Remap() = default;
    /// Every entry -1.
    Remap(int domain, int newRange) { resize(domain, newRange); }

    /// The size of the new index space. Public, because a producer that counts while it maps sets it at the end.
    int range = 0;

    /// New entries are -1; old ones stay.
    void resize(int domain, int newRange);
    int getDomainSize() const { return m_map.size(); }

    void set(int from, int to) { m_map[from] = to; }
    int operator()(int index) const { return m_map[index]; }
    /// Replaces each of `count` values by its image.
    void operator()(int* values, int count) const;

    /// The identity on the present domain.
    void setSequential();

    /// Numbers the clear bits 0, 1, 2, ... in order and gives the set bits -1. The domain becomes the vector's size,
    /// the range the number of clear bits.
    void setDeleteMap(const BitVector& deleted);

    /// The entries themselves, one per old index.
    int* data() { return m_map.write(); }
    const int* data() const { return m_map.read(); }

private:
    Array<int> m_map;
};

/// The maps of one change of a mesh; either may be null. Nothing is owned.
class MeshRemap
{
public:
    MeshRemap(Remap* vertices, Remap* triangles) : m_vertices(vertices), m_triangles(triangles) {}
    Remap* vertices() const { return m_vertices; }
    Remap* triangles() const { return m_triangles; }

private:
    Remap* m_vertices;
    Remap* m_triangles;
};

} // namespace znGeom

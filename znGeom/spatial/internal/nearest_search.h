/// The fast search for the nearest triangle.
#pragma once

#include "znGeom/spatial/internal/nearest_triangle.h"
#include "znGeom/spatial/internal/search_boxes.h"

namespace znGeom {

/// Finds the nearest triangle depth first, the nearer child first, by the boxes of what lies in each cell.
///
/// The answer is that of a walk over the leaves by rising distance of their cells, in which the first of several
/// triangles at exactly the same distance stays: with the nearest triangle its nearest leaf is kept, and a triangle
/// that is exactly as near replaces it only from a nearer leaf, or from an earlier place in the same one. Where that
/// does not decide - two leaves at exactly the same distance, or a distance that is not beyond that of the leaf - the
/// search says so, and such a walk has to be made.
class NearestSearch
{
public:
    NearestSearch(const CompactMesh& mesh, const OctreeTris& octreeTris, const SearchBoxes& boxes, double extent,
                  const znLinear::Point& query)
        : m_entries(octreeTris.getData().elements.read()), m_boxes(boxes), m_query(query),
          m_nearest(mesh, query, std::numeric_limits<double>::max(), extent, &m_coord)
    {}

    /// \return false when another search has to decide
    bool run();

    double distance2() const { return m_nearest.best2(); }
    const MeshCoord& coord() const { return m_coord; }

private:
    /// A cell that waits.
    struct Pending
    {
        float lower2; ///< below the squared distance of anything in it
        int cell;     ///< its number
        SearchBoxes::Cell content;
    };
    /// An entry of the triangle sets, the first one of its leaf, and the squared distance of that leaf.
    struct Place
    {
        int entry = -1, leaf = -1;
        double leafDistance2 = 0;
    };

    int pushChildren(const Pending& parent, Pending* stack, int size) const;
    void prefetch(SearchBoxes::Cell cell) const;
    void testLeaf(const Pending& leaf);
    void testEntries(const Pending& leaf, int first, int count, float* lower2);
    void testEntry(const Pending& leaf, int entry);

    const int* m_entries; ///< the triangles of all leaves
    const SearchBoxes& m_boxes;
    znLinear::PointFlt m_query;
    MeshCoord m_coord;
    NearestTriangle m_nearest;
    Place m_best; ///< the first place, in the order of the walk, of the nearest triangle
    bool m_isUndecided = false;
};

} // namespace znGeom

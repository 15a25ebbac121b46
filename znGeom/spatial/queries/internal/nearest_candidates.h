/// The search for all triangles that may be the nearest one.
#pragma once

#include <vector>

#include "znGeom/spatial/trees/internal/packed_triangles.h"

namespace znGeom::internal {

/// The triangles of a tree that may be nearest to a point, as a search in `float` sees it: all that are not farther
/// than the nearest one by more than half the margin of the frame, and few others.
class NearestCandidates
{
public:
    struct Candidate
    {
        float lower2; ///< below its squared distance, except for the margin
        int place;    ///< the number of the leaf times eight, and the place there
    };

    /// Replaces the candidates. Allocates no memory once it has grown to the size.
    /// \param known  a distance within which some triangle lies, in the frame, rounding aside; infinite when unknown
    void search(const PackedTriangles& tree, const FrameQuery& query, double known);

    const Candidate* begin() const { return m_found.data(); }
    const Candidate* end() const { return m_found.data() + m_count; }
    int count() const { return static_cast<int>(m_count); }

private:
    class Walk;

    std::vector<Candidate> m_found;
    size_t m_count = 0;
};

} // namespace znGeom::internal

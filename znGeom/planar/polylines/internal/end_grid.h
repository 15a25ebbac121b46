/// The ends of segments, found by a box around one of them.
#pragma once

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/linear/point.h"

namespace znGeom::internal {

/// A hashed grid of points whose cells are some times as wide as the boxes that it is asked for, so that a box lies in
/// one or two of them, and what lies in these is near the box.
class EndGrid
{
public:
    /// \param ends       must outlive this; those with a coordinate that is not finite are never found
    /// \param tolerance  half the width of a box
    EndGrid(const zn::vector<znLinear::PointFlt>& ends, float tolerance);

    /// The indices of the ends in the box around one of them, itself included, ascending: good until the next call.
    /// What is on the border of the box counts.
    const zn::vector<int>& findNear(const znLinear::PointFlt& centre);

private:
    struct Entry
    {
        znLinear::PointFlt point;
        int index;
    };

    double cellAlong(double coordinate) const;
    int bucketOf(double x, double y, double z) const;
    void addFrom(int bucket, const float* low, const float* high);

    float m_tolerance;
    double m_cellsPerUnit;
    unsigned m_mask = 0;
    zn::vector<int> m_firsts;    ///< per bucket, and the end of the last one
    zn::vector<Entry> m_entries; ///< ascending within a bucket
    zn::vector<int> m_found;
};

} // namespace znGeom::internal

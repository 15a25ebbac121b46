/// The free leaves of a tree of rectangles, found by the first that is large enough.
#pragma once

#include <array>

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/linear/range.h"

namespace znGeom::internal {

/// The leaves that are still free in a tree that cuts the unit square, in the order in which a walk through the tree
/// meets them, each first child before its second.
///
/// They stand in blocks. For each block and each of 32 classes of heights, a quarter of an octave apart, the width of
/// the widest leaf of that height or more is known, so few blocks without a fitting leaf are looked through.
class FreeLeaves
{
public:
    /// Back to one leaf, the unit square.
    ///
    /// \param greatestHeight  of what is to be placed: heights are told apart best in the eight octaves below it
    void reset(double greatestHeight);

    /// Cuts a rectangle of this size out of the first leaf that it fits into.
    ///
    /// \param leastLater  the least width and the least height of all that is still to come; leaves below are forgotten
    /// \param place       where it came to lie; unchanged when it fits nowhere
    bool place(const znLinear::Point2& size, const znLinear::Point2& leastLater, znLinear::Range2d& place);

    /// Whether a leaf of one length along one axis has room for another: it may be shorter by less than the tolerance.
    bool hasRoom(double length, double needed) const { return length - needed > -m_tolerance; }
    bool hasRoom(const znLinear::Point2& length, const znLinear::Point2& needed) const
    {
        return hasRoom(length.x, needed.x) && hasRoom(length.y, needed.y);
    }

private:
    static constexpr int blockSize = 32, numClasses = 32;

    struct Block
    {
        int count = 0;
        std::array<double, blockSize> width, height;
        std::array<znLinear::Range2d, blockSize> range;
    };

    /// The up to two leaves that a cut leaves, in order.
    struct Rest
    {
        int count = 0;
        znLinear::Range2d range[2];
    };

    Block& blockAt(int rank) { return m_blocks[m_order[rank]]; }
    int classOf(double height) const;
    int firstFit(const Block& block, const znLinear::Point2& size) const;
    Rest cut(znLinear::Range2d& leaf, const znLinear::Point2& size, const znLinear::Point2& leastLater) const;
    void replace(int rank, int leaf, const Rest& rest);
    void split(int rank);
    void insertBlock(int rank);
    void updateWidest(int rank);

    double m_tolerance = 0;
    int m_lowestClass = 0;
    int m_numUsed = 0;                       ///< blocks in use; those beyond are kept for later
    zn::vector<Block> m_blocks;              ///< in no order
    zn::vector<int> m_order;                 ///< the blocks in the order of their leaves
    zn::vector<double> m_widest[numClasses]; ///< per class of heights, by the rank of the block
};

} // namespace znGeom::internal

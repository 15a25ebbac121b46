/// An order in which the unknowns of a sparse system are eliminated with little fill-in.
#pragma once

#include <span>

#include "znGeom/foundation/linear/point.h"
#include "znGeom/solvers/internal/flat_rows.h"

namespace znGeom::internal {

/// A tree of parts: the unknowns that separate the two halves of a part are eliminated after both of them, and so they
/// never mix. After George, "Nested Dissection of a Regular Finite Element Mesh" (1973), with halves by position.
class Dissection
{
public:
    /// A part without its halves.
    struct Node
    {
        int begin, end;                     ///< its own unknowns, by their places in the order
        int halves[2] = {-1, -1};           ///< nodes of higher numbers
        int borderBegin = 0, borderEnd = 0; ///< in the list of all borders
        int numOwn() const { return end - begin; }
        int numRows() const { return numOwn() + borderEnd - borderBegin; }
    };

    /// \param matrix  symmetric as to which entries are stored
    /// \param points    one for each unknown, all of them finite. Those near one another should be joined by entries
    /// \param numKinds  unknown i is of kind i % numKinds. Parts in which few unknowns are joined to another kind are
    ///                  divided by kind
    Dissection(const FlatRows& matrix, std::span<const znLinear::Point> points, int numKinds = 1);

    /// From the whole to its parts. To be eliminated from the last to the first.
    const zn::vector<Node>& nodes() const { return m_nodes; }
    /// The unknown at each place of the order of elimination, and the place of each unknown.
    const zn::vector<int>& order() const { return m_order; }
    const zn::vector<int>& places() const { return m_places; }
    /// The places after those of a part that are joined to it once it is eliminated, ascending.
    std::span<const int> border(const Node& node) const
    {
        return {m_borders.begin() + node.borderBegin, m_borders.begin() + node.borderEnd};
    }

private:
    void findMixed();
    void divide(int node, std::span<const znLinear::Point> points);
    bool divideByKind(int node);
    void setHalves(int node, int begin, int middle, int separator);
    int splitOff(int begin, int middle, int end);
    int addNode(int begin, int end);
    void findBorder(Node& node);

    const FlatRows& m_matrix;
    int m_numKinds;
    zn::vector<bool> m_isMixed; ///< by unknown: joined to one of another kind
    zn::vector<int> m_order, m_places;
    zn::vector<Node> m_nodes;
    zn::vector<int> m_borders;
    zn::vector<int> m_marks; ///< by unknown: the last part that it was found in
};

} // namespace znGeom::internal

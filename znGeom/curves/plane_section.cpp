#include "znGeom/curves/plane_section.h"

#include "znGeom/curves/internal/plane_walk.h"
#include "znGeom/foundation/mesh/bit_vector.h"

namespace znGeom {

namespace {

class Sections
{
public:
    Sections(const CompactMesh& mesh, const znLinear::Plane& plane)
        : m_mesh(mesh), m_walk(mesh, plane, true), m_crossed(3 * mesh.getNumTriangles()),
          m_across(internal::sidesAcross(mesh))
    {
        for (int side = 0; side < m_across.size(); ++side)
            if (m_walk.crosses(side) && m_walk.otherCrossed(side) >= 0) m_sides.append(side);
        m_crossed.setBits(m_sides.size(), m_sides.data());
        m_left = m_crossed;
    }

    zn::vector<zn::Reference<MeshCurve>> all()
    {
        for (const int side : m_sides)
            if (m_left[side] && beyond(side) < 0) follow(side);
        for (const int side : m_sides)
            if (m_left[side]) follow(side);
        return m_curves;
    }

private:
    /// The side across which a curve goes on, or -1.
    int beyond(int side) const
    {
        const int across = m_across[side];
        return across >= 0 && m_crossed[across] ? across : -1;
    }

    /// The curve that enters a triangle over a side.
    void follow(int first)
    {
        const bool closed = beyond(first) >= 0;
        std::deque<MeshCoord> coords;
        if (!closed) append(coords, first);
        int side = first;
        do {
            const int exit = m_walk.otherCrossed(side);
            m_left.clearBit(side);
            m_left.clearBit(exit);
            append(coords, exit);
            side = beyond(exit);
        } while (side >= 0 && side != first);
        while (closed && coords.size() > 1 && isSame(coords.front(), coords.back())) coords.pop_back();
        if (coords.size() > 1) m_curves.append(new MeshCurve(coords, closed));
    }

    void append(std::deque<MeshCoord>& coords, int side) const
    {
        const MeshCoord coord = m_walk.crossing(side);
        if (coords.empty() || !isSame(coords.back(), coord)) coords.push_back(coord);
    }

    /// At one vertex, or at one place within a triangle.
    bool isSame(const MeshCoord& a, const MeshCoord& b) const
    {
        const int vertex = internal::vertexAt(m_mesh, a);
        if (vertex >= 0) return vertex == internal::vertexAt(m_mesh, b);
        return a.evaluate(m_mesh.getVertices(), m_mesh.getTriangles()) ==
               b.evaluate(m_mesh.getVertices(), m_mesh.getTriangles());
    }

    const CompactMesh& m_mesh;
    internal::PlaneWalk m_walk;
    BitVector m_crossed;
    BitVector m_left; ///< those of the crossed sides that are on no curve yet
    zn::vector<int> m_across, m_sides;
    zn::vector<zn::Reference<MeshCurve>> m_curves;
};

} // namespace

zn::vector<zn::Reference<MeshCurve>> meshPlaneSection(const CompactMesh& mesh, const znLinear::Plane& plane)
{
    return Sections(mesh, plane).all();
}

} // namespace znGeom

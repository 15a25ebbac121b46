#include "znGeom/curves/plane_section.h"

#include <algorithm>
#include <cstdint>

#include "znGeom/curves/internal/plane_walk.h"

namespace znGeom {

namespace {

/// The sides that a plane crosses, two for each triangle that it cuts, and the curves through them.
class Sections
{
public:
    Sections(const CompactMesh& mesh, const znLinear::Plane& plane) : m_mesh(mesh), m_walk(mesh, plane, true)
    {
        collectSides(plane);
        pairSides();
    }

    zn::vector<zn::Reference<MeshCurve>> all()
    {
        zn::vector<bool> isDone(m_sides.size(), false);
        for (const bool openOnes : {true, false})
            for (int i = 0; i < m_sides.size(); ++i)
                if (!isDone[i] && (!openOnes || m_across[i] < 0)) follow(i, isDone);
        return m_curves;
    }

private:
    enum Place : std::int8_t { Below, Above, Nowhere };

    /// Those of one triangle stand side by side.
    void collectSides(const znLinear::Plane& plane)
    {
        zn::vector<Place> places(m_mesh.getNumVertices());
        for (int v = 0; v < places.size(); ++v) {
            const double height = plane.eval(m_mesh.getVertices()[v].asPoint());
            places[v] = !std::isfinite(height) ? Nowhere : height >= 0 ? Above : Below;
        }
        const MeshTriangle* const triangles = m_mesh.getTriangles();
        for (int t = 0; t < m_mesh.getNumTriangles(); ++t) {
            const auto [a, b, c] = triangles[t].corners;
            if ((places[a] == places[b] && places[b] == places[c]) || places[a] == Nowhere || places[b] == Nowhere ||
                places[c] == Nowhere)
                continue;
            for (int corner = 0; corner < 3; ++corner)
                if (places[triangles[t][corner]] != places[triangles[t][cornerAfter(corner)]])
                    m_sides.append(3 * t + corner);
        }
    }

    /// Finds for each side the one along the same edge; -1 where there is none, or more than one.
    void pairSides()
    {
        struct Along
        {
            int low, high, place;
            bool isWith(const Along& other) const { return low == other.low && high == other.high; }
        };
        zn::vector<Along> order;
        for (int i = 0; i < m_sides.size(); ++i) {
            const MeshTriangle& triangle = m_mesh.getTriangles()[m_sides[i] / 3];
            const int from = triangle[m_sides[i] % 3], to = triangle[cornerAfter(m_sides[i] % 3)];
            order.append({std::min(from, to), std::max(from, to), i});
        }
        std::sort(order.begin(), order.end(), [](const Along& a, const Along& b) {
            return a.low != b.low ? a.low < b.low : a.high != b.high ? a.high < b.high : a.place < b.place;
        });
        m_across = zn::vector<int>(m_sides.size(), -1);
        for (int first = 0, end = 0; first < order.size(); first = end) {
            while (end < order.size() && order[end].isWith(order[first])) ++end;
            if (end - first != 2) continue;
            m_across[order[first].place] = order[first + 1].place;
            m_across[order[first + 1].place] = order[first].place;
        }
    }

    /// The curve that enters a triangle over a side.
    void follow(int first, zn::vector<bool>& isDone)
    {
        const bool closed = m_across[first] >= 0;
        std::deque<MeshCoord> coords;
        if (!closed) append(coords, first);
        int entry = first;
        do {
            const int exit = entry ^ 1;
            isDone[entry] = isDone[exit] = true;
            append(coords, exit);
            entry = m_across[exit];
        } while (entry >= 0 && entry != first);
        while (closed && coords.size() > 1 && isSame(coords.front(), coords.back())) coords.pop_back();
        if (coords.size() > 1) m_curves.append(new MeshCurve(coords, closed));
    }

    void append(std::deque<MeshCoord>& coords, int place) const
    {
        const MeshCoord coord = m_walk.crossing(m_sides[place]);
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
    zn::vector<int> m_sides;  ///< 3 * triangle + corner
    zn::vector<int> m_across; ///< by places in `m_sides`
    zn::vector<zn::Reference<MeshCurve>> m_curves;
};

} // namespace

zn::vector<zn::Reference<MeshCurve>> meshPlaneSection(const CompactMesh& mesh, const znLinear::Plane& plane)
{
    return Sections(mesh, plane).all();
}

} // namespace znGeom

#include "znGeom/topology/orient_faces.h"

#include "znGeom/topology/topo_walks.h"

namespace znGeom {

using namespace znLinear;

namespace {

bool runAlike(TopoMeshEdge e) { return e->twin->origin == e->origin && endOf(e) != e->origin; }

class Orientation
{
public:
    explicit Orientation(zn::vector<bool>& reversed, int numNumbers) : m_reversed(reversed), m_isMet(numNumbers, false)
    {
        m_reversed = zn::vector<bool>(numNumbers, false);
    }

    /// Settles all that is connected to a face. False where that can't be done.
    bool settleFrom(TopoMeshFace first)
    {
        m_faces.clear();
        m_isClosed = m_isPossible = true;
        int numReversed = 0;
        meet(first, false);
        for (int next = 0; next < m_faces.size(); ++next) {
            numReversed += m_reversed[m_faces[next].number()] ? 1 : 0;
            for (const TopoMeshEdge e : sidesOf(m_faces[next])) cross(e);
        }
        if (numReversed > 0 && m_isClosed && m_isPossible && volume() < 0)
            for (const TopoMeshFace face : m_faces) m_reversed[face.number()] = !m_reversed[face.number()];
        return m_isPossible;
    }
    bool isMet(TopoMeshFace face) const { return m_isMet[face.number()]; }

private:
    void meet(TopoMeshFace face, bool isReversed)
    {
        m_isMet[face.number()] = true;
        m_reversed[face.number()] = isReversed;
        m_faces.append(face);
    }

    void cross(TopoMeshEdge e)
    {
        if (!e->twin) {
            m_isClosed = false;
            return;
        }
        const TopoMeshFace beyond = e->twin->face;
        const bool isReversed = m_reversed[e->face.number()] != runAlike(e);
        if (!isMet(beyond))
            meet(beyond, isReversed);
        else if (m_reversed[beyond.number()] != isReversed)
            m_isPossible = false;
    }

    /// Six times that, from near the surface.
    double volume() const
    {
        const Point near = m_faces[0]->edge->origin->point;
        double sum = 0;
        for (const TopoMeshFace face : m_faces) {
            const Vector first = face->edge->origin->point - near;
            double ofFace = 0;
            for (TopoMeshEdge e = face->edge->next; e->next != face->edge; e = e->next)
                ofFace += dot(first, znLinear::cross(e->origin->point - near, endOf(e)->point - near));
            sum += m_reversed[face.number()] ? -ofFace : ofFace;
        }
        return sum;
    }

    zn::vector<bool>& m_reversed;
    zn::vector<bool> m_isMet;
    zn::vector<TopoMeshFace> m_faces; ///< those that are connected
    bool m_isClosed = true, m_isPossible = true;
};

} // namespace

bool meshOrientFaces(const TopoMesh& mesh, zn::vector<bool>& reversed)
{
    Orientation orientation(reversed, mesh.faceNumbers());
    bool isPossible = true;
    for (const TopoMeshFace face : facesOf(mesh))
        if (!orientation.isMet(face)) isPossible = orientation.settleFrom(face) && isPossible;
    return isPossible;
}

} // namespace znGeom

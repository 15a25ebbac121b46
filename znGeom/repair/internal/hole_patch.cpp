#include "znGeom/repair/internal/hole_patch.h"

#include <cmath>
#include <unordered_map>
#include <utility>

#include "znGeom/planar/shapes/internal/polygon_frame.h"
#include "znGeom/planar/shapes/triangulate_polygon.h"
#include "znGeom/repair/internal/fairing.h"
#include "znGeom/topology/topo_walks.h"
#include "znGeom/topology/twin.h"

namespace znGeom::internal {

using znLinear::Point;
using znUtil::Progress;

HoleOutcome HolePatch::triangulate(const zn::vector<Point>& places, Progress& progress)
{
    BitVector forbidden = forbiddenEdges();
    zn::vector<int> triangles;
    if (!triangulatePolygon(framed(places), triangles, &forbidden, &progress)) return HoleOutcome::GivenUp;
    // The triangles run as the loop does, and the loop as the half-edges along it: turned over, they fit.
    for (int t = 0; t < triangles.size(); t += 3) std::swap(triangles[t], triangles[t + 2]);
    for (int t = 0; t < triangles.size(); t += 3)
        if (!isFree(m_rim[triangles[t]], m_rim[triangles[t + 1]], m_rim[triangles[t + 2]]))
            return HoleOutcome::EdgeInTheWay;
    addTriangles(triangles);
    progress.set(1.0);
    return HoleOutcome::Filled;
}

/// Edges of the mesh that join two vertices of the rim: they must not come a second time.
BitVector HolePatch::forbiddenEdges() const
{
    const int size = m_rim.size();
    std::unordered_map<TopoMeshVertex, int> positions;
    for (int i = 0; i < size; ++i) positions[m_rim[i]] = i;
    BitVector forbidden(size * size);
    for (int i = 0; i < size; ++i)
        for (const TopoMeshEdge e : outgoingOf(m_rim[i])) {
            if (!e->twin || !endOf(e).onBoundary()) continue;
            if (const auto at = positions.find(endOf(e)); at != positions.end())
                forbidden.setBit(at->second + i * size);
        }
    return forbidden;
}

bool HolePatch::isFree(TopoMeshVertex a, TopoMeshVertex b, TopoMeshVertex c) const
{
    return !TopoMesh::findEdge(a, b) && !TopoMesh::findEdge(b, c) && !TopoMesh::findEdge(c, a);
}

void HolePatch::addTriangles(const zn::vector<int>& triangles)
{
    for (int t = 0; t < triangles.size(); t += 3)
        m_faces.append(m_mesh.allocTriangle(m_rim[triangles[t]], m_rim[triangles[t + 1]], m_rim[triangles[t + 2]]));
    meshTwin(m_mesh, m_faces);
}

void HolePatch::refine(const zn::vector<double>& densities, MeshEdgeSwapper& swapper, const Progress& progress)
{
    collectSwappable();
    m_densities.resize(static_cast<size_t>(m_mesh.vertexNumbers()));
    for (int i = 0; i < m_rim.size(); ++i) densityOf(m_rim[i]) = densities[i];
    while (!progress.cancelled() && splitFaces()) m_swappable.relaxAll(swapper);
}

/// Both halves are of the patch where it is inside.
void HolePatch::collectSwappable()
{
    for (const TopoMeshFace face : m_faces)
        for (const TopoMeshEdge e : sidesOf(face))
            if (e->twin && e->twin.number() >= m_firstEdge && !m_swappable.has(e)) m_swappable.insert(e);
}

/// \return whether one was split
bool HolePatch::splitFaces()
{
    zn::vector<TopoMeshFace> faces;
    for (const TopoMeshFace face : m_faces) {
        const TopoMeshEdge e = face->edge;
        const double density = (densityOf(e->origin) + densityOf(e->next->origin) + densityOf(e->prev->origin)) / 3.0;
        if (isTooLarge(face, density))
            split(face, density, faces);
        else
            faces.append(face);
    }
    const bool changed = faces.size() != m_faces.size();
    m_faces.swap(faces);
    return changed;
}

/// Vertices without a density, all of whose neighbours are in the same place, are no measure.
bool HolePatch::isTooLarge(TopoMeshFace face, double meanDensity) const
{
    const double alpha = std::sqrt(2.0);
    const Point middle = face.centroid();
    if (meanDensity == 0) return false;
    for (const TopoMeshEdge e : sidesOf(face)) {
        const double reach = alpha * distance(middle, e->origin.point());
        if (!(densityOf(e->origin) < reach && meanDensity < reach)) return false;
    }
    return true;
}

void HolePatch::split(TopoMeshFace face, double density, zn::vector<TopoMeshFace>& faces)
{
    const TopoMeshEdge sides[3] = {face->edge, face->edge->next, face->edge->prev};
    const TopoMeshVertex added = m_mesh.subdivideFace(face, face.centroid());
    m_densities.resize(static_cast<size_t>(m_mesh.vertexNumbers()));
    densityOf(added) = density;
    m_added.push_back(added);
    for (const TopoMeshEdge spoke : fanOf(added)) {
        m_swappable.insert(spoke);
        faces.append(spoke->face);
    }
    for (const TopoMeshEdge side : sides) m_swappable.reopen(side);
    for (const TopoMeshEdge side : sides)
        if (m_swappable.has(side)) m_swappable.relax(side);
}

void HolePatch::fair(Progress& progress) { fairVertices(m_mesh, m_added, progress); }

} // namespace znGeom::internal

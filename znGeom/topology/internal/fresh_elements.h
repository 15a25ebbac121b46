/// `znGeom::internal::FreshElements`: the elements of a half-edge mesh that are made all at once.
#pragma once

#include "znGeom/topology/topo_mesh.h"

namespace znGeom::internal {

/// Makes the elements of an empty mesh, by their numbers; the lists have their ends and counts. The records are raw
/// memory, and it is for the caller to construct each of them, links included.
class FreshElements
{
public:
    FreshElements(TopoMesh& mesh, int numVertices, int numEdges, int numFaces)
        : m_numVertices(numVertices), m_numEdges(numEdges), m_numFaces(numFaces), m_numOpenings(mesh.m_numOpenings),
          m_vertices(mesh.m_vertexArena.makeFirst(numVertices)), m_edges(mesh.m_edgeArena.makeFirst(numEdges)),
          m_faces(mesh.m_faceArena.makeFirst(numFaces))
    {
        mesh.m_vertices = {vertex(0), vertex(numVertices - 1), numVertices};
        mesh.m_edges = {edge(0), edge(numEdges - 1), numEdges};
        mesh.m_faces = {face(0), face(numFaces - 1), numFaces};
    }

    int numVertices() const { return m_numVertices; }
    int numFaces() const { return m_numFaces; }
    /// What `closedAt` is for a fan that is closed.
    unsigned numOpenings() const { return m_numOpenings; }

    // Null for a number that is none.
    TopoMeshVertex vertex(int number) const
    {
        return TopoMeshVertex(isBelow(number, m_numVertices) ? m_vertices[number] : nullptr);
    }
    TopoMeshEdge edge(int number) const
    {
        return TopoMeshEdge(isBelow(number, m_numEdges) ? m_edges[number] : nullptr);
    }
    TopoMeshFace face(int number) const
    {
        return TopoMeshFace(isBelow(number, m_numFaces) ? m_faces[number] : nullptr);
    }

    /// Constructs a vertex with its links in the list.
    TopoMeshVertexRecord& makeVertex(int number) const
    {
        auto* const record = new (m_vertices[number]) TopoMeshVertexRecord;
        record->prev = vertex(number - 1);
        record->next = vertex(number + 1);
        return *record;
    }
    /// Constructs a face with its links in the list.
    TopoMeshFace makeFace(int number, TopoMeshEdge first) const
    {
        auto* const record = new (m_faces[number]) TopoMeshFaceRecord;
        record->edge = first;
        record->prev = face(number - 1);
        record->next = face(number + 1);
        return TopoMeshFace(record);
    }

private:
    static bool isBelow(int number, int count) { return static_cast<unsigned>(number) < static_cast<unsigned>(count); }

    int m_numVertices, m_numEdges, m_numFaces;
    unsigned m_numOpenings;
    TopoRun<TopoMeshVertexRecord> m_vertices;
    TopoRun<TopoMeshEdgeRecord> m_edges;
    TopoRun<TopoMeshFaceRecord> m_faces;
};

} // namespace znGeom::internal

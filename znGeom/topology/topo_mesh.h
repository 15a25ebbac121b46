/// `znGeom::TopoMesh`: the half-edge mesh on which connectivity is edited.
#pragma once

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/mesh/entity.h"
#include "znGeom/topology/topo_handles.h"

namespace znGeom {

class TopoMesh;
namespace internal {
class FreshElements;
}

/// What was done to a half-edge mesh. An algorithm reports it to the mesh once, at its end, and only if it changed
/// anything.
class ZNGEOM_API TopoMeshModification : public EntityModification
{
public:
    enum Type : int {
        PositionsChanged = 0,   ///< positions only
        ConnectivityChanged = 1 ///< elements were added, removed or joined differently
    };

    TopoMeshModification(const TopoMesh* mesh, Type type);
    ~TopoMeshModification() override;
    Type getType() const { return m_type; }

private:
    Type m_type;
};

/// Vertices, half-edges and faces in three lists, in order of creation; new elements come last. Faces are polygons of
/// three sides or more. There are no half-edges outside faces: a boundary is the absence of a twin.
///
/// Elements are named by handles and read directly (`edge->next->origin`) or by the walks of `topo_walks.h`; only the
/// operations here write. No element ever moves, and no record is reused while the mesh lives. Handles are trusted: an
/// operation with a `bool` result that is asked for something impossible returns false and changes nothing; what the
/// others require is stated with each. Every operation copes with every mesh that the others can make: edges of three
/// faces and more, twins that run the same way, faces that meet themselves, edges that end where they begin. Operations
/// notify no listener; the code that edits calls `modified` once at the end.
///
/// Fans of faces that touch at a vertex without sharing an edge are seen by all operations.
/// `TopoMeshEdgeVertexIterator`, `fanOf` and the boundary walks see one fan: that of the vertex's `edge`, unless stated
/// otherwise.
///
/// The valence of a vertex counts its faces in all fans. No operation costs more than is stated with it, whatever the
/// size of the mesh; collapses, swaps and deletions allocate no memory. A mesh is used by one thread at a time;
/// different meshes are independent. A half-edge takes 64 bytes and a triangle mesh about 80 bytes per half-edge in
/// all; a metadata slot takes 16 bytes per element once it is written.
class ZNGEOM_API TopoMesh : public Entity
{
public:
    TopoMesh();
    /// \param memory  lends the memory for the elements; outlives the mesh. May be null
    explicit TopoMesh(TopoMemory* memory);
    ~TopoMesh() override;
    TopoMesh(const TopoMesh&) = delete;
    TopoMesh& operator=(const TopoMesh&) = delete;

    // The lists, walked through `next`; that of half-edges through `listNext`
    TopoMeshVertex firstVertex() const { return m_vertices.first; }
    TopoMeshEdge firstEdge() const { return m_edges.first; }
    TopoMeshFace firstFace() const { return m_faces.first; }
    int numVertices() const { return m_vertices.count; }
    /// Half-edges, both halves of a pair.
    int numEdges() const { return m_edges.count; }
    int numFaces() const { return m_faces.count; }
    /// One more than the largest `number` of any element yet: the size of a table by numbers.
    int vertexNumbers() const { return m_vertexArena.numMade(); }
    int edgeNumbers() const { return m_edgeArena.numMade(); }
    int faceNumbers() const { return m_faceArena.numMade(); }

    // Building
    TopoMeshVertex allocVertex(const znLinear::Point& point);
    /// A face over vertices in their order; the first half-edge starts at the first. Each half-edge x to y is paired at
    /// once with a half-edge y to x of the fan of y's `edge` that has no twin yet, so that a mesh that is built fan by
    /// fan comes out fully twinned; any other order is completed by `meshTwin`.
    TopoMeshFace allocTriangle(TopoMeshVertex a, TopoMeshVertex b, TopoMeshVertex c);
    TopoMeshFace allocQuad(TopoMeshVertex a, TopoMeshVertex b, TopoMeshVertex c, TopoMeshVertex d);
    TopoMeshFace allocFace(const zn::vector<TopoMeshVertex>& vertices);
    /// Makes two half-edges each other's twins, whatever their directions; former twins are left without one. Slots of
    /// `a` are copied to `b`, or those of `b` to `a` where only `b` has any.
    void setTwins(TopoMeshEdge a, TopoMeshEdge b);
    void setPoint(TopoMeshVertex vertex, const znLinear::Point& point) { vertex->point = point; }

    /// A half-edge from `a` to `b`, or null: direction matters. Linear in the valence of `a`.
    static TopoMeshEdge findEdge(TopoMeshVertex a, TopoMeshVertex b);

    // Swapping and subdividing
    /// Turns the diagonal of two triangles. `e` then names the other diagonal; both half-edges, both faces and the four
    /// sides keep their handles, and a face's first half-edge keeps its place counted from the diagonal. False when
    /// there is no twin, a face is not a triangle, or the other diagonal exists already or would join a vertex to
    /// itself. Linear in the smaller valence of the two opposite corners.
    ///
    /// It is its own inverse: the diagonal turns counter-clockwise when the first of the four vertices is one of its
    /// ends, clockwise otherwise. An end whose `edge` no longer leaves it gets the half-edge that follows in the order
    /// of `TopoMeshEdgeVertexIterator`.
    bool swapEdge(TopoMeshEdge e);
    /// A new vertex on an edge. `e` keeps its origin and its twin, which now starts at the new vertex; the pair from
    /// there to the old end is new. The faces gain a side each. Constant.
    TopoMeshVertex subdivideEdge(TopoMeshEdge e, const znLinear::Point& point);
    /// Cuts a face from its vertex `a` to its vertex `b`. `f` keeps the sides from b round to a; the new face gets the
    /// rest and the way back. Linear in the sides.
    /// \return the new half-edge from a to b, which lies in `f`; null, and no change, when the two are the same or
    ///         neighbours in the face
    TopoMeshEdge subdivideFace(TopoMeshFace f, TopoMeshVertex a, TopoMeshVertex b);
    /// The same along a path of new vertices at the given points, in order from a to b; the vertices `a` and `b` may
    /// then be neighbours.
    /// \return the new face
    TopoMeshFace subdivideFace(TopoMeshFace f, TopoMeshVertex a, TopoMeshVertex b,
                               const zn::vector<znLinear::Point>& points);
    /// A new vertex inside a face, joined to all its corners. `f` keeps its first half-edge. Linear in the sides.
    /// \return the new vertex
    TopoMeshVertex subdivideFace(TopoMeshFace f, const znLinear::Point& point);

    // Collapsing
    /// Merges the two ends of an edge into that which more half-edges leave, the end of `e` if there is none, and
    /// returns it; it stands where that end stood. A triangle on the edge disappears, a larger face loses a side.
    /// Linear in the smaller valence of the two.
    ///
    /// Where a triangle disappears, its other two sides become one: the twin of the side before `e` keeps its handle
    /// and gets a new twin, the twin of the side after `e` is removed and its place is taken by another record. A side
    /// without a twin leaves the other one on the boundary; corners that lose their last face stay as isolated
    /// vertices. All other half-edges keep their handles. A further edge between the two ends becomes one that ends
    /// where it begins.
    TopoMeshVertex collapseEdge(TopoMeshEdge e);
    /// Contracts an edge, a boundary half-edge or another, into the end of `e`, which keeps its handle and position:
    /// the origin is gone. The outer sides join as in `collapseEdge`. Linear in the valence of the origin.
    TopoMeshVertex contractEdge(TopoMeshEdge e);
    /// Whether collapsing an edge of triangles preserves the topology of the surface: the link test of Dey,
    /// Edelsbrunner, Guha and Nekhayev, "Topology preserving edge contraction" (1999). False when the ends have a
    /// neighbour in common other than the third corners of the edge's faces, when these corners are one vertex, when a
    /// further edge joins the two ends, when an edge inside the mesh joins two boundary vertices (except at the tip of
    /// an ear), and for an edge that ends where it begins, lies twice in one face, or has halves that run the same way.
    /// Looks at the neighbours of the origin, and for each around the vertex of smaller valence.
    static bool canCollapse(TopoMeshEdge e);

    // Deleting
    /// Removes a vertex with all its faces and leaves one face over the ring of its neighbours, whose half-edges keep
    /// their handles. At a boundary vertex a new boundary half-edge closes the ring. Of fans that only touch here, the
    /// one of the vertex's `edge` gets the new face; the faces of the others are removed. Linear in the sides of the
    /// faces at the vertex.
    /// \return the new face; null for an isolated vertex, at a boundary vertex of a single face, where the ring has
    ///         only two sides, which are then joined, and where a face meets the vertex twice
    TopoMeshFace deleteVertex(TopoMeshVertex v);
    /// Removes an edge and merges its faces into the face of `e`. False when there is no twin, when both sides are the
    /// same face, or when the halves run the same way. Linear in the sides of the face across.
    bool deleteEdge(TopoMeshEdge e);
    /// Removes a face; its neighbours' half-edges become boundary, its vertices stay. Linear in its sides.
    void deleteFace(TopoMeshFace f);

    // Seams
    /// Parts an edge: both halves become boundary, and both ends are divided where that separates their fans. The
    /// handles stay on the side of `e`. Nothing happens on a boundary half-edge. Linear in the valence of the ends, as
    /// are the following ones.
    void splitEdge(TopoMeshEdge e);
    /// Cuts the fan of a boundary vertex along an outgoing half-edge: it and its twin become boundary, and the side of
    /// the twin gets a copy of the vertex. The far end stays whole.
    /// \return the copy; null when there was nothing to cut
    TopoMeshVertex splitVertex(TopoMeshVertex v, TopoMeshEdge e);
    /// Opens a slit at an interior vertex along an arriving and a leaving half-edge: they and their twins become
    /// boundary, and the side across from them gets a copy of the vertex. The far ends stay whole.
    void splitVertex(TopoMeshEdge in, TopoMeshEdge out);
    /// Joins two boundary half-edges as twins: the end of `b` becomes the origin of `a`, the origin of `b` the end of
    /// `a`. The vertices of `a` survive, with their positions; where the two become one, one of them does. The two may
    /// belong to one face: a quad becomes a tube. Nothing happens when one of them has a twin or both are the same.
    void mergeVertices(TopoMeshEdge a, TopoMeshEdge b);

    /// Notifies the listeners.
    void modified(TopoMeshModification& modification) { sendMessage(modification); }

private:
    friend class internal::FreshElements;

    template <typename Handle>
    struct List
    {
        Handle first, last;
        int count = 0;
    };

    TopoMeshEdge makeLooseEdge(TopoMeshVertex origin, TopoMeshFace face);
    TopoMeshEdge makeEdge(TopoMeshVertex origin, TopoMeshFace face);
    TopoMeshFace makeFace();
    TopoMeshFace makeFace(const TopoMeshVertex* vertices, int count);
    void removeVertex(TopoMeshVertex v);
    void removeEdge(TopoMeshEdge e);
    void removeFace(TopoMeshFace f);
    void unpair(TopoMeshEdge e);
    void attach(TopoMeshEdge e);
    void detach(TopoMeshEdge e);
    void linkBack(TopoMeshVertex v);
    void setOrigin(TopoMeshEdge e, TopoMeshVertex origin);
    TopoMeshEdge openEnd(TopoMeshVertex v);
    void pairWithOpen(TopoMeshEdge e);
    void mergeInto(TopoMeshVertex survivor, TopoMeshVertex dying);
    void collapseInto(TopoMeshVertex survivor, TopoMeshEdge e);
    void dropSide(TopoMeshEdge e);
    void zipSides(TopoMeshEdge after, TopoMeshEdge before);
    TopoMeshVertex divideVertex(TopoMeshEdge kept, TopoMeshEdge moved);
    TopoMeshFace replaceFan(TopoMeshEdge fan);
    void closeShortRing(TopoMeshEdge first, int size);
    TopoMeshFace cutFace(TopoMeshEdge fromA, TopoMeshEdge fromB, const zn::vector<znLinear::Point>& points);

    TopoArena<TopoMeshVertexRecord> m_vertexArena;
    TopoArena<TopoMeshEdgeRecord> m_edgeArena;
    TopoArena<TopoMeshFaceRecord> m_faceArena;
    List<TopoMeshVertex> m_vertices;
    List<TopoMeshEdge> m_edges;
    List<TopoMeshFace> m_faces;
    unsigned m_numOpenings = 0; ///< grows with each event that may open a fan
};

} // namespace znGeom

#include "znGeom/topology/extrude.h"

#include <algorithm>

#include "znGeom/topology/internal/finish_edit.h"
#include "znGeom/topology/internal/number_set.h"
#include "znGeom/topology/topo_walks.h"

namespace znGeom {

using namespace znLinear;
using internal::NumberSet;

namespace {

using FaceSet = zn::unordered_set<TopoMeshFace>;

/// A set of faces, which is asked often and for which its own table would be slow.
class Region
{
public:
    explicit Region(const FaceSet& faces)
    {
        m_faces.reserve(faces.size());
        for (auto node = faces.firstNode(); node; node = faces.nextItem(node)) {
            m_faces.append(node.value());
            m_numbers.insert(node.value().number());
        }
    }

    /// In the order of the set.
    const zn::vector<TopoMeshFace>& faces() const { return m_faces; }
    bool contains(int faceNumber) const { return m_numbers.contains(faceNumber); }
    /// Whether nothing of the region lies across a half-edge.
    bool isPerimeter(TopoMeshEdge e) const { return !e->twin || !contains(e->twin->face.number()); }
    /// The perimeter half-edge that follows one; null where twins run the same way. The turn about the end of `e` never
    /// comes round: it would have to come from across `e`.
    TopoMeshEdge nextOnPerimeter(TopoMeshEdge e) const
    {
        TopoMeshEdge next = e->next;
        while (next && !isPerimeter(next)) next = nextAround(next);
        return next;
    }

private:
    zn::vector<TopoMeshFace> m_faces;
    NumberSet m_numbers;
};

/// Faces of a region that are connected.
struct Patch
{
    zn::vector<TopoMeshFace> faces;
    zn::vector<TopoMeshEdge> perimeter; ///< as it was found, not as it is walked
};

/// What is connected to one face, breadth first; nothing if it was visited before.
Patch floodFrom(TopoMeshFace first, const Region& region, NumberSet& visited)
{
    Patch patch;
    if (visited.insert(first.number())) patch.faces.append(first);
    for (int next = 0; next < patch.faces.size(); ++next)
        for (const TopoMeshEdge e : sidesOf(patch.faces[next])) {
            const int across = e->twin ? e->twin->face.number() : -1;
            if (across < 0 || !region.contains(across))
                patch.perimeter.append(e);
            else if (visited.insert(across))
                patch.faces.append(e->twin->face);
        }
    return patch;
}

/// What a wall stands on.
struct Base
{
    TopoMeshVertex from, to;
};

/// The rims of all patches of a region, and which faces make room for them.
class Patches
{
public:
    explicit Patches(const Region& region) : m_region(region)
    {
        NumberSet visited;
        for (const TopoMeshFace first : region.faces()) add(floodFrom(first, region, visited));
    }

    const zn::vector<Base>& bases() const { return m_bases; }
    /// The faces of the patches that have a neighbour.
    const zn::vector<TopoMeshFace>& removed() const { return m_removed; }

private:
    void add(const Patch& patch)
    {
        bool hasNeighbour = false;
        for (const TopoMeshEdge e : patch.perimeter) {
            hasNeighbour = hasNeighbour || e->twin;
            walkFrom(e);
        }
        if (hasNeighbour) m_removed.append(patch.faces);
    }

    void walkFrom(TopoMeshEdge e)
    {
        for (; e && m_walked.insert(e.number()); e = m_region.nextOnPerimeter(e)) m_bases.append({e->origin, endOf(e)});
    }

    const Region& m_region;
    NumberSet m_walked; ///< perimeter half-edges
    zn::vector<Base> m_bases;
    zn::vector<TopoMeshFace> m_removed;
};

/// A vertex over each one of a region, in the same order.
class Copies
{
public:
    Copies(TopoMesh& mesh, const Region& region, const AffineMatrix& matrix)
    {
        for (const TopoMeshFace face : region.faces())
            for (const TopoMeshEdge e : sidesOf(face)) m_originals.insert(e->origin.number());
        m_originals.sort();
        m_firstNumber = mesh.vertexNumbers();
        const TopoMeshVertex any = mesh.firstVertex();
        m_originals.forEach([&](int number) { mesh.allocVertex(numbered(any, number)->point * matrix); });
    }

    TopoMeshVertex operator[](TopoMeshVertex original) const
    {
        return numbered(original, m_firstNumber + m_originals.rank(original.number()));
    }

private:
    static TopoMeshVertex numbered(TopoMeshVertex any, int number)
    {
        return TopoMeshVertex(TopoBlock::numbered(any.record(), number));
    }

    NumberSet m_originals;
    int m_firstNumber;
};

bool isOpen(TopoMeshFace face)
{
    for (const TopoMeshEdge e : sidesOf(face))
        if (!e->twin) return true;
    return false;
}

} // namespace

bool expandRegion(TopoMesh&, const FaceSet& in, FaceSet& out, zn::vector<TopoMeshEdge>& perimeter)
{
    perimeter.clear();
    const Region region(in);
    NumberSet visited;
    const Patch patch = in.empty() ? Patch() : floodFrom(region.faces()[0], region, visited);
    if (&in != &out) {
        out.clear();
        out.rehash(patch.faces.size());
        for (const TopoMeshFace face : patch.faces) out.insert(face);
    }
    const TopoMeshEdge start = patch.perimeter.empty() ? TopoMeshEdge() : patch.perimeter[0];
    for (TopoMeshEdge e = start; e; e = region.nextOnPerimeter(e)) {
        if (e == start && !perimeter.empty()) break;
        perimeter.append(e);
    }
    return patch.faces.size() == region.faces().size();
}

TopoMeshFace extrudeFace(TopoMesh& mesh, TopoMeshFace face, const AffineMatrix& matrix)
{
    zn::vector<TopoMeshVertex> corners, copies;
    bool isLone = true;
    for (const TopoMeshEdge e : sidesOf(face)) {
        corners.append(e->origin);
        isLone = isLone && !e->twin;
    }
    for (const TopoMeshVertex corner : corners) copies.append(mesh.allocVertex(corner->point * matrix));
    if (!isLone) mesh.deleteFace(face);
    zn::vector<TopoMeshFace> created;
    for (int i = 0; i < corners.size(); ++i) {
        const int next = i + 1 < corners.size() ? i + 1 : 0;
        created.append(isLone ? mesh.allocQuad(corners[next], corners[i], copies[i], copies[next])
                              : mesh.allocQuad(corners[i], corners[next], copies[next], copies[i]));
    }
    if (isLone) std::reverse(copies.begin(), copies.end());
    created.append(mesh.allocFace(copies));
    // At a vertex where the face touched the boundary, the fans on both sides of it are open.
    internal::pairOpenEdges(mesh, created);
    TopoMeshModification modification(&mesh, TopoMeshModification::ConnectivityChanged);
    mesh.modified(modification);
    return created.back();
}

class ExtrudeTopoFaceImpl : public zn::ImplBase
{
public:
    explicit ExtrudeTopoFaceImpl(TopoMesh& mesh) : m_mesh(mesh) {}

    void extrude(FaceSet& in, FaceSet& out, const AffineMatrix& matrix)
    {
        const Region region(in);
        const Patches patches(region);
        const Copies copies(m_mesh, region, matrix);
        zn::vector<TopoMeshFace> created = copyFaces(region, copies);
        for (const TopoMeshFace face : created) out.insert(face);
        removeFaces(patches.removed(), in);
        for (const auto& [from, to] : patches.bases())
            created.append(m_mesh.allocQuad(from, to, copies[to], copies[from]));
        created.erase(std::remove_if(created.begin(), created.end(), [](TopoMeshFace face) { return !isOpen(face); }),
                      created.end());
        internal::finishEdit(m_mesh, created);
    }

private:
    zn::vector<TopoMeshFace> copyFaces(const Region& region, const Copies& copies)
    {
        zn::vector<TopoMeshFace> caps;
        caps.reserve(region.faces().size());
        zn::vector<TopoMeshVertex> corners;
        for (const TopoMeshFace face : region.faces()) {
            corners.clear();
            for (const TopoMeshEdge e : sidesOf(face)) corners.append(copies[e->origin]);
            caps.append(m_mesh.allocFace(corners));
        }
        return caps;
    }

    void removeFaces(const zn::vector<TopoMeshFace>& faces, FaceSet& in)
    {
        for (const TopoMeshFace face : faces) m_mesh.deleteFace(face);
        if (faces.size() == in.size()) return in.clear();
        for (const TopoMeshFace face : faces) in.erase(face);
    }

    TopoMesh& m_mesh;
};

ExtrudeTopoFace::ExtrudeTopoFace(TopoMesh& mesh) : m_impl(new ExtrudeTopoFaceImpl(mesh)) {}
ExtrudeTopoFace::ExtrudeTopoFace(const ExtrudeTopoFace& other) = default;
ExtrudeTopoFace::~ExtrudeTopoFace() = default;

void ExtrudeTopoFace::operator()(FaceSet& in, FaceSet& out, const AffineMatrix& matrix)
{
    out.clear();
    if (!in.empty()) m_impl->extrude(in, out, matrix);
}

} // namespace znGeom

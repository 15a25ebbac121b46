#include "znGeom/shells/internal/collar_frames.h"

#include "znGeom/topology/topo_walks.h"

namespace znGeom::internal {

using namespace znLinear;

namespace {

Vector along(TopoMeshEdge edge) { return endOf(edge)->point - edge->origin->point; }

/// At right angles to a triangle, as long as twice its area.
Vector areaVector(TopoMeshFace face) { return cross(along(face->edge), along(face->edge->next)); }

/// The part of a vector that is square to a direction, reversed.
Vector reversedAcross(const Normal& direction, const Vector& vector)
{
    return cross(direction, cross(direction, vector));
}

/// Frames places along a border. "Inward" is square to the border and in the surface.
class BorderFraming
{
public:
    BorderFraming(const BorderPath& path, double cornerAngle) : m_path(path), m_cornerAngle(cornerAngle) {}

    FramedPlace frame(int index) const
    {
        const BorderPlace& place = m_path.places[index];
        const Normal inward = inwardAt(place, index);
        const zn::vector<TopoMeshFace> faces = facesAt(place);
        Vector facing;
        for (const TopoMeshFace face : faces) facing += Normal(areaVector(face)).asVector();
        const Vector back = Normal(reversedAcross(inward, facing)).asVector();
        return {{place.position, back, inward.asVector(), 0}, faces, inward.asVector()};
    }

private:
    /// Those at both ends of an edge: what is at either of them, is there twice. At a vertex those on both sides of the
    /// border, which are the same but where it touches another.
    static zn::vector<TopoMeshFace> facesAt(const BorderPlace& place)
    {
        zn::vector<TopoMeshFace> faces;
        const auto appendFan = [&faces](TopoMeshEdge begin) {
            for (const TopoMeshEdge spoke : fanOf(begin)) faces.append(spoke->face);
        };
        if (place.out) appendFan(place.out);
        const TopoMeshEdge other = place.vertex ? place.in ? place.in->next : TopoMeshEdge() : place.out->next;
        if (other && (!place.vertex || boundaryOut(other) != place.out)) appendFan(other);
        return faces;
    }

    Normal inwardAt(const BorderPlace& place, int index) const
    {
        if (!place.vertex) return inwardWithin(place);
        if (index == 0) return inwardOf(m_path.legFrom(place));
        if (m_path.endsAtLast && index + 1 == m_path.places.size()) return inwardOf(m_path.legTo(place));
        return inwardBetween(place.in, place.out);
    }

    Normal inwardWithin(const BorderPlace& place) const
    {
        const TopoMeshEdge edge = place.out;
        const Normal atOrigin = inwardBeside(edge, boundaryIn(edge), edge);
        const Normal atEnd = inwardBeside(edge, edge, boundaryOut(edge->next));
        return Normal(combine(place.originWeight, atOrigin, 1 - place.originWeight, atEnd));
    }

    /// At an end of an edge, towards which it passes within the edge.
    Normal inwardBeside(TopoMeshEdge edge, TopoMeshEdge in, TopoMeshEdge out) const
    {
        return isCorner(in, out) ? inwardOf(edge) : inwardBetween(in, out);
    }

    bool isCorner(TopoMeshEdge in, TopoMeshEdge out) const
    {
        return in && out && !isParallel(Normal(along(in)), Normal(along(out)), m_cornerAngle);
    }

    static Normal inwardBetween(TopoMeshEdge in, TopoMeshEdge out)
    {
        if (!in || !out) return inwardOf(in ? in : out);
        return Normal(inwardOf(in).asVector() + inwardOf(out).asVector());
    }

    static Normal inwardOf(TopoMeshEdge edge) { return Normal(cross(facingOf(edge), along(edge))); }

    /// The normal of a border face or, where it has no area, of those around the edge.
    static Normal facingOf(TopoMeshEdge edge)
    {
        const Normal normal(areaVector(edge->face));
        return normal.valid ? normal : Normal(sumOfNormals(edge) + sumOfNormals(edge->next));
    }

    /// Of the faces in a fan, all alike.
    static Vector sumOfNormals(TopoMeshEdge fan)
    {
        Vector sum;
        for (const TopoMeshEdge spoke : fanOf(fan)) sum += Normal(areaVector(spoke->face)).asVector();
        return sum;
    }

    const BorderPath& m_path;
    double m_cornerAngle;
};

/// By area.
Normal vertexNormal(TopoMeshEdge fan)
{
    Vector sum;
    for (const TopoMeshEdge spoke : fanOf(fan)) sum += areaVector(spoke->face);
    return Normal(sum);
}

} // namespace

zn::vector<FramedPlace> frameBorder(const BorderPath& path, double cornerAngle)
{
    const BorderFraming framing(path, cornerAngle);
    zn::vector<FramedPlace> framed;
    framed.reserve(path.places.size());
    for (int i = 0; i < path.places.size(); ++i) framed.append(framing.frame(i));
    return framed;
}

zn::vector<FramedPlace> frameCurve(const zn::vector<TopoMeshPoint>& places)
{
    zn::vector<FramedPlace> framed;
    framed.reserve(places.size());
    Vector tangent;
    // Places that coincide have the tangent before them; at the beginning the one after them.
    for (int i = 1; i < places.size() && tangent == Vector::zero; ++i)
        tangent = places[i].position - places[0].position;
    for (int i = 0; i < places.size(); ++i) {
        if (i > 0 && places[i].position != places[i - 1].position)
            tangent = places[i].position - places[i - 1].position;
        Vector facing;
        for (const TopoMeshEdge side : sidesOf(places[i].coord.face)) facing += vertexNormal(side).asVector();
        const Normal back = -Normal(facing);
        const Vector across = Normal(cross(tangent, back)).asVector();
        framed.append({{places[i].position, across, back.asVector(), 0}, {places[i].coord.face}, across});
    }
    return framed;
}

} // namespace znGeom::internal

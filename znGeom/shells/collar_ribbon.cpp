#include "znGeom/shells/collar_ribbon.h"

namespace znGeom {

using namespace znLinear;

namespace {

int countQuads(int numPlaces, bool closed) { return numPlaces < 2 ? 0 : closed ? numPlaces : numPlaces - 1; }

/// Whether a quad is folded over at a width. Its first triangle, which has the near side, faces one way at any width;
/// the other one, with the far side, comes to face against what it does in a narrow strip, or against the first.
bool isTurned(const MeshCollar::Point& place, const MeshCollar::Point& next, double width)
{
    const Vector step = next.position - place.position;
    const Vector farStep = step + (next.direction - place.direction) * width;
    const Vector near = cross(step, place.direction);
    const Vector farWhenNarrow = cross(step, next.direction), far = cross(farStep, next.direction);
    if (!(near.length2() > 0) || !(dot(farWhenNarrow, far) > 0) || !(dot(step, farStep) > 0)) return true;
    return dot(near, farWhenNarrow) > 0 && !(dot(near, far) > 0);
}

} // namespace

void meshCollarRibbon(const zn::vector<MeshCollar::Point>& points, double width, bool closed, CompactMesh& result)
{
    const int numQuads = countQuads(points.size(), closed);
    CompactMesh ribbon;
    ribbon.resizeVertexArray(numQuads > 0 ? 2 * points.size() : 0);
    MeshVertex* vertex = ribbon.getVertices();
    for (int i = 0; numQuads > 0 && i < points.size(); ++i) {
        const Point beside = points[i].position + points[i].direction * width;
        (vertex++)->set(&points[i].position.x);
        (vertex++)->set(&beside.x);
    }
    ribbon.resizeTriangleArray(2 * numQuads);
    MeshTriangle* triangle = ribbon.getTriangles();
    for (int i = 0; i < numQuads; ++i) {
        const int place = 2 * i, next = 2 * ((i + 1) % points.size());
        *triangle++ = {{next, place, place + 1}};
        *triangle++ = {{next, place + 1, next + 1}};
    }
    result = ribbon;
}

int meshCollarTurnedQuads(const zn::vector<MeshCollar::Point>& points, double width, bool closed)
{
    int numTurned = 0;
    for (int i = 0; i < countQuads(points.size(), closed); ++i)
        if (isTurned(points[i], points[(i + 1) % points.size()], width)) ++numTurned;
    return numTurned;
}

} // namespace znGeom

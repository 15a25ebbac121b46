#include "apps/zngeom/picture/marking.h"

#include <cmath>

namespace tool {

namespace {

bool isFinitePoint(const znLinear::Point& p) { return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z); }

MarkedThing thingAt(const znGeom::CompactMesh& mesh, const Marking& marking, std::size_t place)
{
    if (place < marking.triangles.size()) {
        const znGeom::MeshTriangle& triangle = mesh.getTriangles()[marking.triangles[place]];
        const auto corner = [&](int i) { return mesh.getVertices()[triangle[i]].asPoint(); };
        return {corner(0), corner(1), corner(2)};
    }
    place -= marking.triangles.size();
    if (place < marking.lines.size())
        return {marking.lines[place][0], marking.lines[place][1], marking.lines[place][1]};
    const znLinear::Point& point = marking.points[place - marking.lines.size()];
    return {point, point, point};
}

} // namespace

std::vector<MarkedThing> markedThings(const znGeom::CompactMesh& mesh, const Marking& marking, std::size_t most)
{
    std::vector<MarkedThing> things;
    const std::size_t count = marking.triangles.size() + marking.lines.size() + marking.points.size();
    const std::size_t picked = std::min(count, most);
    for (std::size_t i = 0; i < picked; ++i) {
        const MarkedThing thing = thingAt(mesh, marking, i * count / picked);
        if (std::all_of(thing.begin(), thing.end(), isFinitePoint)) things.push_back(thing);
    }
    return things;
}

znLinear::Point middleOf(const MarkedThing& thing)
{
    // The last of two ends stands twice.
    const bool isLine = thing[1] == thing[2];
    const znLinear::Vector fromFirst = (thing[1] - thing[0]) + (isLine ? znLinear::Vector() : thing[2] - thing[0]);
    return thing[0] + fromFirst / (isLine ? 2.0 : 3.0);
}

} // namespace tool

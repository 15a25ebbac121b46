#include "apps/zngeom/planar/uv_islands.h"

#include <algorithm>
#include <cmath>

#include "apps/zngeom/files/corner_split.h"
#include "apps/zngeom/frame/pacer.h"
#include "apps/zngeom/planar/polygon_area.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/analysis/border_loops.h"
#include "znGeom/analysis/components.h"
#include "znGeom/planar/shapes/min_area_bound.h"

namespace tool {

namespace {

using znLinear::Point2;
using znLinear::Range2d;

/// The direction along one side of a rectangle that is nearest to the x axis.
Point2 directionOf(const znGeom::Rect2& rect)
{
    Point2 along{rect.c1.x - rect.c0.x, rect.c1.y - rect.c0.y};
    if (along.x == 0 && along.y == 0) along = {rect.c2.x - rect.c0.x, rect.c2.y - rect.c0.y};
    if (std::fabs(along.y) > std::fabs(along.x)) along = {along.y, -along.x};
    const double length = std::hypot(along.x, along.y) * (along.x < 0 ? -1 : 1);
    return length != 0 ? Point2(along.x / length, along.y / length) : Point2(1, 0);
}

} // namespace

UVIslands::UVIslands(const LoadedMesh& loaded, znUtil::Progress& progress)
{
    const znGeom::MeshUV* const cornerUVs = loaded.cornerUVs.empty() ? nullptr : loaded.cornerUVs.data();
    m_mesh = splitCorners(loaded.mesh, cornerUVs, nullptr);
    checkCancelled(progress);
    znGeom::MeshAdjTris adjTris;
    znGeom::meshAdjTris(m_mesh, adjTris);
    m_frames.resize(static_cast<std::size_t>(znGeom::meshComponents(m_mesh, adjTris, &m_islandOf)));
    checkCancelled(progress);
    for (int vertex = 0; vertex < m_mesh.getNumVertices(); ++vertex) {
        if (m_islandOf[vertex] < 0) continue;
        const Point2 place = uv(vertex);
        if (!std::isfinite(place.x) || !std::isfinite(place.y)) throw Failure("a texture coordinate is not finite");
        m_frames[static_cast<std::size_t>(m_islandOf[vertex])].box.include(place);
    }
}

int UVIslands::turn()
{
    std::vector<zn::vector<Point2>> points(m_frames.size());
    for (int vertex = 0; vertex < m_mesh.getNumVertices(); ++vertex)
        if (m_islandOf[vertex] >= 0) points[static_cast<std::size_t>(m_islandOf[vertex])].append(uv(vertex));
    int numTurned = 0;
    for (std::size_t island = 0; island < points.size(); ++island) {
        znGeom::Rect2 rect;
        znGeom::minAreaRect2d(points[island], rect);
        const Point2 direction = directionOf(rect);
        Frame turned{direction.x, direction.y, {}};
        for (const Point2& point : points[island]) turned.box.include(turned(point));
        // Rounding alone is no reason to turn.
        if (!(turned.box.area() < 0.999999 * m_frames[island].box.area())) continue;
        m_frames[island] = turned;
        ++numTurned;
    }
    return numTurned;
}

std::vector<Point2> UVIslands::sizes() const
{
    std::vector<Point2> sizes;
    for (const Frame& frame : m_frames) sizes.push_back(frame.box.size());
    return sizes;
}

double UVIslands::area() const
{
    double sum = 0;
    for (int triangle = 0; triangle < m_mesh.getNumTriangles(); ++triangle) {
        const int* const corners = m_mesh.getTriangles()[triangle].corners;
        sum += std::fabs(signedArea({uv(corners[0]), uv(corners[1]), uv(corners[2])}));
    }
    return sum;
}

void UVIslands::moveTo(const RectangleLayout& layout)
{
    const auto moved = [&layout](double value, const znLinear::Range1d& from, const znLinear::Range1d& to) {
        return static_cast<float>(std::clamp(to.min + (value - from.min) * layout.scale, 0.0, 1.0));
    };
    for (int vertex = 0; vertex < m_mesh.getNumVertices(); ++vertex) {
        znGeom::MeshUV& result = m_mesh.getUVs()[vertex];
        if (m_islandOf[vertex] < 0) {
            result = {0, 0};
            continue;
        }
        const auto island = static_cast<std::size_t>(m_islandOf[vertex]);
        const Frame& frame = m_frames[island];
        const Range2d& place = layout.places[island];
        const Point2 point = frame(uv(vertex));
        result = {moved(point.x, frame.box.x, place.x), moved(point.y, frame.box.y, place.y)};
    }
    for (std::size_t island = 0; island < m_frames.size(); ++island) m_frames[island] = {1, 0, layout.places[island]};
}

void UVIslands::putInto(LoadedMesh& loaded) const
{
    znGeom::CompactMesh& mesh = loaded.mesh;
    mesh.deleteUVs();
    loaded.cornerUVs.clear();
    if (m_mesh.getNumVertices() == mesh.getNumVertices()) {
        mesh.allocUVArray();
        std::copy_n(m_mesh.getUVs(), mesh.getNumVertices(), mesh.getUVs());
        return;
    }
    for (int corner = 0; corner < 3 * m_mesh.getNumTriangles(); ++corner)
        loaded.cornerUVs.append(m_mesh.getUVs()[m_mesh.getTrianglesRaw()[corner]]);
}

std::vector<UVIslands::Outline> UVIslands::outlines(znUtil::Progress& progress) const
{
    znGeom::MeshEdgeSides sides;
    znGeom::MeshBorderLoops loops;
    znGeom::meshEdgeSides(m_mesh, progress, sides);
    checkCancelled(progress);
    znGeom::meshBorderLoops(m_mesh, sides, progress, loops);
    checkCancelled(progress);
    std::vector<Outline> found;
    std::vector<double> largest(m_frames.size()); // by its amount, of each island
    std::vector<double> areas;
    for (int loop = 0; loop < loops.size(); ++loop) {
        Outline& outline = found.emplace_back();
        for (const int vertex : loops.vertices(loop)) outline.points.push_back(uv(vertex));
        outline.island = m_islandOf[loops.vertices(loop)[0]];
        areas.push_back(signedArea(outline.points));
        double& known = largest[static_cast<std::size_t>(outline.island)];
        if (std::fabs(areas.back()) > std::fabs(known)) known = areas.back();
    }
    const auto sizeOf = [&](const Outline& outline) {
        return std::fabs(largest[static_cast<std::size_t>(outline.island)]);
    };
    for (std::size_t i = 0; i < found.size(); ++i)
        found[i].isHole = areas[i] * largest[static_cast<std::size_t>(found[i].island)] < 0;
    std::stable_sort(found.begin(), found.end(), [&](const Outline& a, const Outline& b) {
        if (sizeOf(a) != sizeOf(b)) return sizeOf(a) > sizeOf(b);
        return a.island != b.island ? a.island < b.island : a.isHole < b.isHole;
    });
    return found;
}

} // namespace tool

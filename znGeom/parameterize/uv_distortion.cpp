#include "znGeom/parameterize/uv_distortion.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "znGeom/analysis/edge_sides.h"

namespace znGeom {

namespace {

using znLinear::Point2;
using znLinear::Vector;
using znLinear::Vector2;

class Chart
{
public:
    Chart(const CompactMesh& mesh, const MeshUV* cornerUVs) : m_mesh(mesh), m_cornerUVs(cornerUVs) {}

    int vertexAt(int corner) const { return m_mesh.getTrianglesRaw()[corner]; }
    const MeshUV& uvAt(int corner) const
    {
        return m_cornerUVs ? m_cornerUVs[corner] : m_mesh.getUVs()[vertexAt(corner)];
    }
    znLinear::Point placeAt(int corner) const { return m_mesh.getVertices()[vertexAt(corner)].asPoint(); }
    Point2 imageAt(int corner) const { return {double(uvAt(corner).u), double(uvAt(corner).v)}; }

    bool sameImage(int a, int b) const { return uvAt(a).u == uvAt(b).u && uvAt(a).v == uvAt(b).v; }

private:
    const CompactMesh& m_mesh;
    const MeshUV* m_cornerUVs;
};

/// A triangle and its image, as twice their areas and the stretch from one to the other.
struct Mapped
{
    double area, imageArea, stretch = 0;

    Mapped(const Chart& chart, int triangle)
    {
        const int corner = 3 * triangle;
        const Vector a = chart.placeAt(corner + 1) - chart.placeAt(corner);
        const Vector b = chart.placeAt(corner + 2) - chart.placeAt(corner);
        const Vector2 p = chart.imageAt(corner + 1) - chart.imageAt(corner);
        const Vector2 q = chart.imageAt(corner + 2) - chart.imageAt(corner);
        area = cross(a, b).length();
        imageArea = cross(p, q);
        // A side goes to p, and the height on it to this.
        const double side2 = a.length2();
        const Vector2 height = q - p * (dot(a, b) / side2);
        // The squares of the singular values have this sum, times the area, and the ratio of areas as their product.
        const double sum = p.length2() / side2 * area * area + height.length2() * side2;
        const double ratio =
            std::max(sum / (2 * area * std::fabs(imageArea)), 1.0); // (s + 1 / s) / 2 for the stretch s
        stretch = ratio + std::sqrt(ratio * ratio - 1);
    }
    bool hasArea() const { return area > 0 && std::isfinite(area); }
    bool hasImage() const { return imageArea != 0 && std::isfinite(imageArea) && std::isfinite(stretch); }
};

double seamLength(const CompactMesh& mesh, const Chart& chart)
{
    MeshEdgeSides edges;
    meshEdgeSides(mesh, edges);
    double length = 0;
    for (int edge = 0; edge < edges.getNumEdges(); ++edge) {
        const std::span<const int> sides = edges.sides(edge);
        if (sides.size() != 2) continue;
        const int start = sides[0], end = cornerAtSideEnd(start);
        const bool isTurned = chart.vertexAt(start) != chart.vertexAt(sides[1]);
        const int otherEnd = cornerAtSideEnd(sides[1]);
        const bool isSeam = !chart.sameImage(start, isTurned ? otherEnd : sides[1]) ||
                            !chart.sameImage(end, isTurned ? sides[1] : otherEnd);
        if (isSeam) length += distance(chart.placeAt(start), chart.placeAt(end));
    }
    return length;
}

} // namespace

MeshUVDistortion meshUVDistortion(const CompactMesh& mesh, const MeshUV* cornerUVs)
{
    const Chart chart(mesh, cornerUVs);
    MeshUVDistortion result;
    double area = 0, imageArea = 0, stretch = 0, smallest = std::numeric_limits<double>::infinity(), largest = 0;
    for (int triangle = 0; triangle < mesh.getNumTriangles(); ++triangle) {
        const Mapped mapped(chart, triangle);
        if (!mapped.hasArea()) continue;
        if (!mapped.hasImage()) {
            ++result.numCollapsed;
            continue;
        }
        if (mapped.imageArea < 0) ++result.numFlipped;
        area += mapped.area;
        imageArea += std::fabs(mapped.imageArea);
        stretch += mapped.area * mapped.stretch;
        result.largestStretch = std::max(result.largestStretch, mapped.stretch);
        smallest = std::min(smallest, std::fabs(mapped.imageArea) / mapped.area);
        largest = std::max(largest, std::fabs(mapped.imageArea) / mapped.area);
    }
    result.seamLength = seamLength(mesh, chart);
    if (!(area > 0)) return result;
    result.meanStretch = stretch / area;
    result.smallestScale = std::sqrt(smallest * area / imageArea);
    result.largestScale = std::sqrt(largest * area / imageArea);
    return result;
}

} // namespace znGeom

#include "apps/zngeom/measuring/surface_samples.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace tool {

namespace {

double countIn(double parts) { return (parts + 1) * (parts + 2) / 2 - 3; }

/// The positions, or the normals, of a triangle's corners.
template <typename Record>
struct Corners
{
    const Record &a, &b, &c;

    Corners(const Record* records, const znGeom::MeshTriangle& triangle)
        : a(records[triangle[0]]), b(records[triangle[1]]), c(records[triangle[2]])
    {}
    Record at(double u, double v, double w) const
    {
        const auto mix = [&](float x, float y, float z) {
            return static_cast<float>(u * static_cast<double>(x) + v * static_cast<double>(y) +
                                      w * static_cast<double>(z));
        };
        return {mix(a.x, b.x, c.x), mix(a.y, b.y, c.y), mix(a.z, b.z, c.z)};
    }
};

} // namespace

/// Into how many parts each side is divided.
double SurfaceSamples::partsOf(int triangle) const
{
    const znGeom::MeshTriangle& corners = m_mesh.getTriangles()[triangle];
    double longest = 0;
    for (int i = 0; i < 3; ++i)
        longest = std::max(longest, distance(m_mesh.getVertices()[corners[i]].asPoint(),
                                             m_mesh.getVertices()[corners[znGeom::cornerAfter(i)]].asPoint()));
    return std::max(std::ceil(longest / m_spacing), 1.0);
}

double SurfaceSamples::count() const
{
    double sum = 0;
    for (int t = 0; t < m_mesh.getNumTriangles(); ++t) sum += countIn(partsOf(t));
    return sum;
}

bool SurfaceSamples::next(znGeom::CompactMesh& points)
{
    constexpr std::size_t piece = 1 << 18;
    std::vector<znGeom::MeshVertex> positions;
    std::vector<znGeom::MeshNormal> normals;
    for (; m_triangle < m_mesh.getNumTriangles() && positions.size() < piece; ++m_triangle, m_row = 0) {
        const int parts = static_cast<int>(partsOf(m_triangle));
        const Corners<znGeom::MeshVertex> places(m_mesh.getVertices(), m_mesh.getTriangles()[m_triangle]);
        const Corners<znGeom::MeshNormal> directions(m_mesh.getNormals(), m_mesh.getTriangles()[m_triangle]);
        for (; m_row < parts && positions.size() < piece; ++m_row) {
            const bool isFirst = m_row == 0; // which has corners at both ends
            for (int place = isFirst ? 1 : 0; place < (isFirst ? parts : parts - m_row + 1); ++place) {
                const double v = m_row / double(parts), w = place / double(parts);
                positions.push_back(places.at(1 - v - w, v, w));
                normals.push_back(directions.at(1 - v - w, v, w));
            }
        }
        if (m_row < parts) break;
    }
    points.copyVertices(static_cast<int>(positions.size()), positions.data());
    points.allocNormalArray();
    std::copy(normals.begin(), normals.end(), points.getNormals());
    return !positions.empty();
}

} // namespace tool

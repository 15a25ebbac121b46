// Sewing two sheets together, adjacency and boundaries given.
#include "bench/compact.h"
#include "bench/stitch.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/analysis/boundaries.h"
#include "znGeom/analysis/components.h"
#include "znGeom/shells/mesh_stitch.h"

#include <cmath>

namespace bench {
namespace {

/// From y = 0 on by one unit, in the direction of `sign`, facing up.
void addSheet(Soup& soup, int columns, int rows, float sign)
{
    const int first = soup.numVertices();
    for (int row = 0; row <= rows; ++row)
        for (int column = 0; column <= columns; ++column) {
            const float x = static_cast<float>(column) / static_cast<float>(columns);
            const float y = sign * static_cast<float>(row) / static_cast<float>(rows);
            soup.positions.insert(soup.positions.end(), {x, y, 0.05F * std::sin(9 * x) * std::cos(7 * y)});
        }
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column) {
            const int a = first + row * (columns + 1) + column, b = a + 1, c = b + columns + 1, d = a + columns + 1;
            if (sign > 0)
                soup.triangles.insert(soup.triangles.end(), {a, b, c, a, c, d});
            else
                soup.triangles.insert(soup.triangles.end(), {a, c, b, a, d, c});
        }
}

} // namespace

Soup twoSheets(bool isEqual)
{
    Soup soup;
    addSheet(soup, 500, 500, 1);
    if (isEqual)
        addSheet(soup, 500, 500, -1);
    else
        addSheet(soup, 347, 720, -1);
    return soup;
}

bool isOneSheet(const Soup& soup)
{
    const auto mesh = toCompact(soup);
    znGeom::MeshAdjTris adjTris;
    znGeom::MeshAdjVertices adjVertices;
    znGeom::MeshBoundaries boundaries;
    znGeom::meshAdjTris(*mesh, adjTris);
    znGeom::meshAdjVertices(*mesh, adjTris, adjVertices);
    znGeom::meshComputeBoundary(*mesh, adjTris, adjVertices, boundaries);
    return znGeom::meshComponents(*mesh, adjTris, nullptr) == 1 && boundaries.size() == 1;
}

} // namespace bench

namespace {

class Stitching
{
public:
    explicit Stitching(const bench::Soup& soup)
        : m_mesh(bench::toCompact(soup)), m_adjTris(new znGeom::MeshAdjTris), m_boundaries(new znGeom::MeshBoundaries)
    {
        znGeom::MeshAdjVertices adjVertices;
        znGeom::meshAdjTris(*m_mesh, *m_adjTris);
        znGeom::meshAdjVertices(*m_mesh, *m_adjTris, adjVertices);
        znGeom::meshComputeBoundary(*m_mesh, *m_adjTris, adjVertices, *m_boundaries);
    }

    bool run() { return znGeom::meshStitch(*m_mesh, m_adjTris, m_boundaries, 1e-3, 0.05); }
    bench::Soup result() const { return bench::toSoup(*m_mesh); }

private:
    std::unique_ptr<znGeom::CompactMesh> m_mesh;
    zn::Reference<znGeom::MeshAdjTris> m_adjTris;
    zn::Reference<znGeom::MeshBoundaries> m_boundaries;
};

[[maybe_unused]] const bool listed[] = {
    bench::measureStitch<Stitching>("stitch", "znGeom", true),
    bench::measureStitch<Stitching>("stitch_unequal", "znGeom", false),
};

} // namespace

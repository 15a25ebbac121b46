#include "znGeom/analysis/areas.h"

#include <cmath>

#include "znGeom/foundation/linear/tolerance.h"
#include "znGeom/foundation/threads/parallel_reduce.h"

namespace znGeom {

using znLinear::AffineMatrix;
using znLinear::Point;
using znLinear::Vector;
using znLinear::Vector2Flt;

namespace {

const MeshUV* textureCoordinates(const CompactMesh& mesh, MeshChannel channel)
{
    return channel == MeshChannelUVs ? mesh.getUVs() : channel == MeshChannelSTs ? mesh.getSTs() : nullptr;
}

bool isLinearIdentity(const AffineMatrix& matrix)
{
    return matrix.row(0) == Vector::x && matrix.row(1) == Vector::y && matrix.row(2) == Vector::z;
}

/// Sums the areas of the triangles of a slice.
class SurfaceArea
{
public:
    /// \param coordinates  null to measure in space
    SurfaceArea(const MeshPlacement& placement, const MeshUV* coordinates)
        : m_matrix(placement.matrix), m_isIdentity(isLinearIdentity(m_matrix)),
          m_vertices(placement.mesh->getVertices()), m_coordinates(coordinates),
          m_triangles(placement.mesh->getTriangles())
    {}

    double sum(znUtil::Slice slice) const
    {
        if (m_coordinates)
            return sumOf(slice, [this](const MeshTriangle& triangle) { return planeParallelogram(triangle); });
        if (m_isIdentity)
            return sumOf(slice, [this](const MeshTriangle& triangle) { return parallelogram<false>(triangle); });
        return sumOf(slice, [this](const MeshTriangle& triangle) { return parallelogram<true>(triangle); });
    }

private:
    template <typename Area>
    double sumOf(znUtil::Slice slice, const Area& area) const
    {
        double sum = 0;
        for (int i = slice.begin; i < slice.end; ++i) sum += area(m_triangles[i]);
        return 0.5 * sum;
    }

    /// Edges are transformed and not points: what lies far from the origin loses no digits to the translation.
    template <bool isTransformed>
    double parallelogram(const MeshTriangle& triangle) const
    {
        const Point origin = m_vertices[triangle[0]].asPoint();
        Vector first = m_vertices[triangle[1]].asPoint() - origin, second = m_vertices[triangle[2]].asPoint() - origin;
        if constexpr (isTransformed) {
            first = first * m_matrix;
            second = second * m_matrix;
        }
        return cross(first, second).length();
    }

    double planeParallelogram(const MeshTriangle& triangle) const
    {
        const MeshUV &a = m_coordinates[triangle[0]], &b = m_coordinates[triangle[1]], &c = m_coordinates[triangle[2]];
        return double(std::fabs(cross(Vector2Flt(b.u - a.u, b.v - a.v), Vector2Flt(c.u - a.u, c.v - a.v))));
    }

    AffineMatrix m_matrix;
    bool m_isIdentity;
    const MeshVertex* m_vertices;
    const MeshUV* m_coordinates;
    const MeshTriangle* m_triangles;
};

} // namespace

float meshArea(const CompactMesh& mesh, MeshChannel channel)
{
    MeshPlacement placement;
    placement.mesh = &mesh;
    return meshArea(placement, channel);
}

float meshArea(const MeshPlacement& placement, MeshChannel channel)
{
    if (!placement.mesh) return 0;
    const MeshUV* coordinates = textureCoordinates(*placement.mesh, channel);
    if (channel != MeshChannelVertices && !coordinates) return 0;
    const SurfaceArea area(placement, coordinates);
    return static_cast<float>(znUtil::parallelReduce(
        znUtil::ThreadPool::get(), placement.mesh->getNumTriangles(), 0.0,
        [&area](znUtil::Slice slice) { return area.sum(slice); }, [](double& sum, double part) { sum += part; }));
}

float meshArea(const zn::list<MeshPlacement>& placements, MeshChannel channel, zn::vector<float>& fractions)
{
    fractions.clear();
    if (channel > MeshChannelSTs || channel == 1) return 0;
    float total = 0;
    for (const MeshPlacement& placement : placements) {
        fractions.append(meshArea(placement, channel));
        total += fractions.back();
    }
    if (znLinear::epsilonTolFlt > std::fabs(total)) return 0;
    const float scale = 1.0f / total;
    for (float& fraction : fractions) fraction *= scale;
    return total;
}

void testDeterminants(const zn::list<MeshPlacement>& placements, zn::vector<bool>& mirrored)
{
    mirrored.clear();
    for (const MeshPlacement& placement : placements) mirrored.append(AffineMatrix(placement.matrix).det3x3() < 0);
}

} // namespace znGeom

#include "znGeom/analysis/fold_angle.h"

#include <algorithm>

#include "znGeom/foundation/threads/parallel_reduce.h"

namespace znGeom {

using znLinear::Normal;

namespace {

/// The largest angle at the edges that were looked at.
class SharpestFold
{
public:
    explicit SharpestFold(const CompactMesh& mesh) : m_vertices(mesh.getVertices()), m_corners(mesh.getTrianglesRaw())
    {}

    void lookAt(std::span<const int> sides)
    {
        for (size_t i = 0; i + 1 < sides.size(); ++i) {
            const Normal normal = normalOf(sides[i] / 3);
            for (size_t j = i + 1; j < sides.size() && normal.isValid(); ++j)
                if (m_corners[sides[j]] != m_corners[sides[i]]) compare(normal, normalOf(sides[j] / 3));
        }
    }

    double radians() const { return m_largest; }

private:
    Normal normalOf(int triangle) const
    {
        const auto corner = [&](int i) { return m_vertices[m_corners[3 * triangle + i]].asPoint(); };
        return Normal(cross(corner(2) - corner(1), corner(0) - corner(1)));
    }

    void compare(const Normal& a, const Normal& b)
    {
        constexpr double rounding = 1e-12; // most pairs are flatter than one before, and need no more than the cosine
        const double cosine = dot(a, b);
        if (!b.isValid() || cosine > m_cosine + rounding) return;
        m_largest = std::max(m_largest, angle(a, b));
        m_cosine = std::min(m_cosine, cosine);
    }

    const MeshVertex* m_vertices;
    const int* m_corners;
    double m_largest = 0, m_cosine = 1;
};

} // namespace

double meshMaxFoldAngle(const CompactMesh& mesh, const MeshEdgeSides& sides)
{
    const auto largestOf = [&](znUtil::Slice slice) {
        SharpestFold fold(mesh);
        for (int edge = slice.begin; edge < slice.end; ++edge) fold.lookAt(sides.sides(edge));
        return fold.radians();
    };
    return znUtil::parallelReduce(znUtil::ThreadPool::get(), sides.getNumEdges(), 0.0, largestOf,
                                  [](double& largest, double found) { largest = std::max(largest, found); });
}

} // namespace znGeom

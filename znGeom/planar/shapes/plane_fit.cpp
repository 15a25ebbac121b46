#include "znGeom/planar/shapes/plane_fit.h"

#include <cmath>
#include <numbers>
#include <utility>

#include "znGeom/foundation/linear/affine_matrix.h"
#include "znGeom/foundation/linear/tolerance.h"

namespace znGeom {

using namespace znLinear;

namespace {

/// The working data of a fit.
class PlaneFit
{
public:
    /// \param pointAt  gives point i of `count`
    template <typename PointAt>
    PlaneFit(int count, const PointAt& pointAt)
    {
        Vector sum;
        for (int i = 0; i < count; ++i) sum += pointAt(i).asVector();
        m_centroid = (sum * (1.0 / count)).asPoint();
        for (int i = 0; i < count; ++i) {
            const Vector d = pointAt(i) - m_centroid;
            for (int row = 0; row < 3; ++row)
                for (int column = row; column < 3; ++column) m[row][column] += d[row] * d[column];
        }
        for (int row = 1; row < 3; ++row)
            for (int column = 0; column < row; ++column) m[row][column] = m[column][row];
        for (int column = 0; column < 3; ++column) eliminate(column);
    }

    int rank() const { return m_rank; }
    Plane plane() const { return {m_centroid, Normal(nullVector())}; }

private:
    void eliminate(int k)
    {
        // If the matrix has looked full up to here, its last column is explained by the others.
        const bool isExplained = k == 2 && m_rank == 3;
        if (!isExplained) std::swap(m[pivotRow(k)], m[k]);
        if (isExplained || epsilonTol > std::fabs(m[k][k])) {
            m_hasPivot[k] = false;
            --m_rank;
            return;
        }
        const double pivot = m[k][k];
        for (double& value : m[k]) value /= pivot;
        for (int row = 0; row < 3; ++row) {
            if (row == k) continue;
            const double factor = m[row][k];
            for (int column = 0; column < 3; ++column) m[row][column] -= factor * m[k][column];
        }
    }

    /// The row of the largest number in column k, among those that have served no column as pivot row.
    int pivotRow(int k) const
    {
        int best = k;
        for (int row = 0; row < 3; ++row) {
            const bool isFree = row > k || (row < k && !m_hasPivot[row]);
            if (isFree && std::fabs(m[row][k]) > std::fabs(m[best][k])) best = row;
        }
        return best;
    }

    Vector nullVector() const
    {
        const bool first = m_hasPivot[0], second = m_hasPivot[1];
        if (m_rank == 2) {
            if (!first) return {1, 0, 0};
            return second ? Vector(-m[0][2], -m[1][2], 1) : Vector(-m[0][1], 1, 0);
        }
        if (m_rank == 1) {
            if (first) return {-m[0][1] - m[0][2], 1, 1};
            return second ? Vector(1, -m[1][2], 1) : Vector(1, 1, 0);
        }
        return {0, 0, 1};
    }

    Point m_centroid;
    double m[3][3] = {};
    bool m_hasPivot[3] = {true, true, true};
    int m_rank = 3;
};

template <typename PointAt>
int fitPlane(int count, const PointAt& pointAt, Plane& plane)
{
    if (count <= 0) return 0;
    const PlaneFit fitted(count, pointAt);
    plane = fitted.plane();
    return fitted.rank();
}

template <typename PointAt>
bool recognize(int count, const PointAt& pointAt, Plane& plane, double tolerance)
{
    if (count < 3) return false;
    Plane fitted;
    fitPlane(count, pointAt, fitted);
    if (!fitted.isValid()) return false;
    for (int i = 3; i < count; ++i)
        if (distance(pointAt(i), fitted) > tolerance) return false;
    plane = fitted;
    return true;
}

auto vertexAt(const PointMesh& mesh)
{
    return [vertices = mesh.getVertices()](int i) { return vertices[i].asPoint(); };
}

/// The frame of a chord: its origin at `from`, its z axis along the chord. False when the chord has no length.
bool makeChordFrame(const Point& from, const Point& to, AffineMatrix& frame)
{
    const Normal z(to - from);
    if (!z.isValid()) return false;
    Vector u = z.asVector().orthogonalVector(), w = cross(u, z.asVector());
    u.normalize();
    w.normalize();
    frame.setFrame(from, u, w, z.asVector());
    return true;
}

} // namespace

int fit(int count, const Point* points, Plane& plane)
{
    return fitPlane(
        count, [points](int i) { return points[i]; }, plane);
}

int fit(const PointMesh& mesh, Plane& plane) { return fitPlane(mesh.getNumVertices(), vertexAt(mesh), plane); }

void fitWithEndsOnPlane(int count, const Point* points, Plane& plane)
{
    plane = Plane(Point::origin, Normal());
    AffineMatrix frame;
    if (count <= 2 || !makeChordFrame(points[0], points[count - 1], frame)) return;
    AffineMatrix toFrame = frame;
    if (!toFrame.invert()) return;

    double sxy = 0, sxx = 0, syy = 0;
    for (int i = 1; i < count - 1; ++i) {
        const Point local = points[i] * toFrame;
        sxy += local.x * local.y;
        sxx += local.x * local.x;
        syy += local.y * local.y;
    }
    // theta / 2 is the direction of the greatest spread; the normal is at right angles to it.
    const double theta = std::atan2(2 * sxy, sxx - syy);
    const double across = (theta + std::numbers::pi) * 0.5;
    plane = Plane(points[0], Normal(Vector(std::cos(across), std::sin(across), 0) * frame));
}

bool recognizePlane(const zn::vector<Point>& points, Plane& plane, double tolerance)
{
    return recognize(
        points.size(), [&points](int i) { return points[i]; }, plane, tolerance);
}

bool recognizePlane(const PointMesh& mesh, Plane& plane, double tolerance)
{
    return recognize(mesh.getNumVertices(), vertexAt(mesh), plane, tolerance);
}

} // namespace znGeom

#include "znGeom/spatial/queries/internal/nearest_triangle.h"

#include <algorithm>
#include <numeric>

#include "znGeom/foundation/machine/prefetch.h"
#include "znGeom/spatial/trees/internal/triangle_bounds.h"

namespace znGeom::internal {

namespace {

constexpr int capacity = TriangleBounds::capacity;

/// How many triangles ahead the corners are prefetched.
constexpr int cornersAhead = 12;

} // namespace

/// The corners of some triangles as seen from the point, coordinate by coordinate, so that the loops over them are free
/// of branches and the compiler processes several at once.
struct TriangleBounds::Corners
{
    float at[9][capacity];   ///< x, y and z of the first corner, of the second, of the third
    float reached[capacity]; ///< 1; 0 where a corner lies outside the mesh's box or is not a number

    Corners(const TriangleBounds& bounds, const int* triangles, int count)
    {
        // A scale beyond the range of `float` is applied in two steps.
        const float half = static_cast<float>(std::ldexp(1.0, std::ilogb(bounds.m_frame.scale) / 2));
        const float rest = static_cast<float>(bounds.m_frame.scale / static_cast<double>(half));
        for (int i = 0; i < std::min(count, cornersAhead); ++i) znUtil::prefetch(&bounds.m_triangles[triangles[i]]);
        for (int i = 0; i < count; ++i) {
            if (i + cornersAhead < count) znUtil::prefetch(&bounds.m_triangles[triangles[i + cornersAhead]]);
            for (int corner = 0; corner < 3; ++corner) {
                const float* vertex = &bounds.m_vertices[bounds.m_triangles[triangles[i]][corner]].x;
                for (int axis = 0; axis < 3; ++axis)
                    at[3 * corner + axis][i] =
                        (vertex[axis] - bounds.m_frame.origin[axis]) * half * rest - bounds.m_query.at[axis];
            }
        }
        const float limit = static_cast<float>(bounds.m_query.reach * (1 + SearchFrame::margin));
        for (int i = 0; i < count; ++i) reached[i] = 1;
        for (const auto& coordinates : at)
            for (int i = 0; i < count; ++i) reached[i] = std::fabs(coordinates[i]) <= limit ? reached[i] : 0.0f;
    }
};

void TriangleBounds::boundByBoxes(const int* triangles, int count, float* lower2) const
{
    const Corners corners(*this, triangles, count);
    for (int i = 0; i < count; ++i) lower2[i] = 0;
    for (int axis = 0; axis < 3; ++axis) {
        const float *a = corners.at[axis], *b = corners.at[axis + 3], *c = corners.at[axis + 6];
        for (int i = 0; i < count; ++i) {
            const float distance = outside(0, lesser(lesser(a[i], b[i]), c[i]), greater(greater(a[i], b[i]), c[i]));
            lower2[i] += distance * distance;
        }
    }
    for (int i = 0; i < count; ++i) lower2[i] = corners.reached[i] != 0 ? lower2[i] : 0.0f;
}

float TriangleBounds::nearestCorner2(const int* triangles, int count) const
{
    const Corners corners(*this, triangles, count);
    float least = std::numeric_limits<float>::infinity();
    for (int i = 0; i < count; ++i) {
        const auto length2 = [&corners, i](int corner) {
            const float x = corners.at[corner][i], y = corners.at[corner + 1][i], z = corners.at[corner + 2][i];
            return x * x + y * y + z * z;
        };
        if (corners.reached[i] != 0) least = std::min({least, length2(0), length2(3), length2(6)});
    }
    return least;
}

void TriangleBounds::boundByPlanes(const int* triangles, int count, float* lower2) const
{
    const Corners corners(*this, triangles, count);
    for (int i = 0; i < count; ++i) {
        SeenTriangle seen;
        for (int axis = 0; axis < 3; ++axis) {
            seen.a[axis] = corners.at[axis][i];
            seen.b[axis] = corners.at[axis + 3][i];
            seen.c[axis] = corners.at[axis + 6][i];
        }
        float upper2;
        boundTriangle(seen, lower2[i], upper2);
        lower2[i] = corners.reached[i] != 0 ? lower2[i] : 0.0f;
    }
}

int NearestTriangle::sift(const int* triangles, int count, float* lower2, int* kept) const
{
    int siftedTriangles[capacity];
    int numKept = 0;
    for (int i = 0; i < count; ++i) {
        kept[numKept] = i;
        siftedTriangles[numKept] = triangles[i];
        numKept += !isBeyond(lower2[i]);
    }
    if (numKept == 0) return 0;
    m_bounds.boundByPlanes(siftedTriangles, numKept, lower2);
    int numLeft = 0;
    for (int i = 0; i < numKept; ++i) {
        kept[numLeft] = kept[i];
        lower2[numLeft] = lower2[i];
        numLeft += !isBeyond(lower2[i]);
    }
    return numLeft;
}

std::vector<int> NearestTriangle::listNearer(int numTriangles) const
{
    std::vector<int> nearer;
    int triangles[capacity], kept[capacity];
    float lower2[capacity];
    Candidate candidate;
    for (int first = 0; first < numTriangles; first += capacity) {
        const int count = std::min(capacity, numTriangles - first);
        std::iota(triangles, triangles + count, first);
        m_bounds.boundByBoxes(triangles, count, lower2);
        const int numKept = sift(triangles, count, lower2, kept);
        for (int i = 0; i < numKept; ++i)
            if (measure(triangles[kept[i]], candidate) && m_best2 > candidate.distance2)
                nearer.push_back(triangles[kept[i]]);
    }
    return nearer;
}

} // namespace znGeom::internal

/// What the tests of the spatial types share.
#pragma once

#include <cmath>

#include "tests/support/random.h"
#include "tests/support/shapes.h"
#include "znGeom/analysis/bounds.h"
#include "znGeom/spatial.h"
#include "znGeom/spatial/trees/octree.h"

namespace znTest {

inline znGeom::BoundingBox boxOf(const znLinear::PointFlt& a, const znLinear::PointFlt& b)
{
    znGeom::BoundingBox box;
    box.extend(a), box.extend(b);
    return box;
}

inline znGeom::BoundingBox boxOf(const znGeom::CompactMesh& mesh)
{
    znGeom::BoundingBox box;
    meshBoundingBox(mesh, box);
    return box;
}

inline zn::Reference<znGeom::Octree> makeOctree(const znGeom::CompactMesh& mesh, int leafCapacity)
{
    return new znGeom::Octree(mesh.getNumVertices(), mesh.getVerticesRaw(), boxOf(mesh), true, leafCapacity);
}

inline znLinear::PointFlt pointFlt(Random& random, double limit = 1.0)
{
    return znLinear::PointFlt(random.point(limit));
}

/// Whole numbers from -4 to 4, times `step`.
inline znLinear::PointFlt gridPoint(Random& random, int step)
{
    const int x = random.below(9) - 4, y = random.below(9) - 4, z = random.below(9) - 4;
    return {float(step * x), float(step * y), float(step * z)};
}

/// Caps of half sizes `nearSize` and 1 at a distance of 2, turned at random; the corners run around either way.
inline znGeom::Frustum randomFrustum(Random& random, double nearSize)
{
    const znLinear::Normal view = random.direction(), up(view.asVector().orthogonalVector());
    const znLinear::Vector side = cross(view, up) * (random.oneIn(2) ? 1.0 : -1.0);
    const znLinear::Point apex = random.point();
    znLinear::Point corners[8];
    for (int i = 0; i < 8; ++i) {
        const double size = i < 4 ? nearSize : 1.0, right = (i + 1) & 2 ? size : -size, top = i & 2 ? size : -size;
        corners[i] = apex + view * (i < 4 ? 0.0 : 2.0) + side * right + up * top;
    }
    return znGeom::Frustum(corners);
}

/// Small and large triangles; many of the coordinates lie where cells are split, and some are not numbers.
inline znGeom::CompactMesh makeRandomSoup(Random& random, int numTriangles)
{
    znGeom::CompactMesh mesh;
    mesh.resizeVertexArray(3 * numTriangles);
    mesh.resizeTriangleArray(numTriangles);
    for (int corner = 0; corner < 3 * numTriangles; ++corner) mesh.getTrianglesRaw()[corner] = corner;
    for (int t = 0; t < numTriangles; ++t) {
        const znLinear::Point middle = random.point(8.0);
        const double size = random.oneIn(8) ? 8.0 : 0.5;
        for (int v = 3 * t; v < 3 * t + 3; ++v) {
            znGeom::MeshVertex& vertex = mesh.getVertices()[v];
            const znLinear::Point p = middle + random.vector(size);
            vertex.set(&p.x);
            if (t % 2) vertex.set(std::round(vertex.x), std::round(vertex.y), std::round(vertex.z));
            if (random.oneIn(200)) vertex.y = NAN;
            if (t == 0) vertex.set(NAN, NAN, NAN);
        }
    }
    return mesh;
}

/// Sets a cull distance for as long as it lives.
struct CullDistance
{
    explicit CullDistance(double distance) { znGeom::setBackfaceCullDistance(distance); }
    ~CullDistance() { znGeom::setBackfaceCullDistance(1e-06); }
};

} // namespace znTest

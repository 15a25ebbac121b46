#include "znGeom/spatial/queries/internal/ray_search.h"

#include <utility>

#include "znGeom/foundation/machine/clones.h"
#include "znGeom/spatial/queries/internal/search_key.h"
#include "znGeom/spatial/trees/internal/triangle_bounds.h"

namespace znGeom::internal {

namespace {

using Node = BoxGroup;
using Leaf = PackedTriangles::Leaf;
constexpr int width = PackedTriangles::width;

/// How far above 1 a factor has to be to make up for a few roundings.
constexpr float roundingUp = 1.000002f;

/// A ray in the frame of a tree.
///
/// Its direction is scaled so that the largest component is 1, and its origin is moved along it to where the box of the
/// mesh begins on that axis. So whatever the ray, parameters are lengths in the frame to within a factor of 1.8, and
/// `float` numbers near the mesh lose no more than they do in the mesh itself.
///
/// The widening. Let u = 2^-24, M the largest coordinate of the mesh and Q that of the true origin, in the frame. The
/// place of a hit is in the box of its triangle but for 8 u (M + Q) at most; to narrow the moved origin costs 5 u M;
/// subtracting a side of a box is relative to the difference, and makes up to 3 u with the product, which `roundingUp`
/// accounts for. The sum is below 14 u (M + Q).
struct FrameRay
{
    float nearOrigin[3], farOrigin[3]; ///< moved against and along the direction by the widening
    float origin[3], direction[3], inverse[3];
    bool isForward[3];
    float slack;         ///< what a weight times the determinant may be off by, over the largest side
    double begin, scale; ///< the parameter of the moved origin, and what a parameter is multiplied with after that
    bool mayHit, isTooFar;

    FrameRay(const PackedTriangles& tree, const RayQuestion& question)
    {
        const SearchFrame& frame = tree.frame;
        double at[3], along[3], largest = 0, size = 0;
        for (int axis = 0; axis < 3; ++axis) {
            at[axis] = frame.toFrame(static_cast<double>((&question.origin.x)[axis]), axis);
            along[axis] = (&question.direction.dx)[axis];
            largest = std::max(largest, std::fabs(along[axis]));
            size = std::max(size, std::fabs(at[axis]));
        }
        constexpr double unit = 1.0 / (1 << 24), farthest = 1 << 20;
        isTooFar = size > farthest * frame.largest;
        const double widening = 16 * unit * (frame.largest + size);
        double moved = 0;
        for (int axis = 0; axis < 3; ++axis) {
            along[axis] /= largest;
            if (std::fabs(along[axis]) == 1) moved = std::fabs(at[axis]) - frame.largest - widening;
        }
        moved = std::max(moved, 0.0);
        mayHit = true;
        for (int axis = 0; axis < 3; ++axis) {
            const double start = at[axis] + moved * along[axis];
            mayHit = mayHit && std::fabs(start) <= 4 * (frame.largest + widening);
            setAxis(axis, start, along[axis], widening);
        }
        slack = static_cast<float>(256 * unit * (frame.largest + widening) + 8 * widening);
        begin = moved / frame.scale / largest;
        scale = largest * frame.scale;
    }

    /// A parameter of the question along this ray, not less than it is.
    float reach(double param) const
    {
        const double length = (param - begin) * scale;
        return length < 1e30 ? static_cast<float>(length) * roundingUp + 1e-20f : 1e30f;
    }

private:
    void setAxis(int axis, double start, double along, double widening)
    {
        // A direction that is hardly one moves by nothing within the mesh, and its inverse stays finite.
        constexpr double least = 1e-18;
        if (std::fabs(along) < least) along = std::copysign(least, along);
        isForward[axis] = along > 0;
        origin[axis] = static_cast<float>(start);
        direction[axis] = static_cast<float>(along);
        inverse[axis] = static_cast<float>(1 / along);
        nearOrigin[axis] = static_cast<float>(start + std::copysign(widening, along));
        farOrigin[axis] = static_cast<float>(start - std::copysign(widening, along));
    }
};

/// Where the ray enters the boxes of a node's children, not after it really does; above `reach` where it doesn't.
ZNGEOM_INLINE void enterChildren(const Node& node, const FrameRay& ray, float reach, float* __restrict entries)
{
    const float* nearSides[3];
    const float* farSides[3];
    for (int axis = 0; axis < 3; ++axis) {
        nearSides[axis] = ray.isForward[axis] ? node.low[axis] : node.high[axis];
        farSides[axis] = ray.isForward[axis] ? node.high[axis] : node.low[axis];
    }
    for (int i = 0; i < width; ++i) {
        const float nearX = (nearSides[0][i] - ray.nearOrigin[0]) * ray.inverse[0];
        const float nearY = (nearSides[1][i] - ray.nearOrigin[1]) * ray.inverse[1];
        const float nearZ = (nearSides[2][i] - ray.nearOrigin[2]) * ray.inverse[2];
        const float farX = (farSides[0][i] - ray.farOrigin[0]) * ray.inverse[0];
        const float farY = (farSides[1][i] - ray.farOrigin[1]) * ray.inverse[1];
        const float farZ = (farSides[2][i] - ray.farOrigin[2]) * ray.inverse[2];
        const float enter = greater(greater(nearX, nearY), greater(nearZ, 0.0f));
        const float leave = lesser(lesser(farX, farY), lesser(farZ, reach)) * roundingUp;
        entries[i] = enter <= leave ? enter : 2e30f;
    }
}

/// Puts the children that the ray enters within reach on the stack, the nearest one last.
/// \return how many
ZNGEOM_INLINE int pushChildren(const Node& node, int firstNumber, const FrameRay& ray, float reach, SearchKey* top)
{
    float entries[width];
    enterChildren(node, ray, reach, entries);
    int count = 0;
    for (int i = 0; i < width; ++i) {
        top[count] = makeKey(entries[i], firstNumber + i);
        count += entries[i] < 1.5e30f;
    }
    for (int i = 1; i < count; ++i) {
        const SearchKey key = top[i];
        int place = i;
        for (; place > 0 && top[place - 1] < key; --place) top[place] = top[place - 1];
        top[place] = key;
    }
    return count;
}

/// Which triangles of a leaf the ray may hit. Bounds in `float` on the weights, after Moller and Trumbore (1997); a
/// triangle that the ray meets edge on may always be hit.
ZNGEOM_INLINE void siftTriangles(const Leaf& leaf, const FrameRay& ray, int* __restrict mayHit)
{
    const float* const d = ray.direction;
    for (int i = 0; i < width; ++i) {
        float s[3], b[3], c[3], longest = 0;
        for (int axis = 0; axis < 3; ++axis) {
            const float a = leaf.corners[axis][i];
            s[axis] = ray.origin[axis] - a;
            b[axis] = leaf.corners[axis + 3][i] - a;
            c[axis] = leaf.corners[axis + 6][i] - a;
            longest = greater(longest, greater(greater(b[axis], -b[axis]), greater(c[axis], -c[axis])));
        }
        const float p[3] = {d[1] * c[2] - d[2] * c[1], d[2] * c[0] - d[0] * c[2], d[0] * c[1] - d[1] * c[0]};
        const float q[3] = {s[1] * b[2] - s[2] * b[1], s[2] * b[0] - s[0] * b[2], s[0] * b[1] - s[1] * b[0]};
        const float det = b[0] * p[0] + b[1] * p[1] + b[2] * p[2];
        const float u = s[0] * p[0] + s[1] * p[1] + s[2] * p[2];
        const float v = d[0] * q[0] + d[1] * q[1] + d[2] * q[2];
        const float loss = ray.slack * longest;
        const float signedU = det < 0 ? -u : u, signedV = det < 0 ? -v : v, size = det < 0 ? -det : det;
        const bool within = (signedU >= -loss) & (signedV >= -loss) & (signedU + signedV <= size + 2 * loss);
        mayHit[i] = within | (size <= loss);
    }
}

/// Tests the triangles of a leaf.
ZNGEOM_INLINE void testLeaf(const PackedTriangles& tree, int number, const FrameRay& ray, NearestHit& hit)
{
    const Leaf& leaf = tree.leaves[static_cast<size_t>(number)];
    int mayHit[width];
    siftTriangles(leaf, ray, mayHit);
    unsigned places = 0;
    for (int i = 0; i < width; ++i) places |= static_cast<unsigned>(mayHit[i]) << i;
    for (; places != 0; places &= places - 1) {
        const int place = std::countr_zero(places);
        if (leaf.triangles[place] < 0) continue;
        float corners[9];
        for (int i = 0; i < 9; ++i) corners[i] = znLinear::narrow(tree.frame.fromFrame(leaf.corners[i][place], i % 3));
        hit.test(leaf.triangles[place], corners, corners + 3, corners + 6);
    }
}

/// Depth first, the nearest child first. What a child leads to is prefetched, since it will be needed a little later.
ZNGEOM_CLONES void findHit(const PackedTriangles& tree, const FrameRay& ray, NearestHit& hit)
{
    const Node* const nodes = tree.nodes.get();
    const Leaf* const leaves = tree.leaves.get();
    const int firstLowest = tree.firstLowest;
    float reach = ray.reach(hit.param());
    SearchKey stack[BoxHierarchy::stackSize];
    stack[0] = 0;
    for (int size = 1; size > 0;) {
        const SearchKey key = stack[--size];
        if (boundOf(key) > reach) continue;
        const int node = numberOf(key);
        SearchKey* const children = stack + size;
        if (node < firstLowest) {
            const int count = pushChildren(nodes[node], width * node + 1, ray, reach, children);
            for (int i = count; i-- > 0;) prefetchLines(nodes[numberOf(children[i])]);
            size += count;
            continue;
        }
        int count = pushChildren(nodes[node], width * (node - firstLowest), ray, reach, children);
        for (int i = count; i-- > 0;) prefetchLines(leaves[numberOf(children[i])]);
        while (count-- > 0) {
            if (boundOf(children[count]) > reach) break;
            testLeaf(tree, numberOf(children[count]), ray, hit);
            if (hit.isFinal()) return;
            reach = ray.reach(hit.param());
        }
    }
}

} // namespace

bool searchAlongRay(const PackedTriangles& tree, const RayQuestion& question, NearestHit& hit)
{
    const FrameRay ray(tree, question);
    if (ray.isTooFar) return false;
    if (ray.mayHit) findHit(tree, ray, hit);
    return true;
}

} // namespace znGeom::internal

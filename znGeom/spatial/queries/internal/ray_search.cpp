#include "znGeom/spatial/queries/internal/ray_search.h"

#include <bit>
#include <cmath>

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

/// Sets of children, or of the triangles of a leaf: bit i for place i.
constexpr unsigned placeBits[width] = {1, 2, 4, 8, 16, 32, 64, 128};

/// The sides of the boxes of a node, all after one another: the same side of eight boxes each.
static_assert(sizeof(Node) == 6 * width * sizeof(float));
constexpr int lowSide(int axis) { return width * axis; }
constexpr int highSide(int axis) { return width * (axis + 3); }

/// A ray in the frame of a tree.
///
/// Its direction is scaled so that the largest component is 1, and its origin is moved along it to where the box of the
/// mesh begins on that axis. So whatever the ray, parameters are lengths in the frame to within a factor of 1.8, and
/// `float` numbers near the mesh lose no more than they do in the mesh itself.
///
/// The widening. Let u = 2^-24, M the largest coordinate of the mesh and Q that of the true origin, in the frame. The
/// place of a hit is in the box of its triangle but for 8 u (M + Q) at most; to narrow the moved origin costs 5 u M;
/// subtracting a side of a box is relative to the difference, and makes up to 4 u with the products, which `roundingUp`
/// accounts for. The sum is below 14 u (M + Q).
struct FrameRay
{
    float nearOrigin[3], farOrigin[3]; ///< moved against and along the direction by the widening
    float origin[3], direction[3];
    float nearInverse[3], farInverse[3]; ///< one over the direction; the second one is rounded up
    int nearSide[3], farSide[3];         ///< where in a node the sides of boxes begin that the ray meets first and last
    float slack;                         ///< what a weight times the determinant may be off by, over the largest side
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
        nearSide[axis] = along > 0 ? lowSide(axis) : highSide(axis);
        farSide[axis] = along > 0 ? highSide(axis) : lowSide(axis);
        origin[axis] = static_cast<float>(start);
        direction[axis] = static_cast<float>(along);
        nearInverse[axis] = static_cast<float>(1 / along);
        farInverse[axis] = nearInverse[axis] * roundingUp;
        nearOrigin[axis] = static_cast<float>(start + std::copysign(widening, along));
        farOrigin[axis] = static_cast<float>(start - std::copysign(widening, along));
    }
};

/// Where the ray enters the boxes of a node's children, not after it really does.
/// \return which children it enters within reach
ZNGEOM_INLINE unsigned enterChildren(const Node& node, const FrameRay& ray, float reach, float* __restrict entries)
{
    const float* const sides = reinterpret_cast<const float*>(&node);
    const float* const nearSides[3] = {sides + ray.nearSide[0], sides + ray.nearSide[1], sides + ray.nearSide[2]};
    const float* const farSides[3] = {sides + ray.farSide[0], sides + ray.farSide[1], sides + ray.farSide[2]};
    unsigned places = 0;
    for (int i = 0; i < width; ++i) {
        const float nearX = (nearSides[0][i] - ray.nearOrigin[0]) * ray.nearInverse[0];
        const float nearY = (nearSides[1][i] - ray.nearOrigin[1]) * ray.nearInverse[1];
        const float nearZ = (nearSides[2][i] - ray.nearOrigin[2]) * ray.nearInverse[2];
        const float farX = (farSides[0][i] - ray.farOrigin[0]) * ray.farInverse[0];
        const float farY = (farSides[1][i] - ray.farOrigin[1]) * ray.farInverse[1];
        const float farZ = (farSides[2][i] - ray.farOrigin[2]) * ray.farInverse[2];
        entries[i] = greater(greater(nearX, nearY), greater(nearZ, 0.0f));
        const float leave = lesser(lesser(farX, farY), lesser(farZ, reach));
        places |= placeBits[i] & -static_cast<unsigned>(entries[i] <= leave);
    }
    return places;
}

/// Puts children on the stack, where they are sorted the nearest one last.
/// \return how many
template <bool areSorted>
ZNGEOM_INLINE int pushChildren(unsigned places, const float* entries, int firstNumber, SearchKey* top)
{
    int count = 0;
    for (; places != 0; places &= places - 1) {
        const int child = std::countr_zero(places);
        const SearchKey key = makeKey(areSorted ? entries[child] : 0, firstNumber + child);
        int place = count++;
        if (areSorted)
            for (; place > 0 && top[place - 1] < key; --place) top[place] = top[place - 1];
        top[place] = key;
    }
    return count;
}

/// Which triangles of a leaf the ray may hit. Bounds in `float` on the weights, after Moller and Trumbore (1997); a
/// triangle that the ray meets edge on may always be hit.
ZNGEOM_INLINE unsigned siftTriangles(const Leaf& leaf, const FrameRay& ray)
{
    unsigned places = 0;
    const float* const d = ray.direction;
    for (int i = 0; i < width; ++i) {
        float s[3], b[3], c[3], longest = 0;
        for (int axis = 0; axis < 3; ++axis) {
            const float a = leaf.corners[axis][i];
            s[axis] = ray.origin[axis] - a;
            b[axis] = leaf.corners[axis + 3][i] - a;
            c[axis] = leaf.corners[axis + 6][i] - a;
            longest = greater(longest, greater(std::fabs(b[axis]), std::fabs(c[axis])));
        }
        const float p[3] = {d[1] * c[2] - d[2] * c[1], d[2] * c[0] - d[0] * c[2], d[0] * c[1] - d[1] * c[0]};
        const float q[3] = {s[1] * b[2] - s[2] * b[1], s[2] * b[0] - s[0] * b[2], s[0] * b[1] - s[1] * b[0]};
        const float det = b[0] * p[0] + b[1] * p[1] + b[2] * p[2];
        const float u = s[0] * p[0] + s[1] * p[1] + s[2] * p[2];
        const float v = d[0] * q[0] + d[1] * q[1] + d[2] * q[2];
        const float loss = ray.slack * longest;
        const float signedU = det < 0 ? -u : u, signedV = det < 0 ? -v : v, size = std::fabs(det);
        const bool within = (signedU >= -loss) & (signedV >= -loss) & (signedU + signedV <= size + 2 * loss);
        places |= placeBits[i] & -static_cast<unsigned>(within | (size <= loss));
    }
    return places;
}

/// Tests the triangles of a leaf.
ZNGEOM_INLINE void testLeaf(const PackedTriangles& tree, int number, const FrameRay& ray, NearestHit& hit)
{
    const Leaf& leaf = tree.leaves[static_cast<size_t>(number)];
    for (unsigned places = siftTriangles(leaf, ray); places != 0; places &= places - 1) {
        const int place = std::countr_zero(places);
        if (leaf.triangles[place] < 0) continue;
        float corners[9];
        for (int i = 0; i < 9; ++i) corners[i] = znLinear::narrow(tree.frame.fromFrame(leaf.corners[i][place], i % 3));
        hit.test(leaf.triangles[place], corners, corners + 3, corners + 6);
    }
}

/// Tests the triangles of the leaves below a lowest node.
/// \param top    room for the leaves
/// \param reach  grows shorter with each hit
template <bool isForNearest>
ZNGEOM_INLINE void testLeaves(const PackedTriangles& tree, int node, unsigned places, const float* entries,
                              const FrameRay& ray, SearchKey* top, float& reach, NearestHit& hit)
{
    const int firstLeaf = width * (node - tree.firstLowest);
    for (unsigned left = places; left != 0; left &= left - 1)
        prefetchLines(tree.leaves[static_cast<size_t>(firstLeaf + std::countr_zero(left))]);
    int count = pushChildren<isForNearest>(places, entries, firstLeaf, top);
    while (count-- > 0) {
        if (boundOf(top[count]) > reach) break;
        testLeaf(tree, numberOf(top[count]), ray, hit);
        if (hit.isFinal()) return;
        reach = ray.reach(hit.param());
    }
}

/// Depth first. In a search for the nearest hit children are visited in the order in which the ray enters them. A
/// search for any hit takes them as they come: to sort them costs it more than it saves.
///
/// Most nodes have one child that the ray enters, which is then visited at once. Of several, what they lead to is
/// prefetched, since it will be needed a little later.
template <bool isForNearest>
ZNGEOM_INLINE void findHit(const PackedTriangles& tree, const FrameRay& ray, NearestHit& hit)
{
    const Node* const nodes = tree.nodes.get();
    float reach = ray.reach(hit.param()), entries[width];
    SearchKey stack[BoxHierarchy::stackSize];
    for (int node = 0, size = 0;;) {
        const unsigned places = enterChildren(nodes[node], ray, reach, entries);
        if (node >= tree.firstLowest) {
            testLeaves<isForNearest>(tree, node, places, entries, ray, stack + size, reach, hit);
            if (hit.isFinal()) return;
        } else {
            const int firstChild = width * node + 1;
            if (std::has_single_bit(places)) {
                node = firstChild + std::countr_zero(places);
                continue;
            }
            const int count = pushChildren<isForNearest>(places, entries, firstChild, stack + size);
            for (int i = size; i < size + count; ++i) prefetchLines(nodes[numberOf(stack[i])]);
            size += count;
        }
        do
            if (size == 0) return;
        while (boundOf(stack[--size]) > reach);
        node = numberOf(stack[size]);
    }
}

ZNGEOM_CLONES void findNearestHit(const PackedTriangles& tree, const FrameRay& ray, NearestHit& hit)
{
    findHit<true>(tree, ray, hit);
}

ZNGEOM_CLONES void findAnyHit(const PackedTriangles& tree, const FrameRay& ray, NearestHit& hit)
{
    findHit<false>(tree, ray, hit);
}

} // namespace

bool searchAlongRay(const PackedTriangles& tree, const RayQuestion& question, NearestHit& hit)
{
    const FrameRay ray(tree, question);
    if (ray.isTooFar) return false;
    if (ray.mayHit) (question.findNearest ? findNearestHit : findAnyHit)(tree, ray, hit);
    return true;
}

} // namespace znGeom::internal

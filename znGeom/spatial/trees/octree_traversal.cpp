#include "znGeom/spatial/trees/octree_traversal.h"

#include <bit>
#include <limits>
#include <optional>

#include "znGeom/spatial/shapes/box_predicates.h"
#include "znGeom/spatial/trees/internal/meeting_children.h"

namespace znGeom {

using namespace znLinear;

namespace {

bool meets(const BoundingBox& cell, const Frustum& frustum) { return intersects(cell, frustum); }
bool meets(const BoundingBox& cell, const BoundingBox& box) { return cell.intersects(box); }
bool meets(const BoundingBox& cell, const Sphere& sphere) { return intersects(cell, sphere); }
bool meets(const BoundingBox& cell, const Ray& ray)
{
    return ray.intersects(cell, 0.0f, std::numeric_limits<float>::max());
}

Vector orderingDirection(const Frustum& frustum) { return frustum.getVector(); }
Vector orderingDirection(const BoundingBox&) { return Vector::x; }
Vector orderingDirection(const Sphere&) { return Vector::x; }
Vector orderingDirection(const Ray& ray) { return ray.direction(); }

using internal::meetingChildren;

/// For queries without a shortcut: each child is tested.
template <typename Query>
unsigned meetingChildren(const BoundingBox& cell, const Query& query)
{
    unsigned result = 0;
    for (int child = 0; child < 8; ++child) {
        BoundingBox box = cell;
        OctreeIterator::halve(box, child);
        if (meets(box, query)) result |= 1u << child;
    }
    return result;
}

OctreeIterator childOf(const OctreeIterator& cell, int child)
{
    OctreeIterator result(cell.box, cell.node + cell.node->firstChild + child);
    OctreeIterator::halve(result.box, child);
    return result;
}

/// Replaces cells on top of a stack by those of their children that a query meets, until a leaf lies on top or the
/// stack is empty.
///
/// \param stack    room for 7 more cells per level below those on it
/// \param order    the eight child numbers; the first is to lie on top
/// \param meeting  called with a cell's box; returns which children the query meets, bit i for child i
/// \return the new size
template <typename Meeting>
int descendToLeaf(OctreeIterator* stack, int size, const int* order, const Meeting& meeting)
{
    while (size > 0 && !stack[size - 1].node->isLeaf) {
        const OctreeIterator cell = stack[--size];
        const unsigned children = meeting(cell.box);
        unsigned places = 0; // bit k: the query meets child order[k]
        for (int k = 0; k < 8; ++k) places |= (children >> order[k] & 1u) << k;
        while (places != 0) {
            const int last = std::bit_width(places) - 1;
            stack[size++] = childOf(cell, order[last]);
            places ^= 1u << last;
        }
    }
    return size;
}

} // namespace

template <typename Query>
struct OctreeFilterIt<Query>::Record
{
    const Octree& octree;
    std::optional<Query> query;
    int stackCapacity, stackSize = 0;
    std::unique_ptr<OctreeIterator[]> stack;
    int order[8];

    explicit Record(const Octree& walked)
        : octree(walked), stackCapacity(8 * walked.maxDepth()),
          stack(std::make_unique<OctreeIterator[]>(static_cast<size_t>(stackCapacity)))
    {}

    void descend()
    {
        stackSize = descendToLeaf(stack.get(), stackSize, order,
                                  [this](const BoundingBox& cell) { return meetingChildren(cell, *query); });
    }
};

template <typename Query>
OctreeFilterIt<Query>::OctreeFilterIt(const Octree& octree) : m_record(std::make_unique<Record>(octree))
{}

template <typename Query>
OctreeFilterIt<Query>::OctreeFilterIt(const Octree& octree, const Query& query) : OctreeFilterIt(octree)
{
    reset(query);
}

template <typename Query>
OctreeFilterIt<Query>::~OctreeFilterIt() = default;

template <typename Query>
bool OctreeFilterIt<Query>::valid() const
{
    return m_record->stackSize != 0;
}

template <typename Query>
void OctreeFilterIt<Query>::reset(const Query& query)
{
    Record& record = *m_record;
    record.query.emplace(query);
    Octree::getNodeOrdering(orderingDirection(query), record.order);
    record.stackSize = 0;
    const OctreeIterator root = record.octree.getRoot();
    if (meets(root.box, query)) record.stack[static_cast<size_t>(record.stackSize++)] = root;
    record.descend();
}

template <typename Query>
void OctreeFilterIt<Query>::next()
{
    --m_record->stackSize;
    m_record->descend();
}

template <typename Query>
OctreeIterator OctreeFilterIt<Query>::get() const
{
    return m_record->stack[static_cast<size_t>(m_record->stackSize) - 1];
}

template class OctreeFilterIt<Frustum>;
template class OctreeFilterIt<BoundingBox>;
template class OctreeFilterIt<Ray>;
template class OctreeFilterIt<Sphere>;

void OctreeLeafIterator::reset(const Octree& octree)
{
    m_stack.reserve(octree.maxDepth());
    m_stack.append(octree.getRoot());
    descend();
}

void OctreeLeafIterator::next()
{
    m_stack.eraseBack();
    descend();
}

void OctreeLeafIterator::descend()
{
    while (!m_stack.empty() && !m_stack.back().node->isLeaf) {
        const OctreeIterator cell = m_stack.back();
        m_stack.eraseBack();
        for (int child = 0; child < 8; ++child) m_stack.append(childOf(cell, child));
    }
}

} // namespace znGeom

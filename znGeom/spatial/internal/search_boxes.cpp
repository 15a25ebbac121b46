#include "znGeom/spatial/internal/search_boxes.h"

#include <cmath>

#include "znGeom/analysis/bounds.h"
#include "znGeom/foundation/threads/parallel_for.h"

namespace znGeom {

BoundingBox SearchBoxes::Siblings::box(int child) const
{
    BoundingBox result;
    result.minX = low[0][child], result.minY = low[1][child], result.minZ = low[2][child];
    result.maxX = high[0][child], result.maxY = high[1][child], result.maxZ = high[2][child];
    return result;
}

void SearchBoxes::Siblings::set(int child, const BoundingBox& box)
{
    low[0][child] = box.minX, low[1][child] = box.minY, low[2][child] = box.minZ;
    high[0][child] = box.maxX, high[1][child] = box.maxY, high[2][child] = box.maxZ;
}

SearchBoxes::Scale::Scale(const BoundingBox& box)
    : low{box.minX, box.minY, box.minZ}, step{(box.maxX - box.minX) / 255, (box.maxY - box.minY) / 255,
                                              (box.maxZ - box.minZ) / 255}
{}

namespace {

/// 0 to 255, rounded away from the inside of the box; the far end where the value is no number.
std::uint8_t roundedDown(float value) { return static_cast<std::uint8_t>(value > 0 ? std::min(value, 255.0f) : 0.0f); }
std::uint8_t roundedUp(float value)
{
    return static_cast<std::uint8_t>(value < 255 ? std::ceil(std::max(value, 0.0f)) : 255.0f);
}

/// Fills in what belongs to one leaf.
class LeafBoxes
{
public:
    LeafBoxes(const CompactMesh& mesh, const ArrayOfSets& table)
        : m_vertices(mesh.getVertices()), m_triangles(mesh.getTriangles()), m_table(table)
    {}

    /// \param entries  the bytes of the whole table
    /// \return the box of the leaf's triangles
    BoundingBox fill(int leaf, std::uint8_t* entries)
    {
        const int* triangles = m_table.getSet(leaf);
        const int count = m_table.getSetSize(leaf);
        BoundingBox all;
        m_boxes.setSize(count);
        for (int i = 0; i < count; ++i) {
            meshTriBoundingBox(m_vertices, m_triangles[triangles[i]], m_boxes[i]);
            all.extend(m_boxes[i]);
        }
        const SearchBoxes::Scale scale(all);
        std::uint8_t* bytes = entries + 6 * static_cast<std::ptrdiff_t>(m_table.start[leaf]);
        for (int axis = 0; axis < 3; ++axis) {
            const float stepsPerUnit = scale.step[axis] > 0 ? 1 / scale.step[axis] : 0.0f;
            for (int i = 0; i < count; ++i) {
                const float *low = &m_boxes[i].minX, *high = &m_boxes[i].maxX;
                bytes[axis * count + i] = roundedDown((low[axis] - scale.low[axis]) * stepsPerUnit);
                bytes[(axis + 3) * count + i] = roundedUp((high[axis] - scale.low[axis]) * stepsPerUnit);
            }
        }
        return all;
    }

private:
    const MeshVertex* m_vertices;
    const MeshTriangle* m_triangles;
    const ArrayOfSets& m_table;
    zn::vector<BoundingBox> m_boxes;
};

/// Cells stand in the array of records behind the root, eight siblings side by side.
int siblingsOf(int node) { return (node - 1) / 8; }
int childNumberOf(int node) { return (node - 1) % 8; }

} // namespace

SearchBoxes::SearchBoxes(const CompactMesh& mesh, const Octree& octree, const ArrayOfSets& table,
                         znUtil::ThreadPool& pool)
    : m_rootCellBox(octree.getRoot().box), m_parents(siblingsOf(octree.numNodes())),
      m_siblings(std::make_unique_for_overwrite<Siblings[]>(static_cast<size_t>(siblingsOf(octree.numNodes())))),
      m_entries(6 * table.elements.size())
{
    const OctreeNode* nodes = octree.getRoot().node;
    Siblings* all = m_siblings.get();
    std::uint8_t* entries = m_entries.write();
    const auto cellOf = [&](int node) -> Cell {
        if (!nodes[node].isLeaf) return {siblingsOf(node + nodes[node].firstChild), -1};
        const int leaf = nodes[node].leafIndex;
        return {table.start[leaf], table.getSetSize(leaf)};
    };
    m_root = cellOf(0);
    if (m_root.isLeaf()) m_rootBox = LeafBoxes(mesh, table).fill(0, entries);
    znUtil::parallelFor(pool, siblingsOf(octree.numNodes()), [&](znUtil::Slice slice, int) {
        LeafBoxes leaves(mesh, table);
        for (int node = 8 * slice.begin + 1; node < 8 * slice.end + 1; ++node) {
            Siblings& siblings = all[siblingsOf(node)];
            siblings.cells[childNumberOf(node)] = cellOf(node);
            if (nodes[node].isLeaf) siblings.set(childNumberOf(node), leaves.fill(nodes[node].leafIndex, entries));
        }
    });
    // Children stand behind their parents.
    for (int node = octree.numNodes() - 1; node >= 0; --node) {
        if (nodes[node].isLeaf) continue;
        const int children = cellOf(node).first;
        m_parents[children] = node - 1;
        BoundingBox box;
        for (int child = 0; child < 8; ++child) box.extend(all[children].box(child));
        if (node == 0)
            m_rootBox = box;
        else
            all[siblingsOf(node)].set(childNumberOf(node), box);
    }
}

BoundingBox SearchBoxes::cellBox(int cell) const
{
    int children[32];
    int depth = 0;
    for (; cell >= 0; cell = m_parents[cell / 8]) children[depth++] = cell % 8;
    BoundingBox box = m_rootCellBox;
    while (depth > 0) OctreeIterator::halve(box, children[--depth]);
    return box;
}

} // namespace znGeom

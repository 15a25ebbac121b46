// One step of Catmull-Clark subdivision, and regions of 100 thousand faces in a million: found, and extruded.
#include "bench/subdivide.h"
#include "znGeom/topology/extrude.h"
#include "znGeom/topology/subdivide.h"
#include "znGeom/topology/topo_walks.h"
#include "znGeom/topology/twin.h"

#include <array>
#include <cmath>
#include <cstring>
#include <memory>
#include <unordered_map>

namespace bench {
namespace {

using Place = std::array<double, 3>;

Place mean(const std::vector<Place>& places)
{
    Place sum{};
    for (const Place& place : places)
        for (std::size_t axis = 0; axis < 3; ++axis) sum[axis] += place[axis] / static_cast<double>(places.size());
    return sum;
}

/// The rules for a vertex of four quads, on a torus of as many rings as sides: quad (i, j) lies between the vertices i
/// and i + 1 of one way round and j and j + 1 of the other.
std::vector<Place> subdivideTorus(const Quads& quads, int size)
{
    const auto wrap = [size](int i) { return (i + size) % size; };
    const auto at = [&](int i, int j) {
        const double* p = &quads.positions[3 * static_cast<std::size_t>(wrap(i) * size + wrap(j))];
        return Place{p[0], p[1], p[2]};
    };
    const auto centre = [&](int i, int j) { return mean({at(i, j), at(i + 1, j), at(i, j + 1), at(i + 1, j + 1)}); };
    std::vector<Place> expected;
    for (int i = 0; i < size; ++i)
        for (int j = 0; j < size; ++j) {
            expected.push_back(centre(i, j));
            expected.push_back(mean({at(i, j), at(i + 1, j), centre(i, j), centre(i, j - 1)}));
            expected.push_back(mean({at(i, j), at(i, j + 1), centre(i, j), centre(i - 1, j)}));
            const Place centres = mean({centre(i, j), centre(i - 1, j), centre(i, j - 1), centre(i - 1, j - 1)});
            const Place ends = mean({at(i + 1, j), at(i - 1, j), at(i, j + 1), at(i, j - 1)});
            Place corner{};
            for (std::size_t axis = 0; axis < 3; ++axis)
                corner[axis] = (centres[axis] + ends[axis] + 2 * at(i, j)[axis]) / 4;
            expected.push_back(corner);
        }
    return expected;
}

/// Places by cells that are large beside rounding and small beside edges.
class PlaceTable
{
public:
    explicit PlaceTable(const std::vector<Place>& places)
    {
        for (const Place& place : places) m_cells.emplace(keyOf(cellOf(place)), place);
    }

    bool hasNear(const double* at) const
    {
        const Place place{at[0], at[1], at[2]};
        const auto cell = cellOf(place);
        for (int i = 0; i < 27; ++i) {
            const auto [begin, end] =
                m_cells.equal_range(keyOf({cell[0] + i % 3 - 1, cell[1] + i / 3 % 3 - 1, cell[2] + i / 9 - 1}));
            for (auto it = begin; it != end; ++it)
                if (std::hypot(it->second[0] - at[0], it->second[1] - at[1], it->second[2] - at[2]) < 1e-12)
                    return true;
        }
        return false;
    }

private:
    using Cell = std::array<std::int64_t, 3>;

    static Cell cellOf(const Place& place)
    {
        constexpr double perUnit = 1e6;
        Cell cell{};
        for (std::size_t axis = 0; axis < 3; ++axis)
            cell[axis] = static_cast<std::int64_t>(std::floor(place[axis] * perUnit));
        return cell;
    }
    static std::int64_t keyOf(const Cell& cell)
    {
        return (cell[0] * 73856093) ^ (cell[1] * 19349663) ^ (cell[2] * 83492791);
    }

    std::unordered_multimap<std::int64_t, Place> m_cells;
};

constexpr int torusSize = 500;

} // namespace

const Quads& quarterMillionQuads()
{
    static const Quads quads = [] {
        const Soup torus = bumpyTorus(torusSize, torusSize);
        Quads made;
        made.positions.assign(torus.positions.begin(), torus.positions.end());
        // Two triangles of a cell are near, far, farNext and near, farNext, nearNext.
        for (std::size_t i = 0; i < torus.triangles.size(); i += 6)
            for (const std::size_t corner : {0, 1, 2, 5}) made.corners.push_back(torus.triangles[i + corner]);
        return made;
    }();
    return quads;
}

bool areSubdivided(const Quads& quads, const std::vector<double>& positions)
{
    const std::vector<Place> expected = subdivideTorus(quads, torusSize);
    if (positions.size() != 3 * expected.size()) return false;
    const PlaceTable table(expected);
    for (std::size_t i = 0; i < positions.size(); i += 3)
        if (!table.hasNear(&positions[i])) return false;
    return true;
}

} // namespace bench

namespace {

using namespace znGeom;

void fill(TopoMesh& mesh, const bench::Quads& quads)
{
    std::vector<TopoMeshVertex> vertices;
    for (std::size_t i = 0; i < quads.positions.size(); i += 3)
        vertices.push_back(mesh.allocVertex({quads.positions[i], quads.positions[i + 1], quads.positions[i + 2]}));
    const auto at = [&](std::size_t corner) { return vertices[static_cast<std::size_t>(quads.corners[corner])]; };
    for (std::size_t i = 0; i < quads.corners.size(); i += 4) mesh.allocQuad(at(i), at(i + 1), at(i + 2), at(i + 3));
    meshTwin(mesh);
}

class Subdividing
{
public:
    explicit Subdividing(const bench::Quads& quads) { fill(m_mesh, quads); }

    int run()
    {
        m_result.reset(computeSubdivMesh(m_mesh));
        return m_result->numFaces();
    }
    std::vector<double> positions() const
    {
        std::vector<double> all;
        for (const TopoMeshVertex v : verticesOf(*m_result))
            all.insert(all.end(), {v->point.x, v->point.y, v->point.z});
        return all;
    }

private:
    TopoMesh m_mesh;
    std::unique_ptr<TopoMesh> m_result;
};

/// The least that a subdivision has to do: the bytes of its result, written once to fresh memory.
class WritingOnce
{
public:
    explicit WritingOnce(const bench::Quads& quads) : m_numBytes(quads.corners.size() * (4 * 64 + 64 + 24)) {}

    std::size_t run()
    {
        m_result = TopoSlab::make(m_numBytes / TopoBlock::bytes * TopoBlock::bytes);
        std::memset(m_result.get(), 1, m_result.get_deleter().bytes);
        return m_numBytes;
    }

private:
    std::size_t m_numBytes;
    TopoSlab::Pointer m_result;
};

/// A square of some 100 thousand triangles in a sheet of a million.
class Region
{
public:
    Region()
    {
        constexpr int size = 707, from = 200, to = 424;
        std::vector<TopoMeshVertex> vertices;
        for (int i = 0; i < (size + 1) * (size + 1); ++i)
            vertices.push_back(m_mesh.allocVertex({double(i % (size + 1)), double(i / (size + 1)), 0}));
        const auto at = [&](int x, int y) { return vertices[static_cast<std::size_t>(y * (size + 1) + x)]; };
        for (int y = 0; y < size; ++y)
            for (int x = 0; x < size; ++x) {
                const TopoMeshFace pair[] = {m_mesh.allocTriangle(at(x, y), at(x + 1, y), at(x + 1, y + 1)),
                                             m_mesh.allocTriangle(at(x, y), at(x + 1, y + 1), at(x, y + 1))};
                const bool isIn = x >= from && x < to && y >= from && y < to;
                for (const TopoMeshFace face : pair)
                    if (isIn) m_faces.insert(face);
            }
        meshTwin(m_mesh);
    }

    int expand()
    {
        expandRegion(m_mesh, m_faces, m_out, m_perimeter);
        return m_perimeter.size();
    }
    int extrude()
    {
        AffineMatrix up;
        up.setRow(3, {0, 0, 5});
        ExtrudeTopoFace extruding(m_mesh);
        extruding(m_faces, m_out, up);
        return m_out.size();
    }

private:
    using AffineMatrix = znLinear::AffineMatrix;

    TopoMesh m_mesh;
    zn::unordered_set<TopoMeshFace> m_faces, m_out;
    zn::vector<TopoMeshEdge> m_perimeter;
};

bool measureRegion(const char* work, int (Region::*run)(), int expected)
{
    return bench::measureAlone(
        work, "znGeom/100k_of_a_million",
        [=](benchmark::State& state) {
            if (Region region; (region.*run)() != expected) return state.SkipWithError("the result is another");
            std::unique_ptr<Region> region;
            bench::timeWork(
                state,
                [&] {
                    region = std::make_unique<Region>();
                    return region.get();
                },
                [run](Region* fresh) { return (fresh->*run)(); });
        },
        10);
}

[[maybe_unused]] const bool listed[] = {
    bench::measureSubdivision<Subdividing>("znGeom"),
    bench::measureAlone(
        "subdivide", "writing_once/torus_of_quads",
        [](benchmark::State& state) {
            WritingOnce subject(bench::quarterMillionQuads());
            bench::timeWork(
                state,
                [&] {
                    subject = WritingOnce(bench::quarterMillionQuads());
                    return &subject;
                },
                [](WritingOnce* fresh) { return fresh->run(); });
        },
        10),
    measureRegion("expand_region", &Region::expand, 4 * 224),
    measureRegion("extrude", &Region::extrude, 2 * 224 * 224),
};

} // namespace

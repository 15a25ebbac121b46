#include "znGeom/topology/subdivide.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>

#include "znGeom/foundation/containers/checked_size.h"
#include "znGeom/foundation/machine/stream.h"
#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"
#include "znGeom/topology/internal/flat_table.h"
#include "znGeom/topology/internal/fresh_elements.h"
#include "znGeom/topology/topo_walks.h"

namespace znGeom {

using namespace znLinear;
using internal::FreshElements;
using internal::Table;

namespace {

/// The old mesh in flat tables. Its half-edges are counted face by face, and within a face from the first one on: these
/// are their places. Faces and vertices are counted as they stand in their lists.
struct OldMesh
{
    struct Corner ///< a vertex
    {
        Vector point;
        Vector around; ///< the sum of the centres of the faces and of the ends of the half-edges that leave it
        int numSides = 0;
        int lastArrival = -1; ///< of the places that end there, the last
        int border = -1;      ///< its place in `borders`; -1 inside
    };
    struct Border ///< the ends of the boundary half-edges at a vertex
    {
        Vector sum;
        int count = 0;
    };
    struct Side ///< a half-edge
    {
        int before, face, origin, end;
        int twin; ///< its number; -1 for none
    };

    int numSides, numFaces, numCorners;
    int numEdges = 0; ///< the two halves of a pair count as one
    Table<Corner> corners;
    zn::vector<Border> borders;
    Table<Side> sides;     ///< by place
    Table<int> firstPlace; ///< by face, and at the end that of a face after the last
    Table<Vector> centre;  ///< by face: the mean of its corners
    int numNumbers;
    Table<int> placeOf; ///< by the number of a half-edge; -1 for a removed one

    explicit OldMesh(const TopoMesh& mesh)
        : numSides(mesh.numEdges()), numFaces(mesh.numFaces()), numCorners(mesh.numVertices()), corners(numCorners),
          sides(numSides), firstPlace(numFaces + 1), centre(numFaces), numNumbers(mesh.edgeNumbers()),
          placeOf(numNumbers)
    {
        Table<int> indexOf(mesh.vertexNumbers());
        int numMet = 0;
        for (const TopoMeshVertex v : verticesOf(mesh)) {
            corners[numMet].point = v->point.asVector();
            indexOf[v.number()] = numMet++;
        }
        std::fill_n(placeOf.begin(), numNumbers, -1);
        int index = 0, place = 0;
        for (const TopoMeshFace face : facesOf(mesh)) {
            firstPlace[index] = place;
            place = addFace(face, index++, place, indexOf);
        }
        firstPlace[index] = place;
    }

    /// Around a vertex on the boundary.
    Border& borderAt(int corner)
    {
        int& border = corners[corner].border;
        if (border < 0) {
            border = borders.size();
            borders.append(Border());
        }
        return borders[border];
    }

private:
    /// \return the place after its last
    int addFace(TopoMeshFace face, int index, int first, const Table<int>& indexOf)
    {
        int place = first;
        Vector sum;
        for (const TopoMeshEdge side : sidesOf(face)) {
            placeOf[side.number()] = place;
            const int origin = indexOf[side->origin.number()], twin = side->twin ? side->twin.number() : -1;
            sides[place] = {place - 1, index, origin, -1, twin};
            numEdges += twin < side.number() ? 1 : 0; // one without a twin, or the later half
            sum += corners[origin].point;
            ++place;
        }
        sides[first].before = place - 1;
        for (int next = first; next < place; ++next) {
            Corner& corner = corners[sides[next].origin];
            const int arriving = sides[next].before;
            sides[arriving].end = sides[next].origin;
            corner.lastArrival = std::max(corner.lastArrival, arriving);
            ++corner.numSides;
        }
        centre[index] = sum / double(place - first);
        return place;
    }
};

/// Writes the new mesh, whose vertices are the centres of the old faces, the middles of its edges, and its corners. The
/// quad of a place has the place's number. Its half-edges have the numbers 4 * place and the three that follow: from
/// the centre of the face to the middle of the side, to its end, to the middle of the next side, and back.
class Subdivision
{
public:
    Subdivision(OldMesh& old, TopoMesh& result)
        : m_old(old), m_firstMiddle(old.numFaces), m_firstCorner(m_firstMiddle + old.numEdges),
          m_fresh(result, zn::checkedSize(std::int64_t(m_firstCorner) + old.numCorners),
                  zn::checkedSize(4 * std::int64_t(old.numSides)), old.numSides),
          m_halves(old.numSides)
    {}

    void write()
    {
        writeCentres();
        writeMiddles();
        writeCorners();
        writeQuads();
    }

private:
    using Side = OldMesh::Side;

    /// What a half-edge of the old mesh becomes.
    struct Halves
    {
        int middle;                    ///< the number of the vertex between them
        int beyondFirst, beyondSecond; ///< the twins of the two half-edges; -1 for none
    };

    static int toMiddle(int place) { return 4 * place; }
    static int toEnd(int place) { return 4 * place + 1; }
    static int toNextMiddle(int place) { return 4 * place + 2; }
    static int toCentre(int place) { return 4 * place + 3; }
    int firstHalf(int place) const { return toNextMiddle(m_old.sides[place].before); }
    int secondHalf(int place) const { return toEnd(place); }
    /// The later of the two half-edges that leave the middle of a side, within its face.
    int lastFromMiddle(int place) const { return std::max(toEnd(place), toCentre(m_old.sides[place].before)); }

    TopoMeshVertexRecord& makeVertex(int number, const Vector& point, int firstOut, int numOutgoing, bool isClosed)
    {
        TopoMeshVertexRecord& record = m_fresh.makeVertex(number);
        record.point = point.asPoint();
        record.edge = m_fresh.edge(firstOut);
        record.firstOut = firstOut;
        record.numOutgoing = numOutgoing;
        if (isClosed) record.closedAt = m_fresh.numOpenings();
        return record;
    }

    void writeCentres()
    {
        for (int face = 0; face < m_old.numFaces; ++face) {
            const int first = m_old.firstPlace[face], end = m_old.firstPlace[face + 1];
            makeVertex(face, m_old.centre[face], toMiddle(end - 1), end - first, true);
        }
    }

    /// In the order of the half-edges' own list. Also finds the twins, and adds up what lies around the corners.
    void writeMiddles()
    {
        int middle = m_firstMiddle;
        for (int number = 0; number < m_old.numNumbers; ++number) {
            const int place = m_old.placeOf[number];
            if (place < 0) continue;
            const Side& side = m_old.sides[place];
            OldMesh::Corner& origin = m_old.corners[side.origin];
            const Vector &end = m_old.corners[side.end].point, &centre = m_old.centre[side.face];
            origin.around += centre + end;
            if (side.twin < 0) {
                addBorder(side.origin, end);
                addBorder(side.end, origin.point);
                m_halves[place] = {middle, -1, -1};
                makeVertex(middle++, (origin.point + end) / 2.0, lastFromMiddle(place), 2, false);
            } else if (number < side.twin) {
                const int twin = m_old.placeOf[side.twin];
                const Vector& beyond = m_old.centre[m_old.sides[twin].face];
                pairHalves(middle, place, twin);
                makeVertex(middle++, (origin.point + end + centre + beyond) / 4.0,
                           std::max(lastFromMiddle(place), lastFromMiddle(twin)), 4, true);
            }
        }
    }

    void addBorder(int corner, const Vector& neighbour)
    {
        OldMesh::Border& border = m_old.borderAt(corner);
        border.sum += neighbour;
        ++border.count;
    }

    void pairHalves(int middle, int place, int twin)
    {
        m_halves[place] = {middle, secondHalf(twin), firstHalf(twin)};
        m_halves[twin] = {middle, secondHalf(place), firstHalf(place)};
        const Side& side = m_old.sides[place];
        const bool runAlike = m_old.sides[twin].origin == side.origin && side.end != side.origin;
        if (!runAlike) return;
        for (const int half : {place, twin}) std::swap(m_halves[half].beyondFirst, m_halves[half].beyondSecond);
    }

    void writeCorners()
    {
        for (int i = 0; i < m_old.numCorners; ++i) {
            const OldMesh::Corner& corner = m_old.corners[i];
            const int firstOut = corner.lastArrival < 0 ? -1 : toNextMiddle(corner.lastArrival);
            makeVertex(m_firstCorner + i, moved(corner), firstOut, corner.numSides, corner.border < 0);
        }
    }

    /// With E the sum of the ends of the half-edges, the middles of the edges of a vertex P sum up to (n P + E) / 2.
    Vector moved(const OldMesh::Corner& corner) const
    {
        const double n = corner.numSides;
        if (n == 0 || (corner.border >= 0 && n == 1)) return corner.point;
        if (corner.border < 0) return (corner.around / n + (n - 2) * corner.point) / n;
        const OldMesh::Border& border = m_old.borders[corner.border];
        return border.sum / (4.0 * border.count) + 3.0 * corner.point / 4.0;
    }

    void writeQuads()
    {
        Table<int> newest(m_fresh.numVertices()); // by vertex, the half-edge that was written last
        std::fill_n(newest.begin(), m_fresh.numVertices(), -1);
        for (int face = 0; face < m_old.numFaces; ++face) {
            const int first = m_old.firstPlace[face], last = m_old.firstPlace[face + 1] - 1;
            for (int place = first; place < last; ++place) writeQuad(place, place + 1, newest);
            writeQuad(last, first, newest);
        }
        znUtil::endStreaming();
    }

    void writeQuad(int place, int next, Table<int>& newest)
    {
        const Side& side = m_old.sides[place];
        const Halves &halves = m_halves[place], &nextHalves = m_halves[next];
        const int origins[] = {side.face, halves.middle, m_firstCorner + side.end, nextHalves.middle};
        const int twins[] = {toCentre(side.before), halves.beyondSecond, nextHalves.beyondFirst, toMiddle(next)};
        const int first = toMiddle(place);
        const TopoMeshEdge row[] = {m_fresh.edge(first - 1), m_fresh.edge(first),     m_fresh.edge(first + 1),
                                    m_fresh.edge(first + 2), m_fresh.edge(first + 3), m_fresh.edge(first + 4)};
        const TopoMeshFace quad = m_fresh.makeFace(place, row[1]);
        for (int i = 0; i < 4; ++i) {
            TopoMeshEdgeRecord record;
            record.origin = m_fresh.vertex(origins[i]);
            record.next = row[i < 3 ? i + 2 : 1];
            record.prev = row[i > 0 ? i : 4];
            record.twin = m_fresh.edge(twins[i]);
            record.face = quad;
            record.listPrev = row[i];
            record.listNext = row[i + 2];
            record.outNext = std::exchange(newest[origins[i]], first + i);
            writeLine(row[i + 1].record(), &record);
        }
    }

    void writeLine(void* place, const void* line) const
    {
        if (m_isLarge)
            znUtil::streamLine(place, line);
        else
            std::memcpy(place, line, sizeof(TopoMeshEdgeRecord));
    }

    static constexpr int manySides = 10'000; ///< whose quads fill a cache

    OldMesh& m_old;
    const bool m_isLarge = m_old.numSides > manySides;
    const int m_firstMiddle, m_firstCorner; ///< the numbers of the first vertex of either kind
    const FreshElements m_fresh;
    Table<Halves> m_halves; ///< by place
};

} // namespace

TopoMesh* computeSubdivMesh(TopoMesh& mesh) { return computeSubdivMesh(mesh, nullptr); }

TopoMesh* computeSubdivMesh(TopoMesh& mesh, TopoMemory* memory)
{
    znOS::StopWatch watch;
    auto result = std::make_unique<TopoMesh>(memory);
    OldMesh old(mesh);
    Subdivision(old, *result).write();
    debugChannel().print("meshTwin: %d vertices: %f s\n", result->numVertices(), watch.stop());
    return result.release();
}

} // namespace znGeom

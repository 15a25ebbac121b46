#include "znGeom/parameterize/internal/conformal_map.h"

#include <algorithm>
#include <cmath>

#include "znGeom/planar/shapes/triangulate_polygon.h"
#include "znGeom/solvers/internal/frontal_cholesky.h"

namespace znGeom::internal {

namespace {

using znLinear::epsilonTol;
using znLinear::Point;
using znLinear::Point2;
using znLinear::Vector;
using znUtil::Progress;

/// Triangulating a longer loop would take longer than everything else.
constexpr int longestBridged = 1500;

/// A larger system would take more than four gigabytes.
constexpr int mostEliminated = 1 << 21;

/// The two rows of a vertex, and what its triangles add to them.
class VertexRows
{
public:
    VertexRows(ConjugateGradient& solver, NVector& rightHandSide, int free)
        : m_matrix(solver.A()), m_rightHandSide(rightHandSide), m_row(2 * free)
    {}

    void addToDiagonal(double value)
    {
        m_matrix.addToElement(m_row, m_row, value);
        m_matrix.addToElement(m_row + 1, m_row + 1, value);
    }

    /// \param cotangent  of the angle opposite to the edge to the neighbour
    /// \param side       -1 for the vertex after this one in the triangle, 1 for the one before
    void addNeighbour(int free, const Point2& pinned, double cotangent, double side)
    {
        if (free < 0) {
            m_rightHandSide[m_row] += cotangent * pinned.x - side * pinned.y;
            m_rightHandSide[m_row + 1] += cotangent * pinned.y + side * pinned.x;
            return;
        }
        const int column = 2 * free;
        if (!(std::fabs(cotangent) < epsilonTol)) {
            m_matrix.addToElement(m_row, column, -cotangent);
            m_matrix.addToElement(m_row + 1, column + 1, -cotangent);
        }
        m_matrix.addToElement(m_row, column + 1, side);
        m_matrix.addToElement(m_row + 1, column, -side);
    }

    /// Keeps a vertex without any triangle of some area where it is: its rows are empty.
    void holdIfEmpty(const Point2& place)
    {
        for (const int i : {0, 1}) {
            if (m_matrix.getElement(m_row + i, m_row + i) != 0) continue;
            m_matrix.addToElement(m_row + i, m_row + i, 1.0);
            m_rightHandSide[m_row + i] = place[i];
        }
    }

private:
    SparseMatrix& m_matrix;
    NVector& m_rightHandSide;
    int m_row;
};

} // namespace

ConformalMap::ConformalMap(const CompactMesh& mesh, const MeshAdjTris& adjTris, const ChartPins& pins,
                           const znLinear::AffineMatrix& rotation, double scale)
    : m_mesh(mesh), m_adjTris(adjTris), m_pins(pins), m_scale(scale)
{
    const MeshVertex* vertices = mesh.getVertices();
    const Point origin = vertices[pins.low].asPoint();
    m_points.reserve(mesh.getNumVertices());
    for (int i = 0; i < mesh.getNumVertices(); ++i) {
        const Vector place = ((vertices[i].asPoint() - origin) * rotation) * scale;
        m_points.append({place.dx, place.dy});
    }
}

void ConformalMap::numberFreeVertices()
{
    int next = 0;
    m_free.setSize(m_mesh.getNumVertices());
    for (int i = 0; i < m_free.size(); ++i) m_free[i] = i == m_pins.low || i == m_pins.high ? -1 : next++;
}

void ConformalMap::bridgeHoles(const zn::vector<zn::vector<int>>& loops, int outerLoop, Progress& progress)
{
    Progress phase;
    for (int i = 0; i < loops.size() && !progress.cancelled(); ++i) {
        if (i == outerLoop) continue;
        progress.subPhase(1.0 / loops.size(), phase);
        bridge(loops[i], phase);
    }
    zn::vector<int> pairs;
    for (int i = 0; i < m_bridges.size(); ++i) {
        for (const int vertex : m_bridges[i].corners) {
            pairs.append(vertex);
            pairs.append(i);
        }
    }
    m_bridgesAt.assignFromPairs(m_mesh.getNumVertices(), pairs.size() / 2, pairs.data());
}

void ConformalMap::bridge(const zn::vector<int>& loop, Progress& progress)
{
    if (loop.size() > longestBridged) return;
    zn::vector<int> triangles;
    zn::vector<Point> polygon;
    for (const int vertex : loop)
        polygon.append((m_mesh.getVertices()[vertex].asPoint().asVector() * m_scale).asPoint());
    triangulatePolygon(polygon, triangles, nullptr, &progress);
    // A loop runs as its triangles do; what closes it runs against them.
    for (int i = 0; i + 2 < triangles.size(); i += 3)
        m_bridges.append({loop[triangles[i + 2]], loop[triangles[i + 1]], loop[triangles[i]]});
}

bool ConformalMap::solve(znOS::AppOutput& output, Progress& progress, zn::vector<Point2>& uvs)
{
    const int size = systemSize();
    ConjugateGradient solver(size);
    NVector rightHandSide(size), start(size);
    Progress phase;
    progress.subPhase(0.1, phase);
    if (!assemble(phase, solver, rightHandSide, start)) return false;

    progress.subPhase(0.8, phase);
    Progress part;
    const double shareAtOnce = size > mostEliminated ? 0.0 : 0.9;
    phase.subPhase(shareAtOnce, part);
    if (shareAtOnce > 0) solveAtOnce(solver.A(), rightHandSide, part, start);
    if (progress.cancelled()) return false;
    if (solver.A().isMMatrix())
        solver.initIncompleteCholeskyPreconditioner();
    else
        solver.initDiagonalPreconditioner();
    solver.initialize(rightHandSide, start);
    phase.subPhase(1 - shareAtOnce, part);
    iterate(solver, output, part);
    if (progress.cancelled()) return false;

    progress.subPhase(0.1, phase);
    return takeSolution(solver.x(), phase, uvs);
}

bool ConformalMap::assemble(Progress& progress, ConjugateGradient& solver, NVector& rightHandSide, NVector& start) const
{
    for (int i = 0; i < m_mesh.getNumVertices(); ++i) {
        progress.set(static_cast<double>(i) / m_mesh.getNumVertices());
        if (progress.cancelled()) return false;
        const int free = m_free[i];
        if (free < 0) continue;
        start[2 * free] = m_points[i].x;
        start[2 * free + 1] = m_points[i].y;
        addRows(i, solver, rightHandSide);
    }
    return true;
}

/// By elimination. \param solution  stays as it is after a cancel, and where that comes to no solution
void ConformalMap::solveAtOnce(const SparseMatrix& matrix, const NVector& rightHandSide, Progress& progress,
                               NVector& solution) const
{
    FlatRows rows;
    for (int i = 0; i < matrix.size(); ++i) {
        for (const SparseElement& element : matrix.row(i))
            if (element.value != 0) rows.elements().append(element); // many cancel each other
        rows.endRow();
    }
    zn::vector<Point> places;
    for (int i = 0; i < m_mesh.getNumVertices(); ++i)
        if (m_free[i] >= 0) places.setSize(places.size() + 2, m_mesh.getVertices()[i].asPoint());
    const Dissection dissection(rows, {places.begin(), places.end()}, 2);
    FrontalCholesky factor(rows, dissection);
    if (!factor.factorize(progress)) return;
    solution = rightHandSide;
    factor.solve({&solution, 1});
}

void ConformalMap::addRows(int vertex, ConjugateGradient& solver, NVector& rightHandSide) const
{
    const MeshTriangle* triangles = m_mesh.getTriangles();
    for (const int triangle : m_adjTris.around(vertex)) addTriangle(triangles[triangle], vertex, solver, rightHandSide);
    for (const int bridge : m_bridgesAt.members(vertex)) addTriangle(m_bridges[bridge], vertex, solver, rightHandSide);
    VertexRows(solver, rightHandSide, m_free[vertex]).holdIfEmpty(m_points[vertex]);
}

/// Adds what a triangle contributes to the rows of one of its corners; nothing when it has no area.
void ConformalMap::addTriangle(const MeshTriangle& triangle, int vertex, ConjugateGradient& solver,
                               NVector& rightHandSide) const
{
    const int corner = cornerOf(triangle, vertex);
    const int after = triangle[cornerAfter(corner)], before = triangle[cornerBefore(corner)];
    // In space and not turned: there the differences are exact, and a triangle without area has none to the last bit.
    const auto place = [this](int i) { return m_mesh.getVertices()[i].asPoint(); };
    const Vector fromAfter = (place(vertex) - place(after)) * m_scale;
    const Vector fromBefore = (place(vertex) - place(before)) * m_scale;
    const Vector opposite = (place(after) - place(before)) * m_scale;
    const double areaAtAfter = cross(fromAfter, opposite).length();
    const double areaAtBefore = cross(fromBefore, opposite).length();
    if (epsilonTol > areaAtAfter || epsilonTol > areaAtBefore) return;
    const double cotBefore = dot(fromBefore, opposite) / areaAtBefore;
    const double cotAfter = dot(fromAfter, -opposite) / areaAtAfter;

    VertexRows rows(solver, rightHandSide, m_free[vertex]);
    rows.addToDiagonal(cotAfter + cotBefore);
    rows.addNeighbour(m_free[after], m_points[after], cotBefore, -1);
    rows.addNeighbour(m_free[before], m_points[before], cotAfter, 1);
}

void ConformalMap::iterate(ConjugateGradient& solver, znOS::AppOutput& output, Progress& progress) const
{
    const int size = systemSize();
    for (int i = 0; i < size && !progress.cancelled(); ++i) {
        const float done = static_cast<float>(i) / static_cast<float>(size);
        if (i % 100 == 0) progress.set(static_cast<double>(i) / size);
        if (size > 100 && i % (size / 10) == 0)
            output.info("Parameterization %5.1f%% complete\n", static_cast<double>(done * 90.0F + 5.0F));
        const ConjugateGradient::Status status = solver.iterate(epsilonTol, epsilonTol);
        if (!status.isDone()) continue;
        output.info("Parameterization: CG finished, code = %d\n", status.code());
        progress.set(1.0);
        return;
    }
}

bool ConformalMap::takeSolution(const NVector& x, Progress& progress, zn::vector<Point2>& uvs) const
{
    uvs.clear();
    uvs.reserve(m_mesh.getNumVertices());
    for (int i = 0; i < m_mesh.getNumVertices(); ++i) {
        if (i % 100 == 0) progress.set(static_cast<double>(i) / m_mesh.getNumVertices());
        if (progress.cancelled()) return false;
        const int free = m_free[i];
        uvs.append(free < 0 ? m_points[i] : Point2(x[2 * free], x[2 * free + 1]));
    }
    return true;
}

} // namespace znGeom::internal

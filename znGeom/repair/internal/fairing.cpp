#include "znGeom/repair/internal/fairing.h"

#include <algorithm>
#include <cmath>

#include "znGeom/foundation/linear/tolerance.h"
#include "znGeom/solvers/conjugate_gradient.h"
#include "znGeom/solvers/internal/frontal_cholesky.h"
#include "znGeom/topology/topo_walks.h"

namespace znGeom::internal {

using znLinear::epsilonTol;
using znLinear::Point;
using znLinear::Vector;
using znUtil::Progress;

namespace {

/// The equations of one coordinate, which are those of the other two as well, and three right-hand sides.
class BiLaplacian
{
public:
    explicit BiLaplacian(const std::vector<TopoMeshVertex>& vertices)
        : m_vertices(vertices), m_first(vertices.front().number()),
          m_size(static_cast<int>(vertices.size())), m_right{NVector(m_size), NVector(m_size), NVector(m_size)},
          m_solution{m_right[0], m_right[1], m_right[2]}, m_slots(m_size, -1)
    {
        chooseFrame();
        for (int i = 0; i < m_size; ++i) addRow(i);
    }

    /// \return false after a cancel, and where a place is not finite
    bool solve(Progress& progress)
    {
        if (!m_isFinite || !std::isfinite(sumOfSquares(m_right))) return false;
        Progress phase;
        progress.subPhase(0.8, phase);
        if (!solveAtOnce(phase)) {
            progress.subPhase(0.2, phase);
            if (!solveInSteps(phase)) return false;
        }
        progress.set(1.0);
        return true;
    }

    Point solution(int i) const
    {
        return m_origin + Vector(m_solution[0][i], m_solution[1][i], m_solution[2][i]) / m_scale;
    }

private:
    static double sumOfSquares(const NVector (&v)[3]) { return v[0].dot(v[0]) + v[1].dot(v[1]) + v[2].dot(v[2]); }

    /// The solver takes sums below a fixed bound for zero. So that neither the unit of the mesh nor its place decides
    /// when that is, it gets differences from one of the vertices, times the power of two that brings the largest
    /// coordinate of these to between 2^24 and 2^25.
    void chooseFrame()
    {
        m_origin = m_vertices.front().point();
        double largest = 0;
        for (const TopoMeshVertex vertex : m_vertices) {
            const Vector v = vertex.point() - m_origin;
            largest = std::max({largest, std::fabs(v.dx), std::fabs(v.dy), std::fabs(v.dz)});
            m_isFinite = m_isFinite && std::isfinite(v.dx + v.dy + v.dz);
        }
        if (largest > 0 && m_isFinite) m_scale = std::ldexp(1.0, 24 - std::ilogb(largest));
    }

    Vector placeOf(TopoMeshVertex vertex) const { return (vertex.point() - m_origin) * m_scale; }
    Vector pointOf(int i) const { return placeOf(m_vertices[static_cast<size_t>(i)]); }

    /// The place among the moving vertices, or -1.
    int indexOf(TopoMeshVertex vertex) const
    {
        const int index = vertex.number() - m_first;
        return index >= 0 && index < m_size ? index : -1;
    }

    /// Those of the neighbours that are not on the boundary.
    void getNeighbours(TopoMeshVertex vertex, std::vector<TopoMeshVertex>& neighbours) const
    {
        neighbours.clear();
        for (const TopoMeshEdge e : outgoingOf(vertex))
            if (indexOf(endOf(e)) >= 0 || !endOf(e).onBoundary()) neighbours.push_back(endOf(e));
    }

    void addRow(int i)
    {
        const TopoMeshVertex vertex = m_vertices[static_cast<size_t>(i)];
        const int begin = m_matrix.elements().size();
        getNeighbours(vertex, m_around);
        if (m_around.empty()) { // nothing to follow: it stays
            addTerm(i, vertex, 1.0);
            for (int c = 0; c < 3; ++c) m_right[c][i] = pointOf(i)[c];
        } else {
            addLaplacian(i, vertex, -static_cast<double>(m_around.size()));
            for (const TopoMeshVertex neighbour : m_around) addLaplacian(i, neighbour, 1.0);
        }
        for (int k = begin; k < m_matrix.elements().size(); ++k) m_slots[m_matrix.elements()[k].index] = -1;
        m_matrix.endRow();
    }

    /// The sum of the neighbours less as many times the vertex, with a weight.
    void addLaplacian(int row, TopoMeshVertex vertex, double weight)
    {
        getNeighbours(vertex, m_neighbours);
        for (const TopoMeshVertex neighbour : m_neighbours) addTerm(row, neighbour, weight);
        addTerm(row, vertex, -static_cast<double>(m_neighbours.size()) * weight);
    }

    /// What is fixed goes to the right-hand side.
    void addTerm(int row, TopoMeshVertex vertex, double weight)
    {
        const int index = indexOf(vertex);
        if (index < 0) {
            for (int c = 0; c < 3; ++c) m_right[c][row] -= weight * placeOf(vertex)[c];
            return;
        }
        zn::vector<SparseElement>& elements = m_matrix.elements();
        int& slot = m_slots[index];
        if (slot < 0) slot = elements.size(), elements.append({index, 0.0});
        elements[slot].value += weight;
    }

    /// By elimination, which takes a hundredth of the time of the steps on large patches. \return false when that comes
    /// to no solution, as without a vertex that holds the patch
    bool solveAtOnce(Progress& progress)
    {
        zn::vector<Point> points;
        for (const TopoMeshVertex vertex : m_vertices) points.append(vertex.point());
        const Dissection dissection(m_matrix, {points.begin(), points.end()});
        FrontalCholesky factor(m_matrix, dissection);
        if (!factor.factorize(progress)) return false;
        for (int c = 0; c < 3; ++c) m_solution[c] = m_right[c];
        factor.solve(m_solution);
        return isSolved();
    }

    /// Whether the steps would end before the first.
    bool isSolved() const
    {
        NVector residual[3] = {m_right[0], m_right[1], m_right[2]};
        for (int i = 0; i < m_size; ++i)
            for (const SparseElement& element : m_matrix.row(i))
                for (int c = 0; c < 3; ++c) residual[c][i] -= element.value * m_solution[c][element.index];
        const double right = sumOfSquares(m_right);
        return sumOfSquares(residual) <= epsilonTol * epsilonTol * (epsilonTol > right ? 1.0 : right);
    }

    /// By conjugate gradients from where the vertices are, all coordinates in one system: rows 3 i, 3 i + 1 and 3 i + 2
    /// are those of vertex i. \return false after a cancel
    bool solveInSteps(Progress& progress)
    {
        constexpr int stepsPerLook = 100;
        const int mostSteps = 3 * m_size;
        ConjugateGradient solver(mostSteps);
        startSteps(solver);
        for (int step = 0; step < mostSteps; ++step) {
            if (solver.iterate(epsilonTol, epsilonTol).isDone()) break;
            if (step % stepsPerLook != 0) continue;
            if (progress.cancelled()) return false;
            progress.set(static_cast<double>(step + 1) / mostSteps);
        }
        for (int i = 0; i < mostSteps; ++i) m_solution[i % 3][i / 3] = solver.x()[i];
        return true;
    }

    void startSteps(ConjugateGradient& solver) const
    {
        NVector right(3 * m_size), start(3 * m_size);
        for (int i = 0; i < m_size; ++i)
            for (int c = 0; c < 3; ++c) {
                for (const SparseElement& element : m_matrix.row(i))
                    solver.A().addToElement(3 * i + c, 3 * element.index + c, element.value);
                right[3 * i + c] = m_right[c][i];
                start[3 * i + c] = pointOf(i)[c];
            }
        solver.initDiagonalPreconditioner();
        solver.initialize(right, start);
    }

    const std::vector<TopoMeshVertex>& m_vertices;
    int m_first, m_size;
    Point m_origin;
    double m_scale = 1;
    bool m_isFinite = true; ///< the vertices that move
    FlatRows m_matrix;
    NVector m_right[3], m_solution[3];
    zn::vector<int> m_slots; ///< by moving vertex: its entry in the row that is being made, or -1
    std::vector<TopoMeshVertex> m_around, m_neighbours;
};

} // namespace

void fairVertices(TopoMesh& mesh, const std::vector<TopoMeshVertex>& vertices, Progress& progress)
{
    if (vertices.empty()) return;
    BiLaplacian system(vertices);
    if (!system.solve(progress)) return;
    for (size_t i = 0; i < vertices.size(); ++i) mesh.setPoint(vertices[i], system.solution(static_cast<int>(i)));
}

} // namespace znGeom::internal

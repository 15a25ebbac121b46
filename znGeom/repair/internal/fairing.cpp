#include "znGeom/repair/internal/fairing.h"

#include <algorithm>
#include <cmath>

#include "znGeom/foundation/linear/tolerance.h"
#include "znGeom/solvers/conjugate_gradient.h"
#include "znGeom/topology/topo_walks.h"

namespace znGeom::internal {

using znLinear::Point;
using znLinear::Vector;
using znUtil::Progress;

namespace {

/// The equations of all three coordinates: rows 3 i, 3 i + 1 and 3 i + 2 are those of vertex i.
class BiLaplacian
{
public:
    explicit BiLaplacian(const std::vector<TopoMeshVertex>& vertices)
        : m_vertices(vertices), m_first(vertices.front().number()), m_size(static_cast<int>(vertices.size())),
          m_solver(3 * m_size), m_right(3 * m_size), m_start(3 * m_size)
    {
        chooseFrame();
        for (int i = 0; i < m_size; ++i) addRow(i);
        for (int i = 0; i < m_size; ++i)
            for (int c = 0; c < 3; ++c) m_start[3 * i + c] = pointOf(i)[c];
    }

    /// \return false after a cancel
    bool solve(Progress& progress)
    {
        constexpr int stepsPerLook = 100;
        const int mostSteps = 3 * m_size;
        m_solver.initDiagonalPreconditioner();
        m_solver.initialize(m_right, m_start);
        for (int step = 0; step < mostSteps; ++step) {
            if (m_solver.iterate(znLinear::epsilonTol, znLinear::epsilonTol).isDone()) break;
            if (step % stepsPerLook != 0) continue;
            if (progress.cancelled()) return false;
            progress.set(static_cast<double>(step + 1) / mostSteps);
        }
        progress.set(1.0);
        return true;
    }

    Point solution(int i) const
    {
        const NVector& x = m_solver.x();
        return m_origin + Vector(x[3 * i], x[3 * i + 1], x[3 * i + 2]) / m_scale;
    }

private:
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
        }
        if (largest > 0 && std::isfinite(largest)) m_scale = std::ldexp(1.0, 24 - std::ilogb(largest));
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
        getNeighbours(vertex, m_around);
        if (m_around.empty()) {
            // Nothing to follow: it stays.
            addTerm(3 * i, vertex, 1.0);
            for (int c = 0; c < 3; ++c) m_right[3 * i + c] = pointOf(i)[c];
            return;
        }
        addLaplacian(3 * i, vertex, -static_cast<double>(m_around.size()));
        for (const TopoMeshVertex neighbour : std::vector(m_around)) addLaplacian(3 * i, neighbour, 1.0);
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
        for (int c = 0; c < 3; ++c)
            if (index >= 0)
                m_solver.A().addToElement(row + c, 3 * index + c, weight);
            else
                m_right[row + c] -= weight * placeOf(vertex)[c];
    }

    const std::vector<TopoMeshVertex>& m_vertices;
    int m_first, m_size;
    Point m_origin;
    double m_scale = 1;
    ConjugateGradient m_solver;
    NVector m_right, m_start;
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

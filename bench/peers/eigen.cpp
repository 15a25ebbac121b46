// Conjugate gradients with the diagonal preconditioner: over all rows, and over the lower triangle alone.
#include "bench/sparse_system.h"

#include <Eigen/IterativeLinearSolvers>
#include <Eigen/SparseCore>

#include <string>
#include <vector>

namespace {

template <class Matrix, int triangles>
class Steps
{
public:
    explicit Steps(const bench::SparseSystem& system)
        : m_matrix(system.n, system.n),
          m_rightHandSide(Eigen::Map<const Eigen::VectorXd>(system.rightHandSide.data(), system.n))
    {
        std::vector<Eigen::Triplet<double>> terms;
        for (const bench::SparseSystem::Term& term : system.terms)
            if (triangles != Eigen::Lower || term.row >= term.column)
                terms.emplace_back(term.row, term.column, term.value);
        m_matrix.setFromTriplets(terms.begin(), terms.end());
        m_solver.compute(m_matrix);
    }

    const Eigen::VectorXd& solve(double tolerance, int mostSteps)
    {
        m_solver.setTolerance(tolerance);
        m_solver.setMaxIterations(mostSteps);
        m_solution = m_solver.solve(m_rightHandSide);
        return m_solution;
    }

private:
    Matrix m_matrix;
    Eigen::VectorXd m_rightHandSide, m_solution;
    Eigen::ConjugateGradient<Matrix, triangles> m_solver;
};

using AllRows = Steps<Eigen::SparseMatrix<double, Eigen::RowMajor>, Eigen::Lower | Eigen::Upper>;
using LowerTriangle = Steps<Eigen::SparseMatrix<double>, Eigen::Lower>;

[[maybe_unused]] const bool listed[] = {
    bench::usesPeer("Eigen", std::to_string(EIGEN_WORLD_VERSION) + "." + std::to_string(EIGEN_MAJOR_VERSION) + "." +
                                 std::to_string(EIGEN_MINOR_VERSION)),
    bench::measureSolver<AllRows>("Eigen_all_rows"),
    bench::measureSolver<LowerTriangle>("Eigen_lower_triangle"),
};

} // namespace

/// Solving a sparse system of equations by elimination.
#pragma once

#include <memory>
#include <span>

#include "znGeom/foundation/threads/progress.h"
#include "znGeom/solvers/internal/dissection.h"
#include "znGeom/solvers/n_vector.h"

namespace znGeom::internal {

/// The Cholesky factor of a symmetric positive definite matrix. Part by part of a dissection, what is left of its
/// halves and its own rows are added up to a small dense matrix, in which its unknowns are eliminated: Duff and Reid,
/// "The Multifrontal Solution of Indefinite Sparse Symmetric Linear Equations" (1983). For n unknowns of a surface it
/// takes about n sqrt(n) operations and n log n memory, where conjugate gradients take as many steps as the square
/// root of the condition, which for fairing is of the order of n.
class FrontalCholesky
{
public:
    FrontalCholesky(const FlatRows& matrix, const Dissection& dissection);

    /// \param progress  advanced by the operations done
    /// \return false when a pivot is not above 1e-12 times the diagonal entry that it was made from, so that the matrix
    ///         is not positive definite to the accuracy of numbers, and after a cancel
    bool factorize(znUtil::Progress& progress);

    /// Replaces right-hand sides, a number for each unknown, by the solutions: of several systems at little more cost
    /// than of one.
    void solve(std::span<NVector> systems) const;

private:
    using Node = Dissection::Node;

    int positionIn(const Node& node, int place) const;
    void assemble(const Node& node);
    void addUpdate(const Node& node, int half);
    bool eliminate(const Node& node);
    void keep(int index);
    static double workOf(const Node& node);
    const double* panelOf(int index) const { return m_panels.get() + m_panelBegins[index]; }

    const FlatRows& m_matrix;
    const Dissection& m_dissection;
    zn::vector<std::ptrdiff_t> m_panelBegins;
    std::unique_ptr<double[]> m_panels; ///< the columns of the factor, part by part, each as long as its part has rows
    std::unique_ptr<double[]> m_front;  ///< the dense matrix of a part, by columns
    zn::vector<std::unique_ptr<double[]>> m_updates; ///< by part: what its elimination leaves for its border
    zn::vector<int> m_rows;                          ///< by place: its row in the front
    zn::vector<double> m_diagonal;                   ///< of the front before the elimination
};

} // namespace znGeom::internal

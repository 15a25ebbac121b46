/// `ConjugateGradient`: a system of linear equations, solved step by step.
#pragma once

#include <memory>

#include "znGeom/solvers/n_vector.h"
#include "znGeom/solvers/preconditioner.h"
#include "znGeom/solvers/sparse_matrix.h"

namespace znGeom {

namespace internal {
class RowStripes;
}

/// Solves A x = b for a symmetric positive definite matrix, by conjugate gradients with or without a preconditioner:
/// Hestenes and Stiefel, "Methods of Conjugate Gradients for Solving Linear Systems" (1952).
///
/// Fill `A()`; choose a preconditioner, if any; `initialize`; `iterate` until the status is done, or for as long as you
/// like; read `x()`. For another right-hand side with the same matrix, `initialize` again. The object has a second copy
/// of the matrix, made by `initialize` in the form in which it is multiplied fastest.
class ZNGEOM_API ConjugateGradient
{
public:
    /// How a step ended. The numbers are meant for log lines and do not change.
    enum StatusCode : int {
        NegativeCurvature = -1,     ///< p A p is below 0 for a direction p: the matrix is not positive definite
        Running = 0,                ///< a step was made, call again
        Converged = 1,              ///< the residual is small enough
        IterationLimit = 2,         ///< there have been as many steps as unknowns
        CurvatureVanished = 3,      ///< p A p is too near 0 for the next step
        ResidualProductVanished = 4 ///< the product of the residual and its preconditioned form is too near 0
    };

    class Status
    {
    public:
        Status(StatusCode code) : m_code(code) {}
        StatusCode code() const { return m_code; }
        /// True for all but `Running`.
        bool isDone() const { return m_code != Running; }

    private:
        StatusCode m_code;
    };

    /// A system of `n` unknowns with a matrix of zeros; of none when `n` is 0 or less.
    explicit ConjugateGradient(int n);
    ConjugateGradient(const ConjugateGradient&) = delete;
    ConjugateGradient& operator=(const ConjugateGradient&) = delete;
    ~ConjugateGradient();

    /// The matrix, to be filled; its size must stay. A preconditioner does not notice what changes after it was made.
    SparseMatrix& A() { return m_A; }
    /// The solution so far.
    const NVector& x() const { return m_x; }

    /// Makes a preconditioner from the matrix as it is now, in place of the one there was.
    void initDiagonalPreconditioner();
    /// The same; safe for an M-matrix only.
    void initIncompleteCholeskyPreconditioner();

    /// Starts anew. Linear in the entries of the matrix.
    ///
    /// \param b   the right-hand side, an element for each unknown. Where its squared norm is below
    ///            `znLinear::epsilonTol`, tolerances are absolute from then on, no longer relative to the norm of b
    /// \param x0  where to start, as long as `b`; may be `x()`
    void initialize(const NVector& b, const NVector& x0);

    /// Makes one step, after a look at how the last one ended. Takes no memory; linear in the entries of the matrix.
    ///
    /// \param tolerance  the norm of the residual, relative to that of b, at which the solution is good enough
    /// \param smallness  absolute bound below which the products to be divided by count as 0, so that the scale of the
    ///                   system matters
    ///
    /// The residual is tested before the step: `Converged` comes one call after it got small enough, and n unknowns get
    /// n full steps before the call that answers `IterationLimit`, even if the last of them was good enough. The
    /// solution stays as it is with every status but `Running` and `ResidualProductVanished`, and with a
    /// `NegativeCurvature` in the first step, which is still taken: a direction downhill is better than none. Nothing
    /// latches: a further call computes on from what is there. With NaNs it goes on to `IterationLimit`.
    ///
    /// The residual is updated from step to step; in every fiftieth it is computed afresh, against rounding errors
    /// that add up (Shewchuk, "An Introduction to the Conjugate Gradient Method Without the Agonizing Pain", 1994).
    Status iterate(double tolerance, double smallness);

    /// The norm of the residual, relative to that of b, as the steps keep it.
    double getConvergenceValue() const;
    /// The squared norm of the residual as the steps keep it.
    double getResidualNormSquared() const { return m_rNormSquared; }
    /// The largest element of b - A x, computed afresh.
    double getResidualInfinityNorm() const;
    /// How many times `iterate` was called since `initialize`.
    int getIteration() const { return m_iteration; }

private:
    double multiply(const NVector& v);
    void computeResidual();
    double preconditionResidual();

    int m_iteration = 0;
    SparseMatrix m_A;
    NVector m_b, m_x;
    NVector m_p;      ///< the direction of the next step
    NVector m_r;      ///< the residual
    NVector m_q;      ///< A p
    NVector m_z;      ///< the residual, preconditioned
    double m_rho = 0; ///< r z, or r r without a preconditioner
    double m_bNormSquared = 0, m_rNormSquared = 0;
    std::unique_ptr<Preconditioner> m_preconditioner;
    std::unique_ptr<internal::RowStripes> m_stripes;
};

} // namespace znGeom

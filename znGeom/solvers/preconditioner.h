/// Preconditioners: approximate inverses that make conjugate gradients converge in fewer steps.
#pragma once

#include "znGeom/solvers/n_vector.h"
#include "znGeom/solvers/sparse_matrix.h"

namespace znGeom {

/// Stands for a matrix M that is near the matrix of a system, and easy to solve for.
class ZNGEOM_API Preconditioner
{
public:
    Preconditioner() = default;
    Preconditioner(const Preconditioner&) = default;
    Preconditioner& operator=(const Preconditioner&) = default;
    virtual ~Preconditioner();

    /// Writes the solution of M z = r. \param z  as long as `r`, and not the same vector
    virtual void applyInverse(const NVector& r, NVector& z) const = 0;
};

/// The diagonal of a matrix (Jacobi). Made and applied in linear time.
class ZNGEOM_API DiagonalPreconditioner : public Preconditioner
{
public:
    /// \param A  not needed afterwards. A diagonal entry of 0, or one that isn't stored, has an infinite inverse
    explicit DiagonalPreconditioner(const SparseMatrix& A);

    void applyInverse(const NVector& r, NVector& z) const override;

private:
    NVector m_inverse;
};

/// The factors of an incomplete Cholesky decomposition without fill-in: an entry that is not stored in the matrix stays
/// away from its factors. Exists for every M-matrix (`SparseMatrix::isMMatrix`), after Meijerink and van der Vorst, "An
/// Iterative Solution Method for Linear Systems of Which the Coefficient Matrix Is a Symmetric M-Matrix" (1977).
///
/// Of any other matrix a pivot may come out negative, or 0: nothing stops that, and NaNs or infinities spread.
class ZNGEOM_API IncompleteCholeskyPreconditioner : public Preconditioner
{
public:
    /// \param A  symmetric, of which the entries on and above the diagonal are read; not needed afterwards
    ///
    /// Takes the sum of the squares of the lengths of the rows. A zero that is stored stays zero, and so does an entry
    /// that becomes zero on the way.
    explicit IncompleteCholeskyPreconditioner(const SparseMatrix& A);

    /// Linear in entries.
    void applyInverse(const NVector& r, NVector& z) const override;

private:
    void eliminate(int i);
    void scale(int i);

    SparseMatrix m_lower; ///< L, each row in order of its columns
    SparseMatrix m_upper; ///< its transpose, each row in the order of the matrix that it was made from
};

} // namespace znGeom

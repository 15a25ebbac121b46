#include "znGeom/solvers/conjugate_gradient.h"

#include <cmath>

#include "znGeom/foundation/linear/tolerance.h"
#include "znGeom/solvers/internal/row_stripes.h"

namespace znGeom {

namespace {

struct Products
{
    double rr = 0.0, rz = 0.0;
};

/// `r.dot(r)` and `r.dot(z)` in one pass: each waits for its own sums alone.
Products dotBoth(const NVector& r, const NVector& z)
{
    const double *residual = r.data(), *preconditioned = z.data();
    Products sums;
    for (int i = r.size() - 1; i >= 0; --i) {
        sums.rr += residual[i] * residual[i];
        sums.rz += residual[i] * preconditioned[i];
    }
    return sums;
}

} // namespace

ConjugateGradient::ConjugateGradient(int n)
    : m_A(n), m_b(n), m_x(n), m_p(n), m_r(n), m_q(n), m_z(n), m_stripes(std::make_unique<internal::RowStripes>())
{}

ConjugateGradient::~ConjugateGradient() = default;

void ConjugateGradient::initDiagonalPreconditioner()
{
    m_preconditioner = std::make_unique<DiagonalPreconditioner>(m_A);
}

void ConjugateGradient::initIncompleteCholeskyPreconditioner()
{
    m_preconditioner = std::make_unique<IncompleteCholeskyPreconditioner>(m_A);
}

void ConjugateGradient::initialize(const NVector& b, const NVector& x0)
{
    if (!m_stripes->isCopyOf(m_A)) m_stripes->copy(m_A);
    m_b = b;
    m_x = x0;
    computeResidual();
    if (m_preconditioner)
        m_preconditioner->applyInverse(m_r, m_p);
    else
        m_p = m_r;
    m_rho = m_r.dot(m_p);
    m_rNormSquared = m_r.dot(m_r);
    m_bNormSquared = m_b.dot(m_b);
    m_iteration = 0;
    if (znLinear::epsilonTol > m_bNormSquared) m_bNormSquared = 1.0;
}

ConjugateGradient::Status ConjugateGradient::iterate(double tolerance, double smallness)
{
    if (++m_iteration > m_x.size()) return IterationLimit;
    if (tolerance * tolerance * m_bNormSquared >= m_rNormSquared) return Converged;

    const double curvature = multiply(m_p);
    if (curvature < 0 && m_iteration > 1) return NegativeCurvature;
    if (smallness > std::fabs(curvature)) return CurvatureVanished;

    const double alpha = m_rho / curvature;
    m_x.setToVectorPlusScalarTimesVector(m_x, alpha, m_p);
    if (curvature < 0) return NegativeCurvature;

    if (m_iteration % 50 == 0)
        computeResidual();
    else
        m_r.setToVectorPlusScalarTimesVector(m_r, -alpha, m_q);

    const double newRho = preconditionResidual();
    if (smallness > std::fabs(m_rho)) return ResidualProductVanished;
    const double beta = newRho / m_rho;
    m_rho = newRho;
    m_p.setToVectorPlusScalarTimesVector(m_preconditioner ? m_z : m_r, beta, m_p);
    return Running;
}

/// Computes q = A v. \return v q
double ConjugateGradient::multiply(const NVector& v)
{
    if (m_stripes->isCopyOf(m_A)) {
        const double product = m_stripes->multiply(m_A, v, m_q);
        // The stripes treat stored zeros in their own way, which shows only where v isn't finite, and then here.
        if (std::isfinite(product)) return product;
    }
    m_A.getMatrixTimesVector(v, m_q);
    return v.dot(m_q);
}

/// Computes r = b - A x.
void ConjugateGradient::computeResidual()
{
    multiply(m_x);
    m_r.setToVectorPlusScalarTimesVector(m_b, -1.0, m_q);
}

/// Computes the norm of the residual, and z when there is a preconditioner. \return r z, or r r without one
double ConjugateGradient::preconditionResidual()
{
    if (!m_preconditioner) return m_rNormSquared = m_r.dot(m_r);
    m_preconditioner->applyInverse(m_r, m_z);
    const Products products = dotBoth(m_r, m_z);
    m_rNormSquared = products.rr;
    return products.rz;
}

double ConjugateGradient::getConvergenceValue() const { return std::sqrt(m_rNormSquared) / std::sqrt(m_bNormSquared); }

double ConjugateGradient::getResidualInfinityNorm() const
{
    NVector residual(m_A.size());
    m_A.getVectorMinusMatrixTimesVector(m_b, m_x, residual);
    return residual.infinityNorm();
}

} // namespace znGeom

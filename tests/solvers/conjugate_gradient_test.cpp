#include "znGeom/solvers/conjugate_gradient.h"

#include <limits>

#include <gtest/gtest.h>

#include "tests/solvers/systems.h"
#include "tests/support/allocations.h"

using znGeom::ConjugateGradient;
using znGeom::NVector;
using znGeom::SparseMatrix;
using znTest::vectorOf;
using Code = ConjugateGradient::StatusCode;

namespace {

enum class With { nothing, diagonal, incompleteCholesky };

struct Solver : ConjugateGradient
{
    explicit Solver(const SparseMatrix& matrix, With with = With::nothing) : ConjugateGradient(matrix.size())
    {
        A() = matrix;
        if (with == With::diagonal) initDiagonalPreconditioner();
        if (with == With::incompleteCholesky) initIncompleteCholeskyPreconditioner();
    }
    Code step(double tolerance, double smallness) { return iterate(tolerance, smallness).code(); }
};

SparseMatrix diagonalMatrix(std::initializer_list<double> diagonal)
{
    SparseMatrix matrix(static_cast<int>(diagonal.size()));
    for (int i = 0; i < matrix.size(); ++i) matrix.addToElement(i, i, diagonal.begin()[i]);
    return matrix;
}

/// The steps of a book, over the matrix as it was put in.
class PlainSteps
{
public:
    NVector x, r, p, q;
    double rho = 0;

    PlainSteps(const SparseMatrix& A, const znGeom::Preconditioner* preconditioner, NVector b, const NVector& start)
        : x(start), r(b), p(b), q(b), m_A(A), m_preconditioner(preconditioner), m_b(b)
    {
        m_A.getVectorMinusMatrixTimesVector(m_b, x, r);
        p = preconditioned();
        rho = r.dot(p);
    }

    void step(int count)
    {
        m_A.getMatrixTimesVector(p, q);
        const double alpha = rho / p.dot(q);
        for (int i = 0; i < x.size(); ++i) x[i] += alpha * p[i], r[i] -= alpha * q[i];
        if (count % 50 == 0) m_A.getVectorMinusMatrixTimesVector(m_b, x, r);
        const NVector z = preconditioned();
        const double beta = r.dot(z) / rho;
        for (int i = 0; i < x.size(); ++i) p[i] = z[i] + beta * p[i];
        rho = r.dot(z);
    }

private:
    NVector preconditioned() const
    {
        NVector z(r);
        if (m_preconditioner) m_preconditioner->applyInverse(r, z);
        return z;
    }

    const SparseMatrix& m_A;
    const znGeom::Preconditioner* m_preconditioner;
    NVector m_b;
};

} // namespace

TEST(ConjugateGradient, SolvesSystems)
{
    znTest::Random random(5);
    for (const With with : {With::nothing, With::diagonal, With::incompleteCholesky}) {
        for (const int n : {2, 7, 40}) {
            const SparseMatrix matrix = znTest::randomLaplacian(n, 0.3, random);
            Solver solver(matrix, with);
            for (int turn = 0; turn < 2; ++turn) {
                const NVector wanted = znTest::randomVector(n, random);
                NVector b(n);
                matrix.getMatrixTimesVector(wanted, b);
                solver.initialize(b, turn == 0 ? znTest::randomVector(n, random) : solver.x());
                while (solver.step(1e-12, 0) == Code::Running) continue;
                for (int i = 0; i < n; ++i) EXPECT_NEAR(solver.x()[i], wanted[i], 1e-9) << n;
                EXPECT_LT(solver.getResidualInfinityNorm(), 1e-9);
            }
        }
    }
}

TEST(ConjugateGradient, HasTheBitsOfThePlainMethod)
{
    znTest::Random random(6);
    for (int round = 0; round < 60; ++round) {
        const auto with = static_cast<With>(round % 3);
        const int n = 1 + random.below(round < 6 ? 300 : 30);
        Solver solver(znTest::randomLaplacian(n, 1e-4, random), with);
        const znGeom::DiagonalPreconditioner diagonal(solver.A());
        const znGeom::IncompleteCholeskyPreconditioner incomplete(solver.A());
        const znGeom::Preconditioner* const preconditioners[] = {nullptr, &diagonal, &incomplete};
        NVector b = znTest::randomVector(n, random);
        if (round % 7 == 6) b[random.below(n)] = std::numeric_limits<double>::infinity();
        const NVector start = znTest::randomVector(n, random);
        PlainSteps plain(solver.A(), preconditioners[round % 3], b, start);
        solver.initialize(b, start);
        for (int step = 1; step <= n; ++step) {
            ASSERT_EQ(solver.step(0, 0), Code::Running);
            plain.step(step);
            ASSERT_TRUE(znTest::sameNumbers(solver.x(), plain.x)) << round << " " << step;
            ASSERT_TRUE(znTest::sameNumber(solver.getResidualNormSquared(), plain.r.dot(plain.r))) << round << step;
            // The matrix may change on the way, though this isn't what the method is for.
            if (step == 3 && round % 5 == 4) solver.A().addToElement(n / 2, n / 2, 0.5);
        }
    }
}

TEST(ConjugateGradient, CountsStoredZerosWhereTheDirectionIsInfinite)
{
    // 0 times infinity is not a number, and so is p A p: not below 0, which it would be without the stored zeros.
    Solver solver(diagonalMatrix({1, 1, 1, 1, 1, 1, 1, -1}));
    NVector b(8);
    b[7] = std::numeric_limits<double>::infinity();
    solver.initialize(b, NVector(8));
    EXPECT_EQ(solver.step(0, 0), Code::NegativeCurvature);
    for (int i = 0; i < 7; ++i) solver.A().addToElement(i, 7, 0.0);
    solver.initialize(b, NVector(8));
    EXPECT_EQ(solver.step(0, 0), Code::Running);
    EXPECT_TRUE(std::isnan(solver.getResidualNormSquared()));
    for (int step = 2; step <= 8; ++step) EXPECT_EQ(solver.step(1, 1), Code::Running);
    EXPECT_EQ(solver.step(1, 1), Code::IterationLimit);
}

TEST(ConjugateGradient, TakesAFreshResidualInEveryFiftiethStep)
{
    znTest::Random random(7);
    const int n = 160;
    Solver solver(znTest::randomLaplacian(n, 1e-6, random), With::diagonal);
    const NVector b = znTest::randomVector(n, random), start = znTest::randomVector(n, random);
    solver.initialize(b, start);
    const long allocations = znTest::numAllocations();
    while (solver.getIteration() < 154) solver.iterate(0, 0);
    EXPECT_EQ(znTest::numAllocations(), allocations);

    solver.initialize(b, start);
    NVector fresh(n);
    for (int step = 1; step < 155; ++step) {
        ASSERT_EQ(solver.step(0, 0), Code::Running);
        solver.A().getVectorMinusMatrixTimesVector(b, solver.x(), fresh);
        EXPECT_EQ(fresh.dot(fresh) == solver.getResidualNormSquared(), step % 50 == 0) << step;
    }
}

TEST(ConjugateGradient, ConvergesOneCallLateOrRunsOutOfSteps)
{
    Solver one(diagonalMatrix({2})), three(diagonalMatrix({2, 2, 2})), none(SparseMatrix(-1));
    one.initialize(vectorOf({4}), NVector(1));
    EXPECT_FALSE(one.iterate(1e-10, 1e-10).isDone());
    EXPECT_TRUE(one.iterate(1e-10, 1e-10).isDone());
    EXPECT_EQ(one.step(1e-10, 1e-10), Code::IterationLimit) << "though the only step was good enough";
    EXPECT_EQ(one.x()[0], 2);
    none.initialize(NVector(0), NVector(0));
    EXPECT_EQ(none.step(1, 1), Code::IterationLimit);

    // At once from the solution, else one call after the step that got there; it doesn't latch.
    const NVector b = vectorOf({4, 4, 4});
    three.initialize(b, vectorOf({2, 2, 2}));
    EXPECT_EQ(three.step(0, 0), Code::Converged);
    three.initialize(b, NVector(3));
    for (const Code code : {Code::Running, Code::Converged, Code::Converged, Code::IterationLimit})
        EXPECT_EQ(three.step(1e-10, 0), code);

    // A residual just as large as the tolerance allows: relative to b, absolute without a right-hand side.
    three.initialize(b, vectorOf({1, 1, 1}));
    EXPECT_EQ(three.getConvergenceValue(), 0.5);
    EXPECT_EQ(three.step(0.5, 0), Code::Converged);
    EXPECT_EQ(three.step(0.499, 0), Code::Running);
    three.initialize(NVector(3), NVector(3));
    EXPECT_EQ(three.getConvergenceValue(), 0);
    EXPECT_EQ(three.step(0, 0), Code::Converged);
    three.initialize(vectorOf({5e-6, 5e-6, 5e-6}), NVector(3));
    EXPECT_EQ(three.step(1e-5, 0), Code::Converged);
}

TEST(ConjugateGradient, SaysWhatItCannotDivideBy)
{
    // Negative curvature: the first step is taken, later ones are not.
    Solver concave(diagonalMatrix({-1})), saddle(diagonalMatrix({1, -1}));
    concave.initialize(vectorOf({1}), NVector(1));
    EXPECT_EQ(concave.step(0, 1e-10), Code::NegativeCurvature);
    EXPECT_EQ(concave.x()[0], -1);
    saddle.initialize(vectorOf({1, 0.1}), NVector(2));
    EXPECT_EQ(saddle.step(0, 1e-10), Code::Running);
    const NVector before = saddle.x();
    EXPECT_EQ(saddle.step(0, 1e-10), Code::NegativeCurvature);
    EXPECT_TRUE(znTest::sameNumbers(saddle.x(), before));

    // p A p below the bound, which it meets strictly; the old r z below it, with p A p above.
    Solver flat(diagonalMatrix({0.5, 0.5})), steep(diagonalMatrix({1024}));
    flat.initialize(vectorOf({1, 1}), NVector(2));
    EXPECT_EQ(flat.step(0, 1.5), Code::CurvatureVanished);
    EXPECT_EQ(flat.x()[0], 0);
    EXPECT_EQ(flat.step(0, 1), Code::Running);
    steep.initialize(vectorOf({0x1p-20}), NVector(1));
    EXPECT_EQ(steep.step(0, 1e-10), Code::ResidualProductVanished);
    EXPECT_EQ(steep.x()[0], 0x1p-30);
    EXPECT_EQ(steep.getResidualNormSquared(), 0);
}

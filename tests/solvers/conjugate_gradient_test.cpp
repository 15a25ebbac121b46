#include "znGeom/solvers/conjugate_gradient.h"

#include <limits>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "tests/solvers/systems.h"
#include "tests/support/allocations.h"

using znGeom::ConjugateGradient;
using znGeom::NVector;
using znGeom::SparseMatrix;
using Code = ConjugateGradient::StatusCode;

namespace {

enum class With { nothing, diagonal, incompleteCholesky };

/// The method with one loop for each of its formulas, over the matrix as it is put in.
struct PlainSolver
{
    SparseMatrix A;
    std::unique_ptr<znGeom::Preconditioner> preconditioner;
    NVector b, x, r, p, q, z;
    double rho = 0, bb = 0, rr = 0;
    int count = 0;

    PlainSolver(const SparseMatrix& matrix, With with, const NVector& rightHandSide, const NVector& start)
        : A(matrix), b(rightHandSide), x(start), r(b.size()), p(b.size()), q(b.size()), z(b.size())
    {
        if (with == With::diagonal) preconditioner = std::make_unique<znGeom::DiagonalPreconditioner>(A);
        if (with == With::incompleteCholesky)
            preconditioner = std::make_unique<znGeom::IncompleteCholeskyPreconditioner>(A);
        A.getVectorMinusMatrixTimesVector(b, x, r);
        p = preconditioned();
        rho = r.dot(p), rr = r.dot(r), bb = b.dot(b);
        if (bb < 1e-10) bb = 1;
    }

    NVector preconditioned()
    {
        if (preconditioner) preconditioner->applyInverse(r, z);
        return preconditioner ? z : r;
    }

    int iterate(double tolerance, double smallness)
    {
        if (++count > b.size()) return 2;
        if (rr <= tolerance * tolerance * bb) return 1;
        A.getMatrixTimesVector(p, q);
        const double d = p.dot(q), alpha = rho / d;
        if (d < 0 && count != 1) return -1;
        if (std::fabs(d) < smallness) return 3;
        for (int i = 0; i < b.size(); ++i) x[i] += alpha * p[i];
        if (d < 0) return -1;
        for (int i = 0; i < b.size(); ++i) r[i] -= alpha * q[i];
        if (count % 50 == 0) A.getVectorMinusMatrixTimesVector(b, x, r);
        rr = r.dot(r);
        if (std::fabs(rho) < smallness) return 4;
        const NVector direction = preconditioned();
        const double newRho = r.dot(direction), beta = newRho / rho;
        for (int i = 0; i < b.size(); ++i) p[i] = direction[i] + beta * p[i];
        rho = newRho;
        return 0;
    }
};

void prepare(ConjugateGradient& solver, const SparseMatrix& matrix, With with)
{
    solver.A() = matrix;
    if (with == With::diagonal) solver.initDiagonalPreconditioner();
    if (with == With::incompleteCholesky) solver.initIncompleteCholeskyPreconditioner();
}

NVector constant(int n, double value)
{
    NVector v(n);
    for (int i = 0; i < n; ++i) v[i] = value;
    return v;
}

/// A solver for a diagonal matrix.
std::unique_ptr<ConjugateGradient> diagonalSolver(const std::vector<double>& diagonal)
{
    const int n = static_cast<int>(diagonal.size());
    auto solver = std::make_unique<ConjugateGradient>(n);
    for (int i = 0; i < n; ++i) solver->A().addToElement(i, i, diagonal[static_cast<std::size_t>(i)]);
    return solver;
}

} // namespace

TEST(ConjugateGradient, SolvesLikeElimination)
{
    znTest::Random random(5);
    for (const With with : {With::nothing, With::diagonal, With::incompleteCholesky}) {
        for (const int n : {2, 7, 40}) {
            const SparseMatrix matrix = znTest::randomLaplacian(n, 0.3, random);
            ConjugateGradient solver(n);
            prepare(solver, matrix, with);
            for (int turn = 0; turn < 2; ++turn) {
                const NVector b = znTest::randomVector(n, random);
                solver.initialize(b, turn == 0 ? znTest::randomVector(n, random) : solver.x());
                while (!solver.iterate(1e-12, 0).isDone()) {
                }
                const std::vector<double> wanted = znTest::solveDense(znTest::toDense(matrix), b);
                for (int i = 0; i < n; ++i) EXPECT_NEAR(solver.x()[i], wanted[static_cast<std::size_t>(i)], 1e-9) << n;
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
        const SparseMatrix matrix = znTest::randomLaplacian(n, 1e-4, random);
        NVector b = znTest::randomVector(n, random);
        if (round % 7 == 6) b[random.below(n)] = (round % 2 ? 0.0 : 1.0) * std::numeric_limits<double>::infinity();
        const NVector start = znTest::randomVector(n, random);
        PlainSolver plain(matrix, with, b, start);
        ConjugateGradient solver(n);
        prepare(solver, matrix, with);
        solver.initialize(b, start);
        for (int step = 1; step <= n + 1; ++step) {
            ASSERT_EQ(solver.iterate(0, 1e-300).code(), plain.iterate(0, 1e-300)) << round << " " << step;
            ASSERT_TRUE(znTest::sameNumbers(solver.x(), plain.x)) << round << " " << step;
            ASSERT_TRUE(znTest::sameNumber(solver.getResidualNormSquared(), plain.rr)) << round << " " << step;
            ASSERT_TRUE(znTest::sameNumber(solver.getConvergenceValue(), std::sqrt(plain.rr) / std::sqrt(plain.bb)));
            if (step == 3 && round % 5 == 4) {
                // The matrix may change on the way, though this isn't what the method is for.
                const int row = random.below(n);
                solver.A().addToElement(row, row, 0.5);
                plain.A.addToElement(row, row, 0.5);
            }
        }
    }
}

TEST(ConjugateGradient, CountsStoredZerosWhereTheDirectionIsInfinite)
{
    // 0 times infinity is not a number, and so is p A p: not below 0, which it would be without the stored zeros.
    const auto solver = diagonalSolver({1, 1, 1, 1, 1, -1});
    NVector b(6);
    b[5] = std::numeric_limits<double>::infinity();
    solver->initialize(b, NVector(6));
    EXPECT_EQ(solver->iterate(0, 0).code(), Code::NegativeCurvature);
    for (int i = 0; i < 5; ++i) solver->A().addToElement(i, 5, 0.0);
    solver->initialize(b, NVector(6));
    EXPECT_EQ(solver->iterate(0, 0).code(), Code::Running);
    EXPECT_TRUE(std::isnan(solver->getResidualNormSquared()));
    for (int step = 2; step <= 6; ++step) EXPECT_EQ(solver->iterate(1, 1).code(), Code::Running);
    EXPECT_EQ(solver->iterate(1, 1).code(), Code::IterationLimit);
}

TEST(ConjugateGradient, TakesAFreshResidualInEveryFiftiethStep)
{
    znTest::Random random(7);
    const int n = 160;
    ConjugateGradient solver(n);
    prepare(solver, znTest::randomLaplacian(n, 1e-6, random), With::diagonal);
    const NVector b = znTest::randomVector(n, random);
    solver.initialize(b, NVector(n));
    const long allocations = znTest::numAllocations();
    for (int step = 1; step < 155; ++step) solver.iterate(0, 0);
    EXPECT_EQ(znTest::numAllocations(), allocations);

    solver.initialize(b, NVector(n));
    NVector fresh(n);
    for (int step = 1; step < 155; ++step) {
        ASSERT_EQ(solver.iterate(0, 0).code(), Code::Running);
        EXPECT_EQ(solver.getIteration(), step);
        solver.A().getVectorMinusMatrixTimesVector(b, solver.x(), fresh);
        EXPECT_EQ(fresh.dot(fresh) == solver.getResidualNormSquared(), step % 50 == 0) << step;
    }
}

TEST(ConjugateGradient, SaysWhyItStops)
{
    // Few steps: the last one may have been good enough, but nobody looks.
    auto solver = diagonalSolver({2});
    solver->initialize(constant(1, 4), NVector(1));
    ConjugateGradient::Status status = solver->iterate(1e-10, 1e-10);
    EXPECT_FALSE(status.isDone());
    status = solver->iterate(1e-10, 1e-10);
    EXPECT_TRUE(status.isDone());
    EXPECT_EQ(status.code(), Code::IterationLimit);
    EXPECT_EQ(solver->x()[0], 2);
    ConjugateGradient empty(-1);
    empty.initialize(NVector(0), NVector(0));
    EXPECT_EQ(empty.iterate(1, 1).code(), Code::IterationLimit);

    // Converged: at once from the solution, else one call after the step that got there. It doesn't latch.
    solver = diagonalSolver({2, 2, 2});
    solver->initialize(constant(3, 4), constant(3, 2));
    EXPECT_EQ(solver->iterate(0, 0).code(), Code::Converged);
    solver->initialize(constant(3, 4), NVector(3));
    EXPECT_EQ(solver->iterate(1e-10, 0).code(), Code::Running);
    EXPECT_EQ(solver->iterate(1e-10, 0).code(), Code::Converged);
    EXPECT_EQ(solver->iterate(1e-10, 0).code(), Code::Converged);
    EXPECT_EQ(solver->iterate(1e-10, 0).code(), Code::IterationLimit);
    // Just as large as the tolerance, relative to b: the norm is half of that of b here.
    solver->initialize(constant(3, 4), constant(3, 1));
    EXPECT_EQ(solver->getConvergenceValue(), 0.5);
    EXPECT_EQ(solver->iterate(0.5, 0).code(), Code::Converged);
    EXPECT_EQ(solver->iterate(0.499, 0).code(), Code::Running);
    // Without a right-hand side the tolerance is absolute.
    solver->initialize(NVector(3), NVector(3));
    EXPECT_EQ(solver->getConvergenceValue(), 0);
    EXPECT_EQ(solver->iterate(0, 0).code(), Code::Converged);
    solver->initialize(constant(3, 5e-6), NVector(3));
    EXPECT_EQ(solver->iterate(1e-5, 0).code(), Code::Converged);

    // Negative curvature: the first step is taken, later ones are not.
    solver = diagonalSolver({-1});
    solver->initialize(constant(1, 1), NVector(1));
    EXPECT_EQ(solver->iterate(0, 1e-10).code(), Code::NegativeCurvature);
    EXPECT_EQ(solver->x()[0], -1);
    solver = diagonalSolver({1, -1});
    NVector b(2);
    b[0] = 1, b[1] = 0.1;
    solver->initialize(b, NVector(2));
    EXPECT_EQ(solver->iterate(0, 1e-10).code(), Code::Running);
    const NVector before = solver->x();
    EXPECT_EQ(solver->iterate(0, 1e-10).code(), Code::NegativeCurvature);
    EXPECT_TRUE(znTest::sameNumbers(solver->x(), before));

    // p A p below the bound, which it meets strictly; the old r z below it, with p A p above.
    solver = diagonalSolver({0.5, 0.5});
    solver->initialize(constant(2, 1), NVector(2));
    EXPECT_EQ(solver->iterate(0, 1.5).code(), Code::CurvatureVanished);
    EXPECT_EQ(solver->x()[0], 0);
    EXPECT_EQ(solver->iterate(0, 1).code(), Code::Running);
    solver = diagonalSolver({1024});
    solver->initialize(constant(1, 0x1p-20), NVector(1));
    EXPECT_EQ(solver->iterate(0, 1e-10).code(), Code::ResidualProductVanished);
    EXPECT_EQ(solver->x()[0], 0x1p-30);
    EXPECT_EQ(solver->getResidualNormSquared(), 0);
}

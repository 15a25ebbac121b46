/// Systems of linear equations of meshes, and how the steps of a solver are timed.
#pragma once

#include "bench/suite.h"

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace bench {

/// A symmetric positive definite system, as the terms that its entries are the sums of.
struct SparseSystem
{
    struct Term
    {
        int row, column;
        double value;
    };

    int n = 0;
    std::vector<Term> terms;
    std::vector<double> rightHandSide;

    /// The norm of the residual of a solution, relative to that of the right-hand side.
    double residual(const double* solution) const;
};

/// The cotangent Laplacian of a mesh of 100 thousand vertices, four to eight neighbours each; as in smoothing.
const SparseSystem& cotangentSystem();
/// The square of the graph Laplacian of the same mesh; as in fairing.
const SparseSystem& fairingSystem();

/// Lists one step of a solver as a benchmark: fifty are made from zero, with what comes before them.
///
/// \tparam Solver  made from a system; `solve(tolerance, mostSteps)` gives a solution that has `data()`
template <class Solver>
bool measureSteps(const std::string& work, const std::string& who, const SparseSystem& (*system)())
{
    struct Subject
    {
        Solver solver;
        bool agrees;
        explicit Subject(const SparseSystem& wanted)
            : solver(wanted), agrees(wanted.residual(solver.solve(1e-6, 2000).data()) < 2e-6)
        {}
    };
    const auto run = [system](benchmark::State& state) {
        static std::map<const SparseSystem*, std::unique_ptr<Subject>> made;
        std::unique_ptr<Subject>& subject = made[&system()];
        if (!subject) subject = std::make_unique<Subject>(system());
        if (!subject->agrees) return state.SkipWithError("the solution does not solve the system");
        constexpr int numSteps = 50;
        for ([[maybe_unused]] auto _ : state) {
            const auto start = std::chrono::steady_clock::now();
            benchmark::DoNotOptimize(subject->solver.solve(0, numSteps).data());
            const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
            state.SetIterationTime(time.count() / numSteps);
        }
    };
    return measureAlone(work, who, run, 5);
}

/// `measureSteps` on both systems.
template <class Solver>
bool measureSolver(const std::string& who)
{
    return measureSteps<Solver>("cg_step_cotangent", who, cotangentSystem) &&
           measureSteps<Solver>("cg_step_fairing", who, fairingSystem);
}

} // namespace bench

// One step of conjugate gradients with the diagonal preconditioner.
#include "bench/sparse_system.h"
#include "znGeom/solvers/sparse_solver.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <random>
#include <set>

namespace bench {
namespace {

/// A torus whose quadrilaterals are cut along either diagonal at random.
Soup irregularTorus()
{
    Soup soup = bumpyTorus(316, 316);
    std::mt19937_64 random(1);
    for (std::size_t i = 0; i < soup.triangles.size(); i += 6) {
        if (random() % 2 == 0) continue;
        int* const corners = &soup.triangles[i];
        const int near = corners[0], far = corners[1], farNext = corners[2], nearNext = corners[5];
        const std::array turned = {near, far, nearNext, far, farNext, nearNext};
        std::copy(turned.begin(), turned.end(), corners);
    }
    return soup;
}

/// Half the cotangent of the angle at the first of three vertices.
double halfCotangent(const Soup& soup, int apex, int a, int b)
{
    std::array<double, 3> toA, toB;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const auto at = [&](int v) { return double{soup.positions[3 * static_cast<std::size_t>(v) + axis]}; };
        toA[axis] = at(a) - at(apex), toB[axis] = at(b) - at(apex);
    }
    double dot = 0, cross2 = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        const std::size_t j = (i + 1) % 3;
        const double cross = toA[i] * toB[j] - toA[j] * toB[i];
        dot += toA[i] * toB[i], cross2 += cross * cross;
    }
    return 0.5 * dot / std::sqrt(cross2);
}

/// Without the terms: a right-hand side, and a little on the diagonal that makes the system definite.
SparseSystem startSystem(int n, double shift)
{
    SparseSystem system{n, {}, {}};
    std::mt19937_64 random(2);
    for (int i = 0; i < n; ++i) {
        system.terms.push_back({i, i, shift});
        system.rightHandSide.push_back(static_cast<double>(random() >> 11) * 0x1p-52 - 1);
    }
    return system;
}

SparseSystem makeCotangentSystem()
{
    const Soup soup = irregularTorus();
    SparseSystem system = startSystem(soup.numVertices(), 0.01);
    for (std::size_t i = 0; i < soup.triangles.size(); i += 3) {
        for (std::size_t corner = 0; corner < 3; ++corner) {
            const int apex = soup.triangles[i + corner];
            const int a = soup.triangles[i + (corner + 1) % 3], b = soup.triangles[i + (corner + 2) % 3];
            const double weight = halfCotangent(soup, apex, a, b);
            system.terms.insert(system.terms.end(), {{a, a, weight}, {b, b, weight}, {a, b, -weight}, {b, a, -weight}});
        }
    }
    return system;
}

SparseSystem makeFairingSystem()
{
    const Soup soup = irregularTorus();
    std::vector<std::set<int>> neighbours(static_cast<std::size_t>(soup.numVertices()));
    for (std::size_t i = 0; i < soup.triangles.size(); ++i) {
        const int from = soup.triangles[i], to = soup.triangles[i % 3 == 2 ? i - 2 : i + 1];
        neighbours[static_cast<std::size_t>(from)].insert(to);
        neighbours[static_cast<std::size_t>(to)].insert(from);
    }

    SparseSystem system = startSystem(soup.numVertices(), 0.05);
    const auto addLaplacian = [&](int row, int vertex, double factor) {
        const std::set<int>& around = neighbours[static_cast<std::size_t>(vertex)];
        for (const int neighbour : around) system.terms.push_back({row, neighbour, factor});
        system.terms.push_back({row, vertex, -factor * static_cast<double>(around.size())});
    };
    for (int row = 0; row < system.n; ++row) {
        const std::set<int>& around = neighbours[static_cast<std::size_t>(row)];
        for (const int neighbour : around) addLaplacian(row, neighbour, 1);
        addLaplacian(row, row, -static_cast<double>(around.size()));
    }
    return system;
}

class Steps
{
public:
    explicit Steps(const SparseSystem& system) : m_solver(system.n), m_rightHandSide(system.n), m_start(system.n)
    {
        for (const SparseSystem::Term& term : system.terms)
            m_solver.A().addToElement(term.row, term.column, term.value);
        m_solver.initDiagonalPreconditioner();
        for (int i = 0; i < system.n; ++i) m_rightHandSide[i] = system.rightHandSide[static_cast<std::size_t>(i)];
    }

    const znGeom::NVector& solve(double tolerance, int mostSteps)
    {
        m_solver.initialize(m_rightHandSide, m_start);
        while (m_solver.getIteration() < mostSteps && !m_solver.iterate(tolerance, 0).isDone()) {
        }
        return m_solver.x();
    }

private:
    znGeom::ConjugateGradient m_solver;
    znGeom::NVector m_rightHandSide, m_start;
};

[[maybe_unused]] const bool listed = measureSolver<Steps>("znGeom");

} // namespace

double SparseSystem::residual(const double* solution) const
{
    std::vector<double> rest = rightHandSide;
    for (const Term& term : terms) rest[static_cast<std::size_t>(term.row)] -= term.value * solution[term.column];
    double rest2 = 0, whole2 = 0;
    for (const double value : rest) rest2 += value * value;
    for (const double value : rightHandSide) whole2 += value * value;
    return std::sqrt(rest2 / whole2);
}

const SparseSystem& cotangentSystem()
{
    static const SparseSystem system = makeCotangentSystem();
    return system;
}

const SparseSystem& fairingSystem()
{
    static const SparseSystem system = makeFairingSystem();
    return system;
}

} // namespace bench

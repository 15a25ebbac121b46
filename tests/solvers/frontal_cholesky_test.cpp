#include "znGeom/solvers/internal/frontal_cholesky.h"

#include <algorithm>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/solvers/systems.h"

using namespace znGeom;
using internal::Dissection;
using internal::FlatRows;
using internal::FrontalCholesky;
using znLinear::Point;
using znTest::Random;

namespace {

struct System
{
    SparseMatrix matrix;
    FlatRows rows;
    std::vector<Point> points;

    System(const SparseMatrix& given, std::vector<Point> places) : matrix(given), points(std::move(places))
    {
        for (int i = 0; i < matrix.size(); ++i) {
            for (const SparseElement& element : matrix.row(i)) rows.elements().append(element);
            rows.endRow();
        }
    }
};

/// A sheet in which each unknown is joined to those at most two steps away, as in fairing; shuffled.
System sheet(int columns, int lines, double shift, Random& random)
{
    const int size = columns * lines;
    std::vector<int> number(static_cast<size_t>(size));
    for (size_t i = 0; i < number.size(); ++i) {
        const auto other = static_cast<size_t>(random.below(int(i) + 1));
        number[i] = number[other], number[other] = int(i);
    }
    SparseMatrix matrix(size);
    std::vector<Point> points(static_cast<size_t>(size));
    for (int i = 0; i < size; ++i) {
        const int x = i % columns, y = i / columns, row = number[static_cast<size_t>(i)];
        points[static_cast<size_t>(row)] = Point(x, y, 0);
        for (int v = std::max(y - 2, 0); v <= std::min(y + 2, lines - 1); ++v)
            for (int u = std::max(x - 2, 0); u <= std::min(x + 2, columns - 1); ++u) {
                if (u == x && v == y) continue;
                matrix.addToElement(row, number[static_cast<size_t>(v * columns + u)], -1);
                matrix.addToElement(row, row, 1);
            }
        matrix.addToElement(row, row, shift);
    }
    return {matrix, points};
}

System scattered(int size, Random& random)
{
    std::vector<Point> points;
    for (int i = 0; i < size; ++i) points.emplace_back(random.below(3), random.real(0, 1), 0); // some side by side
    return {znTest::randomLaplacian(size, 0.1, random), points};
}

/// Two of a system side by side, joined at the unknowns in the first line as by a rotation.
System paired(const System& single)
{
    const int size = single.matrix.size();
    SparseMatrix matrix(2 * size);
    std::vector<Point> points;
    for (int i = 0; i < size; ++i) {
        const Point place = single.points[static_cast<size_t>(i)];
        for (int kind = 0; kind < 2; ++kind) {
            points.push_back(place);
            for (const SparseElement& element : single.matrix.row(i)) {
                matrix.addToElement(2 * i + kind, 2 * element.index + kind, element.value);
                const Point other = single.points[static_cast<size_t>(element.index)];
                if (place.y == 0 && other.y == 0 && element.index != i)
                    matrix.addToElement(2 * i + kind, 2 * element.index + 1 - kind,
                                        (kind == 0) == (place.x < other.x) ? 0.5 : -0.5);
            }
        }
    }
    return {matrix, points};
}

bool factorizes(const System& system, znUtil::Progress& progress)
{
    const Dissection dissection(system.rows, system.points);
    return FrontalCholesky(system.rows, dissection).factorize(progress);
}

} // namespace

TEST(Dissection, NoEdgeLeadsFromOneHalfToTheOther)
{
    Random random(1);
    for (const auto& [system, numKinds] : {std::pair(sheet(30, 20, 1, random), 1),
                                           {sheet(500, 1, 1, random), 1},
                                           {scattered(300, random), 1},
                                           {paired(sheet(30, 20, 1, random)), 2},
                                           {sheet(30, 20, 1, random), 3}}) {
        const Dissection dissection(system.rows, system.points, numKinds);
        const int size = system.matrix.size();
        std::vector<int> owner(static_cast<size_t>(size), -1),
            parent(static_cast<size_t>(dissection.nodes().size()), -1);
        for (int n = 0; n < dissection.nodes().size(); ++n) {
            const Dissection::Node& node = dissection.nodes()[n];
            for (int place = node.begin; place < node.end; ++place) {
                EXPECT_EQ(owner[static_cast<size_t>(place)], -1);
                owner[static_cast<size_t>(place)] = n;
            }
            for (const int half : node.halves)
                if (half >= 0) parent[static_cast<size_t>(half)] = n;
        }
        EXPECT_EQ(std::count(owner.begin(), owner.end(), -1), 0) << "each unknown is in one part";
        for (int i = 0; i < size; ++i)
            for (const SparseElement& element : system.matrix.row(i)) {
                int low = owner[static_cast<size_t>(dissection.places()[i])],
                    high = owner[static_cast<size_t>(dissection.places()[element.index])];
                if (dissection.places()[i] > dissection.places()[element.index]) continue;
                while (low > high) low = parent[static_cast<size_t>(low)];
                EXPECT_EQ(low, high) << "the later one is eliminated with a part that contains the earlier one";
            }
    }
}

TEST(Dissection, EliminatesKindsThatAreNotJoinedOnTheirOwn)
{
    Random random(4);
    const System system = paired(sheet(40, 40, 1, random));
    const auto factorSize = [&system](int numKinds) {
        const Dissection dissection(system.rows, system.points, numKinds);
        int size = 0;
        for (const Dissection::Node& node : dissection.nodes()) size += node.numOwn() * node.numRows();
        return size;
    };
    EXPECT_LT(factorSize(2), 0.8 * factorSize(1));
}

TEST(FrontalCholesky, SolvesThreeSystemsAtOnce)
{
    Random random(2);
    std::vector<System> systems;
    for (const int size : {1, 2, 47, 48, 49, 200}) systems.push_back(scattered(size, random));
    systems.push_back(sheet(40, 35, 1e-3, random));
    systems.push_back(sheet(300, 2, 1e-3, random));
    systems.push_back(paired(sheet(20, 20, 1, random)));
    systems.push_back(System(SparseMatrix(systems[5].matrix), std::vector<Point>(200))); // all in one place
    for (const System& system : systems) {
        const int size = system.matrix.size();
        const Dissection dissection(system.rows, system.points, 2);
        FrontalCholesky factor(system.rows, dissection);
        znUtil::Progress progress;
        ASSERT_TRUE(factor.factorize(progress));
        EXPECT_NEAR(progress.get(), 1, 1e-12);
        for (int turn = 0; turn < 2; ++turn) {
            const NVector wanted[3] = {znTest::randomVector(size, random), znTest::randomVector(size, random),
                                       NVector(size)};
            NVector columns[3] = {NVector(size), NVector(size), NVector(size)};
            for (int c = 0; c < 3; ++c) system.matrix.getMatrixTimesVector(wanted[c], columns[c]);
            factor.solve(columns);
            for (int c = 0; c < 3; ++c)
                for (int i = 0; i < size; ++i) ASSERT_NEAR(columns[c][i], wanted[c][i], 1e-9) << size;
        }
    }
}

TEST(FrontalCholesky, RefusesWhatIsNotPositiveDefinite)
{
    Random random(3);
    znUtil::Progress progress;
    EXPECT_TRUE(factorizes(sheet(20, 20, 1e-6, random), progress));
    EXPECT_FALSE(factorizes(sheet(20, 20, 0, random), progress)) << "singular: nothing holds it";
    EXPECT_FALSE(factorizes(sheet(20, 20, -1, random), progress));
    SparseMatrix broken = sheet(20, 20, 1, random).matrix;
    broken.addToElement(123, 123, std::numeric_limits<double>::quiet_NaN());
    EXPECT_FALSE(factorizes({broken, sheet(20, 20, 1, random).points}, progress));
    progress.cancel();
    EXPECT_FALSE(factorizes(sheet(20, 20, 1, random), progress));
}

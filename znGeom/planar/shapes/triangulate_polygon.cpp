#include "znGeom/planar/shapes/triangulate_polygon.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>

#include "znGeom/foundation/machine/clones.h"
#include "znGeom/foundation/machine/huge_pages.h"

// Each chord takes the best of the triangles that may stand on it, whose apexes are the points between its ends. Most
// are ruled out without a look at their normals: a cosine is at most those of the two chords on which a triangle leans,
// and where that is no better than what is there already, the area decides. That test runs over all apexes, in vector
// registers; it computes the very areas that count, so that nothing that could win, even on the last bit, is missed.

namespace znGeom {

using namespace znLinear;

namespace {

constexpr double largest = std::numeric_limits<double>::max();

/// What triangulating a part of the loop costs; the worst there is to begin with.
struct Cost
{
    double area = largest, cosine = -1;
};

bool isBetter(const Cost& a, const Cost& b) { return a.cosine != b.cosine ? a.cosine > b.cosine : a.area < b.area; }

/// The worst cost that is better than the given one.
Cost justBetter(const Cost& cost) { return {std::nextafter(cost.area, -largest), cost.cosine}; }

/// The length of this is the area of a triangle.
Vector vectorArea(const Point& a, const Point& b, const Point& c) { return 0.5 * cross(a - b, a - c); }

/// What is known of all chords: the cost of the part of the loop under each, and the apex of the triangle on it. Chords
/// that end at the same point lie side by side.
class Chords
{
public:
    explicit Chords(int numPoints)
        : m_areas(allocate<double>(rowStart(numPoints))), m_cosines(allocate<double>(rowStart(numPoints))),
          m_apexes(allocate<int>(rowStart(numPoints)))
    {}

    double* areasTo(int end) const { return m_areas.get() + rowStart(end); }
    double* cosinesTo(int end) const { return m_cosines.get() + rowStart(end); }
    int& apex(int begin, int end) const { return m_apexes[rowStart(end) + static_cast<size_t>(begin)]; }

private:
    static size_t rowStart(int end) { return static_cast<size_t>(end) * static_cast<size_t>(end - 1) / 2; }

    template <typename T>
    static std::unique_ptr<T[]> allocate(size_t count)
    {
        auto block = std::make_unique_for_overwrite<T[]>(count);
        znUtil::adviseHugePages(block.get(), count * sizeof(T));
        return block;
    }

    std::unique_ptr<double[]> m_areas, m_cosines;
    std::unique_ptr<int[]> m_apexes;
};

/// What is known of the chords that begin at one point, by their ends.
struct Row
{
    double *areas, *cosines;
    Vector* normals; ///< of the triangles on them; zero for flat ones, and on sides of the loop
};

/// The triangles on one chord, by their apexes.
struct Candidates
{
    int begin, end;
    Row left;                                ///< the chords from `begin` to the apex
    const double *rightAreas, *rightCosines; ///< of those from the apex to `end`
    const double *x, *y, *z;                 ///< of all points
    Point beginPoint;
    Vector halfChord; ///< half the way back from the end
};

constexpr int numLanes = 16;
using Lanes = std::int64_t[numLanes]; ///< -1 for yes, 0 for no

/// Looks for apexes from `k` on that may be as good as a limit, by their areas and by the cosines of the chords on
/// which they lean.
/// \return  the first of the `numLanes` apexes among which there is one; the end of the chord when there is none
ZNGEOM_CLONES int findPromising(const Candidates& from, int k, const Cost& limit, Lanes& promising)
{
    const double area = limit.area, cosine = limit.cosine;
    const Point begin = from.beginPoint;
    const Vector half = from.halfChord;
    for (; k < from.end; k += numLanes) {
        k = std::min(k, from.end - numLanes);
        std::int64_t any = 0;
        for (int lane = 0; lane < numLanes; ++lane) {
            const int apex = k + lane;
            const double left = from.left.cosines[apex], right = from.rightCosines[apex];
            const double bound = left < right ? left : right;
            const double dx = begin.x - from.x[apex], dy = begin.y - from.y[apex], dz = begin.z - from.z[apex];
            const double vx = dy * half.dz - dz * half.dy, vy = dz * half.dx - dx * half.dz,
                         vz = dx * half.dy - dy * half.dx;
            const double sum = from.left.areas[apex] + std::sqrt(vx * vx + vy * vy + vz * vz) + from.rightAreas[apex];
            const std::int64_t isFlatter = bound > cosine ? -1 : 0, isAsFlat = bound == cosine ? -1 : 0;
            const std::int64_t isAsSmall = sum <= area ? -1 : 0;
            promising[lane] = isFlatter | (isAsFlat & isAsSmall);
            any |= promising[lane];
        }
        if (any) return k;
    }
    return from.end;
}

/// The dynamic programme over all chords.
class Triangulation
{
public:
    Triangulation(const zn::vector<Point>& polygon, const BitVector* forbidden, znUtil::Progress* progress);

    /// False when it was cancelled.
    bool compute();
    zn::vector<int> triangles() const;

private:
    static constexpr int blockSize = 8;       ///< rows that are filled side by side
    static constexpr double largeSize = 1e70; ///< areas of smaller loops are finite, and so comparable

    bool fillRows(int low, int high);
    void solve(int begin, int end, const Row& row);
    Candidates candidates(int begin, int end, const Row& row) const;
    Cost guess(const Candidates& from) const;
    Cost costOf(const Candidates& from, int apex) const;
    bool isForbidden(int from, int to) const;
    bool foldsMore(const Candidates& from, int apex, double cosine) const;
    Vector normalOn(int begin, int end) const;
    bool count(int candidates);

    const zn::vector<Point>& m_points;
    const int m_size;
    const BitVector* m_forbidden;
    znUtil::Progress* m_progress;
    Chords m_chords;
    zn::vector<double> m_coordinates;              ///< all x, all y, all z
    zn::vector<double> m_leftAreas, m_leftCosines; ///< of a block of rows
    zn::vector<Vector> m_leftNormals;
    bool m_isLarge = false;
    double m_numSteps = 0; ///< all candidates for chords that have a choice
    std::int64_t m_step = 0, m_nextReport = 1000;
};

Triangulation::Triangulation(const zn::vector<Point>& polygon, const BitVector* forbidden, znUtil::Progress* progress)
    : m_points(polygon), m_size(polygon.size()), m_forbidden(forbidden), m_progress(progress), m_chords(m_size),
      m_coordinates(3 * m_size), m_leftAreas(blockSize * m_size), m_leftCosines(blockSize * m_size),
      m_leftNormals(blockSize * m_size)
{
    for (int span = 3; span < m_size; ++span) m_numSteps += double(span - 1) * double(m_size - span);
    for (int i = 0; i < m_size; ++i)
        for (int axis = 0; axis < 3; ++axis) {
            m_coordinates[axis * m_size + i] = polygon[i][axis];
            m_isLarge |= !(std::fabs(polygon[i][axis]) < largeSize);
        }
    for (int end = 1; end < m_size; ++end) {
        m_chords.areasTo(end)[end - 1] = 0;
        m_chords.cosinesTo(end)[end - 1] = 1;
    }
}

bool Triangulation::compute()
{
    for (int high = m_size - 3; high >= 0; high -= blockSize)
        if (!fillRows(std::max(high - blockSize + 1, 0), high)) return false;
    return true;
}

/// All chords that begin at one of some neighbouring points, those of higher points being known. One end after another,
/// so that what ends there is in the cache for all of them.
bool Triangulation::fillRows(int low, int high)
{
    const auto rowOf = [this, low](int begin) {
        const int start = (begin - low) * m_size;
        return Row{m_leftAreas.data() + start, m_leftCosines.data() + start, m_leftNormals.data() + start};
    };
    for (int begin = low; begin <= high; ++begin) {
        const Row row = rowOf(begin);
        row.areas[begin + 1] = 0;
        row.cosines[begin + 1] = 1;
        row.normals[begin + 1] = Vector();
    }
    for (int end = low + 2; end < m_size; ++end)
        for (int begin = std::min(high, end - 2); begin >= low; --begin) {
            solve(begin, end, rowOf(begin));
            if (end - begin > 2 && !count(end - begin - 1)) return false;
        }
    return true;
}

/// Finds the best triangle on a chord, the first one of those that cost the same.
void Triangulation::solve(int begin, int end, const Row& row)
{
    const Candidates from = candidates(begin, end, row);
    Cost best, limit = guess(from);
    int bestApex = begin + 1;
    const auto tryApex = [&](int apex) {
        if (foldsMore(from, apex, limit.cosine)) return;
        const Cost cost = costOf(from, apex);
        if (!isBetter(cost, best)) return;
        best = cost;
        bestApex = apex;
        if (!isBetter(limit, best)) limit = justBetter(best);
    };
    if (end - begin <= numLanes) {
        for (int apex = begin + 1; apex < end; ++apex) tryApex(apex);
    } else {
        Lanes promising;
        for (int k = begin + 1; (k = findPromising(from, k, limit, promising)) < end; k += numLanes)
            for (int lane = 0; lane < numLanes; ++lane)
                if (promising[lane]) tryApex(k + lane);
    }
    row.areas[end] = m_chords.areasTo(end)[begin] = best.area;
    row.cosines[end] = m_chords.cosinesTo(end)[begin] = best.cosine;
    m_chords.apex(begin, end) = bestApex;
    row.normals[end] = normalOn(begin, end);
}

Candidates Triangulation::candidates(int begin, int end, const Row& row) const
{
    const double* x = m_coordinates.data();
    const Vector halfChord = 0.5 * (m_points[begin] - m_points[end]);
    return {
        begin,           end,      row, m_chords.areasTo(end), m_chords.cosinesTo(end), x, x + m_size, x + 2 * m_size,
        m_points[begin], halfChord};
}

/// A cost that the best candidate at least reaches: that of the apexes on the neighbouring chords, which mostly do
/// well. Without an order of all costs, where areas are no numbers, nothing may be guessed.
Cost Triangulation::guess(const Candidates& from) const
{
    Cost limit = justBetter(Cost());
    if (m_isLarge || from.end - from.begin < 4) return limit;
    for (const int apex : {m_chords.apex(from.begin, from.end - 1), m_chords.apex(from.begin + 1, from.end)}) {
        const Cost cost = costOf(from, apex);
        if (isBetter(cost, limit)) limit = cost;
    }
    return limit;
}

Cost Triangulation::costOf(const Candidates& from, int apex) const
{
    if (m_forbidden &&
        (isForbidden(from.begin, apex) || isForbidden(apex, from.end) || isForbidden(from.end, from.begin)))
        return {};
    const Vector v = vectorArea(m_points[from.begin], m_points[apex], m_points[from.end]);
    const double area = v.length();
    double cosine = -1;
    if (!(epsilonTol > area)) {
        const Vector normal = Normal(v).asVector();
        cosine = std::min(dot(normal, normalOn(apex, from.end)), dot(normal, from.left.normals[apex]));
    }
    return {from.left.areas[apex] + area + from.rightAreas[apex],
            std::min({cosine, from.left.cosines[apex], from.rightCosines[apex]})};
}

bool Triangulation::isForbidden(int from, int to) const
{
    return m_forbidden->isSet(static_cast<int>(static_cast<std::int64_t>(from) * m_size + to));
}

/// Whether a triangle certainly makes a sharper fold than `cosine`, which is 0 or less, with one of its neighbours: a
/// test without roots and quotients, that leaves close cases open. A neighbour that is flat or forbidden needs no care:
/// its chord is as sharp as can be, whatever leans on it.
bool Triangulation::foldsMore(const Candidates& from, int apex, double cosine) const
{
    constexpr double doubt = 1e-12;
    if (cosine <= -1) return false;
    const Vector v = vectorArea(m_points[from.begin], m_points[apex], m_points[from.end]);
    const double least = cosine - doubt, scale = least * least * v.length2();
    const double left = dot(v, from.left.normals[apex]);
    if (left < 0 && left * left > scale) return true;
    if (from.end - apex < 2) return false;
    const Vector other = vectorArea(m_points[apex], m_points[m_chords.apex(apex, from.end)], m_points[from.end]);
    const double right = dot(v, other);
    return right < 0 && right * right > scale * other.length2();
}

/// The normal of the triangle on a known chord; zero where that is flat, and on sides of the loop.
Vector Triangulation::normalOn(int begin, int end) const
{
    if (end - begin < 2) return {};
    const Vector v = vectorArea(m_points[begin], m_points[m_chords.apex(begin, end)], m_points[end]);
    return epsilonTol > v.length() ? Vector() : Normal(v).asVector();
}

/// False when the call is to stop.
bool Triangulation::count(int candidates)
{
    m_step += candidates;
    for (; m_progress && m_nextReport <= m_step; m_nextReport += 1000) {
        if (m_progress->cancelled()) return false;
        m_progress->set(static_cast<double>(m_nextReport) / m_numSteps);
    }
    return true;
}

/// Those left of a triangle come before it, those right of it after it.
zn::vector<int> Triangulation::triangles() const
{
    struct Chord
    {
        int begin, end;
    };
    zn::vector<int> result;
    result.reserve(3 * (m_size - 2));
    zn::vector<Chord> open;
    for (Chord chord{0, m_size - 1};;) {
        for (; chord.end - chord.begin > 1; chord.end = m_chords.apex(chord.begin, chord.end)) open.append(chord);
        if (open.empty()) return result;
        chord = open.back();
        open.eraseBack();
        const int apex = m_chords.apex(chord.begin, chord.end);
        for (const int corner : {chord.begin, apex, chord.end}) result.append(corner);
        chord.begin = apex;
    }
}

} // namespace

bool triangulatePolygon(const zn::vector<Point>& polygon, zn::vector<int>& triangles, BitVector* forbiddenEdges,
                        znUtil::Progress* progress)
{
    triangles.clear();
    if (polygon.size() < 3) return true;
    Triangulation triangulation(polygon, forbiddenEdges, progress);
    if (!triangulation.compute()) return false;
    triangles = triangulation.triangles();
    return true;
}

} // namespace znGeom

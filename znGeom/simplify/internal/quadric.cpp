#include "znGeom/simplify/internal/quadric.h"

#include <cmath>
#include <utility>

namespace znGeom::internal {

using znLinear::Point;
using znLinear::ProjMatrix;
using znLinear::Vector;

namespace {

/// Three linear equations, the right side in the last column.
struct Equations
{
    double rows[3][4];
    int unknowns[3] = {0, 1, 2}; ///< which of x, y and z stands in each column

    /// Brings the entry of largest magnitude of those that are left to the diagonal. \return that magnitude
    double choosePivot(int step)
    {
        int row = step, column = step;
        for (int i = step; i < 3; ++i)
            for (int j = step; j < 3; ++j)
                if (std::fabs(rows[i][j]) > std::fabs(rows[row][column])) row = i, column = j;
        if (row != step) std::swap(rows[row], rows[step]);
        if (column != step) {
            for (auto& equation : rows) std::swap(equation[column], equation[step]);
            std::swap(unknowns[column], unknowns[step]);
        }
        return std::fabs(rows[step][step]);
    }

    void eliminate(int step)
    {
        for (int i = step + 1; i < 3; ++i) {
            const double factor = rows[i][step] / rows[step][step];
            for (int j = step + 1; j < 4; ++j) rows[i][j] -= factor * rows[step][j];
        }
    }

    Point substituteBack() const
    {
        double solution[3];
        for (int step = 2; step >= 0; --step) {
            double value = rows[step][3];
            for (int j = step + 1; j < 3; ++j) value -= rows[step][j] * solution[unknowns[j]];
            solution[unknowns[step]] = value / rows[step][step];
        }
        return {solution[0], solution[1], solution[2]};
    }
};

/// The single place of least error. False where there is none, in proportion to the quadric's size.
bool findLeast(const Quadric& q, Point& place)
{
    constexpr double singular = 1e-8;
    Equations equations{{{q.xx, q.xy, q.xz, -q.xw}, {q.xy, q.yy, q.yz, -q.yw}, {q.xz, q.yz, q.zz, -q.zw}}};
    const double largest = equations.choosePivot(0);
    for (int step = 0; step < 3; ++step) {
        const double pivot = step == 0 ? largest : equations.choosePivot(step);
        if (!(pivot > singular * largest)) return false;
        equations.eliminate(step);
    }
    place = equations.substituteBack();
    return std::isfinite(place.x) && std::isfinite(place.y) && std::isfinite(place.z);
}

/// The error without half of its linear part and without its constant: by this the ends and the middle are compared.
double comparedAt(const Quadric& q, const Point& p)
{
    const double x = q.xx * p.x + q.xy * p.y + q.xz * p.z + q.xw;
    const double y = q.xy * p.x + q.yy * p.y + q.yz * p.z + q.yw;
    const double z = q.xz * p.x + q.yz * p.y + q.zz * p.z + q.zw;
    return p.x * x + p.y * y + p.z * z + 1;
}

} // namespace

void Quadric::addPlane(const Vector& normal, double offset)
{
    xx += normal.dx * normal.dx, xy += normal.dx * normal.dy, xz += normal.dx * normal.dz, xw -= normal.dx * offset;
    yy += normal.dy * normal.dy, yz += normal.dy * normal.dz, yw -= normal.dy * offset;
    zz += normal.dz * normal.dz, zw -= normal.dz * offset;
    ww += offset * offset;
}

void Quadric::add(const Quadric& other)
{
    xx += other.xx, xy += other.xy, xz += other.xz, xw += other.xw;
    yy += other.yy, yz += other.yz, yw += other.yw;
    zz += other.zz, zw += other.zw;
    ww += other.ww;
}

double Quadric::at(const Point& p) const
{
    const double x = xx * p.x + xy * p.y + xz * p.z + xw;
    const double y = xy * p.x + yy * p.y + yz * p.z + yw;
    const double z = xz * p.x + yz * p.y + zz * p.z + zw;
    return p.x * x + p.y * y + p.z * z + (xw * p.x + yw * p.y + zw * p.z + ww);
}

ProjMatrix Quadric::asMatrix() const
{
    const double values[] = {xx, xy, xz, xw, xy, yy, yz, yw, xz, yz, zz, zw, xw, yw, zw, ww};
    return ProjMatrix(values);
}

Point placementOf(const Quadric& sum, const Point& origin, const Point& end)
{
    Point place;
    if (findLeast(sum, place)) return place;
    const Point middle((origin.x + end.x) * 0.5, (origin.y + end.y) * 0.5, (origin.z + end.z) * 0.5);
    const double atEnd = comparedAt(sum, end), atOrigin = comparedAt(sum, origin), atMiddle = comparedAt(sum, middle);
    if (!(atMiddle > atEnd) && !(atMiddle > atOrigin)) return middle;
    return atEnd > atOrigin ? origin : end;
}

} // namespace znGeom::internal

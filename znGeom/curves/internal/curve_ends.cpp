#include "znGeom/curves/internal/curve_ends.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

namespace znGeom::internal {

using namespace znLinear;

namespace {

/// Adds a cell along one more dimension to a key.
std::uint64_t extended(std::uint64_t key, double cell)
{
    key ^= std::bit_cast<std::uint64_t>(cell + 0.0); // one zero for both
    key *= 0x9E3779B97F4A7C15;
    return key ^ key >> 29;
}

/// The first two points of a curve, from one of its ends.
struct Tip
{
    const TopoMeshPoint *end, *next;

    Tip(TopoMeshCurve& curve, bool atStart)
    {
        const auto first = atStart ? curve.firstNode() : curve.sentinel().prev();
        end = first.value().get();
        next = (atStart ? first.next() : first.prev()).value().get();
    }
    std::array<double, 6> coordinates() const
    {
        const Point &a = end->position, &b = next->position;
        return {a.x, a.y, a.z, b.x, b.y, b.z};
    }
    bool agrees(const Tip& other, double tolerance) const
    {
        return equivalent(end->position, other.end->position, tolerance) &&
               equivalent(next->position, other.next->position, tolerance);
    }
};

std::array<double, 3> coordinates(const Point& point) { return {point.x, point.y, point.z}; }

} // namespace

std::uint64_t Cells::keyOf(std::span<const double> point) const
{
    std::uint64_t key = 0;
    for (const double x : point) key = extended(key, std::floor(x / m_size));
    return key;
}

/// Rounding keeps the order of numbers, so that what lies between two places is not in a cell beyond theirs.
zn::vector<std::uint64_t> Cells::keysAround(std::span<const double> point) const
{
    zn::vector<std::uint64_t> keys{0};
    for (const double x : point) {
        const double low = std::floor((x - m_distance) / m_size), high = std::floor((x + m_distance) / m_size);
        zn::vector<std::uint64_t> longer;
        for (const std::uint64_t key : keys) {
            longer.append(extended(key, low));
            if (high != low) longer.append(extended(key, high));
        }
        keys.swap(longer);
    }
    return keys;
}

zn::vector<bool> findRepeats(TopoMeshCurves& curves, double tolerance)
{
    zn::vector<bool> isRepeat(curves.size(), false);
    if (!(tolerance > 0)) return isRepeat;
    const Cells cells(tolerance);
    std::unordered_map<std::uint64_t, zn::vector<Tip>> laterTips;
    auto curve = curves.sentinel();
    for (int i = curves.size() - 1; i >= 0; --i) {
        curve = curve.prev();
        if (curve.value().size() < 2) continue;
        const Tip tips[2] = {{curve.value(), true}, {curve.value(), false}};
        for (const Tip& tip : tips)
            for (const std::uint64_t key : cells.keysAround(tip.coordinates())) {
                const auto found = isRepeat[i] ? laterTips.end() : laterTips.find(key);
                if (found == laterTips.end()) continue;
                isRepeat[i] = std::any_of(found->second.begin(), found->second.end(),
                                          [&](const Tip& other) { return tip.agrees(other, tolerance); });
            }
        for (const Tip& tip : tips) laterTips[cells.keyOf(tip.coordinates())].append(tip);
    }
    return isRepeat;
}

CurveEnds::CurveEnds(TopoMeshCurves& curves, double tolerance) : m_cells(tolerance)
{
    for (TopoMeshCurve& curve : curves) {
        const int number = static_cast<int>(m_numbers.size());
        m_numbers.emplace(&curve, number);
        if (curve.empty()) continue;
        add(number, curve.front()->position);
        add(number, curve.back()->position);
    }
}

void CurveEnds::add(int curve, const Point& end) { m_curvesIn[m_cells.keyOf(coordinates(end))].insert(curve); }

int CurveEnds::firstAfter(int curve, const Point& place) const
{
    int first = -1;
    for (const std::uint64_t key : m_cells.keysAround(coordinates(place))) {
        const auto found = m_curvesIn.find(key);
        if (found == m_curvesIn.end()) continue;
        const auto after = found->second.upper_bound(curve);
        if (after != found->second.end() && (first < 0 || *after < first)) first = *after;
    }
    return first;
}

EndsInFaces::EndsInFaces(TopoMeshCurves& curves)
{
    for (TopoMeshCurve& curve : curves) {
        if (curve.empty()) continue;
        for (const TopoMeshPoint* const end : {curve.front().get(), curve.back().get()})
            if (end->kind == TopoMeshPoint::InFace) m_endsIn[end->coord.face.number()].append(end);
    }
}

bool EndsInFaces::meetsAnother(const TopoMeshPoint& end) const
{
    const zn::vector<const TopoMeshPoint*>& others = m_endsIn.at(end.coord.face.number());
    return std::any_of(others.begin(), others.end(),
                       [&](const TopoMeshPoint* other) { return other != &end && other->equivalent(end); });
}

} // namespace znGeom::internal

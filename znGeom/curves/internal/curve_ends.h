/// The ends of many curves, found by where they are.
#pragma once

#include <cstdint>
#include <set>
#include <span>
#include <unordered_map>

#include "znGeom/curves/curve_topology.h"

namespace znGeom::internal {

/// Cells of a grid in any number of dimensions, by keys; two cells may have one key.
class Cells
{
public:
    /// \param distance  above 0
    explicit Cells(double distance) : m_distance(distance), m_size(4 * distance) {}

    /// The key of the cell in which a point lies.
    std::uint64_t keyOf(std::span<const double> point) const;
    /// The keys of the cells that hold all points whose coordinates differ from those of a point by less than the
    /// distance; at most two for each dimension, multiplied.
    zn::vector<std::uint64_t> keysAround(std::span<const double> point) const;

private:
    double m_distance, m_size;
};

/// For each curve whether it repeats a later one: an end of it agrees with an end of that, and so do their next points.
zn::vector<bool> findRepeats(TopoMeshCurves& curves, double tolerance);

/// The curves that end near a place. Curves go by their numbers in the list.
class CurveEnds
{
public:
    /// \param tolerance  how near; above 0
    CurveEnds(TopoMeshCurves& curves, double tolerance);

    int numberOf(const TopoMeshCurve& curve) const { return m_numbers.at(&curve); }
    /// To be told when an end of a curve has moved. It is found at its earlier places too.
    void add(int curve, const znLinear::Point& end);
    /// The first curve after a curve that may have an end near a place; -1 for none.
    int firstAfter(int curve, const znLinear::Point& place) const;

private:
    Cells m_cells;
    std::unordered_map<std::uint64_t, std::set<int>> m_curvesIn;
    std::unordered_map<const TopoMeshCurve*, int> m_numbers;
};

/// The ends of curves that lie inside faces, by faces.
class EndsInFaces
{
public:
    explicit EndsInFaces(TopoMeshCurves& curves);

    /// Whether another end is at the place of one inside a face.
    bool meetsAnother(const TopoMeshPoint& end) const;

private:
    std::unordered_map<int, zn::vector<const TopoMeshPoint*>> m_endsIn;
};

} // namespace znGeom::internal

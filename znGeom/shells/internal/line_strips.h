/// Closed polylines of samples, end to end in flat arrays.
#pragma once

#include <algorithm>
#include <cmath>

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/linear/normal.h"
#include "znGeom/foundation/linear/point.h"
#include "znGeom/foundation/mesh/compact_mesh.h"

namespace znGeom::internal {

/// Samples are numbered across all strips; segment k runs from sample k to the one after it, the last one of a strip
/// back to its first.
class LineStrips
{
public:
    /// The line strips of a mesh; a point that is in several of them becomes several samples.
    explicit LineStrips(const CompactMesh& mesh)
    {
        const int* const stripPoints = mesh.getLineStripPoints();
        const int* const lengths = mesh.getLineStripLengths();
        m_firsts.append(0);
        for (int strip = 0; strip < mesh.getNumLineStrips(); ++strip) {
            for (int i = 0; i < lengths[strip]; ++i) m_strips.append(strip);
            m_firsts.append(m_strips.size());
        }
        for (int i = 0; i < size(); ++i) points.append(mesh.getVertices()[stripPoints[i]].asPoint());
        measure();
    }

    int size() const { return m_strips.size(); }
    int numStrips() const { return m_lengths.size(); }
    int strip(int sample) const { return m_strips[sample]; }
    int first(int strip) const { return m_firsts[strip]; }
    int count(int strip) const { return m_firsts[strip + 1] - m_firsts[strip]; }
    int next(int sample) const { return sample + 1 < m_firsts[strip(sample) + 1] ? sample + 1 : first(strip(sample)); }
    int prev(int sample) const { return sample > first(strip(sample)) ? sample - 1 : m_firsts[strip(sample) + 1] - 1; }
    int step(int sample, bool forward) const { return forward ? next(sample) : prev(sample); }

    /// The length of a whole strip; not finite where a sample isn't.
    double length(int strip) const { return m_lengths[strip]; }
    /// The length of the strip from its first sample to this one.
    double arc(int sample) const { return m_arcs[sample]; }
    double segmentLength(int segment) const { return distance(points[segment], points[next(segment)]); }
    /// The length of the way forward from one place of a strip to another.
    double wayForward(int strip, double from, double to) const
    {
        return to >= from ? to - from : to - from + length(strip);
    }
    /// The length of the shorter way between two places of a strip.
    double wayBetween(int strip, double a, double b) const
    {
        const double forward = wayForward(strip, a, b);
        return std::min(forward, length(strip) - forward);
    }
    /// The samples from one to another, walking forward, both counted.
    int numBetween(int from, int to) const { return (to >= from ? to - from : to - from + count(strip(from))) + 1; }

    zn::vector<znLinear::Point> points;

private:
    void measure()
    {
        for (int strip = 0; strip + 1 < m_firsts.size(); ++strip) {
            double length = 0;
            for (int i = m_firsts[strip]; i < m_firsts[strip + 1]; ++i) {
                m_arcs.append(length);
                const int next = i + 1 < m_firsts[strip + 1] ? i + 1 : m_firsts[strip];
                length += distance(points[i], points[next]);
            }
            m_lengths.append(length);
        }
    }

    zn::vector<int> m_firsts, m_strips;
    zn::vector<double> m_arcs, m_lengths;
};

} // namespace znGeom::internal

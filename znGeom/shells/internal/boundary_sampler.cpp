#include "znGeom/shells/internal/boundary_sampler.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace znGeom::internal {

namespace {

constexpr int leastSamples = 10;
constexpr double samplesPerTolerance = 5;
constexpr double mostSamples = 1 << 24;

} // namespace

bool BoundarySampler::build(double tolerance, CompactMesh& lines)
{
    if (!(tolerance > 0) || !std::isfinite(tolerance)) return false;
    zn::vector<int> lengths;
    for (const int boundary : m_chosen) {
        if (!isBoundary(boundary)) continue;
        const std::size_t before = m_samples.size();
        const int length = addSamples(boundary, tolerance / samplesPerTolerance);
        if (length < 0) return false;
        if (length < leastSamples) {
            m_samples.resize(before);
            continue;
        }
        m_strips.append(boundary);
        lengths.append(length);
    }
    if (m_strips.size() < 2) return false;
    fillLines(lengths, lines);
    return true;
}

/// \return the number of samples; -1 if there are too many of all boundaries together
int BoundarySampler::addSamples(int boundary, double step)
{
    const std::size_t before = m_samples.size();
    for (int edge = 0; edge < m_boundaries.getLength(boundary); ++edge) {
        const BoundarySample atVertex{boundary, edge, 1.0F};
        m_samples.push_back(atVertex);
        const auto* const vertices = m_mesh.getVertices();
        const double length =
            distance(vertices[firstVertex(atVertex)].asPoint(), vertices[secondVertex(atVertex)].asPoint());
        const double numSteps = std::floor(length / step + 0.5);
        if (static_cast<double>(m_samples.size()) + numSteps > mostSamples) return -1;
        for (int i = 1; i < numSteps; ++i) m_samples.push_back({boundary, edge, static_cast<float>(1 - i / numSteps)});
    }
    return static_cast<int>(m_samples.size() - before);
}

/// Whether each vertex of a loop is followed by the end of a boundary edge that starts there.
bool BoundarySampler::isBoundary(int boundary) const
{
    const MeshTriangle* const triangles = m_mesh.getTriangles();
    for (int edge = 0; edge < m_boundaries.getLength(boundary); ++edge) {
        const BoundarySample atVertex{boundary, edge, 1.0F};
        const int first = firstVertex(atVertex), second = secondVertex(atVertex);
        int numAlong = 0, numAgainst = 0;
        for (const int t : m_adjacency.around(first)) {
            numAlong += hasDirectedEdge(triangles[t], first, second);
            numAgainst += hasDirectedEdge(triangles[t], second, first);
        }
        if (numAlong != 1 || numAgainst != 0) return false;
    }
    return m_boundaries.getLength(boundary) > 0;
}

MeshVertex BoundarySampler::position(const BoundarySample& sample) const
{
    const MeshVertex &first = m_mesh.getVertices()[firstVertex(sample)],
                     &second = m_mesh.getVertices()[secondVertex(sample)];
    const float t = sample.t, rest = 1 - t;
    return {t * first.x + rest * second.x, t * first.y + rest * second.y, t * first.z + rest * second.z};
}

void BoundarySampler::fillLines(const zn::vector<int>& lengths, CompactMesh& lines) const
{
    const int numSamples = static_cast<int>(m_samples.size());
    lines.resizeVertexArray(numSamples);
    lines.resizeLineArray(numSamples);
    lines.resizeLineStripArrays(numSamples, lengths.size());
    std::copy(lengths.begin(), lengths.end(), lines.getLineStripLengths());
    std::iota(lines.getLineStripPoints(), lines.getLineStripPoints() + numSamples, 0);
    std::transform(m_samples.begin(), m_samples.end(), lines.getVertices(),
                   [this](const BoundarySample& sample) { return position(sample); });
    MeshLine* line = lines.getLines();
    int first = 0;
    for (const int length : lengths) {
        for (int i = 0; i < length; ++i) *line++ = {{first + i, first + (i + 1) % length}};
        first += length;
    }
}

} // namespace znGeom::internal

#include "znGeom/planar/polylines/internal/capsule_tree.h"

#include <algorithm>

namespace znGeom::internal {

namespace {

using znLinear::Vector;

/// Collects what lies about an axis through a centre: the part of the axis beside it, and the greatest distance.
class Around
{
public:
    /// \param along  the direction of the axis, of any length; without one the axis is the centre
    Around(const Vector& centre, Vector along) : m_centre(centre), m_along(along)
    {
        if (!m_along.normalize()) m_along = Vector();
    }

    void include(const Vector& place, double radius)
    {
        const Vector offset = place - m_centre;
        const double t = dot(offset, m_along);
        m_first = std::min(m_first, t);
        m_last = std::max(m_last, t);
        const double distance = (offset - m_along * t).length() + radius;
        if (!(distance <= m_radius)) m_radius = distance; // not-a-numbers come through
    }

    Capsule capsule() const { return {m_centre + m_along * m_first, m_centre + m_along * m_last, m_radius}; }

private:
    Vector m_centre, m_along;
    double m_first = 0, m_last = 0, m_radius = 0;
};

/// The axis runs from the middle of the first half of the vertices to that of the second half.
Capsule capsuleOf(const Polyline::vertex* block, const znLinear::Point& origin)
{
    constexpr int half = verticesPerCapsule / 2;
    Vector middles[2];
    for (int i = 0; i < 2 * half; ++i) middles[i / half] += (block[i].point - origin) / half;
    Around around((middles[0] + middles[1]) * 0.5, middles[1] - middles[0]);
    for (int i = 0; i < 2 * half; ++i) around.include(block[i].point - origin, 0);
    return around.capsule();
}

Capsule unite(const Capsule& first, const Capsule& second)
{
    const Vector middles[2] = {(first.from + first.to) * 0.5, (second.from + second.to) * 0.5};
    Around around((middles[0] + middles[1]) * 0.5, middles[1] - middles[0]);
    for (const Capsule* part : {&first, &second})
        for (const Vector& end : {part->from, part->to}) around.include(end, part->radius);
    return around.capsule();
}

} // namespace

StretchTree<Capsule> capsuleTree(const Polyline::vertex* vertices, int count)
{
    zn::vector<Capsule> blocks;
    for (int first = 0; first + verticesPerCapsule <= count; first += verticesPerCapsule)
        blocks.append(capsuleOf(vertices + first, vertices[0].point));
    return {std::move(blocks), unite};
}

} // namespace znGeom::internal

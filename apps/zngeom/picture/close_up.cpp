#include "apps/zngeom/picture/close_up.h"

#include <cmath>

namespace tool {

namespace {

constexpr double largeSize = 16, wantedSize = 44, smallestPart = 1 / 400.0, largestPart = 1 / 2.5;
constexpr std::size_t mostThings = 1000, mostCentres = 200;

/// A marked thing in the picture.
struct SeenThing
{
    Spot middle;
    double size;
    std::size_t kind;
    bool isVisible;
};

double sizeOf(const MarkedThing& thing, const View& view)
{
    double size = 0;
    for (std::size_t i = 0; i < 3; ++i) size = std::max(size, (thing[(i + 1) % 3] - thing[i]).length());
    return size * view.getScale();
}

/// The length of edges at points, which have no size themselves.
double meanEdge(const znGeom::CompactMesh& mesh, const View& view)
{
    Marking sample;
    for (int triangle = 0; triangle < mesh.getNumTriangles(); triangle += mesh.getNumTriangles() / 1000 + 1)
        sample.triangles.push_back(triangle);
    double sum = 0;
    const std::vector<MarkedThing> things = markedThings(mesh, sample, sample.triangles.size());
    for (const MarkedThing& thing : things) sum += sizeOf(thing, view);
    return things.empty() ? 0 : sum / static_cast<double>(things.size());
}

std::vector<SeenThing> seenThings(const Scene& scene, const Canvas& canvas, const View& view)
{
    constexpr double slack = 8;
    std::vector<SeenThing> things;
    const double edge = meanEdge(*scene.mesh, view);
    for (std::size_t kind = 0; kind < scene.markings.size(); ++kind) {
        if (scene.markings[kind].isAside) continue;
        for (const MarkedThing& thing : markedThings(*scene.mesh, scene.markings[kind], mostThings)) {
            const Spot middle = view.at(middleOf(thing));
            const double size = std::max(sizeOf(thing, view), scene.markings[kind].points.empty() ? 0 : edge);
            things.push_back({middle, size, kind, canvas.shows(middle, slack)});
        }
    }
    return things;
}

double medianSize(const std::vector<SeenThing>& things)
{
    std::vector<double> sizes;
    for (const SeenThing& thing : things) sizes.push_back(thing.size);
    const auto middle = sizes.begin() + static_cast<std::ptrdiff_t>(sizes.size() / 2);
    std::nth_element(sizes.begin(), middle, sizes.end());
    return *middle;
}

/// How much a rectangle shows: of each kind its part, the first ones counting most.
double worth(const std::vector<SeenThing>& things, std::size_t numKinds, const Spot& centre, double halfWidth,
             double halfHeight)
{
    std::vector<double> shown(numKinds, 0), all(numKinds, 0);
    for (const SeenThing& thing : things) {
        const bool isInside =
            std::fabs(thing.middle.x - centre.x) < halfWidth && std::fabs(thing.middle.y - centre.y) < halfHeight;
        all[thing.kind] += 1;
        if (isInside) shown[thing.kind] += thing.isVisible ? 1 : 0.1;
    }
    double sum = 0;
    for (std::size_t kind = 0; kind < numKinds; ++kind)
        if (all[kind] > 0) sum += std::sqrt(shown[kind] / all[kind]);
    return sum;
}

} // namespace

std::optional<CloseUp> findCloseUp(const Scene& scene, const Canvas& canvas, const View& view, const Frame& shape)
{
    const std::vector<SeenThing> things = seenThings(scene, canvas, view);
    if (things.empty()) return std::nullopt;
    const double size = medianSize(things);
    if (size > largeSize) return std::nullopt;
    const double part = std::clamp(size / wantedSize, smallestPart, largestPart);
    const double halfWidth = shape.width() * part / 2, halfHeight = shape.height() * part / 2;

    const SeenThing* best = nullptr;
    double most = -1;
    for (std::size_t i = 0; i < things.size(); i += things.size() / mostCentres + 1) {
        const double found = worth(things, scene.markings.size(), things[i].middle, halfWidth, halfHeight);
        if (found > most) best = &things[i], most = found;
    }
    const Spot& centre = best->middle;
    return CloseUp{{centre.x - halfWidth, centre.y - halfHeight, 0}, {centre.x + halfWidth, centre.y + halfHeight, 0}};
}

} // namespace tool

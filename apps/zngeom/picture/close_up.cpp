#include "apps/zngeom/picture/close_up.h"

#include <cmath>

namespace tool {

namespace {

constexpr double largeSize = 16, wantedSize = 44, smallestPart = 1 / 400.0, largestPart = 1 / 2.5;
constexpr std::size_t mostThings = 1000, mostCentres = 200;
constexpr double hiddenWeight = 0.003; ///< of what something hides, beside 1 of what is visible

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

/// A rectangle about a centre.
struct Window
{
    Spot centre;
    double halfWidth, halfHeight;

    bool holds(const Spot& spot) const
    {
        return std::fabs(spot.x - centre.x) < halfWidth && std::fabs(spot.y - centre.y) < halfHeight;
    }
};

/// How much a window shows: of each kind its part, the first ones counting most.
double worth(const std::vector<SeenThing>& things, std::size_t numKinds, const Window& window)
{
    std::vector<double> shown(numKinds, 0), all(numKinds, 0);
    for (const SeenThing& thing : things) {
        all[thing.kind] += 1;
        if (window.holds(thing.middle)) shown[thing.kind] += thing.isVisible ? 1 : hiddenWeight;
    }
    double sum = 0;
    for (std::size_t kind = 0; kind < numKinds; ++kind)
        if (all[kind] > 0) sum += std::sqrt(shown[kind] / all[kind]);
    return sum;
}

/// Moves a window to the middle of what it shows.
void centreOnThings(const std::vector<SeenThing>& things, Window& window)
{
    double x = 0, y = 0, weights = 0;
    for (const SeenThing& thing : things) {
        if (!window.holds(thing.middle)) continue;
        const double weight = thing.isVisible ? 1 : hiddenWeight;
        x += weight * thing.middle.x, y += weight * thing.middle.y, weights += weight;
    }
    window.centre = {x / weights, y / weights, 0};
}

} // namespace

std::optional<CloseUp> findCloseUp(const Scene& scene, const Canvas& canvas, const View& view, const Frame& shape)
{
    const std::vector<SeenThing> things = seenThings(scene, canvas, view);
    if (things.empty()) return std::nullopt;
    const double size = medianSize(things);
    if (size > largeSize) return std::nullopt;
    const double part = std::clamp(size / wantedSize, smallestPart, largestPart);
    Window window{{}, shape.width() * part / 2, shape.height() * part / 2}, best = window;
    double most = -1;
    for (std::size_t i = 0; i < things.size(); i += things.size() / mostCentres + 1) {
        window.centre = things[i].middle;
        const double found = worth(things, scene.markings.size(), window);
        if (found > most) best = window, most = found;
    }
    centreOnThings(things, best);
    const auto& [x, y, depth] = best.centre;
    return CloseUp{{x - best.halfWidth, y - best.halfHeight, 0}, {x + best.halfWidth, y + best.halfHeight, 0}};
}

} // namespace tool

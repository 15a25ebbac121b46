#include "apps/zngeom/picture/viewpoint.h"

#include <array>
#include <cmath>
#include <numbers>

#include "apps/zngeom/picture/projection.h"
#include "znGeom/foundation/threads/parallel_for.h"

namespace tool {

namespace {

using znLinear::Vector;

/// What a small drawing from one direction shows.
struct Look
{
    Vector towards;
    double preference = 0;
    double surface = 0;                           ///< pixels of fronts, and some of those of backs
    std::vector<std::vector<bool>> visibleThings; ///< per marking that isn't aside
};

constexpr int side = 144;
constexpr std::size_t mostThings = 400;

bool standsOnGround(float least, float most) { return std::fabs(least) < 0.01f * (most - least); }

/// Of the finite corners of the triangles.
znGeom::BoundingBox boxOf(const znGeom::CompactMesh& mesh)
{
    znGeom::BoundingBox box;
    for (int corner = 0; corner < 3 * mesh.getNumTriangles(); ++corner) {
        const znGeom::MeshVertex& vertex = mesh.getVertices()[mesh.getTrianglesRaw()[corner]];
        if (isFinite(vertex)) box.extend(vertex.asPointFlt());
    }
    return box;
}

Vector upOf(const znGeom::BoundingBox& box)
{
    const bool isZ = standsOnGround(box.minZ, box.maxZ) && !standsOnGround(box.minY, box.maxY);
    return isZ ? Vector::z : Vector::y;
}

/// Around the mesh slightly from above, then from high above, then from below.
std::vector<Look> lookAround(const Vector& up)
{
    const Vector ahead = up == Vector::y ? Vector::z : -Vector::y;
    std::vector<Look> looks;
    const auto add = [&](double turn, double rise, double preference) {
        const double yaw = turn * std::numbers::pi / 180, pitch = rise * std::numbers::pi / 180;
        const Vector level = std::cos(yaw) * ahead + std::sin(yaw) * Vector::x;
        looks.push_back({std::cos(pitch) * level + std::sin(pitch) * up, preference, 0, {}});
    };
    for (int i = 0; i < 8; ++i) add(25 + 45 * i, 20, i == 0 ? 0.15 : i == 7 ? 0.12 : 0.06);
    for (int i = 0; i < 4; ++i) add(25 + 90 * i, 58, 0.04);
    for (int i = 0; i < 4; ++i) add(25 + 90 * i, -40, 0);
    return looks;
}

class LookMaker
{
public:
    LookMaker(const Scene& scene, const znGeom::BoundingBox& box) : m_mesh(*scene.mesh), m_up(upOf(box))
    {
        if (box.isValid()) {
            const znLinear::Point least(box.minPt()), most(box.maxPt());
            m_middle = least + (most - least) / 2;
            m_diameter = (most - least).length();
        }
        for (const Marking& marking : scene.markings)
            if (!marking.isAside) m_things.push_back(markedThings(m_mesh, marking, mostThings));
    }

    const Vector& up() const { return m_up; }
    View view(const Vector& towards) const { return View(towards, m_up, m_middle); }

    /// All directions at the same scale, so that wide sides show more.
    void make(Look& look) const
    {
        View seen = view(look.towards);
        const double half = m_diameter / 2;
        seen.zoom({-half, -half, 0}, {half, half, 0}, {0, 0, side, side});
        constexpr double slack = 2.5;
        constexpr Colour front = white, back = ink;
        Canvas canvas(side, side, 1, Colour());
        Projection(m_mesh, seen).forEachTriangle([&](int, const SeenTriangle& triangle) {
            canvas.fillTriangle(triangle.corners[0], triangle.corners[1], triangle.corners[2],
                                triangle.isFront ? front : back);
        });
        for (int y = 0; y < side; ++y)
            for (int x = 0; x < side; ++x)
                look.surface += canvas.colourAt(x, y) == front ? 1 : canvas.colourAt(x, y) == back ? 0.3 : 0;
        for (const std::vector<MarkedThing>& things : m_things) {
            look.visibleThings.emplace_back();
            for (const MarkedThing& thing : things)
                look.visibleThings.back().push_back(canvas.shows(seen.at(middleOf(thing)), slack));
        }
    }

private:
    const znGeom::CompactMesh& m_mesh;
    Vector m_up;
    znLinear::Point m_middle;
    double m_diameter = 1;
    std::vector<std::vector<MarkedThing>> m_things; ///< per marking
};

/// The mean over the markings of the part that is seen from one look and not from another.
double partSeen(const Look& look, const Look* other)
{
    double sum = 0;
    for (std::size_t kind = 0; kind < look.visibleThings.size(); ++kind) {
        const std::vector<bool>& things = look.visibleThings[kind];
        double seen = 0;
        for (std::size_t i = 0; i < things.size(); ++i)
            if (things[i] && !(other && other->visibleThings[kind][i])) ++seen;
        if (seen > 0) sum += seen / static_cast<double>(things.size());
    }
    return look.visibleThings.empty() ? 0 : sum / static_cast<double>(look.visibleThings.size());
}

const Look& bestOf(const std::vector<Look>& looks, const Look* first)
{
    double most = 1;
    for (const Look& look : looks) most = std::max(most, look.surface);
    const auto value = [&](const Look& look) {
        return look.surface / most + look.preference + 2 * partSeen(look, first);
    };
    return *std::max_element(looks.begin(), looks.end(),
                             [&](const Look& a, const Look& b) { return value(a) < value(b); });
}

} // namespace

std::vector<View> chooseViews(const Scene& scene)
{
    constexpr double worthASecond = 0.08;
    const LookMaker maker(scene, boxOf(*scene.mesh));
    std::vector<Look> looks = lookAround(maker.up());
    znUtil::parallelFor(znUtil::ThreadPool::get(), static_cast<int>(looks.size()), [&](znUtil::Slice slice, int) {
        for (int i = slice.begin; i < slice.end; ++i) maker.make(looks[static_cast<std::size_t>(i)]);
    });
    const Look& first = bestOf(looks, nullptr);
    const Look& second = bestOf(looks, &first);
    std::vector<View> views{maker.view(first.towards)};
    if (partSeen(second, &first) > worthASecond) views.push_back(maker.view(second.towards));
    return views;
}

} // namespace tool

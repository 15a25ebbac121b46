// Draws the leaves of a quadtree over points on a spiral, and those that meet a box: draw_quadtree OUTPUT.svg
#include <znGeom/znGeom.h>

#include <cmath>
#include <cstdio>
#include <vector>

namespace {

constexpr double scale = 240, side = 2.1 * scale;

void drawBox(std::FILE* svg, const znGeom::BoundingBox& box, const char* style)
{
    const znLinear::Point low = box.minPt(), high = box.maxPt();
    std::fprintf(svg, "<rect x='%.1f' y='%.1f' width='%.1f' height='%.1f' %s/>\n", (low.x + 1.05) * scale,
                 (low.y + 1.05) * scale, (high.x - low.x) * scale, (high.y - low.y) * scale, style);
}

} // namespace

int main(int argc, char** argv)
{
    std::vector<float> points;
    znGeom::BoundingBox box;
    for (int i = 0; i < 400; ++i) {
        const double radius = i / 400.0, angle = 14 * std::sqrt(radius);
        for (const double value : {radius * std::cos(angle), radius * std::sin(angle), 0.0})
            points.push_back(static_cast<float>(value));
        box.extend(points.data() + points.size() - 3);
    }
    box.extendToCube();
    const znGeom::Quadtree tree(static_cast<int>(points.size() / 3), points.data(), box, 4);

    znGeom::BoundingBox query;
    query.minX = 0.1f, query.maxX = 0.62f, query.minY = -0.55f, query.maxY = -0.2f, query.minZ = query.maxZ = 0;

    std::FILE* svg = std::fopen(argc > 1 ? argv[1] : "quadtree.svg", "w");
    if (!svg) return 1;
    std::fprintf(svg, "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 %.0f %.0f'>\n", side, side);
    std::fprintf(svg, "<rect width='100%%' height='100%%' fill='white'/>\n");
    int numLeaves = 0, numMeeting = 0;
    for (znGeom::QuadtreeIntersectIt it(tree, box); it.valid(); it.next(), ++numLeaves)
        drawBox(svg, it.get().box, "fill='none' stroke='#b8c4d0'");
    for (znGeom::QuadtreeIntersectIt it(tree, query); it.valid(); it.next(), ++numMeeting)
        drawBox(svg, it.get().box, "fill='#f6d9a8' stroke='#c98a1b'");
    drawBox(svg, query, "fill='none' stroke='#b3261e' stroke-width='2'");
    for (size_t i = 0; i < points.size(); i += 3)
        std::fprintf(svg, "<circle cx='%.1f' cy='%.1f' r='2' fill='#1f4e79'/>\n", (double(points[i]) + 1.05) * scale,
                     (double(points[i + 1]) + 1.05) * scale);
    std::fprintf(svg, "</svg>\n");
    std::fclose(svg);
    std::printf("%d leaves, %d of them meet the box\n", numLeaves, numMeeting);
    return numLeaves == tree.numLeaves() && numMeeting > 0 ? 0 : 1;
}

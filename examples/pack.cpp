// Packs a thousand rectangles into a square: pack [SIZES.csv], which gets their sizes
#include <znGeom/znGeom.h>

#include <cmath>
#include <cstdio>
#include <random>

int main(int argc, char** argv)
{
    std::mt19937 random(1);
    const auto side = [&random] { return 0.2 + 0.8 * random() / 4294967296.0; };
    zn::vector<znLinear::Range2d> items;
    double area = 0;
    for (int i = 0; i < 1000; ++i) {
        const double width = side(), height = side();
        items.append(znLinear::Range2d({0, 0}, {width, height}));
        area += items.back().area();
    }
    if (argc > 1) {
        std::FILE* const file = std::fopen(argv[1], "w");
        if (!file) return 1;
        for (const znLinear::Range2d& item : items) std::fprintf(file, "%.9g,%.9g\n", item.x.max, item.y.max);
        if (std::fclose(file) != 0) return 1;
    }

    // Sizes shrink until all fit, and never grow: they begin with the area of the square.
    for (znLinear::Range2d& item : items)
        item = znLinear::Range2d({0, 0}, {item.x.max / std::sqrt(area), item.y.max / std::sqrt(area)});
    znUtil::Progress progress;
    const znGeom::PackResult result = znGeom::pack(items, 1000, progress);

    double filled = 0;
    for (const znLinear::Range2d& item : items) filled += item.area();
    std::printf("%d tries, %.1f %% of the square is filled\n", result.attempts, 100 * filled);
    return filled > 0.85 ? 0 : 1;
}

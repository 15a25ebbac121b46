// One try at packing rectangles into a square.
#include "bench/pack.h"
#include "bench/suite.h"
#include "znGeom/planar/shapes/pack.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <string>

namespace bench {

std::vector<Size> randomSizes(int count)
{
    std::mt19937 random(1);
    const auto side = [&random] { return 0.2 + 0.8 * static_cast<double>(random()) * 0x1p-32; };
    std::vector<Size> sizes(static_cast<std::size_t>(count));
    for (Size& size : sizes) size = {side(), side()};
    std::sort(sizes.begin(), sizes.end(),
              [](const Size& a, const Size& b) { return std::max(a.width, a.height) > std::max(b.width, b.height); });
    return sizes;
}

void timeTry(benchmark::State& state, int count, const std::function<void(const std::vector<Size>&)>& prepare,
             const std::function<bool()>& attempt)
{
    std::vector<Size> sizes = randomSizes(count);
    const auto scale = [&sizes](double factor) {
        for (Size& size : sizes) size = {size.width * factor, size.height * factor};
    };
    double area = 0;
    for (const Size& size : sizes) area += size.width * size.height;
    scale(1 / std::sqrt(area));
    for (area = 1; prepare(sizes), !attempt(); area *= 0.999 * 0.999) scale(0.999);
    timeWork(
        state,
        [&] {
            prepare(sizes);
            return 0;
        },
        [&](int) { return attempt(); });
    state.counters["density"] = area;
}

} // namespace bench

namespace {

template <int count>
void runTry(benchmark::State& state)
{
    zn::vector<znLinear::Range2d> items;
    bench::timeTry(
        state, count,
        [&items](const std::vector<bench::Size>& sizes) {
            items.clear();
            for (const bench::Size& size : sizes) items.append(znLinear::Range2d({0, 0}, {size.width, size.height}));
        },
        [&items] { return znGeom::pack(items); });
}

[[maybe_unused]] const bool listed = bench::measureAlone("pack_1000", "znGeom", runTry<1000>, 20) &&
                                     bench::measureAlone("pack_10000", "znGeom", runTry<10000>, 3);

} // namespace

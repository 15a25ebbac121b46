// stb's packer of rectangles, on a grid of 4096 squares a side: sizes are rounded up to it.
#include "bench/pack.h"
#include "bench/suite.h"

#define STB_RECT_PACK_IMPLEMENTATION
#define STBRP_STATIC
#include <stb/stb_rect_pack.h>

#include <cmath>
#include <string>

namespace {

template <int count>
void runTry(benchmark::State& state)
{
    constexpr int side = 4096;
    stbrp_context context;
    std::vector<stbrp_node> nodes(side);
    std::vector<stbrp_rect> items(count);
    bench::timeTry(
        state, count,
        [&](const std::vector<bench::Size>& sizes) {
            for (std::size_t i = 0; i < items.size(); ++i) {
                items[i] = {};
                items[i].w = static_cast<stbrp_coord>(std::ceil(side * sizes[i].width));
                items[i].h = static_cast<stbrp_coord>(std::ceil(side * sizes[i].height));
            }
        },
        [&] {
            stbrp_init_target(&context, side, side, nodes.data(), side);
            return stbrp_pack_rects(&context, items.data(), count) != 0;
        });
}

[[maybe_unused]] const bool listed = bench::usesPeer("stb_rect_pack", std::to_string(STB_RECT_PACK_VERSION)) &&
                                     bench::measureAlone("pack_1000", "stb", runTry<1000>, 20) &&
                                     bench::measureAlone("pack_10000", "stb", runTry<10000>, 3);

} // namespace

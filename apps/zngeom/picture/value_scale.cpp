#include "apps/zngeom/picture/value_scale.h"

#include <algorithm>
#include <cmath>

#include "apps/zngeom/frame/failure.h"
#include "apps/zngeom/frame/number_text.h"

namespace tool {

namespace {

/// The two numbers of a range; none where there are not two, or not in order.
std::optional<ValueScale> parseRange(const std::string& word)
{
    const std::size_t comma = std::min(word.find(','), word.size());
    const std::optional<double> low = finiteNumber(std::string_view(word).substr(0, comma));
    const std::optional<double> high = finiteNumber(std::string_view(word).substr(std::min(comma + 1, word.size())));
    if (!low || !high || !(*low < *high)) return std::nullopt;
    return ValueScale{*low, *high};
}

} // namespace

Colour ValueScale::at(double value) const
{
    constexpr Colour stops[] = {{44, 62, 160}, {88, 160, 212}, {240, 236, 205}, {244, 155, 73}, {176, 24, 34}};
    constexpr int last = 4;
    if (!std::isfinite(value)) return ofNothing;
    // In a scale without length what lies on it is in the middle.
    const double part = high > low ? (value - low) / (high - low) : value < low ? 0 : value > high ? 1 : 0.5;
    const double place = std::clamp(part, 0.0, 1.0) * last;
    const int stop = std::min(static_cast<int>(place), last - 1);
    const auto mix = [&](std::uint8_t a, std::uint8_t b) {
        return static_cast<std::uint8_t>(std::lround(a + (place - stop) * (b - a)));
    };
    const Colour &a = stops[stop], &b = stops[stop + 1];
    return {mix(a.red, b.red), mix(a.green, b.green), mix(a.blue, b.blue)};
}

ValueScale scaleOf(const std::vector<float>& values)
{
    std::vector<float> finite;
    std::copy_if(values.begin(), values.end(), std::back_inserter(finite), [](float v) { return std::isfinite(v); });
    if (finite.empty()) return {};
    const auto percentile = [&finite](double part) {
        const auto at = finite.begin() + std::lround(part * static_cast<double>(finite.size() - 1));
        std::nth_element(finite.begin(), at, finite.end());
        return static_cast<double>(*at);
    };
    const double low = percentile(0.02);
    return {low, percentile(0.98)};
}

void addRangeOption(CLI::App& app, std::optional<std::string>& text)
{
    app.add_option("--range", text, "The values that the first and the last colour stand for")->option_text("LO,HI");
}

std::optional<ValueScale> rangeFrom(const std::optional<std::string>& text)
{
    if (!text) return std::nullopt;
    const std::optional<ValueScale> scale = parseRange(*text);
    if (!scale) throw Failure("--range " + *text + ": expected two numbers with a comma between them, the lower first");
    return scale;
}

} // namespace tool

// Any bytes as a table of the tool, of pairs of numbers and of triples.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>

#include "apps/zngeom/files/text_lines.h"
#include "apps/zngeom/frame/failure.h"
#include "apps/zngeom/frame/number_text.h"
#include "tests/fuzz/parse_both_ways.h"

namespace {

std::vector<double> parse(std::string_view text, std::size_t numbersPerRow)
{
    znUtil::Progress progress;
    return tool::parseRows(text, numbersPerRow, "a row", "rows", progress);
}

void requireSound(const std::vector<double>& values, std::size_t numbersPerRow, std::size_t size)
{
    znFuzz::require(!values.empty() && values.size() % numbersPerRow == 0 && values.size() <= (size + 1) / 2);
    znFuzz::require(std::all_of(values.begin(), values.end(), [](double value) { return std::isfinite(value); }));
    std::string again;
    for (std::size_t i = 0; i < values.size(); ++i) {
        tool::appendAllDigits(again, values[i]);
        again += (i + 1) % numbersPerRow == 0 ? "\r\n" : "\t";
    }
    znFuzz::require(parse(again, numbersPerRow) == values);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    for (const std::size_t numbersPerRow : {2, 3}) {
        try {
            requireSound(parse(text, numbersPerRow), numbersPerRow, size);
        } catch (const tool::Failure& failure) {
            const std::string_view message = failure.what();
            znFuzz::require(message == "has no rows" || message.starts_with("line "));
            znFuzz::require(message.find('\n') == std::string_view::npos && message.size() < 200);
        }
    }
    return 0;
}

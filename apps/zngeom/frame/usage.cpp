#include "apps/zngeom/frame/usage.h"

#include <algorithm>
#include <charconv>

#include "apps/zngeom/frame/number_text.h"

namespace tool {

namespace {

/// The number of mistakes that lead from one word to another (Damerau 1964).
std::size_t countMistakes(const std::string& from, const std::string& to)
{
    std::vector<std::vector<std::size_t>> counts(from.size() + 1, std::vector<std::size_t>(to.size() + 1));
    for (std::size_t i = 0; i <= from.size(); ++i) {
        for (std::size_t j = 0; j <= to.size(); ++j) {
            std::size_t& count = counts[i][j];
            if (i == 0 || j == 0) {
                count = i + j;
                continue;
            }
            const std::size_t wrong = from[i - 1] != to[j - 1] ? 1 : 0;
            count = std::min({counts[i - 1][j] + 1, counts[i][j - 1] + 1, counts[i - 1][j - 1] + wrong});
            if (i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1])
                count = std::min(count, counts[i - 2][j - 2] + 1);
        }
    }
    return counts[from.size()][to.size()];
}

} // namespace

CLI::Validator wholeNumberFrom(int least)
{
    const auto check = [least](std::string& word) -> std::string {
        int value = 0;
        const char* end = word.data() + word.size();
        const auto [parsed, error] = std::from_chars(word.data(), end, value);
        if (parsed != end || error == std::errc::invalid_argument) return "must be a whole number";
        const bool tooLarge = error == std::errc::result_out_of_range && !word.starts_with('-');
        if (tooLarge) return "must be at most " + std::to_string(std::numeric_limits<int>::max());
        return error != std::errc() || value < least ? "must be at least " + std::to_string(least) : "";
    };
    return CLI::Validator(check, "");
}

CLI::Validator aboveZero()
{
    return CLI::Validator([](std::string& word) { return positiveNumber(word) ? "" : "must be a number above 0"; }, "");
}

std::string nearestWord(const std::string& word, const std::vector<std::string>& candidates)
{
    std::string nearest;
    std::size_t fewest = 3; // with more than two mistakes it is another word
    for (const std::string& candidate : candidates) {
        const std::size_t mistakes = countMistakes(word.substr(0, 100), candidate);
        if (mistakes >= std::min(fewest, candidate.size())) continue;
        fewest = mistakes;
        nearest = candidate;
    }
    return nearest;
}

} // namespace tool

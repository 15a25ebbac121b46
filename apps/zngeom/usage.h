/// What the command line lets through, and what it says to the rest.
#pragma once

#include <CLI/App.hpp>
#include <string>
#include <vector>

namespace tool {

/// A check for an option's value: a whole number, not below `least`.
CLI::Validator wholeNumberFrom(int least);

/// The candidate that a mistyped word is nearest to; empty where none is near. Neighbouring letters exchanged, one
/// letter too many, too few or wrong count as one mistake each.
std::string nearestWord(const std::string& word, const std::vector<std::string>& candidates);

} // namespace tool

/// What the command line accepts, and what it says about the rest.
#pragma once

#include <CLI/App.hpp>
#include <string>
#include <vector>

namespace tool {

/// A check for an option's value: a whole number, not below `least`.
CLI::Validator wholeNumberFrom(int least);
/// The same for a finite number above 0.
CLI::Validator aboveZero();

/// The candidate nearest to a mistyped word; empty where none is near. Two neighbouring letters swapped, and one letter
/// too many, too few or wrong, count as one mistake each.
std::string nearestWord(const std::string& word, const std::vector<std::string>& candidates);

} // namespace tool

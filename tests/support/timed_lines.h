/// Log lines that end with a time, which no run repeats.
#pragma once

#include <regex>
#include <string>
#include <vector>

#include "tests/support/recorder.h"

namespace znTest {

using Lines = std::vector<std::string>;

/// What was printed, with # for every time in seconds, which has six decimals.
inline Lines withoutTimes(const LogRecorder& log)
{
    Lines lines;
    for (const std::string& line : log.lines())
        lines.push_back(std::regex_replace(line, std::regex("\\d+\\.\\d{6}"), "#"));
    return lines;
}

} // namespace znTest

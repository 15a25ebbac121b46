/// Random numbers for tests, the same sequence for a seed on every machine.
#pragma once

#include <cstdint>

#include "znGeom/foundation/linear.h"

namespace znTest {

/// SplitMix64 (Steele, Lea, Flood 2014).
class Random
{
public:
    explicit Random(std::uint64_t seed) : m_state(seed) {}

    std::uint64_t next()
    {
        std::uint64_t z = m_state += 0x9E3779B97F4A7C15u;
        z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9u;
        z = (z ^ z >> 27) * 0x94D049BB133111EBu;
        return z ^ z >> 31;
    }

    /// 0 to limit - 1.
    int below(int limit) { return static_cast<int>(next() % static_cast<std::uint64_t>(limit)); }
    bool oneIn(int n) { return below(n) == 0; }
    /// In [low, high).
    double real(double low = 0.0, double high = 1.0)
    {
        return low + (high - low) * (static_cast<double>(next() >> 11) * 0x1p-53);
    }
    znLinear::Vector vector(double limit = 1.0)
    {
        const double dx = real(-limit, limit), dy = real(-limit, limit);
        return {dx, dy, real(-limit, limit)};
    }
    znLinear::Point point(double limit = 1.0) { return vector(limit).asPoint(); }
    znLinear::Normal direction() { return znLinear::Normal(vector()); }

private:
    std::uint64_t m_state;
};

} // namespace znTest

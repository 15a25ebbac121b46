/// What the memory alone costs: arrays read once, and others written once.
#pragma once

#include "znGeom/foundation/threads.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

namespace bench {

/// Reads every whole word once; the result keeps the compiler from leaving it out.
template <class Value>
std::uint64_t readOnce(const Value* values, std::size_t count)
{
    const auto* bytes = reinterpret_cast<const unsigned char*>(values);
    const std::size_t words = count * sizeof(Value) / sizeof(std::uint64_t);
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < words; ++i) {
        std::uint64_t word;
        std::memcpy(&word, bytes + i * sizeof word, sizeof word);
        sum ^= word;
    }
    return sum;
}

template <class Value>
std::uint64_t readOnce(const std::vector<Value>& values)
{
    return readOnce(values.data(), values.size());
}

/// The same on all threads.
template <class Value>
std::uint64_t readOnAllThreads(const std::vector<Value>& values)
{
    znUtil::ThreadPool& pool = znUtil::ThreadPool::get();
    std::vector<std::uint64_t> sums(static_cast<std::size_t>(pool.getNumThreads()));
    znUtil::parallelFor(pool, static_cast<int>(values.size()), [&](znUtil::Slice slice, int threadIndex) {
        sums[static_cast<std::size_t>(threadIndex)] =
            readOnce(values.data() + slice.begin, static_cast<std::size_t>(slice.size()));
    });
    std::uint64_t all = 0;
    for (const std::uint64_t sum : sums) all ^= sum;
    return all;
}

/// As many values, written once into memory of their own.
template <class Value>
std::unique_ptr<Value[]> writtenOnce(std::size_t count, std::uint64_t value)
{
    auto values = std::make_unique_for_overwrite<Value[]>(count);
    std::fill_n(values.get(), count, static_cast<Value>(value));
    return values;
}

/// Reads and writes every value in its place.
template <class Value>
void rewriteOnce(std::vector<Value>& values)
{
    for (Value& value : values) value = -value;
}

} // namespace bench

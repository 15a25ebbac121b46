/// `znUtil::boundedSort`: the plain sort, which stays in its range whatever the comparator answers.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <iterator>
#include <utility>

#include "znGeom/foundation/machine/language.h"

namespace znUtil {

namespace internal {

constexpr std::ptrdiff_t insertionLength = 24;

/// Every step back asks whether the front was reached, where the usual inner loop trusts the comparator to stop it.
template <typename Iterator, typename Less>
void insertionSort(Iterator begin, Iterator end, Less& less)
{
    if (begin == end) return;
    for (Iterator next = begin + 1; next != end; ++next) {
        if (!less(*next, *(next - 1))) continue;
        auto value = std::move(*next);
        Iterator hole = next;
        do {
            *hole = std::move(*(hole - 1));
            --hole;
        } while (hole != begin && less(value, *(hole - 1)));
        *hole = std::move(value);
    }
}

/// Puts the median of the first, middle and last element at the front.
template <typename Iterator, typename Less>
void medianToFront(Iterator begin, Iterator end, Less& less)
{
    const Iterator middle = begin + (end - begin) / 2, last = end - 1;
    if (less(*middle, *begin)) std::iter_swap(begin, middle);
    if (less(*last, *middle)) {
        std::iter_swap(middle, last);
        if (less(*middle, *begin)) std::iter_swap(begin, middle);
    }
    std::iter_swap(begin, middle);
}

/// Splits [begin, end), of two elements or more, around its front; returns where the front came to stand. Both cursors
/// are held by the range and not by the comparator.
template <typename Iterator, typename Less>
Iterator partition(Iterator begin, Iterator end, Less& less)
{
    Iterator low = begin + 1, high = end - 1;
    for (;;) {
        while (low <= high && less(*low, *begin)) ++low;
        while (low <= high && less(*begin, *high)) --high;
        if (low >= high) break;
        std::iter_swap(low++, high--);
    }
    std::iter_swap(begin, high);
    return high;
}

template <typename Iterator, typename Less>
void sortRange(Iterator begin, Iterator end, int depthLeft, Less& less)
{
    while (end - begin > insertionLength) {
        if (depthLeft-- == 0) {
            std::make_heap(begin, end, less);
            std::sort_heap(begin, end, less);
            return;
        }
        medianToFront(begin, end, less);
        const Iterator pivot = internal::partition(begin, end, less);
        // The shorter side on the stack, the longer one in this loop.
        if (pivot - begin < end - pivot) {
            sortRange(begin, pivot, depthLeft, less);
            begin = pivot + 1;
        } else {
            sortRange(pivot + 1, end, depthLeft, less);
            end = pivot;
        }
    }
    insertionSort(begin, end, less);
}

} // namespace internal

/// Sorts [begin, end) in place by `less`; n log n comparisons at the worst, equal elements in no particular order.
///
/// `less` should be a strict weak order. Where it is none (a comparison that meets not-a-numbers), the result is some
/// permutation of the elements, the sort still ends, and no element outside the range is touched; `std::sort` promises
/// neither. An introspective sort after Musser, "Introspective Sorting and Selection Algorithms" (1997).
template <typename Iterator, typename Less>
void boundedSort(Iterator begin, Iterator end, Less less)
{
    const auto count = static_cast<std::size_t>(end - begin);
    internal::sortRange(begin, end, 2 * static_cast<int>(std::bit_width(count)), less);
}

} // namespace znUtil

/// `znUtil::Ordering`: the permutation that sorts an array, which itself stays as it is.
#pragma once

#include <numeric>

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/threads/parallel_sort.h"

namespace znUtil {

class Ordering
{
public:
    /// Compares elements of an array by `<`, given their indices.
    template <typename T>
    class IndexedLessThan
    {
    public:
        explicit IndexedLessThan(const T* elements) : m_elements(elements) {}
        bool operator()(int a, int b) const { return m_elements[a] < m_elements[b]; }

    private:
        const T* m_elements;
    };

    /// Compares elements of an array by a given predicate, given their indices.
    template <typename T, typename Predicate>
    class IndexedBinaryPredicate
    {
    public:
        IndexedBinaryPredicate(const T* elements, Predicate predicate) : m_elements(elements), m_predicate(predicate) {}
        bool operator()(int a, int b) const { return m_predicate(m_elements[a], m_elements[b]); }

    private:
        const T* m_elements;
        Predicate m_predicate;
    };

    Ordering() = default;

    int size() const { return m_order.size(); }
    int* data() { return m_order.data(); }
    const int* data() const { return m_order.data(); }
    int operator[](int rank) const { return m_order[rank]; }

    /// Becomes the order of `count` elements under `<`, with the parallel sort. Equal elements come in no particular
    /// order.
    template <typename T>
    void sort(const T* elements, int count, ThreadPool& pool = ThreadPool::get())
    {
        sortIndices(count, IndexedLessThan<T>(elements), pool);
    }

    /// The same under a predicate `bool (const T&, const T&)`, a strict weak order.
    template <typename T, typename Predicate>
    void sort(const T* elements, int count, Predicate predicate,
              ThreadPool& pool = ThreadPool::get()) requires std::predicate<Predicate, const T&, const T&>
    {
        sortIndices(count, IndexedBinaryPredicate<T, Predicate>(elements, predicate), pool);
    }

private:
    /// The indices 0, 1, ..., size - 1.
    void resize(size_t size)
    {
        m_order.setSize(static_cast<int>(size));
        std::iota(m_order.begin(), m_order.end(), 0);
    }

    template <typename Less>
    void sortIndices(int count, const Less& less, ThreadPool& pool)
    {
        resize(static_cast<size_t>(count));
        parallelSort(m_order.begin(), m_order.end(), less, pool);
    }

    zn::vector<int> m_order;
};

} // namespace znUtil

#include "tests/support/allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> allocated{0}, freed{0};

} // namespace

namespace znTest {

long numAllocations() { return allocated; }
long numLiveAllocations() { return allocated - freed; }

} // namespace znTest

void* operator new(std::size_t size)
{
    ++allocated;
    if (void* block = std::malloc(size > 0 ? size : 1)) return block;
    throw std::bad_alloc();
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    ++allocated;
    return std::malloc(size > 0 ? size : 1);
}

void operator delete(void* block) noexcept
{
    if (block) ++freed;
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept { operator delete(block); }

/// Counts what the tests take from the heap.
#pragma once

namespace znTest {

/// How many blocks `operator new` has handed out so far, in all threads.
long numAllocations();
/// How many of them have not been freed yet.
long numLiveAllocations();

} // namespace znTest

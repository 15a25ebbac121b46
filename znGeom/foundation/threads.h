/// Parallel loops, sorting, progress and cancelling.
#pragma once

#include "znGeom/foundation/threads/bounded_sort.h"
#include "znGeom/foundation/threads/counting_sort.h"
#include "znGeom/foundation/threads/ordering.h"
#include "znGeom/foundation/threads/parallel_for.h"
#include "znGeom/foundation/threads/parallel_reduce.h"
#include "znGeom/foundation/threads/parallel_sort.h"
#include "znGeom/foundation/threads/progress.h"
#include "znGeom/foundation/threads/radix_sort.h"
#include "znGeom/foundation/threads/slice.h"
#include "znGeom/foundation/threads/thread_pool.h"
#include "znGeom/foundation/threads/threaded_alg.h"

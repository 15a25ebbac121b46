/// Parallel loops, the parallel sort, progress and cancelling, timing and the two output channels.
#pragma once

#include "znGeom/foundation/output/app_output.h"
#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"
#include "znGeom/foundation/threads/bounded_sort.h"
#include "znGeom/foundation/threads/ordering.h"
#include "znGeom/foundation/threads/parallel_for.h"
#include "znGeom/foundation/threads/parallel_sort.h"
#include "znGeom/foundation/threads/progress.h"
#include "znGeom/foundation/threads/slice.h"
#include "znGeom/foundation/threads/thread_pool.h"
#include "znGeom/foundation/threads/threaded_alg.h"

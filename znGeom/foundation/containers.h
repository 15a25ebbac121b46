/// Containers with `int` sizes, sharing by reference count, and the base of hidden implementations.
///
/// All containers own their elements and copy deeply. None is synchronised; a container that nobody changes may be
/// read by any number of threads. The only failures are those of the standard containers below (length, memory).
#pragma once

#include "znGeom/foundation/containers/block_allocator.h"
#include "znGeom/foundation/containers/checked_size.h"
#include "znGeom/foundation/containers/disjoint_sets.h"
#include "znGeom/foundation/containers/hash_table.h"
#include "znGeom/foundation/containers/impl_base.h"
#include "znGeom/foundation/containers/list.h"
#include "znGeom/foundation/containers/reference.h"
#include "znGeom/foundation/containers/stamp_table.h"
#include "znGeom/foundation/containers/tree.h"
#include "znGeom/foundation/containers/vector.h"

/// Every public header of the library.
#pragma once

#include "znGeom/analysis/adjacency.h"
#include "znGeom/editing/triangles.h"
#include "znGeom/editing/weld.h"
#include "znGeom/files/mesh_files.h"
#include "znGeom/foundation/containers.h"
#include "znGeom/foundation/mesh_model.h"
#include "znGeom/foundation/signals.h"
#include "znGeom/foundation/strings.h"
#include "znGeom/foundation/threads.h"
#include "znGeom/foundation/utilities.h"
#include "znGeom/foundation/value_types.h"

/// The ground floor: value types, containers, strings, threads, signals and the mesh model.
#pragma once

#include "znGeom/foundation/containers.h"
#include "znGeom/foundation/linear.h"
#include "znGeom/foundation/machine.h"
#include "znGeom/foundation/machine/export.h"
#include "znGeom/foundation/mesh.h"
#include "znGeom/foundation/output.h"
#include "znGeom/foundation/signals.h"
#include "znGeom/foundation/text.h"
#include "znGeom/foundation/threads.h"
#include "znGeom/foundation/util.h"

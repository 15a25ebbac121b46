/// Every public header of the library.
#pragma once

#include "znGeom/analysis.h"
#include "znGeom/cache.h"
#include "znGeom/curves.h"
#include "znGeom/editing.h"
#include "znGeom/files.h"
#include "znGeom/foundation.h"
#include "znGeom/parameterize.h"
#include "znGeom/planar.h"
#include "znGeom/repair.h"
#include "znGeom/scopes.h"
#include "znGeom/shells.h"
#include "znGeom/simplify.h"
#include "znGeom/solvers.h"
#include "znGeom/spatial.h"
#include "znGeom/topology.h"
#include "znGeom/version.h"

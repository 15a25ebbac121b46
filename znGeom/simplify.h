/// Meshes with fewer vertices.
#pragma once

#include "znGeom/simplify/edge_collapse.h"
#include "znGeom/simplify/reduce.h"

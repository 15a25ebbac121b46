/// Meshes with fewer vertices.
#pragma once

#include "znGeom/simplify/reduce.h"

/// Mending meshes: edges and vertices that are not manifold, winding that is not consistent.
#pragma once

#include "znGeom/repair/manifold.h"
#include "znGeom/repair/orient.h"

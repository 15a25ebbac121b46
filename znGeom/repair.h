/// Mending meshes: edges and vertices that are not manifold, winding that is not consistent.
#pragma once

#include "znGeom/repair/characteristics.h"
#include "znGeom/repair/hole_fill.h"
#include "znGeom/repair/manifold.h"
#include "znGeom/repair/mesh_repair.h"
#include "znGeom/repair/orient.h"

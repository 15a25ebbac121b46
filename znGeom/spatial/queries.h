/// Questions about a surface that the trees answer: nearest points, and where triangles cross.
#pragma once

#include "znGeom/spatial/queries/closest_point.h"
#include "znGeom/spatial/queries/mesh_intersect.h"
#include "znGeom/spatial/queries/octree_closest.h"

/// Questions about a surface that the trees answer: nearest points and distances, what rays hit, what lies inside, and
/// where triangles cross.
#pragma once

#include "znGeom/spatial/queries/closest_point.h"
#include "znGeom/spatial/queries/deviation.h"
#include "znGeom/spatial/queries/mesh_intersect.h"
#include "znGeom/spatial/queries/octree_closest.h"
#include "znGeom/spatial/queries/point_inside.h"
#include "znGeom/spatial/queries/ray_pick.h"
#include "znGeom/spatial/queries/ray_tracer.h"

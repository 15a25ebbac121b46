/// Spatial value types: boxes, frusta, spheres, rays and the trees over points, with their predicates.
///
/// All geometry here is in `float`; distances come back in `double`. A query point in `double` is narrowed before it
/// is compared with a box.
#pragma once

#include "znGeom/spatial/bounding_box.h"
#include "znGeom/spatial/box_predicates.h"
#include "znGeom/spatial/frustum.h"
#include "znGeom/spatial/kd_tree.h"
#include "znGeom/spatial/octree.h"
#include "znGeom/spatial/quadtree.h"
#include "znGeom/spatial/ray.h"
#include "znGeom/spatial/scene_bounding_box.h"
#include "znGeom/spatial/sphere.h"

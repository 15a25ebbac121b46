/// Boxes, spheres, rays and the trees over points, with their predicates; octrees at work: filling them with triangles
/// and lines, walking their leaves, and closest points.
///
/// All geometry here is in `float`; distances come back in `double`. A query point in `double` is narrowed before it
/// is compared with a box.
#pragma once

#include "znGeom/spatial/box_predicates.h"
#include "znGeom/spatial/closest_point.h"
#include "znGeom/spatial/frustum.h"
#include "znGeom/spatial/kd_tree.h"
#include "znGeom/spatial/octree.h"
#include "znGeom/spatial/octree_closest.h"
#include "znGeom/spatial/octree_partition.h"
#include "znGeom/spatial/octree_traversal.h"
#include "znGeom/spatial/point_tree.h"
#include "znGeom/spatial/quadtree.h"
#include "znGeom/spatial/quadtree_traversal.h"
#include "znGeom/spatial/ray.h"
#include "znGeom/spatial/scene_bounding_box.h"
#include "znGeom/spatial/sphere.h"
#include "znGeom/spatial/triangle_tree.h"

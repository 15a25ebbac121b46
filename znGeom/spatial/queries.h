/// Octrees at work: filling them with triangles and lines, walking their leaves, and closest points.
#pragma once

#include "znGeom/spatial/closest_on_line.h"
#include "znGeom/spatial/closest_point.h"
#include "znGeom/spatial/octree_closest.h"
#include "znGeom/spatial/octree_partition.h"
#include "znGeom/spatial/octree_traversal.h"
#include "znGeom/spatial/quadtree_traversal.h"

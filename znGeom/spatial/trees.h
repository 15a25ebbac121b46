/// Trees over points and triangles: made, filled and walked.
#pragma once

#include "znGeom/spatial/trees/kd_tree.h"
#include "znGeom/spatial/trees/octree.h"
#include "znGeom/spatial/trees/octree_partition.h"
#include "znGeom/spatial/trees/octree_traversal.h"
#include "znGeom/spatial/trees/point_tree.h"
#include "znGeom/spatial/trees/quadtree.h"
#include "znGeom/spatial/trees/quadtree_traversal.h"
#include "znGeom/spatial/trees/triangle_tree.h"

/// Frusta, spheres, rays and the box of a scene, with the tests between shapes.
#pragma once

#include "znGeom/spatial/shapes/box_predicates.h"
#include "znGeom/spatial/shapes/frustum.h"
#include "znGeom/spatial/shapes/ray.h"
#include "znGeom/spatial/shapes/scene_bounding_box.h"
#include "znGeom/spatial/shapes/sphere.h"
#include "znGeom/spatial/shapes/triangle_intersect.h"

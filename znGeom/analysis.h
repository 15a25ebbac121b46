/// What a mesh is made of: adjacency, edges, borders, components, counts, and its measures: normals, boxes, areas,
/// lengths, angles, curvature, volume.
#pragma once

#include "znGeom/analysis/adjacency.h"
#include "znGeom/analysis/areas.h"
#include "znGeom/analysis/border_loops.h"
#include "znGeom/analysis/boundaries.h"
#include "znGeom/analysis/bounds.h"
#include "znGeom/analysis/census.h"
#include "znGeom/analysis/components.h"
#include "znGeom/analysis/curvature.h"
#include "znGeom/analysis/edge_sides.h"
#include "znGeom/analysis/edges.h"
#include "znGeom/analysis/fold_angle.h"
#include "znGeom/analysis/mesh_sequence.h"
#include "znGeom/analysis/normals.h"
#include "znGeom/analysis/path_length.h"
#include "znGeom/analysis/triangle_components.h"
#include "znGeom/analysis/volume.h"

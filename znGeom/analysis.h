/// What a mesh is made of: adjacency, borders, components, and its small measures: normals, boxes, areas, edges.
#pragma once

#include "znGeom/analysis/adjacency.h"
#include "znGeom/analysis/areas.h"
#include "znGeom/analysis/boundaries.h"
#include "znGeom/analysis/bounds.h"
#include "znGeom/analysis/components.h"
#include "znGeom/analysis/edges.h"
#include "znGeom/analysis/mesh_sequence.h"
#include "znGeom/analysis/normals.h"

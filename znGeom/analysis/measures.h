/// The small measures of a mesh: normals, bounding boxes, areas, edge lengths and dihedral angles.
#pragma once

#include "znGeom/analysis/areas.h"
#include "znGeom/analysis/bounds.h"
#include "znGeom/analysis/edges.h"
#include "znGeom/analysis/normals.h"

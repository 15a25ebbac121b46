/// Curves on meshes.
#pragma once

#include "znGeom/curves/closest_on_line.h"
#include "znGeom/curves/curve_topology.h"
#include "znGeom/curves/lay_polyline.h"
#include "znGeom/curves/mesh_cut.h"
#include "znGeom/curves/plane_section.h"
#include "znGeom/curves/plane_sections.h"
#include "znGeom/curves/surface_curves.h"

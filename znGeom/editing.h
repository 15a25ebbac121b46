/// Welding, keeping the triangle list, and selections: growing, deleting, copying out and dividing.
#pragma once

#include "znGeom/editing/delete_non_finite.h"
#include "znGeom/editing/delete_selected.h"
#include "znGeom/editing/duplicate_triangles.h"
#include "znGeom/editing/duplicates.h"
#include "znGeom/editing/extract.h"
#include "znGeom/editing/extract_parts.h"
#include "znGeom/editing/mesh_swap.h"
#include "znGeom/editing/partition.h"
#include "znGeom/editing/reverse_winding.h"
#include "znGeom/editing/select.h"
#include "znGeom/editing/triangles.h"
#include "znGeom/editing/weld.h"

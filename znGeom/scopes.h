/// Regions of a flat mesh taken out as half-edge meshes, and merged back after an edit.
#pragma once

#include "znGeom/scopes/array_map.h"
#include "znGeom/scopes/convert_polygons.h"
#include "znGeom/scopes/convert_rep.h"
#include "znGeom/scopes/modify_rep.h"

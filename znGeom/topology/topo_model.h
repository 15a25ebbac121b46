/// The half-edge mesh, its elements, the walks over them, and positions on it.
#pragma once

#include "znGeom/topology/topo_handles.h"
#include "znGeom/topology/topo_iterators.h"
#include "znGeom/topology/topo_mesh.h"
#include "znGeom/topology/topo_point.h"

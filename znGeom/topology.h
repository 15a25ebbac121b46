/// The half-edge mesh, its elements, the walks over them, positions on it, and the pairing of its halves.
#pragma once

#include "znGeom/topology/edge_swapper.h"
#include "znGeom/topology/extrude.h"
#include "znGeom/topology/orient_faces.h"
#include "znGeom/topology/subdivide.h"
#include "znGeom/topology/topo_arena.h"
#include "znGeom/topology/topo_blind_data.h"
#include "znGeom/topology/topo_handles.h"
#include "znGeom/topology/topo_iterators.h"
#include "znGeom/topology/topo_mesh.h"
#include "znGeom/topology/topo_metadata.h"
#include "znGeom/topology/topo_point.h"
#include "znGeom/topology/topo_walks.h"
#include "znGeom/topology/twin.h"

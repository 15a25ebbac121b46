/// The mesh model: `CompactMesh` and what belongs to it.
///
/// The protocol for changing a mesh:
/// 1. take the raw pointers and edit the arrays, or resize them;
/// 2. make a `MeshModification` of the right type, with a `MeshRemap` if elements were renumbered, and set its flags;
/// 3. call `mesh.modified(modification)` once, after all arrays are final.
///
/// Derived objects (adjacency, boundaries, spatial indexes) lie beside the mesh and go stale at any change.
#pragma once

#include "znGeom/foundation/mesh/array.h"
#include "znGeom/foundation/mesh/array_of_sets.h"
#include "znGeom/foundation/mesh/bit_ranks.h"
#include "znGeom/foundation/mesh/bit_runs.h"
#include "znGeom/foundation/mesh/bit_vector.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/entity.h"
#include "znGeom/foundation/mesh/mesh_adjacency.h"
#include "znGeom/foundation/mesh/mesh_attributes.h"
#include "znGeom/foundation/mesh/mesh_coord.h"
#include "znGeom/foundation/mesh/mesh_modification.h"
#include "znGeom/foundation/mesh/mesh_records.h"
#include "znGeom/foundation/mesh/mesh_transform.h"
#include "znGeom/foundation/mesh/point_mesh.h"
#include "znGeom/foundation/mesh/remap.h"
#include "znGeom/foundation/mesh/triangle_box.h"

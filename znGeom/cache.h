/// The cache of objects that are derived from meshes.
#pragma once

#include "znGeom/cache/mesh_cache.h"

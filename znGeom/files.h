/// Mesh files.
#pragma once

#include "znGeom/files/mesh_files.h"

/// Mesh files.
#pragma once

#include "znGeom/files/mesh_files.h"
#include "znGeom/files/mesh_format.h"
#include "znGeom/files/mesh_load.h"
#include "znGeom/files/mesh_save.h"
#include "znGeom/files/pending_file.h"

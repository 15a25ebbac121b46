/// Selecting parts of a mesh, and what is done with a selection: deleting, copying out, dividing.
#pragma once

#include "znGeom/editing/delete_selected.h"
#include "znGeom/editing/extract.h"
#include "znGeom/editing/partition.h"
#include "znGeom/editing/select.h"

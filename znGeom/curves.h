/// Curves on meshes.
#pragma once

#include "znGeom/curves/closest_on_line.h"

/// Collars: what stands on the borders of surfaces.
#pragma once

#include "znGeom/shells/collar.h"
#include "znGeom/shells/collar_ribbon.h"
#include "znGeom/shells/offset.h"

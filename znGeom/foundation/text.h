/// Strings and file names.
#pragma once

#include "znGeom/foundation/text/c_string.h"
#include "znGeom/foundation/text/filename.h"
#include "znGeom/foundation/text/i_string.h"

#include "znGeom/foundation/machine/version.h"

namespace zngeom {

const char* version() { return ZNGEOM_VERSION; }

} // namespace zngeom

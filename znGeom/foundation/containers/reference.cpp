#include "znGeom/foundation/containers/reference.h"

namespace zn {

ReferenceCount::~ReferenceCount() = default;

} // namespace zn

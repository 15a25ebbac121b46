#include "znGeom/foundation/mesh/array.h"

namespace znGeom {

ArrayAllocator::~ArrayAllocator() = default;

} // namespace znGeom

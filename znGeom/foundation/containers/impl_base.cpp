#include "znGeom/foundation/containers/impl_base.h"

namespace zn {

ImplBase::~ImplBase() = default;

} // namespace zn

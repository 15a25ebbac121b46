/// `zn::ImplBase`: the root of hidden implementations.
#pragma once

#include "znGeom/foundation/machine/export.h"

namespace zn {

/// A public class that hides its state holds a pointer to a subclass of this, named after it with `Impl` at the end,
/// and a flag that tells whether it owns it. A copy of the public class shares the implementation, does not own it and
/// must not outlive its source.
class ZNGEOM_API ImplBase
{
public:
    virtual ~ImplBase();
};

} // namespace zn

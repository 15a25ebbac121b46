/// From where a mesh is looked at.
#pragma once

#include <vector>

#include "apps/zngeom/picture/marking.h"
#include "apps/zngeom/picture/view.h"

namespace tool {

/// One view, or two where the second shows markings that the first doesn't: the first from where much of the front of
/// the surface and of each kind of marking is seen, slightly from above where that makes no difference. What is up is
/// y, or z for a mesh that stands on the plane z = 0.
std::vector<View> chooseViews(const Scene& scene);

} // namespace tool

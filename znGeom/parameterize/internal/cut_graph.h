/// Which edges of a surface to open.
#pragma once

#include "znGeom/parameterize/internal/capped_surface.h"

namespace znGeom::internal {

/// Finds the edges that make disks of all components of a surface when they are opened; none along borders.
///
/// \param isOpen  replaced: one per edge
/// \return false after a cancel
bool findCut(const CappedSurface& surface, znUtil::Progress& progress, zn::vector<bool>& isOpen);

} // namespace znGeom::internal

/// A look at small markings from nearby.
#pragma once

#include <optional>

#include "apps/zngeom/picture/marking.h"
#include "apps/zngeom/picture/view.h"

namespace tool {

/// What a close-up shows: a rectangle of the whole picture.
struct CloseUp
{
    Spot corner, opposite;
};

/// Where many kinds of markings, and many of each kind, are close together and too small to be told apart; none where
/// all are large.
/// \param canvas  with the whole picture, which tells what is visible
/// \param view    of the whole picture
/// \param shape   the frame that the close-up will fill
std::optional<CloseUp> findCloseUp(const Scene& scene, const Canvas& canvas, const View& view, const Frame& shape);

} // namespace tool

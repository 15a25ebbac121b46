/// `znGeom::SceneBoundingBox`: the box of a scene under additions and removals.
#pragma once

#include "znGeom/foundation/linear/bounding_box.h"

namespace znGeom {

/// Follows the box of a scene without reading the items again. A removal that touches the scene's extent makes the box
/// unknown, upon which the caller must `reset` it and add what is left; until then the scene box stays as it was and
/// never shrinks by itself.
class ZNGEOM_API SceneBoundingBox
{
public:
    BoundingBox workingBox; ///< collapses on an axis where an extreme item was removed
    BoundingBox sceneBox;

    void addItemBox(const BoundingBox& item);
    void removeItemBox(const BoundingBox& item);
    /// Whether `getSceneBox` is the box of the current items.
    bool known() const { return equivalent(workingBox, sceneBox, znLinear::epsilonTolFlt); }
    void reset() { *this = SceneBoundingBox(); }
    const BoundingBox& getSceneBox() const { return sceneBox; }
};

} // namespace znGeom

/// `znGeom::MeshRepair`: a broken mesh made whole, step by step.
#pragma once

#include "znGeom/foundation/threads/progress.h"
#include "znGeom/repair/characteristics.h"

namespace znGeom {

/// Repairs the first thing that is wrong with a mesh, looks again, and so on. In this order:
///
/// 1. triangles that repeat another one or a vertex, or have two corners in one place, are removed;
/// 2. edges of three triangles or more keep two of them; then vertices of several fans are split;
/// 3. triangles are turned over until neighbours are wound alike. Where that can't be, the one-sided strip is cut out
/// of
///    the mesh, unless it is the whole of it;
/// 4. if asked for, triangles that cross others are removed;
/// 5. if asked for, triangles that are folded onto a neighbour are removed.
///
/// What is removed leaves holes. Vertices that nothing uses any more go with their triangles. Every step leaves the
/// mesh whole, tells its listeners, and forgets all answers of the characteristics. The mesh is borrowed. Whatever else
/// changes it must call `getCharacteristics()->reset`.
class ZNGEOM_API MeshRepair
{
public:
    explicit MeshRepair(CompactMesh& mesh);

    /// Whether to look for folds; not at first. Turning it off forgets what is known.
    void checkGoodAngles(bool isChecked);
    /// Folds to this angle or less are repaired.
    /// \param degrees  180 where the surface is flat. The default is 1.57 degrees, the number pi / 2: enough to catch
    ///                 triangles that lie on one another
    void setMinGoodAngle(double degrees) { m_minGoodAngle = degrees; }
    /// Whether to look for crossings; not at first. Turning it off forgets what is known.
    void checkSelfIntersection(bool isChecked);

    /// Those of the same mesh.
    void setCharacteristics(zn::Reference<MeshCharacteristics> characteristics);
    const zn::Reference<MeshCharacteristics>& getCharacteristics() const { return m_characteristics; }

    /// Whether anything is wrong among what is looked for.
    bool needsRepair();
    /// Whether a step would change something: false too where all that is wrong is a one-sided mesh.
    bool canRepair();
    /// One step. Returns whether something was repaired.
    bool repairOnce();
    /// All steps.
    /// \param clean  receives whether nothing is wrong any more; may be null
    /// \return whether anything was repaired
    ///
    /// Ends: each step removes triangles, splits vertices that stay split, or turns triangles once.
    bool repairAll(bool* clean);
    /// The same with a report of what is being done.
    /// \param progress  its caption names the step. A cancel is seen before each step and while crossings are looked
    ///                  for; the steps until then stay done, and `clean` is false
    bool repairAll(bool* clean, znUtil::Progress& progress);

    /// Whether orienting has been tried and was not possible.
    bool hasMobiusStrip();
    /// Whether the strip can be cut out: it is known and not the whole mesh.
    bool isMobiusStripRemovable() const;
    /// Selects the strip on the mesh, its triangles and their vertices, instead of what was selected: for a host that
    /// shows it before it goes.
    void selectMobiusStrip();

private:
    enum class Fault { None, Triangles, Manifold, Orientation, Crossings, Angles };
    Fault firstFault();
    bool canRepair(Fault fault) const;
    bool repair(Fault fault);
    void orient(const MeshAdjTris& adjTris);
    bool removeStrip();
    void removeCrossings(const MeshAdjTris& adjTris);
    void removeFolds(const MeshAdjTris& adjTris);

    CompactMesh* m_mesh;
    zn::Reference<MeshCharacteristics> m_characteristics;
    bool m_checksAngles = false;
    double m_minGoodAngle = 1.5707963267948966;
    bool m_checksCrossings = false;
    bool m_orientationTried = false;
    BitVector m_strip;
};

} // namespace znGeom

#include "znGeom/repair/mesh_repair.h"

#include "znGeom/editing/delete_selected.h"
#include "znGeom/editing/select.h"
#include "znGeom/repair/orient.h"

namespace znGeom {

MeshRepair::MeshRepair(CompactMesh& mesh) : m_mesh(&mesh), m_characteristics(new MeshCharacteristics(mesh)) {}

void MeshRepair::checkGoodAngles(bool isChecked)
{
    m_checksAngles = isChecked;
    if (!isChecked) m_characteristics->reset(MeshCharacteristics::GoodAngles);
}

void MeshRepair::checkSelfIntersection(bool isChecked)
{
    m_checksCrossings = isChecked;
    if (!isChecked) m_characteristics->reset(MeshCharacteristics::NonIntersecting);
}

void MeshRepair::setCharacteristics(zn::Reference<MeshCharacteristics> characteristics)
{
    m_characteristics = std::move(characteristics);
}

MeshRepair::Fault MeshRepair::firstFault()
{
    MeshCharacteristics& tests = *m_characteristics;
    if (!tests.checkGoodTriangles()) return Fault::Triangles;
    if (!tests.checkManifold()) return Fault::Manifold;
    if (!tests.checkOriented()) return Fault::Orientation;
    if (m_checksCrossings && !tests.checkNonIntersecting()) return Fault::Crossings;
    if (m_checksAngles && !tests.checkGoodAngles(m_minGoodAngle)) return Fault::Angles;
    return Fault::None;
}

bool MeshRepair::needsRepair() { return firstFault() != Fault::None; }

bool MeshRepair::canRepair(Fault fault) const
{
    if (fault == Fault::Orientation && m_orientationTried) return isMobiusStripRemovable();
    return fault != Fault::None;
}

bool MeshRepair::canRepair() { return canRepair(firstFault()); }

bool MeshRepair::repairOnce()
{
    const Fault fault = firstFault();
    return canRepair(fault) && repair(fault);
}

/// One step against a fault; returns whether there was something to do.
bool MeshRepair::repair(Fault fault)
{
    MeshCharacteristics& tests = *m_characteristics;
    const zn::Reference<MeshAdjTris> adjTris = tests.getCache().getAdjTris(*m_mesh);
    switch (fault) {
    case Fault::None:
        return false;
    case Fault::Triangles:
        meshRemoveDuplicateTris(*m_mesh, *adjTris, *tests.getDuplicateTrisResult());
        break;
    case Fault::Manifold:
        meshMakeManifold(*m_mesh, *adjTris, *tests.getManifoldResult());
        break;
    case Fault::Orientation:
        if (!m_orientationTried)
            orient(*adjTris);
        else if (!removeStrip())
            return false;
        break;
    case Fault::Crossings:
        // Not so after a cancel.
        if ((tests.getTestsPerformed() & MeshCharacteristics::NonIntersecting) == 0) return false;
        removeCrossings(*adjTris);
        break;
    case Fault::Angles:
        removeFolds(*adjTris);
        break;
    }
    tests.reset(MeshCharacteristics::AllTests);
    return true;
}

void MeshRepair::orient(const MeshAdjTris& adjTris)
{
    MeshOrient orientation(*m_mesh, adjTris);
    orientation.orient();
    m_orientationTried = true;
    if (orientation.isOrientable()) return;
    m_strip = orientation.getAffectedTriangles();
    // Cutting out all there is would leave nothing.
    if (m_strip.getNumSetBits() == m_mesh->getNumTriangles()) m_strip = BitVector();
}

bool MeshRepair::removeStrip()
{
    if (!isMobiusStripRemovable()) return false;
    selectMobiusStrip();
    MeshDeleteSelected deletion(*m_mesh);
    deletion();
    m_orientationTried = false;
    m_strip = BitVector();
    return true;
}

void MeshRepair::removeCrossings(const MeshAdjTris& adjTris)
{
    m_mesh->getSelectedTriangles() = m_characteristics->getIntersectingTriangles();
    MeshSelect(*m_mesh, adjTris).selectVerticesFromTriangles();
    MeshDeleteSelected deletion(*m_mesh);
    deletion();
}

void MeshRepair::removeFolds(const MeshAdjTris& adjTris)
{
    zn::vector<int> triangles;
    m_characteristics->getGoodAnglesResult()->getAdjacentTriangles(*m_mesh, adjTris, triangles);
    MeshDeleteSelected deletion(*m_mesh);
    deletion(adjTris, triangles);
}

bool MeshRepair::repairAll(bool* clean)
{
    znUtil::Progress progress;
    return repairAll(clean, progress);
}

namespace {

/// What is being done, for the caption; indexed by the faults in their order.
constexpr const char* captions[] = {"checking",          "removing bad triangles",      "making it manifold",
                                    "turning triangles", "removing crossing triangles", "removing folds"};

} // namespace

bool MeshRepair::repairAll(bool* clean, znUtil::Progress& progress)
{
    MeshCharacteristics& tests = *m_characteristics;
    bool repaired = false, isClean = false;
    progress.setCaption(captions[0]);
    while (!progress.cancelled()) {
        // How many looks it will take is not known: each gets half of what is left.
        znUtil::Progress look;
        progress.subPhase((1.0 - progress.get()) / 2, look);
        tests.setProgress(&look);
        const Fault fault = firstFault();
        isClean = fault == Fault::None;
        if (!canRepair(fault) || progress.cancelled()) break;
        progress.setCaption(captions[static_cast<int>(fault)]);
        repaired |= repair(fault);
        look.set(1.0);
    }
    tests.setProgress(nullptr);
    if (clean) *clean = isClean && !progress.cancelled();
    if (!progress.cancelled()) progress.set(1.0);
    return repaired;
}

bool MeshRepair::hasMobiusStrip() { return m_orientationTried && !m_characteristics->checkOriented(); }

bool MeshRepair::isMobiusStripRemovable() const
{
    const int numSet = m_strip.getNumSetBits();
    return numSet > 0 && numSet < m_mesh->getNumTriangles();
}

void MeshRepair::selectMobiusStrip()
{
    m_mesh->clearSelection();
    m_mesh->getSelectedTriangles() = m_strip;
    const zn::Reference<MeshAdjTris> adjTris = m_characteristics->getCache().getAdjTris(*m_mesh);
    MeshSelect(*m_mesh, *adjTris).selectVerticesFromTriangles();
}

} // namespace znGeom

#include "znGeom/repair/characteristics.h"

#include <deque>
#include <utility>

#include "znGeom/repair/orient.h"
#include "znGeom/spatial/queries/mesh_intersect.h"

namespace znGeom {

MeshCharacteristics::MeshCharacteristics(const CompactMesh& mesh)
    : m_mesh(&mesh), m_cache(std::make_shared<SimpleMeshCache>())
{}

MeshCharacteristics::MeshCharacteristics(const MeshCharacteristics& other) = default;

MeshCharacteristics::~MeshCharacteristics() = default;

void MeshCharacteristics::setCache(MeshCache& cache)
{
    m_cache = std::shared_ptr<MeshCache>(std::shared_ptr<void>(), &cache);
}

bool MeshCharacteristics::checkGoodAngles(double angle)
{
    m_angle = angle;
    return check(GoodAngles);
}

/// Runs those of the tests that have not been performed, always in the same order. Returns whether any passes.
bool MeshCharacteristics::check(int bits)
{
    using Run = void (MeshCharacteristics::*)();
    constexpr std::pair<int, Run> order[] = {{Manifold, &MeshCharacteristics::testManifold},
                                             {Oriented, &MeshCharacteristics::testOriented},
                                             {GoodTriangles, &MeshCharacteristics::testTriangles},
                                             {TopoGoodTriangles, &MeshCharacteristics::testTopoTriangles},
                                             {NonIntersecting, &MeshCharacteristics::testIntersections},
                                             {GoodAngles, &MeshCharacteristics::testAngles}};
    for (const auto& [test, run] : order) {
        const bool isStale = test == GoodAngles && m_angle != m_testedAngle;
        if ((bits & test) != 0 && ((m_performed & test) == 0 || isStale)) (this->*run)();
    }
    return (m_passed & bits) != 0;
}

void MeshCharacteristics::record(int tests, int passed)
{
    m_performed |= tests;
    m_passed |= passed;
}

void MeshCharacteristics::testManifold()
{
    auto result = std::make_shared<MeshManifoldResult>();
    meshManifold(*m_mesh, *m_cache->getAdjTris(*m_mesh), *result);
    record(Manifold, result->isManifold() ? Manifold : 0);
    m_manifold = std::move(result);
}

void MeshCharacteristics::testOriented()
{
    record(Oriented, meshOriented(*m_mesh, *m_cache->getAdjTris(*m_mesh)) ? Oriented : 0);
}

/// Returns whether nothing was found.
bool MeshCharacteristics::runDuplicateTris()
{
    auto result = std::make_shared<MeshDuplicateTrisResult>();
    const bool isClean = !meshDuplicateTris(*m_mesh, *result);
    m_duplicates = std::move(result);
    m_numBadTriangles = isClean ? 0 : -1;
    return isClean;
}

/// Where something is wrong, what is known of `TopoGoodTriangles` stays.
void MeshCharacteristics::testTriangles()
{
    constexpr int both = GoodTriangles | TopoGoodTriangles;
    record(both, runDuplicateTris() ? both : 0);
}

void MeshCharacteristics::testTopoTriangles()
{
    if (runDuplicateTris())
        record(GoodTriangles | TopoGoodTriangles, GoodTriangles | TopoGoodTriangles);
    else if (m_duplicates->duplicates.empty() && m_duplicates->repeatedCorners.empty())
        record(TopoGoodTriangles, TopoGoodTriangles);
    else
        record(TopoGoodTriangles, 0);
}

void MeshCharacteristics::testIntersections()
{
    znUtil::Progress unwatched;
    znUtil::Progress& progress = m_progress ? *m_progress : unwatched;
    std::deque<MeshIntersectPair> crossings;
    MeshIntersect(*m_mesh).selfIntersect(progress, crossings);
    if (progress.cancelled()) return;
    if (!crossings.empty()) m_intersecting.resize(m_mesh->getNumTriangles());
    for (const MeshIntersectPair& crossing : crossings) m_intersecting.setBit(crossing.start.triangle);
    record(NonIntersecting, crossings.empty() ? NonIntersecting : 0);
}

void MeshCharacteristics::testAngles()
{
    auto result = std::make_shared<MeshDihedralAnglesResult>();
    meshFindAnglesLessThan(*m_mesh, *m_cache->getAdjTris(*m_mesh), m_angle, *result);
    m_passed &= ~GoodAngles;
    record(GoodAngles, result->edges.empty() ? GoodAngles : 0);
    m_angles = std::move(result);
    m_testedAngle = m_angle;
}

int MeshCharacteristics::getNumBadTriangles()
{
    if (!m_duplicates) testTriangles();
    if (m_numBadTriangles < 0) {
        zn::vector<int> triangles;
        m_duplicates->getBadTriangles(*m_mesh, triangles);
        m_numBadTriangles = triangles.size();
    }
    return m_numBadTriangles;
}

int MeshCharacteristics::getNumNonManifoldVertices()
{
    check(Manifold);
    return m_manifold->badVertices.getNumSetBits();
}

int MeshCharacteristics::getNumNonManifoldEdges()
{
    check(Manifold);
    return m_manifold->badEdges.size();
}

void MeshCharacteristics::reset(int bits)
{
    if ((bits & (GoodTriangles | TopoGoodTriangles)) != 0) {
        m_duplicates.reset();
        m_angles.reset();
        m_numBadTriangles = -1;
    }
    if ((bits & Manifold) != 0) m_manifold.reset();
    if ((bits & NonIntersecting) != 0) m_intersecting = BitVector();
    m_passed &= ~bits;
    m_performed &= ~bits;
}

} // namespace znGeom

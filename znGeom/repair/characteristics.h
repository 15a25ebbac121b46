/// `znGeom::MeshCharacteristics`: what is right and wrong with a mesh, asked once.
#pragma once

#include <memory>

#include "znGeom/analysis/edges.h"
#include "znGeom/cache/mesh_cache.h"
#include "znGeom/editing/duplicate_triangles.h"
#include "znGeom/foundation/threads/progress.h"
#include "znGeom/repair/manifold.h"

namespace znGeom {

/// Answers questions about a mesh and keeps the answers with their details. A test runs when it is first asked for.
///
/// Nothing here listens to the mesh: after a change call `reset`. Mesh and cache are borrowed and must outlive this. A
/// copy shares the cache and the details known so far, and goes its own way from there.
///
/// Used by one thread at a time; the tests run on the calling thread but for those that use the process-wide pool
/// (equal triangles, manifoldness, crossings, angles).
class ZNGEOM_API MeshCharacteristics : public zn::ReferenceCount
{
public:
    /// The tests, as bits.
    enum Test : int {
        GoodTriangles = 1,      ///< no triangle repeats another, repeats a vertex, or has two corners in one place
        Manifold = 2,           ///< no edge of three triangles or more, no vertex of several fans
        Oriented = 4,           ///< neighbours are wound alike
        NonIntersecting = 8,    ///< no two triangles cross
        GoodAngles = 16,        ///< no edge is folded to a given angle or less
        TopoGoodTriangles = 32, ///< no triangle repeats another or a vertex
        AllTests = 63
    };

    /// Has a cache of its own at first.
    explicit MeshCharacteristics(const CompactMesh& mesh);
    MeshCharacteristics(const MeshCharacteristics& other);
    MeshCharacteristics& operator=(const MeshCharacteristics&) = delete;
    ~MeshCharacteristics() override;

    /// Where adjacency comes from from now on. Not owned.
    void setCache(MeshCache& cache);
    MeshCache& getCache() { return *m_cache; }

    /// Where the test for crossings reports and asks for a cancel; null for neither, as at first. A test that was
    /// cancelled answers false and is not counted as performed.
    void setProgress(znUtil::Progress* progress) { m_progress = progress; }

    // Each returns whether the test passes, and runs it unless that is known.
    bool checkGoodTriangles() { return check(GoodTriangles); }
    /// A run on its own passes where corners merely coincide. The run that `checkGoodTriangles` makes answers for both
    /// and passes only where nothing at all is wrong: which answer a mesh with coincident corners gets depends on which
    /// of the two was asked first.
    bool checkTopoGoodTriangles() { return check(TopoGoodTriangles); }
    bool checkManifold() { return check(Manifold); }
    bool checkOriented() { return check(Oriented); }
    bool checkNonIntersecting() { return check(NonIntersecting); }
    /// \param angle  in degrees, 180 where the surface is flat; another angle than the last one runs the test again
    bool checkGoodAngles(double angle);

    /// Bits of `Test`.
    int getTestsPerformed() const { return m_performed; }
    int getTestsPassed() const { return m_passed; }

    // The details of the last run of a test; null before it, and after a `reset` that names it.
    const MeshDuplicateTrisResult* getDuplicateTrisResult() const { return m_duplicates.get(); }
    const MeshManifoldResult* getManifoldResult() const { return m_manifold.get(); }
    /// Null also after a `reset` of one of the tests of triangles: the list holds triangle numbers.
    const MeshDihedralAnglesResult* getGoodAnglesResult() const { return m_angles.get(); }
    /// Empty where none was found.
    const BitVector& getIntersectingTriangles() const { return m_intersecting; }

    // Counts. These run the test they are about unless it has been performed.
    /// The triangles that fail `GoodTriangles`.
    int getNumBadTriangles();
    /// 0 as long as there are bad edges: these are repaired first.
    int getNumNonManifoldVertices();
    int getNumNonManifoldEdges();
    /// Two for each pair of triangles that meet at a bad angle; 0 without details.
    int getNumFoldedTriangles() const { return m_angles ? 2 * m_angles->edges.size() : 0; }

    /// Forgets tests, with their details. Forgetting `GoodTriangles` or `TopoGoodTriangles` also drops the details of
    /// `GoodAngles`, though not its answer.
    void reset(int bits);

private:
    bool check(int bits);
    void record(int tests, int passed);
    void testManifold();
    void testOriented();
    void testTriangles();
    void testTopoTriangles();
    bool runDuplicateTris();
    void testIntersections();
    void testAngles();

    const CompactMesh* m_mesh;
    std::shared_ptr<MeshCache> m_cache;
    int m_passed = 0;
    int m_performed = 0;
    double m_testedAngle = 15.0;
    double m_angle = 15.0;
    std::shared_ptr<const MeshManifoldResult> m_manifold;
    std::shared_ptr<const MeshDuplicateTrisResult> m_duplicates;
    std::shared_ptr<const MeshDihedralAnglesResult> m_angles;
    BitVector m_intersecting;
    int m_numBadTriangles = -1; ///< while it is unknown
    znUtil::Progress* m_progress = nullptr;
};

} // namespace znGeom

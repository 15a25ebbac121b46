/// The linear system of a least squares conformal map, and its solution.
#pragma once

#include "znGeom/foundation/containers/vector.h"
#include "znGeom/foundation/linear/point.h"
#include "znGeom/foundation/mesh/compact_mesh.h"
#include "znGeom/foundation/mesh/mesh_adjacency.h"
#include "znGeom/foundation/output/app_output.h"
#include "znGeom/foundation/threads/progress.h"
#include "znGeom/parameterize/internal/chart_plane.h"
#include "znGeom/solvers/conjugate_gradient.h"

namespace znGeom::internal {

/// Puts the vertices of a disk into the plane, two of them at given places. Used once: bridge the holes, then solve.
///
/// The energy that is least is that of Lévy, Petitjean, Ray, Maillot (2002), as Dirichlet's energy less the area of the
/// image (Pinkall, Polthier 1993): cotangents between neighbours, and ones that cancel across an edge of two triangles.
/// They stay along borders, which are free. Holes are bridged, so that their rims move as if they were filled.
class ConformalMap
{
public:
    /// \param rotation  from space to the plane of the map
    /// \param scale     the unit of the map, a power of two
    ConformalMap(const CompactMesh& mesh, const MeshAdjTris& adjTris, const ChartPins& pins,
                 const znLinear::AffineMatrix& rotation, double scale);

    /// Numbers the unknowns: two for each vertex that is not pinned.
    void numberFreeVertices();

    /// Closes all loops but one by triangles that only the system has. Those of more than 1500 vertices stay open too.
    void bridgeHoles(const zn::vector<zn::vector<int>>& loops, int outerLoop, znUtil::Progress& progress);

    /// The number of unknowns.
    int systemSize() const { return 2 * (m_mesh.getNumVertices() - 2); }

    /// Puts the system together: entries 2 i and 2 i + 1 are the coordinates of the vertex of number i.
    ///
    /// \param solver                of `systemSize()` unknowns; receives the matrix
    /// \param rightHandSide, start  both zeros; `start` receives the places of the vertices in the plane
    /// \return false after a cancel
    bool assemble(znUtil::Progress& progress, ConjugateGradient& solver, NVector& rightHandSide, NVector& start) const;

    /// Solves it by elimination, and by the steps of conjugate gradients what that leaves. Where elimination is out of
    /// the question the steps begin in the plane.
    ///
    /// \param uvs  receives a place for each vertex
    /// \return false after a cancel
    bool solve(znOS::AppOutput& output, znUtil::Progress& progress, zn::vector<znLinear::Point2>& uvs);

private:
    void bridge(const zn::vector<int>& loop, znUtil::Progress& progress);
    void solveAtOnce(const SparseMatrix& matrix, const NVector& rightHandSide, znUtil::Progress& progress,
                     NVector& solution) const;
    void addRows(int vertex, ConjugateGradient& solver, NVector& rightHandSide) const;
    void addTriangle(const MeshTriangle& triangle, int vertex, ConjugateGradient& solver, NVector& rightHandSide) const;
    void iterate(ConjugateGradient& solver, znOS::AppOutput& output, znUtil::Progress& progress) const;
    bool takeSolution(const NVector& x, znUtil::Progress& progress, zn::vector<znLinear::Point2>& uvs) const;

    const CompactMesh& m_mesh;
    const MeshAdjTris& m_adjTris;
    ChartPins m_pins;
    double m_scale;
    zn::vector<znLinear::Point2> m_points; ///< where vertices are before the map, in its plane
    zn::vector<int> m_free;                ///< the number of each vertex among those that may move; -1 for pins
    zn::vector<MeshTriangle> m_bridges;
    ArrayOfSets m_bridgesAt; ///< of each vertex
};

} // namespace znGeom::internal

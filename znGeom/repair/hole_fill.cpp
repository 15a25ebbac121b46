#include "znGeom/repair/hole_fill.h"

#include <string>
#include <vector>

#include "znGeom/editing/select.h"
#include "znGeom/repair/internal/hole_loop.h"
#include "znGeom/repair/internal/hole_patch.h"

namespace znGeom {

using internal::HolePatch;
using znLinear::Point;
using znUtil::Progress;

namespace {

/// How much of the progress of a hole its triangulation takes; the rest is for what follows.
double shareOfTriangulation(HoleQuality quality)
{
    return quality == HoleTriangulated ? 1.0 : quality == HoleRefined ? 0.95 : 0.85;
}

/// The triangles along the rims and two rings around them, so that there is something for patches to follow.
struct Collar
{
    BitVector triangles, vertices;

    Collar(const CompactMesh& mesh, const MeshAdjTris& adjTris)
        : triangles(mesh.getNumTriangles()), vertices(mesh.getNumVertices()), m_mesh(mesh), m_adjTris(adjTris)
    {}

    void grow()
    {
        MeshSelect select(m_mesh, m_adjTris, triangles, vertices);
        select.selectTrianglesFromVertices(2);
        select.selectTrianglesRecursive(true);
        select.selectTrianglesRecursive(true);
        select.selectVerticesFromTriangles();
    }

private:
    const CompactMesh& m_mesh;
    const MeshAdjTris& m_adjTris;
};

class HoleFilling
{
public:
    HoleFilling(CompactMesh& mesh, const MeshAdjTris& adjTris, const MeshAdjVertices& adjVertices,
                const MeshBoundaries& boundaries, const zn::list<int>& holes, HoleQuality quality)
        : m_mesh(mesh), m_adjTris(adjTris), m_adjVertices(adjVertices), m_boundaries(boundaries), m_holes(holes),
          m_quality(quality)
    {}

    /// \return how many were filled
    int run(Progress& progress, zn::vector<HoleOutcome>& outcomes)
    {
        outcomes.clear();
        Collar collar(m_mesh, m_adjTris);
        int sumOfLengths = 0;
        for (const int hole : m_holes) {
            if (!isLoop(hole)) continue;
            sumOfLengths += m_boundaries.getLength(hole);
            for (const int* v = m_boundaries.getStart(hole); v != m_boundaries.getEnd(hole); ++v)
                collar.vertices.setBit(*v);
        }
        if (sumOfLengths == 0) return skipAll(outcomes);
        collar.grow();
        MeshModifyRep scope(m_mesh, collar.triangles, collar.vertices, m_adjTris);
        const int numFilled = fillAll(scope, 1.0 / sumOfLengths, progress, outcomes);
        if (!progress.cancelled()) progress.set(1.0); // the last chance for an observer to cancel
        if (progress.cancelled()) return giveUp(outcomes);
        if (numFilled > 0) scope.merge();
        return numFilled;
    }

private:
    bool isLoop(int hole) const { return hole >= 0 && hole < m_boundaries.size(); }

    int skipAll(zn::vector<HoleOutcome>& outcomes) const
    {
        outcomes = zn::vector<HoleOutcome>(m_holes.size(), HoleOutcome::NoLoop);
        return 0;
    }
    int giveUp(zn::vector<HoleOutcome>& outcomes) const
    {
        outcomes = zn::vector<HoleOutcome>(m_holes.size(), HoleOutcome::GivenUp);
        return 0;
    }

    int fillAll(MeshModifyRep& scope, double share, Progress& progress, zn::vector<HoleOutcome>& outcomes)
    {
        TopoMesh& mesh = scope.extract();
        MeshEdgeSwapper swapper;
        swapper.getVetoSignal().addCallback(MeshEdgeSwapper::minimizeOppositeAngleSum);
        int numFilled = 0;
        Progress ofHole;
        for (const int hole : m_holes) {
            progress.subPhase(share, ofHole);
            const std::string number = std::to_string(outcomes.size() + 1);
            progress.setCaption(("Filling hole " + number + " of " + std::to_string(m_holes.size())).c_str());
            outcomes.append(isLoop(hole) ? fill(hole, scope, mesh, swapper, ofHole) : HoleOutcome::NoLoop);
            if (progress.cancelled()) break;
            numFilled += outcomes.back() == HoleOutcome::Filled;
            ofHole.set(1.0);
        }
        return numFilled;
    }

    HoleOutcome fill(int hole, MeshModifyRep& scope, TopoMesh& mesh, MeshEdgeSwapper& swapper, Progress& progress)
    {
        zn::vector<int> loop(m_boundaries.getStart(hole), m_boundaries.getEnd(hole));
        if (const HoleOutcome prepared = internal::prepareLoop(scope, mesh, loop); prepared != HoleOutcome::Filled)
            return prepared;
        zn::vector<TopoMeshVertex> rim;
        zn::vector<Point> places;
        for (const int vertex : loop) {
            rim.append(scope.getTopoMeshVertex(vertex));
            places.append(std::as_const(m_mesh).getVertices()[vertex].asPoint());
        }
        HolePatch patch(mesh, rim, m_densities);
        Progress part;
        progress.subPhase(shareOfTriangulation(m_quality), part);
        const HoleOutcome outcome = patch.triangulate(places, part);
        if (outcome != HoleOutcome::Filled || m_quality == HoleTriangulated) return outcome;
        progress.subPhase(1.0 - shareOfTriangulation(m_quality), part);
        patch.refine(densities(loop), swapper, part);
        if (!part.cancelled() && m_quality != HoleRefined) patch.fair(part);
        return outcome;
    }

    /// How long the edges at the vertices of a rim are.
    zn::vector<double> densities(const zn::vector<int>& loop) const
    {
        const MeshVertex* vertices = std::as_const(m_mesh).getVertices();
        zn::vector<double> result;
        for (const int vertex : loop) {
            double sum = 0;
            for (const int neighbour : m_adjVertices.around(vertex))
                sum += distance(vertices[vertex].asPoint(), vertices[neighbour].asPoint());
            const int count = m_adjVertices.numNeighbours(vertex);
            result.append(count > 0 ? sum / count : 0.0);
        }
        return result;
    }

    CompactMesh& m_mesh;
    const MeshAdjTris& m_adjTris;
    const MeshAdjVertices& m_adjVertices;
    const MeshBoundaries& m_boundaries;
    const zn::list<int>& m_holes;
    HoleQuality m_quality;
    std::vector<double> m_densities;
};

} // namespace

int meshHoleFill(CompactMesh& mesh, const MeshAdjTris& adjTris, const MeshAdjVertices& adjVertices,
                 const MeshBoundaries& boundaries, const zn::list<int>& holes, HoleQuality quality, Progress& progress)
{
    return meshHoleFill(mesh, adjTris, adjVertices, boundaries, holes, quality, progress, nullptr);
}

int meshHoleFill(CompactMesh& mesh, const MeshAdjTris& adjTris, const MeshAdjVertices& adjVertices,
                 const MeshBoundaries& boundaries, const zn::list<int>& holes, HoleQuality quality, Progress& progress,
                 zn::vector<HoleOutcome>* outcomes)
{
    zn::vector<HoleOutcome> unused;
    return HoleFilling(mesh, adjTris, adjVertices, boundaries, holes, quality)
        .run(progress, outcomes ? *outcomes : unused);
}

} // namespace znGeom

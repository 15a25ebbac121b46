#include "znGeom/parameterize/reparameterize_mesh.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "znGeom/analysis/boundaries.h"
#include "znGeom/editing/weld.h"
#include "znGeom/parameterize/cut_surface.h"
#include "znGeom/parameterize/internal/chart_plane.h"
#include "znGeom/parameterize/internal/conformal_map.h"

namespace znGeom {

using znLinear::Point2;
using znUtil::Progress;

namespace {

void tellOfTopology(CompactMesh& mesh)
{
    MeshModification modification(&mesh, MeshModification::TopologyChanged);
    mesh.modified(modification);
}

/// Which places in a chart become those of the unit square.
struct UnitSquare
{
    Point2 low{std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity()};
    double scale;

    explicit UnitSquare(const zn::vector<Point2>& uvs)
    {
        Point2 high(-low.x, -low.y);
        for (const Point2& uv : uvs) {
            for (const int axis : {0, 1}) {
                low[axis] = std::min(low[axis], uv[axis]);
                high[axis] = std::max(high[axis], uv[axis]);
            }
        }
        scale = std::min(1.0 / (high.x - low.x), 1.0 / (high.y - low.y));
    }

    MeshUV operator()(const Point2& uv) const
    {
        MeshUV result;
        result.set((uv.x - low.x) * scale, (uv.y - low.y) * scale);
        return result;
    }
};

} // namespace

reparameterizeMesh::reparameterizeMesh(CompactMesh& mesh)
    : m_mesh(mesh), m_working(mesh), m_output(znOS::AppOutput::getInstance())
{}

reparameterizeMesh::~reparameterizeMesh() = default;

bool reparameterizeMesh::flatten()
{
    Progress progress;
    return flatten(progress);
}

bool reparameterizeMesh::flatten(Progress& progress)
{
    Progress phase;
    Remap remap;
    progress.subPhase(0.025, phase);
    prepareMesh(phase, remap);
    if (progress.cancelled() || !hasFinitePositions()) return false;

    progress.subPhase(0.1, phase);
    progress.setCaption("Finding Mesh Boundaries");
    Loops loops;
    if (!findLoops(phase, loops)) return false;

    zn::vector<Point2> uvs;
    if (!flattenDisk(loops, progress, phase, uvs)) return false;

    progress.subPhase(0.025, phase);
    progress.setCaption("Applying to Mesh");
    applyUvsToMesh(uvs, remap);
    phase.set(1.0);
    return true;
}

/// Makes the copy one that can be flattened.
/// \param remap  receives the vertex of the copy for each of the mesh
void reparameterizeMesh::prepareMesh(Progress& progress, Remap& remap)
{
    progress.setCaption("Copying Mesh");
    m_working.deleteUVs();
    m_working.deleteNormals();
    remap.resize(m_working.getNumVertices(), m_working.getNumVertices());
    remap.setSequential();
    if (m_enableMeshWelding && m_working.getNumVertices() > 0) weldMesh(progress, remap);
    dropUnusedVertices(remap);
}

void reparameterizeMesh::weldMesh(Progress& progress, Remap& remap)
{
    meshCompact(m_working, progress, remap);
    if (m_enableMeshCompact) return;
    const int numBefore = m_cache.getBoundaries(m_mesh)->size(), numAfter = m_cache.getBoundaries(m_working)->size();
    m_output.info("prepareMesh: numBoundaries o = %d, c = %d\n", numBefore, numAfter);
    if (numBefore == numAfter) return;
    m_output.info("prepareMesh: compacting changed topology, reverting\n");
    m_working = m_mesh;
    tellOfTopology(m_working);
    remap.resize(m_mesh.getNumVertices(), m_mesh.getNumVertices());
    remap.setSequential();
}

/// They would count in the Euler number.
void reparameterizeMesh::dropUnusedVertices(Remap& remap)
{
    BitVector unused(m_working.getNumVertices());
    unused.setAllBits();
    MeshTriangle* const triangles = m_working.getTriangles();
    for (int i = 0; i < m_working.getNumTriangles(); ++i)
        for (const int vertex : triangles[i].corners) unused.clearBit(vertex);
    if (unused.getNumSetBits() == 0) return;

    Remap kept;
    kept.setDeleteMap(unused);
    MeshVertex* const vertices = m_working.getVertices();
    for (int i = 0; i < unused.getSize(); ++i)
        if (!unused.isSet(i)) vertices[kept(i)] = vertices[i];
    m_working.resizeVertexArray(kept.range);
    for (int i = 0; i < m_working.getNumTriangles(); ++i) kept(triangles[i].corners, 3);
    for (int i = 0; i < remap.getDomainSize(); ++i) remap.set(i, kept(remap(i)));
    tellOfTopology(m_working);
}

bool reparameterizeMesh::hasFinitePositions()
{
    const MeshVertex* vertices = std::as_const(m_working).getVertices();
    const bool isGood = std::all_of(vertices, vertices + m_working.getNumVertices(), isFinite);
    if (!isGood) m_output.info("MeshReparameterize: a position is not finite, mesh not changed.\n");
    return isGood;
}

/// Finds the borders of the copy, which is cut into a disk if it is none.
/// \return false where it can't be, or may not be cut
bool reparameterizeMesh::findLoops(Progress& progress, Loops& loops)
{
    const int genus = getMeshGenus(loops);
    if (progress.cancelled()) return false;
    m_output.info("- - - MeshReparameterize: genus = %d\n", genus);
    if (genus < 0) return false;
    if (genus == 0 && !loops.empty()) return true;
    if (!m_enableMeshCutSurface) return false;
    zn::vector<int> originals;
    cutSurface::makeDisk(m_working, originals, progress);
    if (progress.cancelled()) return false;
    loops.clear();
    return getMeshGenus(loops) == 0;
}

/// \return the number of handles, -1 for what is no surface of one piece
int reparameterizeMesh::getMeshGenus(Loops& loops)
{
    if (reportDegenerate()) {
        m_output.info("getMeshGenus: testDegenerate == true\n");
        return -1;
    }
    const zn::Reference<MeshBoundaries> boundaries = m_cache.getBoundaries(m_working);
    m_output.info("getMeshGenus: numBoundaries %d \n", boundaries->size());
    int numBorderEdges = 0;
    for (int i = 0; i < boundaries->size(); ++i) {
        numBorderEdges += boundaries->getLength(i);
        if (boundaries->getLength(i) >= 3) continue;
        m_output.info("getMeshGenus: boundary length < 3 \n");
        return -1;
    }
    const int genus = logGenus(boundaries->size(), numBorderEdges);
    if (genus < 0) return -1;
    for (int i = 0; i < boundaries->size(); ++i)
        loops.append(zn::vector<int>(boundaries->getStart(i), boundaries->getEnd(i)));
    return genus;
}

bool reparameterizeMesh::reportDegenerate()
{
    const MeshTriangle* triangles = std::as_const(m_working).getTriangles();
    const MeshTriangle* const end = triangles + m_working.getNumTriangles();
    const MeshTriangle* const found = std::find_if(triangles, end, repeatsVertex);
    if (found == end) return false;
    const auto [a, b, c] = found->corners;
    m_output.error("Found degenerate triangle %d (%d,%d,%d), mesh not changed. \n", static_cast<int>(found - triangles),
                   a, b, c);
    return true;
}

/// Each border counts as a face, so that a disk has the Euler number of a sphere.
int reparameterizeMesh::logGenus(int numLoops, int numBorderEdges)
{
    const int numVertices = m_working.getNumVertices(), numTriangles = m_working.getNumTriangles();
    m_output.info("getMeshGenus: numBoundaryEdges %d \n", numBorderEdges);
    m_output.info("getMeshGenus: numVertices %d \n", numVertices);
    m_output.info("getMeshGenus: numTriangles %d \n", numTriangles);
    const int numEdges = (numBorderEdges + 3 * numTriangles) / 2;
    m_output.info("getMeshGenus: numEdges %d \n", numEdges);
    const int chi = numLoops + numVertices + numTriangles - numEdges;
    m_output.info("getMeshGenus: chi = %d + %d + %d - %d = %d \n", numLoops, numVertices, numTriangles, numEdges, chi);
    const int genus = (2 - chi) / 2;
    m_output.info("getMeshGenus: genus = ( 2 - %d ) / 2 = %d \n", chi, genus);
    if (genus < 0) m_output.info("getMeshGenus: genus = %d \n", genus);
    return genus;
}

bool reparameterizeMesh::flattenDisk(const Loops& loops, Progress& progress, Progress& phase, zn::vector<Point2>& uvs)
{
    progress.subPhase(0.025, phase);
    progress.setCaption("Getting Extreme Vertices");
    internal::ChartPins pins;
    const int outer = internal::findOuterLoop(m_working, loops, pins);
    if (outer < 0) {
        m_output.error("There must be a boundary for the disk, none found. No changes made.\n");
        m_output.info("- - - MeshReparameterize: outerBoundary = %d\n", outer);
        return false;
    }

    progress.subPhase(0.025, phase);
    progress.setCaption("Creating Plane");
    const zn::Reference<MeshAdjTris> adjTris = m_cache.getAdjTris(m_working);
    internal::ConformalMap map(m_working, *adjTris, pins,
                               internal::chartRotation(m_working, loops[outer], pins, m_output),
                               internal::chartScale(m_working, pins));
    progress.subPhase(0.025, phase);
    map.numberFreeVertices();
    progress.subPhase(0.025, phase);
    progress.setCaption("Filling Mesh Holes");
    map.bridgeHoles(loops, outer, phase);
    progress.subPhase(0.75, phase);
    progress.setCaption("Solving");
    return map.solve(m_output, phase, uvs);
}

void reparameterizeMesh::applyUvsToMesh(const zn::vector<Point2>& uvs, const Remap& remap)
{
    const UnitSquare square(uvs);
    m_mesh.allocUVArray();
    MeshUV* const out = m_mesh.getUVs();
    for (int i = 0; i < std::min(m_mesh.getNumVertices(), remap.getDomainSize()); ++i)
        out[i] = remap(i) < 0 ? MeshUV{0, 0} : square(uvs[remap(i)]);
    MeshModification modification(&m_mesh, MeshModification::AttributesChanged);
    modification.uvsModified();
    m_mesh.modified(modification);
}

} // namespace znGeom

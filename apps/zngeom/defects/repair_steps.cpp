#include "apps/zngeom/defects/repair_steps.h"

#include <algorithm>

#include "apps/zngeom/defects/flipped_triangles.h"
#include "apps/zngeom/frame/pacer.h"
#include "znGeom/editing/delete_non_finite.h"
#include "znGeom/editing/reverse_winding.h"
#include "znGeom/repair/mesh_repair.h"

namespace tool {

namespace {

using znGeom::MeshCharacteristics;

std::string counted(int count, const std::string& one, const std::string& several)
{
    return std::to_string(count) + ' ' + (count == 1 ? one : several);
}

std::string countedTriangles(int count) { return counted(count, "triangle", "triangles"); }

/// "3 that repeat another, 1 that repeats a vertex".
std::string kindsOf(const znGeom::MeshDuplicateTrisResult& bad)
{
    std::string text;
    for (const auto& [count, one, several] :
         {std::tuple{bad.duplicates.size(), "repeats another one", "repeat other ones"},
          {bad.repeatedCorners.size(), "repeats a vertex", "repeat a vertex"},
          {bad.coincidentCorners.size(), "has two corners in one place", "have two corners in one place"}})
        if (count > 0)
            text += (text.empty() ? "" : ", ") + std::to_string(count) + " that " + (count == 1 ? one : several);
    return text;
}

/// A repair with the words for its next step.
class StepTeller
{
public:
    StepTeller(znGeom::CompactMesh& mesh, const DefectOptions& options, znUtil::Progress& progress)
        : m_mesh(mesh), m_options(options), m_progress(progress), m_repair(mesh)
    {
        m_repair.checkSelfIntersection(options.crossings);
        m_repair.checkGoodAngles(options.foldAngle.has_value());
        if (options.foldAngle) m_repair.setMinGoodAngle(*options.foldAngle);
    }

    /// False when nothing more can be done.
    bool doNext(std::vector<RepairStep>& steps)
    {
        m_repair.getCharacteristics()->setProgress(&m_progress);
        const auto [kind, start] = nextStep();
        checkCancelled(m_progress);
        if (!kind) return false;
        const int numTriangles = m_mesh.getNumTriangles(), numVertices = m_mesh.getNumVertices();
        const std::vector<znGeom::MeshTriangle> before(m_mesh.getTriangles(), m_mesh.getTriangles() + numTriangles);
        if (!m_repair.repairOnce()) return false;

        RepairStep step{kind, start};
        step.removedTriangles = numTriangles - m_mesh.getNumTriangles();
        step.addedVertices = std::max(m_mesh.getNumVertices() - numVertices, 0);
        if (std::string(kind) == "winding") step.turnedTriangles = settleWinding(before);
        complete(step);
        steps.push_back(step);
        return true;
    }

private:
    struct NextStep
    {
        const char* kind; ///< null for none
        std::string text; ///< what is known before it is done
    };

    /// Asks in the order in which the repair does.
    NextStep nextStep()
    {
        MeshCharacteristics& known = *m_repair.getCharacteristics();
        m_progress.setCaption("checking");
        if (!known.checkGoodTriangles()) return {"bad_triangles", kindsOf(*known.getDuplicateTrisResult())};
        if (!known.checkManifold()) return nextOfManifold(known);
        if (!known.checkOriented())
            return m_repair.hasMobiusStrip() ? NextStep{"one_sided_strip", ""} : NextStep{"winding", ""};
        m_progress.setCaption("looking for crossings");
        if (m_options.crossings && !known.checkNonIntersecting()) return {"crossing_triangles", ""};
        m_progress.setCaption("looking for folds");
        if (m_options.foldAngle && !known.checkGoodAngles(*m_options.foldAngle)) return {"folded_triangles", ""};
        return {nullptr, ""};
    }

    static NextStep nextOfManifold(MeshCharacteristics& known)
    {
        const int numEdges = known.getNumNonManifoldEdges();
        if (numEdges > 0) return {"non_manifold_edges", counted(numEdges, "edge", "edges")};
        return {"non_manifold_vertices", counted(known.getNumNonManifoldVertices(), "vertex", "vertices")};
    }

    /// Turns pieces back of which more than half was turned over, unless a one-sided strip has yet to be cut out.
    /// Returns how many triangles are turned over then.
    int settleWinding(const std::vector<znGeom::MeshTriangle>& before)
    {
        const std::vector<bool> turned = turnedSince(before);
        std::vector<bool> wanted = turned;
        if (m_repair.getCharacteristics()->checkOriented()) takeSmallerSets(m_mesh, wanted);
        znGeom::BitVector& selection = m_mesh.getSelectedTriangles();
        selection.resize(m_mesh.getNumTriangles());
        selection.clearBits();
        for (std::size_t i = 0; i < before.size(); ++i)
            if (turned[i] != wanted[i]) selection.setBit(static_cast<int>(i));
        if (selection.getNumSetBits() > 0) {
            znGeom::meshReverseSelectedWinding(m_mesh);
            m_repair.getCharacteristics()->reset(MeshCharacteristics::AllTests);
        }
        m_mesh.clearSelection();
        return static_cast<int>(std::count(wanted.begin(), wanted.end(), true));
    }

    std::vector<bool> turnedSince(const std::vector<znGeom::MeshTriangle>& before) const
    {
        std::vector<bool> turned;
        for (std::size_t i = 0; i < before.size(); ++i)
            turned.push_back(hasDirectedEdge(m_mesh.getTriangles()[i], before[i][1], before[i][0]));
        return turned;
    }

    static void complete(RepairStep& step)
    {
        const std::string kind = step.kind, triangles = countedTriangles(step.removedTriangles);
        const std::string known = step.text;
        if (kind == "bad_triangles") step.text = "removed " + triangles + ": " + known;
        if (kind == "non_manifold_edges")
            step.text = "removed " + triangles + " at " + known + " of three triangles or more";
        if (kind == "non_manifold_vertices")
            step.text = "split " + known + " of several fans, which makes " +
                        counted(step.addedVertices, "new vertex", "new vertices");
        if (kind == "winding") step.text = "turned " + countedTriangles(step.turnedTriangles) + " over";
        if (kind == "one_sided_strip") step.text = "cut out a one-sided strip of " + triangles;
        if (kind == "crossing_triangles") step.text = "removed " + triangles + " that cross others";
        if (kind == "folded_triangles") step.text = "removed " + triangles + " at folds";
    }

    znGeom::CompactMesh& m_mesh;
    const DefectOptions& m_options;
    znUtil::Progress& m_progress;
    znGeom::MeshRepair m_repair;
};

} // namespace

std::vector<RepairStep> repairMesh(znGeom::CompactMesh& mesh, const DefectOptions& options, znUtil::Progress& progress)
{
    std::vector<RepairStep> steps;
    if (const int numRemoved = znGeom::meshDeleteNonFinite(mesh); numRemoved > 0)
        steps.push_back({"non_finite_triangles",
                         "removed " + countedTriangles(numRemoved) + " with corners that are not finite", numRemoved});
    znUtil::Progress phase;
    StepTeller teller(mesh, options, phase);
    // Nobody knows how many steps there will be: each takes half of what is left of the bar.
    double share = 0.5;
    do {
        checkCancelled(progress);
        progress.subPhase(share, phase);
        share /= 2;
    } while (teller.doNext(steps));
    return steps;
}

} // namespace tool

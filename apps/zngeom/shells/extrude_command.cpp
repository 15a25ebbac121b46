#include <algorithm>
#include <memory>
#include <optional>
#include <unordered_set>

#include "apps/zngeom/command/change_command.h"
#include "apps/zngeom/command/part_options.h"
#include "apps/zngeom/frame/cancel_on_signal.h"
#include "apps/zngeom/frame/number_text.h"
#include "apps/zngeom/frame/pacer.h"
#include "apps/zngeom/frame/usage.h"
#include "apps/zngeom/shells/extrude_patches.h"
#include "apps/zngeom/shells/polygon_mesh.h"
#include "znGeom/analysis/edge_sides.h"
#include "znGeom/topology/orient_faces.h"
#include "znGeom/topology/topo_walks.h"

namespace tool {

namespace {

using znGeom::TopoMesh;
using znGeom::TopoMeshFace;
using znLinear::AffineMatrix;
using znLinear::Vector;

constexpr Colour ofChosen{220, 30, 45}, ofCaps{255, 178, 60};

std::string problemOfNumber(const std::string& word) { return finiteNumber(word) ? "" : "must be a number"; }

std::string problemOfVector(const std::string& word)
{
    return finiteNumbers(word, 3).empty() ? "must be three numbers with commas between them" : "";
}

std::string problemOfMatrix(const std::string& word)
{
    return finiteNumbers(word, 12).empty() ? "must be twelve numbers with commas between them" : "";
}

Vector vectorAt(const std::vector<double>& numbers, std::size_t first)
{
    return {numbers[first], numbers[first + 1], numbers[first + 2]};
}

/// The triangles that a mesh made of some faces gets.
Marking markFaces(const char* name, const Colour& colour, const TopoMesh& mesh, const std::vector<TopoMeshFace>& faces)
{
    const std::unordered_set<TopoMeshFace> marked(faces.begin(), faces.end());
    Marking marking{name, faces.size(), colour, {}, {}, {}};
    int triangle = 0;
    for (const TopoMeshFace face : facesOf(mesh)) {
        const int end = triangle + face.numVertices() - 2;
        for (; triangle < end; ++triangle)
            if (marked.contains(face)) marking.triangles.push_back(triangle);
    }
    return marking;
}

void removeUnusedVertices(TopoMesh& mesh)
{
    for (const znGeom::TopoMeshVertex vertex : verticesOf(mesh))
        if (!vertex->edge) mesh.deleteVertex(vertex);
}

class ExtrudeCommand : public ChangeCommand
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub = app.add_subcommand("extrude", "Move faces away from a mesh, and build walls behind them");
        sub->footer(
            "What is connected among the faces is a patch, and moves by itself: --distance along the mean normal of\n"
            "the patch, --vector as it says, --matrix by four rows of three numbers, the last of which moves points;\n"
            "rows multiply from the left. --scale comes first, about the middle of the patch. A patch with neighbours\n"
            "leaves its place, a sheet without any stays as the bottom of a closed plate. Faces are counted from 0 in\n"
            "the order of the file, components as split numbers its files.\n"
            "All faces of the result face the same way, and unused vertices are left out. OBJ, PLY, OFF and plain\n"
            "files keep polygons; normals, texture coordinates and groups are not kept. The picture shows the mesh\n"
            "before and after.");
        m_files.addFiles(*sub);
        addFaceOptions(*sub);
        addMotionOptions(*sub);
        addLastOptions(*sub);
        return sub;
    }

private:
    void addFaceOptions(CLI::App& sub)
    {
        CLI::Option* faces = sub.add_option("--faces", m_faces, "The numbers of the faces to move");
        CLI::Option* component = sub.add_option("--component", m_component, "The number of a component to move");
        CLI::Option* all = sub.add_flag("--all", m_all, "Move all faces");
        faces->check(wholeNumberFrom(0))->delimiter(',')->allow_extra_args(false)->option_text("I,J,...");
        component->check(wholeNumberFrom(1))->option_text("N")->excludes(faces)->excludes(all);
        all->excludes(faces);
        m_faceOptions = {faces, component, all};
    }

    void addMotionOptions(CLI::App& sub)
    {
        CLI::Option* distance = sub.add_option("--distance", m_distance, "How far to move, outward if above 0");
        CLI::Option* vector = sub.add_option("--vector", m_vector, "Which way and how far");
        CLI::Option* matrix = sub.add_option("--matrix", m_matrix, "Where points go");
        distance->check(CLI::Validator(problemOfNumber, ""))->option_text("D")->excludes(vector)->excludes(matrix);
        vector->check(CLI::Validator(problemOfVector, ""))->option_text("X,Y,Z")->excludes(matrix);
        matrix->check(CLI::Validator(problemOfMatrix, ""))->option_text("M11,...,M43");
        sub.add_option("--scale", m_scale, "How much larger the patch becomes")
            ->check(CLI::Validator(problemOfNumber, ""))
            ->option_text("S [1]");
        sub.callback([this, distance, vector, matrix] {
            const auto isGiven = [](const CLI::Option* option) { return option->count() > 0; };
            if (std::none_of(m_faceOptions.begin(), m_faceOptions.end(), isGiven))
                throw CLI::RequiredError("--faces, --component or --all");
            if (!isGiven(distance) && !isGiven(vector) && !isGiven(matrix))
                throw CLI::RequiredError("--distance, --vector or --matrix");
        });
    }

    std::unique_ptr<PendingFile> change(LoadedMesh& loaded, znUtil::Progress& progress, Report& report) const override
    {
        report.add("vertices_before", loaded.mesh.getNumVertices());
        report.add("faces_before", countFaces(loaded.mesh));
        znUtil::Progress phase;
        progress.subPhase(0.5, phase);
        const std::vector<int> chosen = chooseFaces(loaded, phase);
        std::optional<EndOnSignal> endOnSignal(std::in_place, progress);
        progress.setCaption("extruding");
        TopoMesh mesh;
        takeOriented(loaded, mesh);
        const std::vector<TopoMeshFace> faces = facesAt(mesh, chosen);
        const znGeom::CompactMesh original = isDrawn() ? loaded.mesh : znGeom::CompactMesh();
        const Marking ofFaces = markFaces("extruded faces", ofChosen, mesh, faces);
        const ExtrudeOutcome outcome = extrude(mesh, faces, loaded, report);
        report.add("vertices", loaded.mesh.getNumVertices());
        report.add("faces", countFaces(loaded.mesh));
        endOnSignal.reset();
        if (!isDrawn()) return nullptr;
        const Marking caps = markFaces("moved faces", ofCaps, mesh, outcome.newFaces);
        return draw({&original, {ofFaces}, "", true}, {&loaded.mesh, {caps}, "", true}, progress, report);
    }

    /// Ascending, each once.
    std::vector<int> chooseFaces(LoadedMesh& loaded, znUtil::Progress& progress) const
    {
        std::vector<int> chosen = m_faces;
        const int numFaces = countFaces(loaded.mesh);
        if (m_all)
            for (int face = 0; face < numFaces; ++face) chosen.push_back(face);
        znGeom::MeshEdgeSides sides;
        znUtil::Progress phase;
        progress.subPhase(0.4, phase);
        znGeom::meshEdgeSides(loaded.mesh, phase, sides);
        checkCancelled(progress);
        progress.subPhase(0.3, phase);
        if (const std::string hint = soupNote(loaded.mesh, sides, phase); !hint.empty()) loaded.notes.push_back(hint);
        progress.subPhase(0.3, phase);
        if (m_component > 0) chosen = facesOfComponent(loaded.mesh, sides, phase);
        std::sort(chosen.begin(), chosen.end());
        chosen.erase(std::unique(chosen.begin(), chosen.end()), chosen.end());
        if (!chosen.empty() && chosen.back() >= numFaces)
            throw Failure(inputName(m_files.input) + ": there is no face " + std::to_string(chosen.back()) +
                          ", the mesh has " + std::to_string(numFaces) + ", counted from 0");
        return chosen;
    }

    /// By the first triangles of their fans.
    std::vector<int> facesOfComponent(const znGeom::CompactMesh& mesh, const znGeom::MeshEdgeSides& sides,
                                      znUtil::Progress& progress) const
    {
        const znGeom::MeshTriangleComponents components = findComponents(mesh, sides, "edges", progress);
        if (m_component > components.count())
            throw Failure(inputName(m_files.input) + ": there is no component " + std::to_string(m_component) +
                          ", the mesh has " + std::to_string(components.count()));
        std::vector<int> chosen;
        for (int face = 0, triangle = 0; face < countFaces(mesh); ++face) {
            if (components.ofTriangle[triangle] == m_component - 1) chosen.push_back(face);
            triangle += mesh.getNumPolys() > 0 ? mesh.getPolyLengths()[face] - 2 : 1;
        }
        return chosen;
    }

    /// Faces that disagree with their neighbours are reversed first: a patch of both would have no sides.
    void takeOriented(LoadedMesh& loaded, TopoMesh& mesh) const
    {
        TopoMesh asRead;
        takePolygons(loaded, "the extrusion", asRead);
        zn::vector<bool> reversed;
        if (!znGeom::meshOrientFaces(asRead, reversed))
            loaded.notes.push_back("a part of the surface has only one side: its faces can't all face the same way");
        putPolygons(asRead, loaded, reversed);
        takePolygons(loaded, "the extrusion", mesh);
        putPolygons(mesh, loaded);
        const auto numReversed = std::count(reversed.begin(), reversed.end(), true);
        if (numReversed > 0)
            loaded.notes.push_back("faces that disagreed with their neighbours: " + std::to_string(numReversed) +
                                   ", reversed first");
    }

    static std::vector<TopoMeshFace> facesAt(const TopoMesh& mesh, const std::vector<int>& numbers)
    {
        std::vector<TopoMeshFace> all, faces;
        for (const TopoMeshFace face : facesOf(mesh)) all.push_back(face);
        for (const int number : numbers) faces.push_back(all[static_cast<std::size_t>(number)]);
        return faces;
    }

    ExtrudeOutcome extrude(TopoMesh& mesh, const std::vector<TopoMeshFace>& faces, LoadedMesh& loaded,
                           Report& report) const
    {
        const ExtrudeOutcome outcome = extrudeOrFail(mesh, faces);
        removeUnusedVertices(mesh);
        zn::vector<bool> reversed;
        znGeom::meshOrientFaces(mesh, reversed);
        putPolygons(mesh, loaded, reversed);
        report.add("extruded_faces", faces.size());
        report.add("patches", outcome.numPatches);
        report.add("sheets", outcome.numSheets,
                   std::to_string(outcome.numSheets) + (outcome.numSheets > 0 ? ", which are plates now" : ""));
        if (outcome.numClosed > 0)
            loaded.notes.push_back("closed surfaces have no rim: " + std::to_string(outcome.numClosed) +
                                   (outcome.numClosed == 1 ? " was" : " were") + " copied, without walls");
        return outcome;
    }

    ExtrudeOutcome extrudeOrFail(TopoMesh& mesh, const std::vector<TopoMeshFace>& faces) const
    {
        try {
            return extrudePatches(mesh, faces, motion());
        } catch (const Failure& failure) {
            throw Failure(inputName(m_files.input) + ": " + failure.what());
        }
    }

    ExtrudeMotion motion() const
    {
        ExtrudeMotion motion;
        motion.scale = finiteNumber(m_scale).value_or(1);
        if (!m_distance.empty()) motion.distance = finiteNumber(m_distance);
        if (!m_vector.empty()) motion.vector = vectorAt(finiteNumbers(m_vector, 3), 0);
        if (m_matrix.empty()) return motion;
        const std::vector<double> numbers = finiteNumbers(m_matrix, 12);
        motion.matrix.emplace();
        for (int row = 0; row < 4; ++row)
            motion.matrix->setRow(row, vectorAt(numbers, static_cast<std::size_t>(3 * row)));
        return motion;
    }

    std::vector<int> m_faces; ///< from 0
    int m_component = 0;
    bool m_all = false;
    std::string m_distance, m_vector, m_matrix, m_scale; ///< words; one of the first three is given
    std::vector<CLI::Option*> m_faceOptions;
};

} // namespace

std::unique_ptr<Command> makeExtrudeCommand() { return std::make_unique<ExtrudeCommand>(); }

} // namespace tool

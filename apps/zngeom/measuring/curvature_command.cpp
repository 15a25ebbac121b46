#include <algorithm>
#include <cmath>

#include "apps/zngeom/command/command.h"
#include "apps/zngeom/command/format_option.h"
#include "apps/zngeom/command/part_options.h"
#include "apps/zngeom/command/picture_option.h"
#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/frame/pacer.h"
#include "apps/zngeom/picture/png_file.h"
#include "apps/zngeom/picture/value_files.h"
#include "apps/zngeom/picture/value_picture.h"
#include "znGeom/analysis/adjacency.h"
#include "znGeom/analysis/curvature.h"
#include "znGeom/analysis/normals.h"

namespace tool {

namespace {

const std::vector<std::string> typeWords{"mean", "gauss", "min", "max"};

std::vector<float> measure(znGeom::CompactMesh& mesh, znGeom::MeshCurvature type, znUtil::Progress& progress)
{
    progress.setCaption("measuring");
    znGeom::meshComputeNormals(mesh);
    znGeom::MeshAdjTris adjTris;
    znGeom::meshAdjTris(mesh, adjTris);
    checkCancelled(progress);
    znGeom::MeshAdjVertices adjVertices;
    znGeom::meshAdjVertices(mesh, adjTris, adjVertices);
    checkCancelled(progress);
    progress.set(0.5);
    std::vector<float> values(static_cast<std::size_t>(mesh.getNumVertices()));
    znGeom::meshCurvature(mesh, adjTris, adjVertices, {}, type, values.data());
    progress.set(1);
    return values;
}

class CurvatureCommand : public Command
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub = app.add_subcommand("curvature", "Measure how strongly a surface bends at its vertices");
        sub->footer(
            "mean is half the sum of the two principal curvatures, gauss their product, max the one of larger and\n"
            "min the one of smaller magnitude; in one over the unit of the file, gauss in one over its square. They\n"
            "are positive where the surface bends away from the side from which its triangles are wound\n"
            "counter-clockwise, as a ball does. Vertices on borders take the mean of their neighbours.\n"
            "OUT is a .ply file with a value and a colour at each vertex, or a .txt file with a value on each line;\n"
            "- is a text on standard output. Colours go from blue to red over the values from the 2nd to the 98th\n"
            "percentile, or over --range. Vertices without a finite value, around triangles without area, are\n"
            "magenta, and counted.");
        sub->add_option("MESH", m_path, "The mesh file")->required();
        sub->add_option("OUT", m_output, "The file to write")->required();
        sub->add_option("--type", m_type, "Which curvature")
            ->check(CLI::IsMember(typeWords))
            ->option_text("mean|gauss|min|max [mean]");
        addRangeOption(*sub, m_range);
        addPictureOptions(*sub, m_picture, "Draw the mesh in these colours: a PNG file");
        addFormatOption(*sub, m_formats);
        return sub;
    }

    Report run(znUtil::Progress& progress) override
    {
        checkValueFormat(m_output);
        if (!m_picture.path.empty()) checkPictureName(m_picture.path);
        const std::optional<ValueScale> range = rangeFrom(m_range);
        Phases phases(progress);
        LoadedMesh loaded;
        loadMesh(m_path, phases.next(0.4), loaded, m_formats.input);
        checkHasTriangles(loaded.mesh, m_path);
        const auto type = static_cast<znGeom::MeshCurvature>(std::find(typeWords.begin(), typeWords.end(), m_type) -
                                                             typeWords.begin());
        const std::vector<float> values = measure(loaded.mesh, type, phases.next(0.3));
        const ValueScale scale = range ? *range : scaleOf(values);
        if (const std::string note = noteOnSoup(loaded, phases.next(0.1)); !note.empty()) loaded.notes.push_back(note);
        std::unique_ptr<PendingFile> picture;
        znUtil::Progress& phase = phases.next(0.1);
        if (!m_picture.path.empty()) {
            phase.setCaption("drawing");
            picture = writePngAside(drawValues(loaded.mesh, values, scale, m_type + " curvature", m_picture.size),
                                    m_picture.path);
        }
        phases.next(0.1).setCaption("writing");
        saveValues(loaded.mesh, values, scale, m_output);
        if (picture) putInPlace(*picture, m_picture.path);
        return describe(loaded, values, scale);
    }

private:
    static std::string noteOnSoup(const LoadedMesh& loaded, znUtil::Progress& progress)
    {
        znUtil::Progress phase;
        progress.subPhase(0.5, phase);
        znGeom::MeshEdgeSides sides;
        znGeom::meshEdgeSides(loaded.mesh, phase, sides);
        checkCancelled(progress);
        progress.subPhase(0.5, phase);
        return soupNote(loaded.mesh, sides, phase);
    }

    Report describe(const LoadedMesh& loaded, const std::vector<float>& values, const ValueScale& scale) const
    {
        double least = HUGE_VAL, most = -HUGE_VAL;
        std::size_t numFinite = 0;
        for (const float value : values) {
            if (!std::isfinite(value)) continue;
            least = std::min(least, static_cast<double>(value));
            most = std::max(most, static_cast<double>(value));
            ++numFinite;
        }
        Report report;
        report.add("file", m_path);
        report.add("output", m_output);
        report.add("vertices", values.size());
        report.add("triangles", loaded.mesh.getNumTriangles());
        report.add("type", m_type);
        report.add("least", rounded(least));
        report.add("largest", rounded(most));
        report.add("range", {rounded(scale.low), rounded(scale.high)},
                   shownNumber(scale.low) + " to " + shownNumber(scale.high));
        report.add("not_finite", values.size() - numFinite);
        if (!m_picture.path.empty()) report.add("picture", m_picture.path);
        report.addNotes(loaded.notes);
        report.makeRoomFor(m_output);
        return report;
    }

    std::string m_path, m_output, m_type = "mean";
    std::optional<std::string> m_range;
    PictureOptions m_picture;
    StreamFormats m_formats;
};

} // namespace

std::unique_ptr<Command> makeCurvatureCommand() { return std::make_unique<CurvatureCommand>(); }

} // namespace tool

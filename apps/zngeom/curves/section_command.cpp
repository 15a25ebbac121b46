#include <cmath>
#include <limits>

#include "apps/zngeom/command/axis_option.h"
#include "apps/zngeom/command/command.h"
#include "apps/zngeom/command/format_option.h"
#include "apps/zngeom/command/part_options.h"
#include "apps/zngeom/curves/surface_lines.h"
#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/files/write_file.h"
#include "apps/zngeom/frame/cancel_on_signal.h"
#include "apps/zngeom/frame/pacer.h"
#include "apps/zngeom/frame/usage.h"
#include "apps/zngeom/planar/outlines.h"
#include "znGeom/analysis/bounds.h"
#include "znGeom/curves/plane_sections.h"
#include "znGeom/planar/polylines/merge_segments.h"

namespace tool {

namespace {

/// Planes side by side.
struct Planes
{
    znLinear::Plane first;
    double step = 1;
    int count = 1;

    /// The axis that the planes face most.
    int axis() const
    {
        int most = 2;
        for (const int other : {0, 1})
            if (std::fabs(first.normal[other]) > std::fabs(first.normal[most])) most = other;
        return most;
    }
};

/// Those at the multiples of a step that the mesh may reach.
Planes planesEvery(double step, int axis, const znGeom::CompactMesh& mesh, const std::string& path)
{
    constexpr double most = 1e6;
    double low[3], high[3];
    znGeom::meshBoundingBox(mesh, low, high);
    const double first = std::ceil(low[axis] / step), last = std::floor(high[axis] / step);
    if (!std::isfinite(last - first)) throw Failure(inputName(path) + ": coordinates are not finite");
    if (!(last - first < most)) throw Failure(inputName(path) + ": would be cut by more than a million planes");
    const znLinear::Normal normal(axis == 0, axis == 1, axis == 2);
    Planes planes;
    planes.first = {(normal.asVector() * (first * step)).asPoint(), normal};
    planes.step = step;
    planes.count = static_cast<int>(last - first) + 1;
    return planes;
}

/// Nothing but what has the same digits, as the crossings of neighbouring triangles have. More than that could lead
/// from one outline to another.
constexpr float touching = std::numeric_limits<float>::denorm_min();

std::vector<Polyline> outlinesOf(const znGeom::CompactMesh& mesh, const Planes& planes, znUtil::Progress& progress)
{
    progress.setCaption("cutting");
    std::vector<Polyline> outlines;
    const auto join = [&](int, const std::deque<znGeom::Segment>& segments) {
        zn::vector<zn::Reference<znGeom::Polyline>> lines;
        znGeom::MergeSegments()(lines, segments, touching);
        for (const auto& line : lines) outlines.push_back(fromLibraryLine(*line, static_cast<double>(touching)));
    };
    meshPlaneSections(mesh, planes.first, planes.step, planes.count, join, progress);
    checkCancelled(progress);
    return outlines;
}

class SectionCommand : public Command
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub = app.add_subcommand("section", "Write the lines along which planes cut a mesh");
        sub->footer("LINES is an OBJ or PLY file of lines, one for each outline; a closed one comes back to its first\n"
                    "point. Or a .csv table, or an .svg drawing of all planes on one another, with open outlines in\n"
                    "red. Open ones end at the boundary of the mesh. Flat parts of the surface that lie in a plane\n"
                    "give their rim, where the surface goes on below it. With --every, planes lie at all multiples of\n"
                    "the step that the mesh reaches.");
        sub->add_option("MESH", m_mesh, "The mesh file")->required();
        sub->add_option("LINES", m_lines, "The file to write: .obj, .ply, .svg or .csv")->required();
        addPlaneOptions(*sub);
        sub->add_option("--decimate", m_decimation, "Leave out points that lie no farther off than this")
            ->check(aboveZero())
            ->option_text("TOL");
        addFormatOptions(*sub, m_formats);
        return sub;
    }

    Report run(znUtil::Progress& progress) override
    {
        checkOutlineFormat(m_lines, m_formats.ofOutput());
        Planes planes;
        if (!m_planes.empty()) planes.first = planeFrom(m_planes.front());
        checkIsOther(m_mesh, m_lines);
        Phases phases(progress);
        LoadedMesh loaded;
        loadMesh(m_mesh, phases.next(0.6), loaded, m_formats.input);
        checkHasTriangles(loaded.mesh, m_mesh);
        if (m_planes.empty()) planes = planesEvery(m_step, axisFrom(m_axis), loaded.mesh, m_mesh);
        std::vector<Polyline> outlines = outlinesOf(loaded.mesh, planes, phases.next(0.4));
        const bool isMissed = outlines.empty();
        int numGone = 0;
        if (m_decimation) {
            const EndOnSignal endOnSignal(progress);
            numGone = decimateLines(outlines, *m_decimation);
        }
        saveOutlines(outlines, m_lines, m_formats.ofOutput(), planes.axis());

        Report report;
        report.add("input", m_mesh);
        report.add("output", m_lines);
        report.add("planes", planes.count);
        addLines(outlines, report);
        if (isMissed) report.addNote("no plane meets the surface: there are no lines");
        if (numGone > 0) report.addNote(std::to_string(numGone) + " outlines smaller than the tolerance are left out");
        report.addNotes(loaded.notes);
        report.makeRoomFor(m_lines);
        return report;
    }

private:
    void addPlaneOptions(CLI::App& sub)
    {
        CLI::Option* plane = addPlaneOption(sub, m_planes, false);
        CLI::Option* every = sub.add_option("--every", m_step, "Cut by planes this far apart")
                                 ->check(aboveZero())
                                 ->option_text("STEP")
                                 ->excludes(plane);
        addAlongOption(sub, m_axis, "The axis along which they follow one another")->needs(every);
        sub.callback([plane, every] {
            if (plane->count() + every->count() == 0) throw CLI::RequiredError("--plane or --every");
        });
    }

    std::string m_mesh, m_lines, m_axis;
    std::vector<std::string> m_planes;
    double m_step = 0;
    std::optional<double> m_decimation;
    StreamFormats m_formats;
};

} // namespace

std::unique_ptr<Command> makeSectionCommand() { return std::make_unique<SectionCommand>(); }

} // namespace tool

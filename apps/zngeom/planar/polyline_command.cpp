#include <optional>

#include "apps/zngeom/command/command.h"
#include "apps/zngeom/command/format_option.h"
#include "apps/zngeom/frame/cancel_on_signal.h"
#include "apps/zngeom/frame/pacer.h"
#include "apps/zngeom/frame/usage.h"
#include "apps/zngeom/planar/outlines.h"
#include "apps/zngeom/planar/point_table.h"

namespace tool {

namespace {

class PolylineCommand : public Command
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub = app.add_subcommand("polyline", "Join lines where their ends meet, and leave out points");
        sub->footer(
            "IN is an OBJ or PLY file of lines, or a text with the x y z of a point on each line and empty\n"
            "lines between the polylines. OUT is such an .obj or .ply file, a .csv table, or an .svg drawing\n"
            "as seen from above, with open lines in red. Joining comes first. What is left out lies within the\n"
            "tolerance of the line through the points that stay on either side; closed lines smaller than\n"
            "that go. Tolerances are in the units of the file. Joining gives coordinates in single precision.");
        sub->add_option("IN", m_input, "The file to read")->required();
        sub->add_option("OUT", m_output, "The file to write")->required();
        sub->add_option("--decimate", m_decimation, "Leave out points that lie no farther off than this")
            ->check(aboveZero())
            ->option_text("TOL");
        sub->add_option("--join", m_joining, "Join ends that are no farther apart than this along each axis")
            ->check(aboveZero())
            ->option_text("TOL");
        addFormatOptions(*sub, m_formats);
        return sub;
    }

    Report run(znUtil::Progress& progress) override
    {
        checkOutlineFormat(m_output, m_formats.ofOutput());
        Phases phases(progress);
        std::vector<Polyline> lines = loadPolylines(m_input, phases.next(0.5), m_formats.input);
        phases.next(0.5).setCaption("thinning out");
        std::optional<EndOnSignal> endOnSignal(std::in_place, progress);
        Report report;
        report.add("input", m_input);
        report.add("output", m_output);
        int numPoints = 0, numGone = 0;
        for (const Polyline& line : lines) numPoints += line.points.size();
        report.add("curves_read", lines.size());
        report.add("points_read", numPoints);
        if (m_joining) lines = joinedLines(lines, *m_joining);
        if (m_decimation) numGone = decimateLines(lines, *m_decimation);
        endOnSignal.reset();
        saveOutlines(lines, m_output, m_formats.ofOutput(), 2);
        addLines(lines, report);
        if (numGone > 0)
            report.addNote(std::to_string(numGone) + " closed lines smaller than the tolerance are left out");
        report.makeRoomFor(m_output);
        return report;
    }

private:
    std::string m_input, m_output;
    std::optional<double> m_decimation, m_joining;
    StreamFormats m_formats;
};

} // namespace

std::unique_ptr<Command> makePolylineCommand() { return std::make_unique<PolylineCommand>(); }

} // namespace tool

#include "apps/zngeom/command/command.h"
#include "apps/zngeom/command/format_option.h"
#include "apps/zngeom/frame/cancel_on_signal.h"
#include "apps/zngeom/frame/pacer.h"
#include "apps/zngeom/frame/usage.h"
#include "apps/zngeom/planar/outlines.h"
#include "apps/zngeom/planar/point_table.h"
#include "znGeom/planar/polylines/overlap.h"

namespace tool {

namespace {

struct Overlap
{
    int lineA = 0, lineB = 0;
    znLinear::Range1d rangeA, rangeB;
    double sum = 0, maxDistance = 0, length = 0;
    bool isReversed = false;
};

class OverlapCommand : public Command
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub =
            app.add_subcommand("overlap", "Find the longest stretch along which two lines run side by side");
        sub->footer("A and B are files of lines as for the command polyline; of files with several, the two lines are\n"
                    "taken that run together for longest. Ranges are ways along the lines from their beginnings, a\n"
                    "closed line's from where its file has it begin. An end of the stretch that lies within the\n"
                    "tolerance of the end of its line is that end.");
        sub->add_option("A", m_inputs[0], "The file with the line that is followed")->required();
        sub->add_option("B", m_inputs[1], "The file with the line beside it")->required();
        sub->add_option("--tolerance", m_tolerance, "How far apart they may be")
            ->required()
            ->check(aboveZero())
            ->option_text("T");
        sub->add_flag("--same-direction", m_isSameDirection, "Only where both run the same way");
        addFormatOption(*sub, m_formats);
        return sub;
    }

    Report run(znUtil::Progress& progress) override
    {
        Phases phases(progress);
        std::vector<znGeom::Polyline> lines[2];
        for (const int side : {0, 1})
            for (const Polyline& line : loadPolylines(m_inputs[side], phases.next(0.3), m_formats.input))
                lines[side].push_back(asLibraryLine(line));
        const Overlap longest = findLongest(lines[0], lines[1], phases.next(0.4));
        Report report;
        report.add("a", m_inputs[0]);
        report.add("b", m_inputs[1]);
        describe(longest, report);
        return report;
    }

private:
    Overlap findLongest(const std::vector<znGeom::Polyline>& as, const std::vector<znGeom::Polyline>& bs,
                        znUtil::Progress& progress) const
    {
        progress.setCaption("comparing");
        Pacer pacer(progress, as.size() * bs.size());
        const EndOnSignal endOnSignal(progress);
        Overlap longest;
        for (std::size_t b = 0; b < bs.size(); ++b) {
            znGeom::PolylineBBoxCache boxes(bs[b]);
            for (std::size_t a = 0; a < as.size(); ++a) {
                pacer.at(b * as.size() + a);
                Overlap found;
                if (!overlap(as[a], bs[b], boxes, m_tolerance, m_tolerance, m_isSameDirection, found.rangeA,
                             found.rangeB, found.sum, found.maxDistance, found.length, found.isReversed))
                    continue;
                if (m_isSameDirection && found.isReversed) continue;
                found.lineA = static_cast<int>(a) + 1;
                found.lineB = static_cast<int>(b) + 1;
                if (found.length > longest.length) longest = found;
            }
        }
        return longest;
    }

    static void describe(const Overlap& found, Report& report)
    {
        report.add("overlap", found.lineA > 0);
        if (found.lineA == 0) {
            report.addNote("no stretch of A runs within the tolerance of B");
            return;
        }
        const auto addRange = [&](const char* key, const znLinear::Range1d& range) {
            report.add(key, {rounded(range.min), rounded(range.max)},
                       shownNumber(range.min) + " to " + shownNumber(range.max));
        };
        report.add("line_of_a", found.lineA);
        report.add("line_of_b", found.lineB);
        addRange("range_a", found.rangeA);
        addRange("range_b", found.rangeB);
        report.add("length", rounded(found.length), shownNumber(found.length));
        report.add("length_within", rounded(found.sum), shownNumber(found.sum));
        report.add("greatest_distance", rounded(found.maxDistance), shownNumber(found.maxDistance));
        report.add("reversed", found.isReversed);
    }

    std::string m_inputs[2];
    double m_tolerance = 0;
    bool m_isSameDirection = false;
    StreamFormats m_formats;
};

} // namespace

std::unique_ptr<Command> makeOverlapCommand() { return std::make_unique<OverlapCommand>(); }

} // namespace tool

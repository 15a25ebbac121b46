#include "apps/zngeom/command/command.h"
#include "apps/zngeom/command/tolerance_option.h"
#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/files/write_file.h"
#include "apps/zngeom/frame/failure.h"
#include "apps/zngeom/frame/number_text.h"
#include "apps/zngeom/frame/pacer.h"
#include "apps/zngeom/frame/usage.h"
#include "apps/zngeom/picture/png_file.h"
#include "apps/zngeom/picture/svg_drawing.h"
#include "apps/zngeom/planar/dabs.h"
#include "apps/zngeom/planar/point_table.h"
#include "apps/zngeom/planar/spaced_stroke.h"

namespace tool {

namespace {

using Points = std::vector<znLinear::Point2Flt>;

std::string problemOfDrag(const std::string& word)
{
    const std::optional<double> drag = finiteNumber(word);
    return drag && *drag >= 0 && *drag < 1 ? "" : "must be a number from 0 to below 1";
}

std::string problemOfSteps(const std::string& word)
{
    return word.size() < 4 || word == "1000" ? "" : "must be at most 1000";
}

/// Three numbers from 0 to 255 with commas between them, or black.
Colour colourFrom(const std::string& word)
{
    const std::vector<double> parts = finiteNumbers(word, 3);
    if (parts.empty()) return {};
    const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(std::clamp(parts[i], 0.0, 255.0)); };
    return {byte(0), byte(1), byte(2)};
}

std::string problemOfColour(const std::string& word)
{
    const std::vector<double> parts = finiteNumbers(word, 3);
    const auto isByte = [](double part) { return part >= 0 && part <= 255; };
    return !parts.empty() && std::all_of(parts.begin(), parts.end(), isByte) ? ""
                                                                             : "must be three numbers from 0 to 255";
}

std::string drawingOf(const Points& samples, const SpacedStroke& stroke)
{
    constexpr Colour faint{165, 170, 178}, smooth{60, 120, 200}, dab{200, 60, 40};
    znLinear::Range2d bounds;
    for (const Points* points : {&samples, &stroke.smoothed})
        for (const auto& point : *points) bounds.include(shortest(point));
    SvgDrawing drawing(bounds);
    drawing.polyline(shortest(samples), false, {faint, {}, 1.5});
    if (!stroke.smoothed.empty()) drawing.polyline(shortest(stroke.smoothed), false, {smooth, {}, 1.5});
    for (const auto& point : stroke.points) drawing.dot(shortest(point), 3, dab);
    return drawing.text();
}

class StrokeCommand : public Command
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub = app.add_subcommand("stroke", "Space points evenly along a stroke, and smooth it");
        sub->footer(
            std::string(sampleRules) +
            "\nOUT is a table like it; an .svg drawing of the stroke and its points, with y upward; or with\n"
            "--image a .png, on which the samples are places in pixels from the upper left corner.\n"
            "The first point is the first sample. The spacing is measured along the stroke, round corners too.\n"
            "A smoothed stroke is that of a mass that the samples draw: it begins with them, and trails.");
        sub->add_option("SAMPLES", m_samples, "A text file with the samples")->required();
        sub->add_option("OUT", m_output, "The file to write")->required();
        sub->add_option("--spacing", m_options.spacing, "From one point to the next")->required()->check(aboveZero());
        addFilterOptions(*sub);
        addPaintOptions(*sub);
        return sub;
    }

    Report run(znUtil::Progress& progress) override
    {
        checkOutput();
        Phases phases(progress);
        const Points samples = loadSamples(m_samples, phases.next(0.3));
        const SpacedStroke stroke = spaceStroke(samples, m_options, phases.next(0.3));
        Report report = describe(samples, stroke);
        write(samples, stroke, phases.next(0.4), report);
        return report;
    }

private:
    void addFilterOptions(CLI::App& sub)
    {
        CLI::Option* smooth = sub.add_flag("--smooth", m_options.isSmooth, "Smooth the stroke first");
        sub.add_option("--steps", m_options.numSteps, "Smoothed points for each sample (default 6)")
            ->check(wholeNumberFrom(1))
            ->check(CLI::Validator(problemOfSteps, ""))
            ->needs(smooth);
        sub.add_option("--mass", m_options.mass, "How slowly it follows the samples (default 0.9)")
            ->check(aboveZero())
            ->needs(smooth);
        sub.add_option("--drag", m_options.drag, "How much of its speed it loses at each sample (default 0.921)")
            ->check(CLI::Validator(problemOfDrag, ""))
            ->needs(smooth);
    }

    void addPaintOptions(CLI::App& sub)
    {
        CLI::Option* image = sub.add_option("--image", m_image, "Paint on this .png file")->option_text("IN.png");
        CLI::Option* radius = sub.add_option("--radius", m_radius, "Of the dabs, in pixels")->check(aboveZero());
        radius->needs(image);
        image->needs(radius);
        sub.add_option("--colour", m_colour, "Of the dabs, three numbers from 0 to 255 (default black)")
            ->check(CLI::Validator(problemOfColour, ""))
            ->needs(image)
            ->option_text("R,G,B");
    }

    void checkOutput() const
    {
        const bool isPicture = m_output.ends_with(".png") || m_output.ends_with(".PNG");
        if (!m_image.empty()) checkPictureName(m_output);
        if (m_image.empty() && isPicture) throw Failure(m_output + ": is painted on a picture; name it with --image");
        checkIsOther(m_samples, m_output);
    }

    Report describe(const Points& samples, const SpacedStroke& stroke) const
    {
        Report report;
        report.add("input", m_samples);
        report.add("output", m_output);
        report.add("samples", samples.size());
        report.add("length", rounded(lengthOf(samples)));
        if (m_options.isSmooth) report.add("smoothed_length", rounded(lengthOf(stroke.smoothed)));
        report.add("points", stroke.points.size());
        report.makeRoomFor(m_output);
        return report;
    }

    void write(const Points& samples, const SpacedStroke& stroke, znUtil::Progress& progress, Report& report) const
    {
        if (m_image.empty())
            return writeFile(m_output.ends_with(".svg") ? drawingOf(samples, stroke) : tableOf(stroke.points, m_output),
                             m_output);
        Image image = loadPng(m_image, progress);
        progress.setCaption("painting");
        report.add("points_on_image", paintDabs(image, stroke.points, m_radius, colourFrom(m_colour), progress));
        putInPlace(*writePngAside(image, m_output), m_output);
    }

    std::string m_samples, m_output, m_image, m_colour;
    StrokeOptions m_options;
    double m_radius = 0;
};

} // namespace

std::unique_ptr<Command> makeStrokeCommand() { return std::make_unique<StrokeCommand>(); }

} // namespace tool

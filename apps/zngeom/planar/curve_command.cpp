#include <cmath>

#include "apps/zngeom/command/command.h"
#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/files/write_file.h"
#include "apps/zngeom/frame/failure.h"
#include "apps/zngeom/frame/number_text.h"
#include "apps/zngeom/frame/pacer.h"
#include "apps/zngeom/frame/usage.h"
#include "apps/zngeom/picture/svg_drawing.h"
#include "apps/zngeom/planar/point_table.h"
#include "znGeom/planar/strokes/interpolate_alg.h"

namespace tool {

namespace {

using znGeom::InterpolateAlg;
using znLinear::Point2;
using Samples = std::vector<znLinear::Point2Flt>;

const std::vector<std::pair<std::string, InterpolateAlg::EInterpolationHint>> methods = {
    {"spline", InterpolateAlg::eCubicSpline},
    {"newton", InterpolateAlg::eNewtonForm},
    {"neville", InterpolateAlg::eNeville},
    {"linear", InterpolateAlg::eLinear},
};

class CurveCommand : public Command
{
public:
    CLI::App* addTo(CLI::App& app) override
    {
        CLI::App* sub = app.add_subcommand("curve", "Draw a curve y(x) through samples");
        sub->footer(std::string(sampleRules) +
                    " x must ascend from line to line.\n"
                    "OUT is a table of the curve at evenly spaced x, from the first sample to the last, or an .svg\n"
                    "drawing with the samples as dots. newton and neville are two ways to the polynomial through all\n"
                    "samples, which swings between more than a few; a spline doesn't, and needs four samples, or it\n"
                    "is linear.");
        sub->add_option("TABLE", m_table, "A text file with the samples")->required();
        sub->add_option("OUT", m_output, "The file to write")->required();
        std::vector<std::string> names;
        for (const auto& [name, hint] : methods) names.push_back(name);
        sub->add_option("--method", m_method, "spline, newton, neville or linear (default spline)")
            ->check(CLI::IsMember(names));
        sub->add_option("--samples", m_numSamples, "How many points to write (default 100)")->check(wholeNumberFrom(2));
        return sub;
    }

    Report run(znUtil::Progress& progress) override
    {
        checkIsOther(m_table, m_output);
        Phases phases(progress);
        const Samples samples = loadSamples(m_table, phases.next(0.3));
        checkAscending(samples);
        const std::vector<Point2> curve = evaluate(samples, phases.next(0.7));
        writeFile(m_output.ends_with(".svg") ? drawingOf(samples, curve) : tableOf(curve, m_output), m_output);
        return describe(samples, curve);
    }

private:
    void checkAscending(const Samples& samples) const
    {
        for (std::size_t i = 1; i < samples.size(); ++i) {
            if (samples[i - 1].x < samples[i].x) continue;
            std::string message = inputName(m_table) + ": x must ascend, and that of sample " + std::to_string(i + 1);
            appendAllDigits(message += ", ", samples[i].x);
            appendAllDigits(message += ", does not follow ", samples[i - 1].x);
            throw Failure(message);
        }
    }

    std::vector<Point2> evaluate(const Samples& samples, znUtil::Progress& progress) const
    {
        constexpr std::size_t mostForPolynomials = 10'000;
        const bool isPolynomial = m_method == "newton" || m_method == "neville";
        if (isPolynomial && samples.size() > mostForPolynomials)
            throw Failure(inputName(m_table) + ": has too many samples for a polynomial; use --method spline");
        progress.setCaption("evaluating");
        InterpolateAlg alg;
        alg.setInput({samples.data(), samples.data() + samples.size()});
        for (const auto& [name, hint] : methods)
            if (name == m_method) alg.setInterpolationHint(hint);
        const double first = double(samples.front().x), last = double(samples.back().x);
        std::vector<Point2> curve;
        for (int i = 0; i < m_numSamples; ++i) {
            checkCancelled(progress);
            const double part = static_cast<double>(i) / (m_numSamples - 1);
            const double x = i == m_numSamples - 1 ? last : first + part * (last - first);
            curve.emplace_back(x, alg.evaluate(x));
            if (!std::isfinite(curve.back().y))
                throw Failure(inputName(m_table) + ": the curve leaves the range of numbers; use --method spline");
        }
        return curve;
    }

    static std::string drawingOf(const Samples& samples, const std::vector<Point2>& curve)
    {
        constexpr Colour line{60, 120, 200}, sampled{200, 60, 40};
        znLinear::Range2d bounds;
        for (const auto& sample : samples) bounds.include(shortest(sample));
        for (const Point2& point : curve) bounds.include(point);
        SvgDrawing drawing(bounds);
        drawing.polyline(curve, false, {line, {}, 1.5});
        for (const auto& sample : samples) drawing.dot(shortest(sample), 4, sampled);
        return drawing.text();
    }

    Report describe(const Samples& samples, const std::vector<Point2>& curve) const
    {
        znLinear::Range1d sampled, reached;
        for (const auto& sample : samples) sampled.include(shortest(sample.y));
        for (const Point2& point : curve) reached.include(point.y);
        Report report;
        report.add("input", m_table);
        report.add("output", m_output);
        report.add("method", m_method);
        report.add("samples", samples.size());
        report.add("points", curve.size());
        report.add("sample_min", sampled.min);
        report.add("sample_max", sampled.max);
        report.add("curve_min", rounded(reached.min));
        report.add("curve_max", rounded(reached.max));
        report.makeRoomFor(m_output);
        return report;
    }

    std::string m_table, m_output, m_method = "spline";
    int m_numSamples = 100;
};

} // namespace

std::unique_ptr<Command> makeCurveCommand() { return std::make_unique<CurveCommand>(); }

} // namespace tool

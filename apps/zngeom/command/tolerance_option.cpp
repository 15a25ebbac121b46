#include "apps/zngeom/command/tolerance_option.h"

#include <CLI/App.hpp>
#include <cmath>

#include "apps/zngeom/files/mesh_files.h"
#include "apps/zngeom/frame/failure.h"
#include "apps/zngeom/frame/number_text.h"
#include "znGeom/analysis/bounds.h"

namespace tool {

namespace {

/// A distance, or how many hundredths of the diagonal of the bounding box.
struct Tolerance
{
    explicit Tolerance(std::string_view word)
    {
        isPercentage = word.ends_with('%');
        if (isPercentage) word.remove_suffix(1);
        number = positiveNumber(word);
    }

    bool isPercentage;
    std::optional<double> number;
};

std::string problemOfTolerance(const std::string& word)
{
    return Tolerance(word).number ? "" : "must be a distance above 0, or a percentage such as 0.1%";
}

} // namespace

CLI::Option* addToleranceOption(CLI::App& app, std::string& word, const std::string& help)
{
    return app.add_option("--tolerance", word, help)
        ->check(CLI::Validator(problemOfTolerance, ""))
        ->option_text("DISTANCE|PERCENT%");
}

double toleranceFor(const std::string& word, const znGeom::CompactMesh& mesh, const std::string& path)
{
    const Tolerance tolerance(word);
    if (!tolerance.isPercentage) return *tolerance.number;
    double min[3], max[3];
    znGeom::meshBoundingBox(mesh, min, max);
    const double diagonal = std::hypot(max[0] - min[0], max[1] - min[1], max[2] - min[2]);
    if (!std::isfinite(diagonal))
        throw Failure(inputName(path) + ": the bounding box is not finite, --tolerance needs a distance");
    return diagonal * *tolerance.number / 100;
}

} // namespace tool
